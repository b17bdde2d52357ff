// SPDX-License-Identifier: Apache-2.0
// Body of the kernels of colour chains, for one level. A bundle of pixels is read into planes, each colour goes through
// its curve, the matrix mixes them, each goes through its curve again.
#include "lanes/Level.h"
#include "lanes/PixelAccess.h"
#include "lanes/Scattered.h"
#include "platform/standalone/SH_ColourKernels.h"

namespace qx::QX_ISA {

using Ints = Wide<std::int32_t>;
using Floats = Wide<float>;
using Bundle = Planes<Ints>;
struct Colour {
    Floats r, g, b;
};

QX_INLINE Ints bits_of(Floats x) {
    Ints bits;
    __builtin_memcpy(&bits, &x, sizeof bits);
    return bits;
}
QX_INLINE Floats of_bits(Ints bits) {
    Floats x;
    __builtin_memcpy(&x, &bits, sizeof x);
    return x;
}

/// Values at places of each lane. Loads one by one, by two places a word: the gathers of processors are slower, those
/// of AVX2 by half.
QX_INLINE Floats value_at(const float* values, Ints place) {
#ifdef __SSE4_1__
    std::uint64_t two[lanes_in<Ints> / 2];
    __builtin_memcpy(two, &place, sizeof two);
    const auto four = [&](int k) QX_LAMBDA {
        const auto at = [&](std::uint64_t i) QX_LAMBDA { return load_lanes<int>(values + i); };
        const std::uint64_t low = two[2 * k], high = two[2 * k + 1];
        __m128i v = _mm_cvtsi32_si128(at(low & 0xFFFFFFFF));
        v = _mm_insert_epi32(v, at(low >> 32), 1);
        v = _mm_insert_epi32(v, at(high & 0xFFFFFFFF), 2);
        return _mm_insert_epi32(v, at(high >> 32), 3);
    };
    return (Floats)joined<Ints>(four);
#else
    return values[place];
#endif
}

/// The same of 256 values, in registers where these have 64 bytes: pairs of them answer for 32 values each.
QX_INLINE Floats value_of_byte(const float* values, Ints place) {
#ifdef __AVX512BW__
    const auto part = [&](int k) QX_LAMBDA { return _mm512_loadu_ps(values + 16 * k); };
    const auto among = [&](int k)
                           QX_LAMBDA { return _mm512_permutex2var_ps(part(2 * k), (__m512i)place, part(2 * k + 1)); };
    const auto has = [&](int bit) QX_LAMBDA { return _mm512_test_epi32_mask((__m512i)place, _mm512_set1_epi32(bit)); };
    const auto two = [&](int k) QX_LAMBDA { return _mm512_mask_blend_ps(has(32), among(k), among(k + 1)); };
    const auto four = [&](int k) QX_LAMBDA { return _mm512_mask_blend_ps(has(64), two(k), two(k + 2)); };
    return (Floats)_mm512_mask_blend_ps(has(128), four(0), four(4));
#else
    return value_at(values, place);
#endif
}

// --- powers ----------------------------------------------------------------------------------------
/// Of most pixels the scales are among the first 16 above zero.
QX_INLINE Floats scale_at(const PowerCurve& curve, Ints place) {
#ifdef __AVX512BW__
    const auto near = (__m512i)greater(place - curve.first, Ints{});
    const auto part = [&](int k) QX_LAMBDA { return _mm512_loadu_ps(curve.scales + curve.first + 16 * k); };
    const auto all_below = [&](int n) QX_LAMBDA { return _mm512_cmpge_epi32_mask(near, _mm512_set1_epi32(n)) == 0; };
    if (all_below(16)) return (Floats)_mm512_permutexvar_ps(near, part(0));
    if (all_below(64)) {
        const __mmask16 upper = _mm512_test_epi32_mask(near, _mm512_set1_epi32(32));
        return (Floats)_mm512_mask_blend_ps(upper, _mm512_permutex2var_ps(part(0), near, part(1)),
                                            _mm512_permutex2var_ps(part(2), near, part(3)));
    }
#elif defined __AVX2__
    const Ints near = greater(place - curve.first, Ints{});
    if (all(near < 16)) {
        const auto part = [&](int k) QX_LAMBDA {
            return _mm256_permutevar8x32_ps(_mm256_loadu_ps(curve.scales + curve.first + 8 * k), (__m256i)near);
        };
        return near < 8 ? (Floats)part(0) : (Floats)part(1);
    }
#endif
    return value_at(curve.scales, place);
}

template <int Terms> QX_INLINE Floats power_of(const PowerCurve& curve, Floats x) {
    constexpr std::int32_t root_of_half = 0x3F3504F3;  // as bits
    const Ints bits = bits_of(greater(x + curve.shift, splat<Floats>(0x1p-126f)));
    const Ints exponent = (bits - root_of_half) >> 23;
    const Floats u = of_bits(bits - (exponent << 23)) - 1.0f;
    Floats sum = splat<Floats>(curve.terms[Terms - 1]);
    for (int i = Terms - 2; i >= 0; --i) sum = sum * u + curve.terms[i];
    const Floats power = (sum * u + 1.0f) * scale_at(curve, exponent + 126) + curve.lift;
    return x < curve.limit ? x * curve.slope + curve.foot : power;
}

void power(const PowerCurve& curve, int terms, std::int64_t count, const float* x, float* y) {
    for (std::int64_t i = 0; i < count; ++i) {
        const auto at = splat<Floats>(x[i]);
        const Floats found =
            terms == kPowerTerms8 ? power_of<kPowerTerms8>(curve, at) : power_of<kPowerTerms>(curve, at);
        __builtin_memcpy(y + i, &found, sizeof *y);
    }
}

// --- steps -----------------------------------------------------------------------------------------
/// The colour library's own way to the nearest step, which begins one in 131,072 of a step early: what lies 32,767
/// below the step is rounded to 16.16. What is no number goes where it goes there.
inline constexpr float kStepOfNone = 32767.0f / 65535;
inline constexpr double kFixed = 65535.0 * 65536, kFixedStart = -32766.5 * 65536;

/// Registers find the step without doubles: one that is right or one too low, then what is left of x * 65535, of which
/// x * 65536 less the step is exact, and so is that less where the next step begins.
template <class F> QX_INLINE auto step_of(F x) {
    if constexpr (!is_wide<F>) {
        const std::int64_t fixed = _mm_cvtsd_si64(_mm_set_sd(double{x} * kFixed + kFixedStart));
        return static_cast<std::int32_t>(fixed >> 16) + 32767;
    } else {
        constexpr float next = 0.5f - 0x1p-17f;
        const auto low = truncate_to_int(x * 65535.0f + 0.49f);
        const F left = x * 65536.0f - to_float(low);
        return low - (Vector<std::int32_t, sizeof(F)>)(left - next >= x);
    }
}
/// Gathers where that is asked for: in registers of 64 bytes single loads are slower.
template <bool Gathers> QX_INLINE Floats value_of_step(const float* values, Floats x) {
    const Floats limited = lesser(greater(x, Floats{}), splat<Floats>(1.0f));
    const Ints place = step_of(x == x ? limited : splat<Floats>(kStepOfNone));
    return Gathers ? of_bits(gather(values, place * 4)) : value_at(values, place);
}

// --- curves ----------------------------------------------------------------------------------------
template <CurveKind Kind, int Terms, bool FromFloats> QX_INLINE Floats through(const ColourCurves& c, int i, Floats x) {
    constexpr bool gathers = FromFloats && kRegister == 64;
    if constexpr (Kind == CurveKind::steps) return value_of_step<gathers>(c.values[i], x);
    Floats y = x;
    if constexpr (Kind == CurveKind::power) y = power_of<Terms>(*c.powers[i], x);
    if constexpr (FromFloats) {
        y = x >= c.lowest ? y : splat<Floats>(c.outside);
        y = x <= c.highest ? y : splat<Floats>(c.outside);
    }
    return y;
}

/// Bundles between memory and planes, floats as their bits. One pixel goes through a copy: what lies in memory is
/// floats.
template <Channels As, class Pixel> QX_INLINE Bundle load_bundle(const Pixel* p) {
    if constexpr (is_wide<Ints>) return load_pixels<Bundle, As>(p);
    Pixel one;
    __builtin_memcpy(&one, p, sizeof one);
    return load_pixels<Bundle, As>(&one);
}
template <class Pixel> QX_INLINE void store_bundle(Pixel* p, const Bundle& bundle) {
    if constexpr (is_wide<Ints>) {
        store_pixels(p, bundle);
    } else {
        Pixel one;
        store_pixels(&one, bundle);
        __builtin_memcpy(p, &one, sizeof one);
    }
}

template <CurveKind Kind, class From> QX_INLINE Colour enter(const ColourCurves& curves, const From* p) {
    const Bundle read = load_bundle<Channels::limited>(p);
    const auto one = [&](int i, Ints c) QX_LAMBDA {
        if constexpr (Kind == CurveKind::codes) {
            return sizeof(From) == 4 ? value_of_byte(curves.values[i], c) : value_at(curves.values[i], c);
        } else {
            return through<Kind, kPowerTerms, true>(curves, i, of_bits(c));
        }
    };
    return {one(0, read.r), one(1, read.g), one(2, read.b)};
}

/// Each colour, and what the others differ from it: where a row sums to 1, greys stay as they are to the last bit, on
/// whichever side of a leap in the curve out.
QX_INLINE Colour mixed(const ColourChain& chain, const Colour& c) {
    const auto row = [&](int i, Floats own, Floats second, Floats third) QX_LAMBDA {
        const auto& m = chain.matrix[i];
        return own * m[0] + ((second - own) * m[1] + (third - own) * m[2]) + chain.offset[i];
    };
    return {row(0, c.r, c.g, c.b), row(1, c.g, c.b, c.r), row(2, c.b, c.r, c.g)};
}

/// A channel from a float, as its bits. What is no number becomes 0 at integers.
template <class Channel> QX_INLINE Ints channel_of(const ColourChain& chain, Floats x) {
    const auto limited = [](Floats v, float full)
                             QX_LAMBDA { return lesser(greater(v, Floats{}), splat<Floats>(full)); };
    if constexpr (sizeof(Channel) == 4) {
        return bits_of(chain.clip ? limited(x, 1.0f) : x);
    } else {
        constexpr float full = sizeof(Channel) == 1 ? 255.0f : 32768.0f;
        return truncate_to_int(limited(x * full + 0.5f, full));
    }
}

/// The lane of pixels of type From that holds the pixel of a lane of pixels of type To.
template <class From, class To> constexpr int lane_from(int lane) {
    int i = 0;
    while (pixel_of_lane<Bundle, From>(i) != pixel_of_lane<Bundle, To>(lane)) ++i;
    return i;
}
/// Lanes of one order of pixels in that of another.
template <class From, class To> QX_INLINE Ints in_order(Ints v) {
    if constexpr (sizeof(From) == sizeof(To) || kRegister <= 16) {
        return v;
    } else {
        return reordered(v, v, [](int lane) { return lane_from<From, To>(lane); });
    }
}

template <CurveKind In, CurveKind Out, class From, class To>
QX_INLINE void bundle(const ColourChain& chain, const From* src, To* dst) {
    using Channel = decltype(dst->alpha);
    const Colour c = mixed(chain, enter<In>(chain.in, src));
    const auto leave = [&](int i, Floats x) QX_LAMBDA {
        constexpr int terms = sizeof(Channel) == 1 ? kPowerTerms8 : kPowerTerms;
        const Floats y = through<Out, terms, In != CurveKind::codes>(chain.out, i, x);
        return in_order<From, To>(channel_of<Channel>(chain, y));
    };
    store_pixels(dst, Bundle{load_bundle<Channels::as_stored>(dst).a, leave(0, c.r), leave(1, c.g), leave(2, c.b)});
}

/// What is left at the end goes through copies of a bundle's size.
template <CurveKind In, CurveKind Out, class From, class To>
void run(const ColourChain& chain, std::int64_t count, const void* src, void* dst) {
    constexpr int size = pixels_in<Bundle>;
    const auto* from = static_cast<const From*>(src);
    auto* to = static_cast<To*>(dst);
    for (; count >= size; count -= size, from += size, to += size) bundle<In, Out>(chain, from, to);
    if (count > 0) {
        From source[size]{};
        To target[size]{};
        const auto left = static_cast<std::size_t>(count);
        __builtin_memcpy(source, from, left * sizeof(From));
        __builtin_memcpy(target, to, left * sizeof(To));
        bundle<In, Out>(chain, source, target);
        __builtin_memcpy(to, target, left * sizeof(To));
    }
}

template <CurveKind In, class From, class Eight = ColourPixel<std::uint8_t>, class Sixteen = ColourPixel<std::uint16_t>,
          class Real = ColourPixel<FloatBits>>
inline constexpr ColourKernels::Runs runs_from{
    {{&run<In, CurveKind::line, From, Eight>, &run<In, CurveKind::power, From, Eight>,
      &run<In, CurveKind::steps, From, Eight>},
     {&run<In, CurveKind::line, From, Sixteen>, &run<In, CurveKind::power, From, Sixteen>,
      &run<In, CurveKind::steps, From, Sixteen>},
     {&run<In, CurveKind::line, From, Real>, &run<In, CurveKind::power, From, Real>,
      &run<In, CurveKind::steps, From, Real>}}};

const ColourKernels colour_kernels{
    {runs_from<CurveKind::codes, ColourPixel<std::uint8_t>>, runs_from<CurveKind::codes, ColourPixel<std::uint16_t>>},
    {runs_from<CurveKind::line, ColourPixel<FloatBits>>, runs_from<CurveKind::power, ColourPixel<FloatBits>>,
     runs_from<CurveKind::steps, ColourPixel<FloatBits>>},
    &power};

}  // namespace qx::QX_ISA
