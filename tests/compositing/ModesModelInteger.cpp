// SPDX-License-Identifier: Apache-2.0
// The modes at 8 and 16 bits, each by itself.
#include <algorithm>
#include <array>
#include <cmath>

#include "tests/compositing/ModesModelJob.h"

namespace qx::test::model {

double soft_up(double x) { return (x <= 0.25 ? ((16 * x - 12) * x + 4) * x : std::sqrt(x)) - x; }
double soft_down(double x) { return x * (1 - x); }

std::int32_t random_bits(std::uint32_t& seed) {
    // The sum of the two terms is what the pattern is made of, with 32 bits kept.
    const std::uint64_t sum = std::uint64_t{seed / 44488} * 3399 + std::uint64_t{seed % 44488} * 48271;
    seed = static_cast<std::uint32_t>(sum & 0xFFFFFFFF);
    if (seed == 0) seed = 0x7FFFFFFF;
    return static_cast<std::int32_t>((seed >> 7) & 0x7FFF);
}

namespace {

/// The blend function of the modes that are the general composite.
I blend(const Scale& k, int xfer, I cs, I cd) {
    switch (xfer) {
        case xfer_soft_light:
            if (cs < k.half) return cd - k.mul(k.soft(soft_down, cd), k.full - 2 * cs);
            return cd + k.mul(k.eight ? 2 * cs % 256 : 2 * cs - k.full, k.soft(soft_up, cd));
        case xfer_darken:
            return std::min(cs, cd);
        case xfer_lighten:
            return std::max(cs, cd);
        case xfer_difference:
            return cs < cd ? cd - cs : cs - cd;
        case xfer_dodge:
            return cd == 0 ? 0 : k.div(cd, k.comp(cs));
        case xfer_burn:
            return cs == 0 && cd == k.full ? cd : k.comp(k.div(k.comp(cd), cs));
        case xfer_linear_dodge:
            return std::min(cs + cd, k.full);
        case xfer_linear_burn:
            return std::max<I>(cs + cd - k.full, 0);
        case xfer_linear_light:
            return std::clamp<I>(2 * (cs - k.half) + cd, 0, k.full);
        case xfer_vivid_light:
            if (cs == 0) return 0;
            if (cs < k.half) return k.comp(k.div(k.comp(cd), k.twice(cs)));
            if (cs == k.half) return cd;
            return cs == k.full ? k.full : k.div(cd, k.comp(k.twice_above(cs)));
        case xfer_pin_light:
            if (cs < k.half) return std::min(k.twice(cs), cd);
            return cs > k.half ? std::max(k.twice_above(cs), cd) : cd;
        case xfer_hard_mix:
            return cd > k.mul(k.comp(cs), k.full - 1) ? k.full : 0;
        case xfer_subtract:
            return std::max<I>(cd - cs, 0);
        case xfer_divide:
            return cd == 0 ? 0 : k.div(cd, cs);
        default:
            return -1;
    }
}

I general_composite(const Scale& k, int xfer, I s, I d, I cs, I cd) {
    const I b = blend(k, xfer, cs, cd), p = k.mul(d, s);
    const bool shortcut = xfer == xfer_soft_light || xfer == xfer_darken || xfer == xfer_lighten;
    if (s == k.full && shortcut) return cs + k.mul(b - cs, d);
    const I n = k.mul(cd, d) + k.mul(cs, s) - k.mul(cs, p) - k.mul(cd, p) + k.mul(b, p);
    return k.div(k.wrap(n), k.combine(s, d));
}

/// A channel of the filtered modes, whose alpha the merge makes. `cd` is filtered.
I filtered_mode(const Scale& k, const Job& job, I s, I cs, I cd) {
    const bool solid = s == k.full;
    switch (job.xfer) {
        case xfer_add:
            return std::min(cd + k.mul(cs, s), k.full);
        case xfer_multiply:
            return solid ? k.mul(cs, cd) : cd - k.mul(k.mul(k.comp(cs), cd), s);
        case xfer_screen:
            return solid ? k.comp(k.mul(k.comp(cd), k.comp(cs))) : cd + k.mul(k.mul(k.comp(cd), cs), s);
        case xfer_overlay: {
            const I h = cd < k.half ? k.mul(2 * cd, cs) : k.comp(k.mul(k.comp(cs), 2 * k.comp(cd)));
            if (solid) return h;
            return job.of_rows ? k.mix(cd, h, s) : cd + k.lerp(h - cd, s);
        }
        case xfer_hard_light: {
            const bool lower = cs < k.half;
            I v = lower ? k.mul(k.comp(2 * cs), cd) : k.mul(k.comp(cd), 2 * (cs - k.half));
            if (!solid) v = k.mul(v, s);
            return lower ? cd - v : cd + v;
        }
        case xfer_difference_premul:
            return std::abs((solid ? cs : k.mul(cs, s)) - cd);
        case xfer_dodge_premul:
            return k.div(cd, k.comp(k.mul(cs, s)));
        case xfer_burn_premul:
            return k.comp(k.div(k.comp(cd), k.comp(k.mul(k.comp(cs), s))));
        case xfer_exclusion: {
            const I m = k.mul(cd, cs), x = cs - m;
            if (solid) return cd + x - m;
            return x < m ? cd - k.mul(m - x, s) : cd + k.mul(x - m, s);
        }
        default:
            return -1;
    }
}

Px behind(const Scale& k, const Job& job, I s, const Px& src, Px dst) {
    const I d = dst.alpha;
    if (d == k.full || s == 0) return dst;
    if (d == 0) return {job.rgb_only ? 0 : s, src.colour};
    const I r = k.combine(s, d);
    for (std::size_t i = 0; i < 3; ++i) {
        const I u = k.mul(src.colour[i], s), cd = dst.colour[i];
        dst.colour[i] = k.div(job.of_rows ? k.mix(u, cd, d) : u + k.lerp(cd - u, d), r);
    }
    if (!job.rgb_only) dst.alpha = r;
    return dst;
}

Px over(const Scale& k, I s, const Px& src, const Px& dst) {
    if (s == k.full) return src;
    const I d = dst.alpha, r = k.combine(s, d);
    if (d == 0) return {s, src.colour};
    Px out{d == k.full ? d : r, {}};
    for (std::size_t i = 0; i < 3; ++i) {
        const I cs = src.colour[i], cd = dst.colour[i], u = k.mul(cd, d);
        out.colour[i] = d == k.full ? cd + k.lerp(cs - cd, s) : k.div(u + k.lerp(cs - u, s), r);
    }
    return out;
}

Px dissolve(const Scale& k, const Job& job, I s, const Px& src, Px dst) {
    if (!job.of_rows) return dst;
    bool drawn = s == k.full;
    if (s != 0 && !drawn) drawn = (random_bits(*job.seed) & 255) <= s;
    ++*job.seed;
    return drawn ? Px{job.rgb_only ? dst.alpha : k.full, src.colour} : dst;
}

Px premul_over(const Scale& k, const Job& job, I s, const Px& src, Px dst) {
    Colours u;
    for (std::size_t i = 0; i < 3; ++i) u[i] = k.mul(k.mul(src.colour[i], job.first), job.second);
    if (s == 0 && u == Colours{}) return dst;
    const I w = k.mul(dst.alpha, k.comp(s)), r = k.combine(s, dst.alpha);
    for (std::size_t i = 0; i < 3; ++i) dst.colour[i] = k.div(std::min(k.mul(dst.colour[i], w) + u[i], k.full), r);
    dst.alpha = r;
    return dst;
}

Px alpha_add(const Scale& k, I s, const Px& src, Px dst) {
    if (s == k.full) return src;
    const I t = s + dst.alpha;
    for (std::size_t i = 0; i < 3; ++i) {
        const I added = k.mul(src.colour[i], s), cd = dst.colour[i];
        dst.colour[i] = t < k.full ? k.div(k.mul(cd, dst.alpha) + added, t) : k.mul(k.comp(s), cd) + added;
    }
    dst.alpha = std::min(t, k.full);
    return dst;
}

Colours set_sat(const Colours& x, I v) {
    const auto [low, high] = std::minmax({x[0], x[1], x[2]});
    Colours out;
    for (std::size_t i = 0; i < 3; ++i) {
        out[i] = x[i] == low ? 0 : x[i] == high ? v : (x[i] - low) * v / (high - low);
    }
    return out;
}

Colours set_lum(const Scale& k, Colours x, I l) {
    const I shift = l - luma(x);
    for (I& c : x) c += shift;
    const I low = *std::min_element(x.begin(), x.end());
    if (low < 0 && l != low) {
        for (I& c : x) c = l + (c - l) * l / (l - low);
    }
    const I high = *std::max_element(x.begin(), x.end());
    if (high > k.full && high != l) {
        for (I& c : x) c = l + (c - l) * (k.full - l) / (high - l);
    }
    return x;
}

I sat(const Colours& x) {
    const auto [low, high] = std::minmax({x[0], x[1], x[2]});
    return high - low;
}

/// The modes of the whole pixel, over a destination whose alpha is merged already.
Px whole_pixel(const Scale& k, int xfer, I s, const Px& src, Px dst, I luma_of_dst) {
    const Colours &a = src.colour, b = dst.colour;
    Colours result = b;
    if (xfer == xfer_hue) result = set_lum(k, set_sat(a, sat(b)), luma(b));
    if (xfer == xfer_saturation) result = set_lum(k, set_sat(b, sat(a)), luma(b));
    if (xfer == xfer_colour) result = set_lum(k, a, luma(b));
    if (xfer == xfer_luminosity) result = set_lum(k, b, luma(a));
    if (xfer == xfer_lighter_colour && luma(a) > luma_of_dst) result = a;
    if (xfer == xfer_darker_colour && luma(a) < luma_of_dst) result = a;
    for (std::size_t i = 0; i < 3; ++i) dst.colour[i] = s == k.full ? result[i] : b[i] + k.mul(result[i] - b[i], s);
    return dst;
}

bool is_marker(const Scale& k, Colours c) {
    if (!k.eight) {
        for (I& v : c) v = narrow(v);
    }
    return (c[0] == 0 && c[2] == 0 && c[1] >= 255) || c == Colours{255, 0, 0} || c == Colours{0, 0, 191} ||
           c == Colours{0, 0, 64};
}

Px alpha_only(const Scale& k, int xfer, I s, const Px& src, Px dst) {
    I factor = s;
    if (xfer == xfer_alpha_multiply_luma || xfer == xfer_alpha_multiply_inverse_luma)
        factor = k.mul(luma(src.colour), s);
    if (xfer == xfer_alpha_multiply_inverse || xfer == xfer_alpha_multiply_inverse_luma) factor = k.comp(factor);
    dst.alpha = k.mul(dst.alpha, factor);
    return dst;
}

Px crossfade(const Scale& k, I m, const Px& src, Px dst) {
    if (m == k.full) return src;
    const I rest = k.comp(m) * dst.alpha, w = src.alpha * m + rest;
    if (m == 0 || w == 0) return dst;
    dst.alpha = (w + k.half) / k.full;
    for (std::size_t i = 0; i < 3; ++i) {
        dst.colour[i] = (dst.colour[i] * rest + src.colour[i] * src.alpha * m + w / 2) / w;
    }
    return dst;
}

/// A mode by itself, on a destination that its filter has seen; its values before a channel keeps their low bits.
Px unwrapped_mode(const Scale& k, const Job& job, const Px& src, Px dst) {
    const I s = job.effective(k, src.alpha);
    if (skips_uncovered(job.xfer) && s == 0) return dst;
    switch (job.xfer) {
        case xfer_mask_crossfade:
            return crossfade(k, job.first, src, dst);
        case xfer_replace:
        case xfer_copy:
            if (!job.of_rows && s == 0) return dst;
            return {job.rgb_only ? dst.alpha : s, src.colour};
        case xfer_behind:
            return behind(k, job, s, src, dst);
        case xfer_over:
            return over(k, s, src, dst);
        case xfer_dissolve:
            return dissolve(k, job, s, src, dst);
        case xfer_hue:
        case xfer_saturation:
        case xfer_colour:
        case xfer_luminosity:
        case xfer_lighter_colour:
        case xfer_darker_colour: {
            const I before = luma(dst.colour);
            if (!job.of_rows) dst = behind(k, job, s, src, dst);
            return whole_pixel(k, job.xfer, s, src, dst, before);
        }
        case xfer_alpha_multiply:
        case xfer_alpha_multiply_luma:
        case xfer_alpha_multiply_inverse:
        case xfer_alpha_multiply_inverse_luma:
            return alpha_only(k, job.xfer, s, src, dst);
        case xfer_premul_over:
            return premul_over(k, job, s, src, dst);
        case xfer_alpha_add:
            return alpha_add(k, s, src, dst);
        case xfer_threshold_blue:
            if (job.of_rows ? s >= k.half : k.mul(src.alpha, src.alpha) >= k.half) {
                dst.alpha = k.full;
                dst.colour[2] = src.colour[2];
            }
            return dst;
        case xfer_marker_guard:
            return s == 0 || is_marker(k, dst.colour) ? dst : src;
        default:
            break;
    }
    const bool filtered = passes_of(job.xfer).pivot != Pivot::none;
    for (std::size_t i = 0; i < 3; ++i) {
        const I cs = src.colour[i], cd = dst.colour[i];
        dst.colour[i] =
            filtered ? filtered_mode(k, job, s, cs, cd) : general_composite(k, job.xfer, s, dst.alpha, cs, cd);
    }
    if (!filtered) dst.alpha = k.combine(s, dst.alpha);
    return dst;
}

}  // namespace

Px mode_alone(const Scale& k, const Job& job, const Px& src, const Px& dst) {
    Px out = unwrapped_mode(k, job, src, dst);
    for (I& c : out.colour) c = k.wrap(c);
    return out;
}

}  // namespace qx::test::model
