// SPDX-License-Identifier: Apache-2.0
#include "platform/standalone/SH_ColourContext.h"

#include <lcms2_plugin.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "platform/TK_Memory.h"
#include "platform/TK_Report.h"
#include "platform/standalone/Colour.h"

namespace standalone {

/// Stands before each block that the colour library gets. Blocks of an arena are a list, of which any can go.
struct alignas(16) ColourArena::Block {
    Block *newer, *older;
    Block** newest;  ///< of its arena; null of a block that is in none
    std::size_t bytes;
};

namespace {

using Block = ColourArena::Block;

/// Above what any profile of an allowed size needs: a damaged one asks for no more of the machine.
constexpr std::size_t kArenaBytes = std::size_t{1} << 30;

/// A call of the colour library on this thread, and the way out of it.
struct Fence {
    std::jmp_buf way_out;
    Block** newest;
    std::size_t bytes;
    bool out_of_memory;
};
thread_local Fence* fence = nullptr;
thread_local std::array<char, 256> heard{};       ///< of the library, since the call began
thread_local std::array<char, 512> last_fault{};  ///< for LastColourFault
thread_local const cmsPipeline* last_pipeline = nullptr;

void CopyText(char* to, std::size_t size, const char* text) {
    const std::size_t length = std::min(std::strlen(text), size - 1);
    std::copy_n(text, length, to);
    to[length] = '\0';
}

// --- memory ----------------------------------------------------------------------------------------

/// The context's own memory is there from the start, so that a context is never half made: the library keeps a list of
/// them, which such a one would stay in. Used once, while the only context is made.
struct Reserve {
    alignas(16) std::array<std::byte, 16384> bytes;  // of which version 2.14 takes a twentieth
    std::size_t used;
};
Reserve reserve{};
bool reserve_is_open = false;

void* FromReserve(std::size_t bytes) {
    const std::size_t wanted = (bytes + 15) / 16 * 16;
    if (wanted > reserve.bytes.size() - reserve.used) return nullptr;
    void* const block = reserve.bytes.data() + reserve.used;
    reserve.used += wanted;
    return block;
}
bool IsOfReserve(const void* block) {
    const auto* const first = reserve.bytes.data();
    return std::less_equal<>()(static_cast<const void*>(first), block) &&
           std::less<>()(block, static_cast<const void*>(first + reserve.bytes.size()));
}

void* DataOf(Block* block) { return block + 1; }
Block* BlockOf(void* data) { return static_cast<Block*>(data) - 1; }

void* Allocate(cmsContext, cmsUInt32Number bytes) {
    if (fence == nullptr && reserve_is_open) return FromReserve(bytes);
    if (fence != nullptr && bytes > kArenaBytes - fence->bytes) std::longjmp(fence->way_out, 1);
    auto* const block = static_cast<Block*>(TK_AllocatePtr(0, "colours", sizeof(Block) + bytes));
    if (block == nullptr) {
        if (fence == nullptr) return nullptr;
        fence->out_of_memory = true;
        std::longjmp(fence->way_out, 1);
    }
    *block = {nullptr, nullptr, nullptr, bytes};
    if (fence == nullptr) return DataOf(block);
    fence->bytes += bytes;
    block->newest = fence->newest;
    block->older = *fence->newest;
    if (block->older != nullptr) block->older->newer = block;
    *fence->newest = block;
    return DataOf(block);
}

void Free(cmsContext, void* data) {
    if (data == nullptr || IsOfReserve(data)) return;
    Block* const block = BlockOf(data);
    if (block->newer != nullptr) block->newer->older = block->older;
    if (block->older != nullptr) block->older->newer = block->newer;
    if (block->newest != nullptr && *block->newest == block) *block->newest = block->older;
    if (fence != nullptr) fence->bytes -= std::min(fence->bytes, block->bytes);
    TK_FreePtr(block);
}

void* Reallocate(cmsContext context, void* data, cmsUInt32Number bytes) {
    void* const moved = Allocate(context, bytes);
    if (moved == nullptr || data == nullptr || IsOfReserve(data)) return moved;
    std::memcpy(moved, data, std::min<std::size_t>(bytes, BlockOf(data)->bytes));
    Free(context, data);
    return moved;
}

// --- the context -----------------------------------------------------------------------------------

void Hear(cmsContext, cmsUInt32Number, const char* text) { CopyText(heard.data(), heard.size(), text); }

cmsBool NoteTransform(_cmsTransform2Fn*, void**, _cmsFreeUserDataFn*, cmsPipeline** pipeline, cmsUInt32Number*,
                      cmsUInt32Number*, cmsUInt32Number*) {
    last_pipeline = *pipeline;
    return FALSE;  // the library is to make the transform itself
}
cmsBool LeaveAsItIs(cmsPipeline**, cmsUInt32Number, cmsUInt32Number*, cmsUInt32Number*, cmsUInt32Number*) {
    return TRUE;  // no other optimisation is tried
}

/// Objects that are still changed belong to one thread; a lock would be lost when a call is left by a jump.
void* NoMutex(cmsContext) { return &reserve; }
void NoMutexToDestroy(cmsContext, void*) {}
cmsBool NoMutexToLock(cmsContext, void*) { return TRUE; }
void NoMutexToUnlock(cmsContext, void*) {}

constexpr cmsUInt32Number kPluginVersion = 2080;  ///< from which on the factory of transforms has its present form
cmsPluginBase Base(cmsUInt32Number kind, cmsPluginBase* next) {
    return {cmsPluginMagicNumber, kPluginVersion, kind, next};
}

cmsContext MakeContext() {
    cmsPluginOptimization optimization{Base(cmsPluginOptimizationSig, nullptr), LeaveAsItIs};
    cmsPluginTransform transform{Base(cmsPluginTransformSig, &optimization.base), {}};
    transform.factories.xform = NoteTransform;
    cmsPluginMutex mutex{Base(cmsPluginMutexSig, &transform.base), NoMutex, NoMutexToDestroy, NoMutexToLock,
                         NoMutexToUnlock};
    cmsPluginMemHandler memory{
        Base(cmsPluginMemHandlerSig, &mutex.base), Allocate, Free, Reallocate, nullptr, nullptr, nullptr};
    reserve.used = 0;
    reserve_is_open = true;
    const cmsContext context = cmsCreateContext(&memory, nullptr);
    reserve_is_open = false;
    if (context == nullptr) throw std::bad_alloc();
    cmsSetLogErrorHandlerTHR(context, Hear);
    return context;
}

cmsContext Context() {
    static const cmsContext context = MakeContext();
    return context;
}

/// @return whether the call came to its end, with its result in `*done`
bool RunFenced(Fence* own, cmsContext context, bool (*call)(cmsContext, const void*), const void* job, bool* done) {
    fence = own;
    const bool came_back = setjmp(own->way_out) == 0;
    if (came_back) *done = call(context, job);
    fence = nullptr;
    return came_back;
}

}  // namespace

void ColourArena::run(CMX_Error code, const char* what, bool (*call)(cmsContext, const void*), const void* job) {
    const cmsContext context = Context();
    const TK_QuietErrors quiet;
    Fence own{};
    own.newest = &newest_;
    heard[0] = '\0';
    bool done = false;
    if (!RunFenced(&own, context, call, job, &done)) {
        if (own.out_of_memory) throw std::bad_alloc();
        throw ColourFault(code, std::string(what) + ": it asks for too much memory");
    }
    if (done) return;
    throw ColourFault(code, heard[0] == '\0' ? what : std::string(what) + ": " + heard.data());
}

void ColourArena::drop() {
    while (newest_ != nullptr) {
        Block* const older = newest_->older;
        TK_FreePtr(newest_);
        newest_ = older;
    }
}

const cmsPipeline* LastColourPipeline() { return last_pipeline; }

void RememberColourFault(const char* text) noexcept { CopyText(last_fault.data(), last_fault.size(), text); }

void TellColourFault(CMX_Error error, std::string* fault) noexcept {
    if (error == 0 || fault == nullptr) return;
    try {
        *fault = last_fault.data();
    } catch (const std::bad_alloc&) {
        *fault = kNoMemoryForColours;  // short enough to need none
    }
}

std::string LastColourFault() { return last_fault.data(); }

}  // namespace standalone
