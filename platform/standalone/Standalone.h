// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/function.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/FK_Frames.h"
#include "platform/Platform_Export.h"
#include "platform/TK_Suites.h"
#include "platform/standalone/Cache.h"
#include "platform/standalone/Host.h"

/// Switches of the stand-alone host for tests, besides those of Host.h and Cache.h. None of them is part of what the
/// module asks of a host. Set them while nothing runs, and processor flags before QX_Birth.
namespace standalone {

// --- threads ---------------------------------------------------------------------------------------
/// Takes the pool's place: gets the task and the count, and runs the indices in an order of its own.
using Executor = boost::function<void(const boost::function<void(int)>& task, int count)>;
PLATFORM_EXPORT void SetExecutor(const Executor& executor);  ///< An empty one gives the pool back.
/// Makes TK_GetNumThreads fail with this code; 0 ends that.
PLATFORM_EXPORT void SetThreadCountError(int code);

// --- processor -------------------------------------------------------------------------------------
enum class ProcessorLevel { plain = 0, vector = 1, faster = 2, widest = 3 };
/// Sets the processor flags as if the processor ended at this level; never above what it has.
PLATFORM_EXPORT void SetProcessorLevel(ProcessorLevel level);
PLATFORM_EXPORT ProcessorLevel DetectedProcessorLevel();
/// Sets what the caches hold; 0 gives the processor's own back.
PLATFORM_EXPORT void SetCacheBytes(std::size_t bytes);

// --- memory ----------------------------------------------------------------------------------------
struct MemoryCounts {
    std::int64_t allocations;     ///< through every routine of TK_Memory.h, from the start
    std::int64_t blocks_in_use;   ///< not yet freed; a block that waits in the recycled pool is free
    std::int64_t recycled_bytes;  ///< bytes that wait in the recycled pool
    std::int64_t recycled_hits;   ///< requests that the pool answered
    std::int64_t handle_locks;    ///< of all handles, not yet given back
};
PLATFORM_EXPORT MemoryCounts Memory();
/// The sum of what TK_AccountAllocationEx was told, under any name.
PLATFORM_EXPORT std::int64_t AccountedBytes();
/// The n-th allocation from now on fails (1 is the next one), once; 0 ends that. Counts all threads.
PLATFORM_EXPORT void FailAllocation(std::int64_t nth);
/// The n-th allocation from now on fails, and all after it, until 0 ends that. Counts all threads.
PLATFORM_EXPORT void FailAllocationsFrom(std::int64_t nth);
/// Gives the recycled pool's waiting blocks back to the system. @return bytes freed
PLATFORM_EXPORT std::int64_t PurgeRecycled();

// --- frames and registry ---------------------------------------------------------------------------
/// The handle of a frame without pixels, for tests of what refuses it. Those of other formats than the processor's pass
/// for frames on a GPU. Lives until disposed.
PLATFORM_EXPORT VPix** NewFakeFrame(tesselmediatypes::PixelFormat format);
/// Handles of frames that were not given back.
PLATFORM_EXPORT int LiveFrameHandles();

/// What a GPU and its library of renderers would do, for which the host itself has nothing: there is no device, no
/// frame can be made or read back, and a renderer's identity goes nowhere. What is empty stays so.
struct Gpu {
    std::function<boost::shared_ptr<GK::Device>(GK::DeviceFramework framework)> device{};
    std::function<std::int32_t(tesselmediatypes::PixelFormat format, const MK::FrameBounds& bounds,
                               InterfaceRef<MK::IVideoFrame>* frame)>
        new_frame{};
    std::function<InterfaceRef<MK::IVideoFrame>(const InterfaceRef<MK::IVideoFrame>& frame,
                                                tesselmediatypes::PixelFormat format)>
        read_back{};
    std::function<void(const Guid& id)> renderer_changed{};
};
PLATFORM_EXPORT void SetGpu(const Gpu& gpu);
/// Makes HCL_GetXIFAddressProc fail with this code; 0 ends that.
PLATFORM_EXPORT void SetRegistryError(int code);
/// What the registry finds instead of the stand-alone engine's procedures; an empty one gives them back. Either way the
/// registry gets a new generation.
using FindProcedure = std::function<void*(const char* label, const char* name)>;
PLATFORM_EXPORT void SetRegistry(const FindProcedure& find);

// --- suites and assertions --------------------------------------------------------------------------
/// What TK_QS_GetQSBasicSuite gives instead of the broker's own; null gives that one back. With a code it fails with
/// it.
PLATFORM_EXPORT void SetBasicSuite(const QSBasicSuite* suite, int code = 0);
PLATFORM_EXPORT std::int64_t SuitesOut();  ///< of all suites
PLATFORM_EXPORT void ForgetSuites();       ///< Empties the broker.
/// Asked before each registration: a code is its result, and what it throws passes on. An empty one asks nobody.
using RegistrationGate = std::function<int(const char* name, int version)>;
PLATFORM_EXPORT void SetRegistrationGate(const RegistrationGate& gate);
/// What tesselcore::debug::IsDebuggerAttached says; false from the start.
PLATFORM_EXPORT void SetDebuggerAttached(bool attached);
/// What the end of a quiet section gives; 0 ends that.
PLATFORM_EXPORT void SetQuietEndCode(int code);

// --- preferences and profiling ---------------------------------------------------------------------
PLATFORM_EXPORT void SetPreference(const char* section, const char* key, const std::string& value);
PLATFORM_EXPORT void ForgetPreferences();
/// Makes OPT_GetTextPrefData fail with this code; 0 ends that.
PLATFORM_EXPORT void SetPreferenceError(int code);
/// 0 ends profiling.
PLATFORM_EXPORT void SetProfilingVolume(int volume);
struct ProfiledScope {
    std::string name;
    std::int64_t scopes, nanoseconds;  ///< that have ended, and what they took in all
};
PLATFORM_EXPORT std::vector<ProfiledScope> ProfiledScopes();

}  // namespace standalone
