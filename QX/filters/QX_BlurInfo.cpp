// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_BlurInfo.h"

#include <algorithm>
#include <cmath>

#include "QX/filters/QX_GaussianKernel.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/iterate/QX_ParallelRun.h"
#include "platform/TK_Memory.h"

namespace qx {

namespace {

constexpr std::size_t kCacheLine = 64;
constexpr std::size_t whole_cache_lines(std::size_t bytes) {
    return (bytes + kCacheLine - 1) / kCacheLine * kCacheLine;
}

std::size_t threads() { return static_cast<std::size_t>(std::max(acceleration.bands, 1)); }

struct Attempt {
    std::size_t bytes;
    void* block;
};
void try_once(void* context, bool* success) {
    auto* attempt = static_cast<Attempt*>(context);
    attempt->block = TK_AllocatePtr(site(Place::blur), text_of(Text::blurring), attempt->bytes);
    *success = attempt->block != nullptr;
}

}  // namespace

BlurLines::BlurLines(const QX_World& world, bool vertical, GK::AlphaType alpha_type)
    : count(vertical ? world.width : world.height),
      length(vertical ? world.height : world.width),
      along(vertical ? world.origin_y : world.origin_x),
      across(vertical ? world.origin_x : world.origin_y),
      line_step(vertical ? static_cast<std::ptrdiff_t>(world.PixelSize()) : world.rowbytes),
      pixel_step(vertical ? world.rowbytes : static_cast<std::ptrdiff_t>(world.PixelSize())),
      pixel_bytes(world.PixelSize()),
      alpha(alpha_type),
      first(static_cast<std::byte*>(world.data)) {}

BlurMemory::BlurMemory(std::size_t bytes) : bytes_(bytes) {
    if (bytes == 0) return;
    const TK_QuietErrors quiet;
    Attempt attempt{bytes, nullptr};
    throw_if(TK_PurgeLoop(bytes, try_once, &attempt, 1));
    block_ = attempt.block;
    TK_AccountAllocationEx("blur", static_cast<std::int64_t>(bytes));
}

BlurMemory::~BlurMemory() {
    if (block_ == nullptr) return;
    TK_FreePtr(block_);
    TK_AccountAllocationEx("blur", -static_cast<std::int64_t>(bytes_));
}

BlurBuffers::BlurBuffers(std::size_t bytes)
    : bytes_(whole_cache_lines(bytes)), memory_(bytes == 0 ? 0 : threads() * bytes_ + kCacheLine) {}

std::byte* BlurBuffers::of(std::int32_t thread) const {
    if (bytes_ == 0) return nullptr;
    auto* const block = static_cast<std::byte*>(memory_.get());
    return block + -reinterpret_cast<std::uintptr_t>(block) % kCacheLine + static_cast<std::size_t>(thread) * bytes_;
}

}  // namespace qx

QXp_CPUBlur1DInfo::QXp_CPUBlur1DInfo(float radius, std::uint32_t conv_flags, const qx::BlurLines& src,
                                     const qx::BlurLines& dst, bool copy_lines, std::size_t group_bytes)
    : Blur_1DImgOpInfo(src.alpha, static_cast<int>(src.length), src.stride(), dst.alpha, static_cast<int>(dst.length),
                       dst.stride()),
      radius_(radius),
      reach_(static_cast<std::int64_t>(std::ceil(radius))),
      offset_(std::int64_t{dst.along} - src.along),
      conv_flags_(conv_flags),
      mattes_(src.alpha == GK::kAlphaType_Straight && (conv_flags & 14) != 0),
      copies_(copy_lines),
      weights_(static_cast<std::size_t>(reach_ + 1) * sizeof(std::int32_t)),
      divisors_(static_cast<std::size_t>(dst.length) * sizeof(std::int32_t)),
      buffers_(group_bytes != 0 ? group_bytes
               : needs_line()   ? static_cast<std::size_t>(src.length) * src.pixel_bytes + 16
                                : 0) {
    fill_weights();
    fill_divisors();
}

qx::GaussianLines QXp_CPUBlur1DInfo::lines() const {
    return {.reach = reach_,
            .weights = static_cast<const std::int32_t*>(weights_.get()),
            .divisors = static_cast<const std::int32_t*>(divisors_.get()),
            .offset = offset_,
            .conv_flags = conv_flags_};
}

void QXp_CPUBlur1DInfo::fill_weights() {
    auto* const weights = static_cast<std::int32_t*>(weights_.get());
    weights[0] = 255;
    for (std::int64_t i = 1; i <= reach_; ++i) {
        weights[i] = static_cast<std::int32_t>(255.0 * QXp_GaussianValue(static_cast<double>(i) / (radius_ + 1.0)));
    }
}

/// Sums from the left end of the kernel on, by which a sum over a part of it is a difference.
void QXp_CPUBlur1DInfo::fill_divisors() {
    const qx::BlurMemory memory(static_cast<std::size_t>(2 * reach_ + 2) * sizeof(std::int32_t));
    auto* const sums = static_cast<std::int32_t*>(memory.get());
    const auto* const weights = static_cast<const std::int32_t*>(weights_.get());
    auto* const divisors = static_cast<std::int32_t*>(divisors_.get());
    sums[0] = 0;
    for (std::int64_t i = 0; i < 2 * reach_ + 1; ++i) sums[i + 1] = sums[i] + weights[std::abs(i - reach_)];
    for (std::int64_t i = 0; i < GetDstLength(); ++i) {
        std::int64_t first = 0, end = 2 * reach_ + 1;
        if ((conv_flags_ & 16) != 0) {
            const std::int64_t left = i + offset_ - reach_;  // where the kernel's left end lies
            first = std::clamp<std::int64_t>(-left, 0, end);
            end = std::clamp<std::int64_t>(GetSrcLength() - left, first, end);
        }
        divisors[i] = sums[end] - sums[first];
    }
}

QXp_CPUBoxBlur1DInfo::QXp_CPUBoxBlur1DInfo(float radius, std::uint32_t conv_flags, int iterations,
                                           const qx::BlurLines& src, const qx::BlurLines& dst, bool copy_lines)
    : BoxBlur_1DImgOpInfo(radius, conv_flags, iterations, src.alpha, src.along, static_cast<int>(src.length),
                          src.stride(), dst.alpha, dst.along, static_cast<int>(dst.length), dst.stride(), copy_lines),
      window_(radius, conv_flags) {}

void QXp_CPUBoxBlur1DInfo::make_buffers(int count, std::size_t bytes) {
    buffer_bytes_ = bytes;
    buffers_.emplace(static_cast<std::size_t>(count) * bytes);
}

std::byte* QXp_CPUBoxBlur1DInfo::buffer(std::int32_t thread, int which) const {
    return buffers_->of(thread) + static_cast<std::size_t>(which) * buffer_bytes_;
}
