// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/function.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/FK_Frames.h"
#include "platform/Platform_Export.h"

/// Switches of the stand-alone host, for the command and for tests. None of them is part of what the
/// module asks of a host. Set them while nothing runs, and band count and processor flags before QX_Birth.
namespace standalone {

// --- threads ---------------------------------------------------------------------------------------
/// Bands of parallel work, 1 and up (32 from the start, the same on every machine; results that depend
/// on the band count then agree between machines). 1 leaves the plain single-thread routines in place.
PLATFORM_EXPORT void SetBandCount(int bands);
PLATFORM_EXPORT int BandCount();
/// Threads of the pool, the caller's included; 0 is as many as there are cores. Never changes a result.
PLATFORM_EXPORT void SetPoolLimit(int threads);
PLATFORM_EXPORT int PoolLimit();
PLATFORM_EXPORT int PoolThreads();  ///< the limit, or the number of cores where none is set
/// Takes the pool's place: gets the task and the count, and runs the indices in an order of its own.
using Executor = boost::function<void(const boost::function<void(int)>& task, int count)>;
PLATFORM_EXPORT void SetExecutor(const Executor& executor);  ///< An empty one gives the pool back.
/// Makes TK_GetNumThreads fail with this code; 0 ends that.
PLATFORM_EXPORT void SetThreadCountError(int code);

// --- processor -------------------------------------------------------------------------------------
enum class ProcessorLevel { plain = 0, vector = 1, faster = 2 };
/// Sets the processor flags as if the processor ended at this level; never above what it has.
PLATFORM_EXPORT void SetProcessorLevel(ProcessorLevel level);
PLATFORM_EXPORT ProcessorLevel DetectedProcessorLevel();

// --- reports and log -------------------------------------------------------------------------------
enum class ReportKind { error, error_string, failed_verification };
struct Report {
    ReportKind kind;
    int site;
    int severity;
    std::string text;  ///< UTF-8
};
/// Receives every report that no quiet section holds back, on the thread that made it, one at a time.
using ReportSink = boost::function<void(const Report&)>;
PLATFORM_EXPORT void SetReportSink(const ReportSink& sink);  ///< An empty one: standard error.
using LogSink = boost::function<void(int level, const std::string& line)>;
PLATFORM_EXPORT void SetLogSink(const LogSink& sink);  ///< An empty one: nowhere.

// --- memory ----------------------------------------------------------------------------------------
struct MemoryCounts {
    std::int64_t allocations;     ///< through every routine of TK_Memory.h, from the start
    std::int64_t blocks_in_use;   ///< not yet freed; a block that waits in the recycled pool is free
    std::int64_t recycled_bytes;  ///< bytes that wait in the recycled pool
    std::int64_t recycled_hits;   ///< requests that the pool answered
    std::int64_t handle_locks;    ///< of all handles, not yet given back
};
PLATFORM_EXPORT MemoryCounts Memory();
/// The n-th allocation from now on fails (1 is the next one), once; 0 ends that. Counts all threads.
PLATFORM_EXPORT void FailAllocation(std::int64_t nth);
/// Gives the recycled pool's waiting blocks back to the system. @return bytes freed
PLATFORM_EXPORT std::int64_t PurgeRecycled();

// --- frames and registry ---------------------------------------------------------------------------
/// A frame without pixels, for tests of what refuses it. Those of other formats than the processor's pass for frames on
/// a GPU. Lives until disposed.
PLATFORM_EXPORT VPix** NewFakeFrame(tesselmediatypes::PixelFormat format);
PLATFORM_EXPORT int LiveFakeFrames();
/// Makes HCL_GetXIFAddressProc fail with this code; 0 ends that.
PLATFORM_EXPORT void SetRegistryError(int code);

}  // namespace standalone
