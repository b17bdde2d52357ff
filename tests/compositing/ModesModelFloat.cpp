// SPDX-License-Identifier: Apache-2.0
// The modes at float: every operation on its own, in the order that is written. Rows and functions of one pixel are
// the same text, a filtered mode lies between its filters in both.
#include <algorithm>
#include <array>
#include <cmath>

#include "tests/compositing/ModesModel.h"

namespace qx::test::model {
namespace {

using Colours = std::array<float, 3>;
struct Px {
    float alpha;
    Colours colour;
};

bool zero_or_denormal(float a) { return a == 0.0f || std::fpclassify(a) == FP_SUBNORMAL; }
float safe_div(float x, float a) { return zero_or_denormal(a) ? 1.0f : x / a; }
float combine(float s, float d) { return 1.0f - (1.0f - s) * (1.0f - d); }
float luma(const Colours& c) { return c[0] * 0.299f + c[1] * 0.587f + c[2] * 0.114f; }

struct Job {
    int xfer;
    float first, second;  ///< factors of source alpha, in their order
    bool of_rows;
    bool rgb_only = false;
};

/// A soft-light curve between two of its 4097 entries.
float soft(double (*curve)(double), float c) {
    const auto entry = [&](int i) { return static_cast<float>(curve(i / 4096.0)); };
    if (c <= 0.0f) return entry(0);
    if (c >= 1.0f) return entry(4096);
    const float at = c * 4096.0f;
    const int i = static_cast<int>(at);
    const float f = at - static_cast<float>(i);
    return f == 0.0f ? entry(i) : entry(i) + (entry(i + 1) - entry(i)) * f;
}

float vivid_light(float cs, float cd) {
    if (cs == 0.0f) return 0.0f;
    if (cs < 0.5f) return 1.0f - safe_div(1.0f - cd, 2.0f * cs);
    if (cs == 0.5f) return cd;
    return cs == 1.0f ? 1.0f : safe_div(cd, 1.0f - 2.0f * (cs - 0.5f));
}

float hard_mix(float cs, float cd) {
    const float t = (1.0f - cs) * 0.99999f;
    if (cd <= t) return 0.0f;
    const float x = cd - t;
    return x >= 1.001358e-5f ? 1.0f : x / 1.001358e-5f;
}

float divide(float cs, float cd) {
    const float e = 1.8189894e-6f;
    return std::fabs(cs) > e ? cd / cs : cd / e;  // beyond e nothing is denormal
}

float blend(int xfer, float cs, float cd) {
    switch (xfer) {
        case xfer_soft_light:
            if (cs < 0.5f) return cd - soft(soft_down, cd) * (1.0f - 2.0f * cs);
            return cd + (2.0f * cs - 1.0f) * soft(soft_up, cd);
        case xfer_darken:
            return cs < cd ? cs : cd;
        case xfer_lighten:
            return cs > cd ? cs : cd;
        case xfer_difference:
            return std::fabs(cs - cd);
        case xfer_dodge: {
            const float x = 1.0f - cs;
            if (cd == 0.0f) return cd;
            return x == 0.0f || cd >= x ? 1.0f : cd / x;
        }
        case xfer_burn: {
            const float x = 1.0f - cd;
            if (cs == 0.0f && cd == 1.0f) return cd;
            return cs == 0.0f || x >= cs ? 0.0f : 1.0f - x / cs;
        }
        case xfer_linear_dodge:
            return cs + cd;
        case xfer_linear_burn:
            return std::max(0.0f, cs + cd - 1.0f);
        case xfer_linear_light:
            return 2.0f * cs - 1.0f + cd;
        case xfer_vivid_light:
            return vivid_light(cs, cd);
        case xfer_pin_light:
            if (cs < 0.5f) return std::min(2.0f * cs, cd);
            return cs > 0.5f ? std::max(2.0f * (cs - 0.5f), cd) : cd;
        case xfer_hard_mix:
            return hard_mix(cs, cd);
        case xfer_subtract:
            return cd - cs;
        case xfer_divide:
            return divide(cs, cd);
        default:
            return NAN;
    }
}

float general_composite(int xfer, float s, float d, float cs, float cd) {
    const float b = blend(xfer, cs, cd), p = d * s;
    if (s == 1.0f) return (b - cs) * d + cs;
    return safe_div(d * cd - p * cd + s * cs - p * cs + b * p, combine(s, d));
}

/// A channel of a filtered mode; g is the destination's, filtered.
float filtered_mode(int xfer, float s, float cs, float g) {
    switch (xfer) {
        case xfer_add:
            return s == 1.0f ? cs + g : cs * s + g;
        case xfer_multiply:
            return g - (1.0f - cs) * g * s;
        case xfer_screen:
            return 1.0f - (1.0f - cs * s) * (1.0f - g);
        case xfer_overlay: {
            const float h = g >= 0.5f ? 1.0f - 2.0f * (1.0f - g) * (1.0f - cs) : 2.0f * g * cs;
            return (h - g) * s + g;
        }
        case xfer_hard_light:
            if (cs >= 0.5f) return g + (2.0f * cs - 1.0f) * (1.0f - g) * s;
            return g - (1.0f - 2.0f * cs) * g * s;
        case xfer_difference_premul:
            return std::fabs(cs * s - g);
        case xfer_dodge_premul: {
            const float x = 1.0f - cs * s;
            return x == 0.0f || g >= x ? 1.0f : g / x;
        }
        case xfer_burn_premul:
            return 1.0f - safe_div(1.0f - g, 1.0f - (1.0f - cs) * s);
        case xfer_exclusion:
            return (cs - 2.0f * g * cs) * s + g;
        default:
            return NAN;
    }
}

Px behind(const Job& job, float s, const Px& src, Px dst) {
    const float d = dst.alpha, r = combine(s, d);
    if (d == 1.0f || s == 0.0f) return dst;
    for (std::size_t i = 0; i < 3; ++i) {
        const float u = s * src.colour[i];
        dst.colour[i] = safe_div((dst.colour[i] - u) * d + u, r);
    }
    if (!job.rgb_only) dst.alpha = r;
    return dst;
}

Px over(float s, const Px& src, Px dst) {
    const float d = dst.alpha, r = combine(s, d);
    if (s == 1.0f) return src;
    if (d == 0.0f) return {s, src.colour};
    for (std::size_t i = 0; i < 3; ++i) {
        const float g = d * dst.colour[i];
        dst.colour[i] = safe_div((src.colour[i] - g) * s + g, r);
    }
    dst.alpha = r;
    return dst;
}

Px premul_over(const Job& job, float s, const Px& src, Px dst) {
    Colours u;
    for (std::size_t i = 0; i < 3; ++i) u[i] = src.colour[i] * job.first * job.second;
    if (s == 0.0f && u[0] == 0.0f && u[1] == 0.0f && u[2] == 0.0f) return dst;
    const float d = dst.alpha, r = combine(s, d);
    for (std::size_t i = 0; i < 3; ++i) dst.colour[i] = safe_div((1.0f - s) * d * dst.colour[i] + u[i], r);
    dst.alpha = r;
    return dst;
}

Px alpha_add(float s, const Px& src, Px dst) {
    if (s == 1.0f) return src;
    const float d = dst.alpha, t = s + d;
    for (std::size_t i = 0; i < 3; ++i) {
        const float cs = src.colour[i], cd = dst.colour[i];
        dst.colour[i] = t >= 1.0f ? (1.0f - s) * cd + cs * s : safe_div(cd * d + cs * s, t);
    }
    dst.alpha = t >= 1.0f ? 1.0f : t;
    return dst;
}

float sat(const Colours& x) { return *std::max_element(x.begin(), x.end()) - *std::min_element(x.begin(), x.end()); }

Colours set_sat(const Colours& x, float v) {
    const float low = *std::min_element(x.begin(), x.end()), high = *std::max_element(x.begin(), x.end());
    Colours out;
    for (std::size_t i = 0; i < 3; ++i) {
        out[i] = x[i] == low ? 0.0f : x[i] == high ? v : (x[i] - low) * v / (high - low);
    }
    return out;
}

Colours set_lum(Colours x, float l) {
    const float shift = l - luma(x);
    for (float& c : x) c = c + shift;
    const float low = *std::min_element(x.begin(), x.end());
    if (low < 0.0f && l != low) {
        for (float& c : x) c = l + (c - l) * l / (l - low);
    }
    const float high = *std::max_element(x.begin(), x.end());
    if (high > 1.0f && high != l) {
        for (float& c : x) c = l + (c - l) * (1.0f - l) / (high - l);
    }
    return x;
}

Px whole_pixel(int xfer, float s, const Px& src, Px dst, float luma_of_dst) {
    const Colours &a = src.colour, b = dst.colour;
    Colours result;
    switch (xfer) {
        case xfer_hue:
            result = set_lum(set_sat(a, sat(b)), luma(b));
            break;
        case xfer_saturation:
            result = set_lum(set_sat(b, sat(a)), luma(b));
            break;
        case xfer_colour:
            result = set_lum(a, luma(b));
            break;
        case xfer_luminosity:
            result = set_lum(b, luma(a));
            break;
        default:
            if (xfer == xfer_lighter_colour ? !(luma(a) > luma_of_dst) : !(luma(a) < luma_of_dst)) return dst;
            result = a;
    }
    for (std::size_t i = 0; i < 3; ++i) dst.colour[i] = s == 1.0f ? result[i] : b[i] + (result[i] - b[i]) * s;
    return dst;
}

Px alpha_only(int xfer, float s, const Px& src, Px dst) {
    float& d = dst.alpha;
    if (xfer == xfer_alpha_multiply) d = d * s;
    if (xfer == xfer_alpha_multiply_inverse) d = d * (1.0f - s);
    if (xfer == xfer_alpha_multiply || xfer == xfer_alpha_multiply_inverse) return dst;
    const float weight = luma(src.colour) * s;
    const float v = xfer == xfer_alpha_multiply_luma ? weight * d : (1.0f - weight) * d;
    d = v > 1.0f ? 1.0f : v < 1e-16f ? 0.0f : v;
    return dst;
}

Px crossfade(float m, const Px& src, Px dst) {
    const float d = dst.alpha, a = src.alpha, w = a * m + (1.0f - m) * d;
    if (m == 1.0f) return src;
    if (m == 0.0f || w == 0.0f) return dst;
    for (std::size_t i = 0; i < 3; ++i) {
        dst.colour[i] = (dst.colour[i] * (1.0f - m) * d + src.colour[i] * a * m) / w;
    }
    dst.alpha = w;
    return dst;
}

bool is_marker(const Colours& c) {
    return (c[0] == 0.0f && c[2] == 0.0f && c[1] >= 1.0f) || c == Colours{1.0f, 0.0f, 0.0f} ||
           c == Colours{0.0f, 0.0f, 0.75f} || c == Colours{0.0f, 0.0f, 0.25f};
}

Px mode_alone(const Job& job, const Px& src, Px dst) {
    const float s = src.alpha * job.first * job.second;
    if (skips_uncovered(job.xfer) && s == 0.0f) return dst;
    switch (job.xfer) {
        case xfer_mask_crossfade:
            return crossfade(job.first, src, dst);
        case xfer_replace:
        case xfer_copy:
            if (!job.of_rows && s == 0.0f) return dst;
            return {job.rgb_only ? dst.alpha : s, src.colour};
        case xfer_behind:
            return behind(job, s, src, dst);
        case xfer_over:
            return over(s, src, dst);
        case xfer_dissolve:
            return dst;
        case xfer_hue:
        case xfer_saturation:
        case xfer_colour:
        case xfer_luminosity:
        case xfer_lighter_colour:
        case xfer_darker_colour: {
            const float before = luma(dst.colour);
            if (!job.of_rows) dst = behind(job, s, src, dst);
            return whole_pixel(job.xfer, s, src, dst, before);
        }
        case xfer_alpha_multiply:
        case xfer_alpha_multiply_luma:
        case xfer_alpha_multiply_inverse:
        case xfer_alpha_multiply_inverse_luma:
            return alpha_only(job.xfer, s, src, dst);
        case xfer_premul_over:
            return premul_over(job, s, src, dst);
        case xfer_alpha_add:
            return alpha_add(s, src, dst);
        case xfer_threshold_blue:
            if (job.of_rows ? s >= 0.5f : src.alpha * src.alpha >= 0.5f) {
                dst.alpha = 1.0f;
                dst.colour[2] = src.colour[2];
            }
            return dst;
        case xfer_marker_guard: {
            const bool covered = job.of_rows ? s > 0.0f : src.alpha * src.alpha != 0.0f;
            return covered && !is_marker(dst.colour) ? src : dst;
        }
        default:
            break;
    }
    const bool filtered = passes_of(job.xfer).pivot != Pivot::none;
    for (std::size_t i = 0; i < 3; ++i) {
        const float cs = src.colour[i], cd = dst.colour[i];
        dst.colour[i] =
            filtered ? filtered_mode(job.xfer, s, cs, cd) : general_composite(job.xfer, s, dst.alpha, cs, cd);
    }
    if (!filtered) dst.alpha = s == 1.0f ? 1.0f : combine(s, dst.alpha);
    return dst;
}

float filter_channel(Pivot pivot, bool forward, float c, float a) {
    if (pivot == Pivot::black) return forward ? c * a : safe_div(c, a);
    if (pivot == Pivot::white) return 1.0f - (forward ? (1.0f - c) * a : safe_div(1.0f - c, a));
    const bool upper = c >= 0.5f;
    if (forward) return upper ? 0.5f + (c - 0.5f) * a : c + (0.5f - c) * (1.0f - a);
    if (zero_or_denormal(a)) return upper ? 1.5f : -0.5f;
    return upper ? (c - 0.5f) / a + 0.5f : 0.5f - (0.5f - c) / a;
}

Px filter(Pivot pivot, bool forward, Px p) {
    if (pivot == Pivot::none) return p;
    for (float& c : p.colour) c = filter_channel(pivot, forward, c, p.alpha);
    return p;
}

Px to_power(Px p, float exponent) {
    for (float& c : p.colour) {
        if (c >= 0.0f) c = powf(c, exponent);
    }
    return p;
}

Px row_routine(const Job& job, const QX_LinearBlendingTables* tables, const Px& src, const Px& dst) {
    if (!tables || job.xfer == xfer_replace || job.xfer == xfer_copy) return mode_alone(job, src, dst);
    const float gamma = tables->to_linear_gamma;
    return to_power(mode_alone(job, to_power(src, gamma), to_power(dst, gamma)), tables->from_linear_gamma);
}

Px unpack(const QX_PixelFloat& p) { return {p.alpha, {p.red, p.green, p.blue}}; }
QX_PixelFloat pack(const Px& p) { return {p.alpha, p.colour[0], p.colour[1], p.colour[2]}; }

Px in_one(const Job& job, const Px& src, const Px& dst) {
    const Passes passes = passes_of(job.xfer);
    const float s = src.alpha * job.first * job.second;
    Px out = mode_alone(job, src, filter(passes.pivot, true, dst));
    if (passes.merges_alpha) out.alpha = combine(s, out.alpha);
    return filter(passes.pivot, false, out);
}

}  // namespace

QX_PixelFloat row_pixel(const RowCall<QX_PixelFloat>& call, const QX_PixelFloat& src, const QX_PixelFloat& dst) {
    const Passes passes = passes_of(call.xfer);
    const Px s = unpack(src), before = unpack(dst);
    const Job job{call.xfer, call.mask ? *call.mask : 1.0f, call.opacity, true, call.rgb_only};
    Px d = filter(passes.pivot, true, before);
    if (passes.behind_first) {
        Job first = job;
        first.xfer = xfer_behind;
        d = row_routine(first, call.tables, s, d);
    }
    d = row_routine(job, call.tables, s, d);
    if (passes.merges_alpha) d.alpha = merged(src, call.opacity, call.mask, pack(d)).alpha;
    d = filter(passes.pivot, false, d);
    if (passes.keeps_alpha && call.rgb_only) d.alpha = before.alpha;
    return pack(d);
}

QX_PixelFloat one_pixel(const PixelCall<QX_PixelFloat>& call, const QX_PixelFloat& src, const QX_PixelFloat& dst) {
    const Job job{call.xfer, call.opacity ? *call.opacity : 1.0f, call.opacity2 ? *call.opacity2 : 1.0f, false};
    const float s = src.alpha * job.first * job.second;
    if (skips_uncovered(call.xfer) && s == 0.0f) return dst;
    if (!call.tables || call.xfer == xfer_copy) return pack(in_one(job, unpack(src), unpack(dst)));
    const float gamma = call.tables->to_linear_gamma;
    const Px out = in_one(job, to_power(unpack(src), gamma), to_power(unpack(dst), gamma));
    return pack(to_power(out, call.tables->from_linear_gamma));
}

QX_PixelFloat filtered(Pivot pivot, bool forward, const QX_PixelFloat& pixel) {
    return pack(filter(pivot, forward, unpack(pixel)));
}

QX_PixelFloat merged(const QX_PixelFloat& src, float opacity, std::optional<float> mask, QX_PixelFloat dst) {
    if (opacity != 0.0f) dst.alpha = combine(src.alpha * opacity * (mask ? *mask : 1.0f), dst.alpha);
    return dst;
}

}  // namespace qx::test::model
