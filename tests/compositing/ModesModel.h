// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "QX/compositing/QX_CompositeMode.h"
#include "tests/support/DepthModel.h"

/// The transfer modes once more, one pixel at a time and without regard to speed. Nothing here calls the library. Every
/// mode stands once, over the arithmetic of a depth `K`; where a depth has an order of its own, it is told. A filtered
/// mode sees its destination filtered.
namespace qx::test::model {

enum class Pivot { none, black, white, grey };  ///< of the filters around a row

inline bool among(int xfer, std::initializer_list<int> modes) {
    return std::find(modes.begin(), modes.end(), xfer) != modes.end();
}

/// The passes that a mode's row is made of.
inline Pivot pivot_of(int xfer) {  // of the filters before and after
    if (among(xfer, {xfer_add, xfer_screen, xfer_difference_premul, xfer_dodge_premul, xfer_exclusion}))
        return Pivot::black;
    if (among(xfer, {xfer_multiply, xfer_burn_premul})) return Pivot::white;
    return among(xfer, {xfer_overlay, xfer_hard_light}) ? Pivot::grey : Pivot::none;
}
inline bool is_filtered(int xfer) { return pivot_of(xfer) != Pivot::none; }  // the alpha merge comes after its row
inline bool is_whole(int xfer) {  // the row of xfer_behind comes before its own
    return among(xfer,
                 {xfer_hue, xfer_saturation, xfer_colour, xfer_luminosity, xfer_lighter_colour, xfer_darker_colour});
}
inline bool changes_alpha_alone(int xfer) {
    return among(xfer, {xfer_alpha_multiply, xfer_alpha_multiply_luma, xfer_alpha_multiply_inverse,
                        xfer_alpha_multiply_inverse_luma});
}
inline bool is_copy(int xfer) { return xfer == xfer_replace || xfer == xfer_copy; }
/// With rgb_only the alpha from before all passes comes back.
inline bool keeps_alpha(int xfer) {
    return !is_copy(xfer) && !changes_alpha_alone(xfer) &&
           !among(xfer, {xfer_mask_crossfade, xfer_behind, xfer_dissolve, xfer_threshold_blue, xfer_marker_guard});
}
/// Modes that leave a pixel alone when no source alpha is left. The others write always or have a test of their own.
inline bool skips_uncovered(int xfer) {
    return !is_copy(xfer) &&
           !among(xfer, {xfer_mask_crossfade, xfer_dissolve, xfer_alpha_multiply, xfer_alpha_multiply_luma,
                         xfer_premul_over, xfer_threshold_blue, xfer_marker_guard});
}

/// What a mode is run with. Source alpha is multiplied by `first`, then by `second`: mask and opacity in rows, the two
/// opacities in functions of one pixel. An absent one is full, which changes nothing.
template <class N> struct Job {
    int xfer;
    N first, second;
    bool rgb_only = false;
    std::uint32_t* seed = nullptr;  ///< of this pixel in, of the next one out; dissolve alone reads it
    bool of_rows = true;
    std::optional<N> covered = {};  ///< the effective alpha, where it is made before the mode
};

template <class N> struct AnyPx {
    N alpha;
    Colours<N> colour;
    template <class F> AnyPx& each(const F& f) {
        for (std::size_t i = 0; i < 3; ++i) colour[i] = f(colour[i], i);
        return *this;
    }
};

template <class K> struct Modes : K {
    using N = typename K::N;
    using Px = AnyPx<N>;
    using RGB = Colours<N>;
    using Run = Job<N>;
    using Light = Modes<typename K::Linear>;
    using K::full, K::half, K::real, K::mul, K::div, K::luma, K::limit, K::ratio;

    static N comp(N x) { return full - x; }
    static N combine(N s, N d) { return comp(mul(comp(s), comp(d))); }
    static N effective(const Run& job, N alpha) {
        return job.covered ? *job.covered : mul(mul(alpha, job.first), job.second);
    }
    /// From a towards b by w; at integers without a negative product.
    static N mix(N a, N b, N w) { return b < a && !real ? a - mul(a - b, w) : a + mul(b - a, w); }
    static N approach(const Run& job, N a, N b, N w) { return job.of_rows ? mix(a, b, w) : a + K::lerp(b - a, w); }

    /// The blend function of the modes that are the general composite.
    static N blend(int xfer, N cs, N cd) {
        if (xfer == xfer_soft_light && cs < half) return cd - mul(K::soft(soft_down, cd), full - 2 * cs);
        if (xfer == xfer_soft_light) return cd + mul(K::twice_over(cs), K::soft(soft_up, cd));
        if (xfer == xfer_darken) return cs < cd ? cs : cd;
        if (xfer == xfer_lighten) return cs > cd ? cs : cd;
        if (xfer == xfer_difference) return std::abs(cs - cd);
        if (xfer == xfer_dodge) return cd == 0 ? cd : ratio(cd, comp(cs));
        if (xfer == xfer_burn) return cs == 0 && cd == full ? cd : comp(ratio(comp(cd), cs));
        if (xfer == xfer_linear_dodge) return limit(cs + cd);
        if (xfer == xfer_linear_burn) return std::max<N>(0, cs + cd - full);
        if (xfer == xfer_linear_light) return limit(2 * cs - 2 * half + cd);
        if (xfer == xfer_vivid_light) return vivid_light(cs, cd);
        if (xfer == xfer_pin_light && cs < half) return std::min(K::twice(cs), cd);
        if (xfer == xfer_pin_light) return cs > half ? std::max(K::twice_above(cs), cd) : cd;
        if (xfer == xfer_hard_mix) return hard_mix(cs, cd);
        return xfer == xfer_subtract ? limit(cd - cs) : divide(cs, cd);
    }
    static N vivid_light(N cs, N cd) {
        if (cs == 0 || cs == full) return cs == full ? full : 0;
        if (cs < half) return comp(div(comp(cd), K::twice(cs)));
        return cs == half ? cd : div(cd, comp(K::twice_above(cs)));
    }
    static N hard_mix(N cs, N cd) {
        if constexpr (!real) return cd > mul(comp(cs), full - 1) ? full : 0;
        const N t = comp(cs) * N(0.99999f), x = cd - t, e = N(1.001358e-5f);
        return cd <= t ? 0 : x >= e ? full : x / e;
    }
    static N divide(N cs, N cd) {
        if constexpr (!real) return cd == 0 ? 0 : div(cd, cs);
        const N e = N(1.8189894e-6f);  // beyond it nothing is denormal
        return std::abs(cs) > e ? cd / cs : cd / e;
    }

    static N general_composite(int xfer, N s, N d, N cs, N cd) {
        const N b = blend(xfer, cs, cd), p = mul(d, s);
        if (s == full && (real || among(xfer, {xfer_soft_light, xfer_darken, xfer_lighten})))
            return mul(b - cs, d) + cs;
        return div(K::wrap(mul(d, cd) - mul(p, cd) + mul(s, cs) - mul(p, cs) + mul(b, p)), combine(s, d));
    }

    /// A channel of the filtered modes, whose alpha the merge makes. Integers have shorter forms where s is full.
    static N filtered_mode(const Run& job, N s, N cs, N cd) {
        const bool solid = s == full && !real;
        const int xfer = job.xfer;
        if (xfer == xfer_add) return limit(mul(cs, s) + cd);
        if (xfer == xfer_multiply) return solid ? mul(cs, cd) : cd - mul(mul(comp(cs), cd), s);
        if (xfer == xfer_screen && !real && !solid) return cd + mul(mul(comp(cd), cs), s);
        if (xfer == xfer_screen) return comp(mul(comp(mul(cs, s)), comp(cd)));
        if (xfer == xfer_overlay) {
            const N h = cd < half ? mul(2 * cd, cs) : comp(mul(2 * comp(cd), comp(cs)));
            return solid ? h : approach(job, cd, h, s);
        }
        if (xfer == xfer_hard_light && cs < half) return cd - mul(mul(comp(2 * cs), cd), s);
        if (xfer == xfer_hard_light) return cd + mul(mul(2 * (cs - half), comp(cd)), s);
        if (xfer == xfer_difference_premul) return std::abs(mul(cs, s) - cd);
        if (xfer == xfer_dodge_premul) return ratio(cd, comp(mul(cs, s)));
        if (xfer == xfer_burn_premul) return comp(div(comp(cd), comp(mul(comp(cs), s))));
        return real ? mul(cs - mul(2 * cd, cs), s) + cd : mix(cd, cd + cs - 2 * mul(cd, cs), s);  // exclusion
    }

    static Px behind(const Run& job, N s, const Px& src, Px dst) {
        const N d = dst.alpha, r = combine(s, d);
        if (d == full || s == 0) return dst;
        if (d == 0 && !real) return {job.rgb_only ? 0 : s, src.colour};
        if (!job.rgb_only) dst.alpha = r;
        return dst.each([&](N cd, auto i) {
            const N u = mul(s, src.colour[i]);
            return div(approach(job, u, cd, d), r);
        });
    }

    static Px over(N s, const Px& src, Px dst) {
        const N d = dst.alpha;
        if (s == full) return src;
        if (d == 0) return {s, src.colour};
        const N r = d == full ? full : combine(s, d);
        dst.alpha = r;
        return dst.each([&](N cd, auto i) {
            const N u = mul(d, cd), mixed = u + K::lerp(src.colour[i] - u, s);
            return d == full ? mixed : div(mixed, r);
        });
    }

    static Px dissolve(const Run& job, N s, const Px& src, const Px& dst) {
        if (!job.of_rows || real) return dst;
        bool drawn = s == full;
        if (s != 0 && !drawn) drawn = N(random_bits(*job.seed) & 255) <= s;
        ++*job.seed;
        return drawn ? Px{job.rgb_only ? dst.alpha : full, src.colour} : dst;
    }

    static Px premul_over(const Run& job, N s, const Px& src, Px dst) {
        RGB u;
        for (std::size_t i = 0; i < 3; ++i) u[i] = mul(mul(src.colour[i], job.first), job.second);
        if (s == 0 && u == RGB{}) return dst;
        const N w = mul(comp(s), dst.alpha), r = combine(s, dst.alpha);
        dst.alpha = r;
        return dst.each([&](N cd, auto i) { return div(limit(mul(w, cd) + u[i]), r); });
    }

    static Px alpha_add(N s, const Px& src, Px dst) {
        if (s == full) return src;
        const N d = dst.alpha, t = s + d;
        dst.alpha = std::min(t, full);
        return dst.each([&](N cd, auto i) {
            const N added = mul(src.colour[i], s);
            return t >= full ? mul(comp(s), cd) + added : div(mul(cd, d) + added, t);
        });
    }

    static N lowest(const RGB& x) { return *std::min_element(x.begin(), x.end()); }
    static N highest(const RGB& x) { return *std::max_element(x.begin(), x.end()); }
    static N sat(const RGB& x) { return highest(x) - lowest(x); }
    static RGB set_sat(RGB x, N v) {
        const N low = lowest(x), high = highest(x);
        for (N& c : x) c = c == low ? 0 : c == high ? v : (c - low) * v / (high - low);
        return x;
    }
    static RGB set_lum(RGB x, N l) {
        const N shift = l - luma(x);
        for (N& c : x) c = c + shift;
        const N low = lowest(x);
        for (N& c : x) c = low < 0 && l != low ? l + (c - l) * l / (l - low) : c;
        const N high = highest(x);
        for (N& c : x) c = high > full && high != l ? l + (c - l) * comp(l) / (high - l) : c;
        return x;
    }

    /// The modes of the whole pixel, over a destination whose alpha is merged already.
    static Px whole_pixel(const Run& job, N s, const Px& src, Px dst) {
        const N luma_of_dst = luma(dst.colour);
        if (!job.of_rows) dst = behind(job, s, src, dst);
        const RGB &a = src.colour, b = dst.colour;
        RGB result = a;
        if (job.xfer == xfer_hue) result = set_lum(set_sat(a, sat(b)), luma(b));
        if (job.xfer == xfer_saturation) result = set_lum(set_sat(b, sat(a)), luma(b));
        if (job.xfer == xfer_colour) result = set_lum(a, luma(b));
        if (job.xfer == xfer_luminosity) result = set_lum(b, luma(a));
        if (job.xfer == xfer_lighter_colour && !(luma(a) > luma_of_dst)) return dst;
        if (job.xfer == xfer_darker_colour && !(luma(a) < luma_of_dst)) return dst;
        return dst.each([&](N cd, auto i) { return s == full ? result[i] : cd + mul(result[i] - cd, s); });
    }

    static Px alpha_only(int xfer, N s, const Px& src, Px dst) {
        const bool lit = among(xfer, {xfer_alpha_multiply_luma, xfer_alpha_multiply_inverse_luma});
        N factor = lit ? mul(luma(src.colour), s) : s;
        if (among(xfer, {xfer_alpha_multiply_inverse, xfer_alpha_multiply_inverse_luma})) factor = comp(factor);
        const N v = mul(factor, dst.alpha);
        dst.alpha = lit && real ? (v > full ? full : v < N(1e-16) ? 0 : v) : v;
        return dst;
    }

    static Px crossfade(N m, const Px& src, Px dst) {
        const N a = src.alpha, rest = comp(m) * dst.alpha, w = a * m + rest, d = dst.alpha;
        if (m == full) return src;
        if (m == 0 || w == 0) return dst;
        dst.alpha = real ? w : (w + half) / full;
        return dst.each([&](N cd, auto i) {
            const N sum = cd * comp(m) * d + src.colour[i] * a * m;
            return real ? sum / w : (sum + w / 2) / w;
        });
    }

    static bool is_marker(const RGB& colour) {
        const N end = real ? full : 255, most = real ? N(0.75) : 191, little = real ? N(0.25) : 64;
        const RGB c = K::marker(colour);
        return (c[0] == 0 && c[2] == 0 && c[1] >= end) || c == RGB{end, 0, 0} || c == RGB{0, 0, most} ||
               c == RGB{0, 0, little};
    }

    /// A mode by itself, without the passes around it; a channel that is stored keeps its low bits.
    static Px alone(const Run& job, const Px& src, const Px& dst) {
        return unwrapped(job, src, dst).each([](N c, auto) { return K::wrap(c); });
    }
    static Px unwrapped(const Run& job, const Px& src, Px dst) {
        const N s = effective(job, src.alpha), squared = mul(src.alpha, src.alpha);
        const int xfer = job.xfer;
        if ((skips_uncovered(xfer) || (is_copy(xfer) && !job.of_rows)) && s == 0) return dst;
        if (xfer == xfer_mask_crossfade) return crossfade(job.first, src, dst);
        if (is_copy(xfer)) return {job.rgb_only ? dst.alpha : s, src.colour};
        if (xfer == xfer_behind) return behind(job, s, src, dst);
        if (xfer == xfer_over) return over(s, src, dst);
        if (xfer == xfer_dissolve) return dissolve(job, s, src, dst);
        if (is_whole(xfer)) return whole_pixel(job, s, src, dst);
        if (changes_alpha_alone(xfer)) return alpha_only(xfer, s, src, dst);
        if (xfer == xfer_premul_over) return premul_over(job, s, src, dst);
        if (xfer == xfer_alpha_add) return alpha_add(s, src, dst);
        if (xfer == xfer_threshold_blue) {
            if ((job.of_rows ? s : squared) < half) return dst;
            return {full, {dst.colour[0], dst.colour[1], src.colour[2]}};
        }
        if (xfer == xfer_marker_guard) {
            const bool covered = real && !job.of_rows ? squared != 0 : s > 0;
            return covered && !is_marker(dst.colour) ? src : dst;
        }
        if (is_filtered(xfer)) return dst.each([&](N cd, auto i) { return filtered_mode(job, s, src.colour[i], cd); });
        const N d = dst.alpha;
        dst.alpha = real && s == full ? full : combine(s, d);
        return dst.each([&](N cd, auto i) { return general_composite(xfer, s, d, src.colour[i], cd); });
    }

    static N filter_channel(Pivot pivot, bool forward, N c, N a) {
        if (pivot == Pivot::black) return forward ? mul(c, a) : div(c, a);
        if (pivot == Pivot::white) return comp(forward ? mul(comp(c), a) : div(comp(c), a));
        const bool upper = c >= half;
        if (forward) return upper ? half + mul(c - half, a) : c + mul(half - c, comp(a));
        return limit(upper ? div(c - half, a) + half : half - div(half - c, a));
    }
    static Px filter(Pivot pivot, bool forward, Px p) {
        if (pivot == Pivot::none) return p;
        return p.each([&](N c, auto) { return filter_channel(pivot, forward, c, p.alpha); });
    }
    static Px merge(const Px& src, N opacity, N mask, Px dst) {
        if (opacity != 0) dst.alpha = combine(mul(mul(src.alpha, opacity), mask), dst.alpha);
        return dst;
    }

    /// The passes of a function of one pixel, whose merge has the mode's own effective alpha.
    static Px in_one(const Run& job, const Px& src, const Px& dst) {
        const N s = effective(job, src.alpha);
        if (skips_uncovered(job.xfer) && s == 0) return dst;
        Px out = alone(job, src, filter(pivot_of(job.xfer), true, dst));
        if (is_filtered(job.xfer)) out.alpha = combine(s, out.alpha);
        return filter(pivot_of(job.xfer), false, out);
    }

    static Px to_light(const Tables& tables, Px p) {
        p.alpha = K::widened(p.alpha);
        return p.each([&](N c, auto) { return K::to_linear(tables, c); });
    }
    static Px from_light(const Tables& tables, Px p) {
        p.alpha = K::narrowed(p.alpha);
        return p.each([&](N c, auto) { return K::from_linear(tables, c); });
    }
    static void widen_factors(Run& job) { job.first = K::widened(job.first), job.second = K::widened(job.second); }

    /// One row routine: plain, or in linear light.
    static Px routine(Run job, const Tables* tables, const Px& src, const Px& dst) {
        if (!tables || is_copy(job.xfer)) return alone(job, src, dst);
        widen_factors(job);
        return from_light(*tables, Light::alone(job, to_light(*tables, src), to_light(*tables, dst)));
    }

    static Px row(Run job, const Tables* tables, const Px& src, const Px& dst) {
        Px d = filter(pivot_of(job.xfer), true, dst);
        if (is_whole(job.xfer)) {
            Run first = job;
            first.xfer = xfer_behind;
            d = routine(first, tables, src, d);
        }
        d = routine(job, tables, src, d);
        if (is_filtered(job.xfer)) d = merge(src, job.second, job.first, d);
        d = filter(pivot_of(job.xfer), false, d);
        if (keeps_alpha(job.xfer) && job.rgb_only) d.alpha = dst.alpha;
        return d;
    }

    static Px function(Run job, const Tables* tables, const Px& src, const Px& dst) {
        if (!tables || job.xfer == xfer_copy) return in_one(job, src, dst);
        const N s = effective(job, src.alpha);
        if (skips_uncovered(job.xfer) && s == 0) return dst;
        job.covered = K::widened(s);  // alpha takes the opacities at its own depth, what else takes them in light's
        widen_factors(job);
        return from_light(*tables, Light::in_one(job, to_light(*tables, src), to_light(*tables, dst)));
    }
};

template <class Pixel> using ModesOf = Modes<DepthModel<Pixel>>;
template <class Pixel> auto unpack(const Pixel& p) {
    return typename ModesOf<Pixel>::Px{p.alpha, {p.red, p.green, p.blue}};
}
template <class Pixel> Pixel pack(const typename ModesOf<Pixel>::Px& p) {
    const auto channel = [](auto v) { return static_cast<QX_ChannelOf<Pixel>>(ModesOf<Pixel>::wrap(v)); };
    return {channel(p.alpha), channel(p.colour[0]), channel(p.colour[1]), channel(p.colour[2])};
}

/// Coverage of a mask kind.
template <class Pixel> QX_ChannelOf<Pixel> coverage(const Pixel& mask, std::uint32_t kind) {
    using K = ModesOf<Pixel>;
    const typename K::N lit = K::mul(K::luma({mask.red, mask.green, mask.blue}), mask.alpha);
    const typename K::N value = kind >= 2 ? lit : mask.alpha;
    return static_cast<QX_ChannelOf<Pixel>>(kind & 1 ? K::full - value : value);
}

/// A pixel of a transfer: everything that happens to it in the passes of its row.
template <class Pixel>
Pixel row_pixel(const typename ModesOf<Pixel>::Run& job, const Tables* tables, const Pixel& src, const Pixel& dst) {
    return pack<Pixel>(ModesOf<Pixel>::row(job, tables, unpack(src), unpack(dst)));
}

/// A function of one pixel.
template <class Pixel>
Pixel one_pixel(typename ModesOf<Pixel>::Run job, const Tables* tables, const Pixel& src, const Pixel& dst) {
    job.of_rows = false;
    return pack<Pixel>(ModesOf<Pixel>::function(job, tables, unpack(src), unpack(dst)));
}

}  // namespace qx::test::model
