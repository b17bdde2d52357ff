// SPDX-License-Identifier: Apache-2.0
// Eight unclipped bilinear samples of 8 bits at a time, their channels apart.
#include <immintrin.h>

#include "QX/sampling/QX_Runs.h"
#include "QX/sampling/QX_SampForms.h"

#pragma GCC diagnostic ignored "-Wpsabi"  // vectors stay inside this file

namespace qx::avx2 {
namespace {

typedef std::int32_t Int [[gnu::vector_size(32)]];
typedef std::uint32_t Word [[gnu::vector_size(32)]];  // positions, which wrap
typedef float Real [[gnu::vector_size(32)]];
typedef std::int64_t Pairs [[gnu::vector_size(32)]];

constexpr int kLanes = kRunLanes;

/// The eight corners of one kind, as stored.
struct Taps {
    Int left, right;
};

/// Two neighbours a position, from rows' starts and distances in bytes.
QX_INLINE Taps load_taps(const std::byte* base, const std::ptrdiff_t (&offset)[kLanes]) {
    const auto pair = [&](int i) __attribute__((always_inline)) {
        std::int64_t two;
        __builtin_memcpy(&two, base + offset[i], sizeof two);
        return two;
    };
    // In this order the shuffles below give the eight in theirs.
    const Pairs a{pair(0), pair(1), pair(4), pair(5)}, b{pair(2), pair(3), pair(6), pair(7)};
    return {(Int)_mm256_shuffle_ps((__m256)a, (__m256)b, 0x88), (Int)_mm256_shuffle_ps((__m256)a, (__m256)b, 0xDD)};
}

QX_INLINE Real channel(Int pixels, int shift) { return __builtin_convertvector(pixels >> shift & 255, Real); }
QX_INLINE bool all(Int mask) { return _mm256_movemask_epi8((__m256i)mask) == -1; }

struct Corners {
    Taps top, bottom;

    QX_INLINE Int differences() const {
        return (top.left ^ top.right) | (top.left ^ bottom.left) | (top.left ^ bottom.right);
    }
    /// Down, then across.
    QX_INLINE Real two_stage(int shift, Real fx, Real fy) const {
        const Real tl = channel(top.left, shift), tr = channel(top.right, shift);
        const Real left = tl + (channel(bottom.left, shift) - tl) * fy;
        const Real right = tr + (channel(bottom.right, shift) - tr) * fy;
        return (right - left) * fx + left;
    }
};

QX_INLINE Int rounded(Real v) { return __builtin_convertvector(v + 0.5f, Int); }

/// Colours by their share in alpha; none survive under an alpha that rounds to nothing. Apart, so that the common case
/// keeps its registers.
[[gnu::noinline]] Int by_alpha(const Corners& c, const Real& fx, const Real& fy) {
    const Real w3 = fx * fy, w1 = fx - w3, w2 = fy - w3, w0 = ((1.0f - w1) - w2) - w3;
    const Real a0 = w0 * channel(c.top.left, 0), a1 = w1 * channel(c.top.right, 0);
    const Real a2 = w2 * channel(c.bottom.left, 0), a3 = w3 * channel(c.bottom.right, 0);
    const Real alpha = (a3 + a2) + (a1 + a0);
    const Int visible = alpha >= 0.5f;
    const Real share = 1.0f / (visible ? alpha : alpha - alpha + 1.0f);
    Int out = rounded(alpha);
    for (int shift = 8; shift <= 24; shift += 8) {
        const Real sum = (a3 * channel(c.bottom.right, shift) + a2 * channel(c.bottom.left, shift)) +
                         (a1 * channel(c.top.right, shift) + a0 * channel(c.top.left, shift));
        const Int v = rounded(sum * share);
        out |= (v > 255 ? v - v + 255 : v) << shift;
    }
    return visible ? out : out - out;
}

/// With equal alphas: the mix of colours under the alpha that is there.
QX_INLINE Int under_alpha(const Corners& c, Real fx, Real fy) {
    const Int alpha = c.top.left & 255;
    Int out = alpha;
    for (int shift = 8; shift <= 24; shift += 8) out |= rounded(c.two_stage(shift, fx, fy)) << shift;
    return alpha == 0 ? alpha : out;
}

QX_INLINE Int sample(const Corners& c, Int x, Int y) {
    const Real fx = __builtin_convertvector(x & 0xFFFF, Real) * 0x1p-16f;
    const Real fy = __builtin_convertvector(y & 0xFFFF, Real) * 0x1p-16f;
    const Int differences = c.differences();
    const Int as_it_is = (differences == 0) | (((x | y) & 0xFFFF) == 0);
    const Int one_alpha = (differences & 255) == 0;
    Int out = under_alpha(c, fx, fy);
    if (!all(one_alpha | as_it_is)) out = one_alpha ? out : by_alpha(c, fx, fy);
    return as_it_is ? c.top.left : out;
}

}  // namespace

std::uint32_t two_stage_run(std::int32_t count, FixedPoint at, FixedPoint step, const QX_LayerDef& world,
                            QX_Pixel8* out) {
    const auto* base = static_cast<const std::byte*>(world.data);
    const std::ptrdiff_t rowbytes = world.rowbytes;
    const Word lane{0, 1, 2, 3, 4, 5, 6, 7};
    const auto dx = static_cast<std::uint32_t>(step.x), dy = static_cast<std::uint32_t>(step.y);
    Word x = static_cast<std::uint32_t>(at.x) + lane * dx, y = static_cast<std::uint32_t>(at.y) + lane * dy;
    auto px = static_cast<std::uint32_t>(at.x), py = static_cast<std::uint32_t>(at.y);
    Int alphas{};
    for (std::int32_t i = 0; i < count; i += kLanes) {
        std::ptrdiff_t offset[kLanes];
        for (std::ptrdiff_t& pixel : offset) {
            pixel = (static_cast<std::int32_t>(py) >> 16) * rowbytes +
                    (static_cast<std::int32_t>(px) >> 16) * std::ptrdiff_t{4};
            px += dx;
            py += dy;
        }
        const Corners corners{load_taps(base, offset), load_taps(base + rowbytes, offset)};
        const Int pixels = sample(corners, (Int)x, (Int)y);
        __builtin_memcpy(out + i, &pixels, sizeof pixels);
        alphas += pixels & 255;
        x += dx * kLanes;
        y += dy * kLanes;
    }
    std::uint32_t sum = 0;
    for (int k = 0; k < kLanes; ++k) sum += static_cast<std::uint32_t>(alphas[k]);
    return sum;
}

std::int32_t nearest_run(std::int32_t count, std::int64_t x, std::int32_t step, const QX_Pixel8* row,
                         std::int32_t width, std::uint32_t* sum, QX_Pixel8* out) {
    const Word distance = Word{0, 1, 2, 3, 4, 5, 6, 7} * static_cast<std::uint32_t>(step);
    Int alphas{};
    std::int32_t i = 0;
    for (; i + kLanes <= count && (x >> 16) + kLanes <= width; i += kLanes, x += std::int64_t{step} * kLanes) {
        const Word place = (distance + static_cast<std::uint32_t>(x & 0xFFFF)) >> 16;  // at most the seventh neighbour
        Int pixels;
        __builtin_memcpy(&pixels, row + (x >> 16), sizeof pixels);
        pixels = (Int)_mm256_permutevar8x32_epi32((__m256i)pixels, (__m256i)place);
        __builtin_memcpy(out + i, &pixels, sizeof pixels);
        alphas += pixels & 255;
    }
    for (int k = 0; k < kLanes; ++k) *sum += static_cast<std::uint32_t>(alphas[k]);
    return i;
}

}  // namespace qx::avx2
