// SPDX-License-Identifier: Apache-2.0
#include "platform/standalone/SH_ColourFormCurves.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <optional>
#include <vector>

namespace standalone {
namespace {

/// The library answers what its curves are not made for with this, and makes them for numbers from there to as much
/// above zero.
constexpr float kOutside = -1e22f;

/// From `limit` on scale * (x + shift) ^ exponent + lift, below it slope * x + foot.
struct Formula {
    double limit, slope, foot, shift, exponent, scale, lift;
};

/// The formula of a parametric curve, as the ICC and the library number them, negative ones turned round; none where it
/// has no such form. How the library treats odd parameters is not told here: curves are compared with it.
std::optional<Formula> formula_of(const cmsToneCurve* curve) {
    const cmsFloat64Number* p = cmsGetToneCurveParams(curve);
    const int type = cmsGetToneCurveParametricType(curve);
    if (p == nullptr || type == 0 || !(p[0] > 0)) return std::nullopt;
    const double g = p[0], slope_of_line = std::fabs(g - 1) < 1e-4 ? 1 : 0;
    if (type == 1) return Formula{0, slope_of_line, 0, 0, g, 1, 0};
    if (type == -1) return Formula{0, slope_of_line, 0, 0, 1 / g, 1, 0};
    const double a = p[1], b = p[2], c = p[3], d = p[4], e = p[5], f = p[6];
    if (!(a > 0)) return std::nullopt;
    const double scale = std::pow(a, g), least = std::pow(std::max(a * d + b, 0.0), g);
    switch (type) {
        case 2:
            return Formula{-b / a, 0, 0, b / a, g, scale, 0};
        case -2:
            return Formula{std::pow(std::max(b, 0.0), g), 0, 0, 0, 1 / g, 1 / a, -b / a};
        case 3:
            return Formula{std::max(-b / a, 0.0), 0, c, b / a, g, scale, c};
        case 4:
            return Formula{d, c, 0, b / a, g, scale, 0};
        case -4:
            return Formula{least, c == 0 ? 0 : 1 / c, 0, 0, 1 / g, 1 / a, -b / a};
        case 5:
            return Formula{d, c, f, b / a, g, scale, e};
        case -5:
            return Formula{c * d + f, c == 0 ? 0 : 1 / c, c == 0 ? 0 : -f / c, -e, 1 / g, 1 / a, -b / a};
        default:
            return std::nullopt;
    }
}

/// ((1 + u) ^ g - 1) / u for the u of mantissas, by the binomial series: sums that no C library has a say in.
double power_over_u(double g, double u) {
    double sum = 0, term = g;
    for (int k = 2; k < 64; ++k) {
        sum += term;
        term *= (g - k + 1) / k * u;
    }
    return sum;
}

/// Coefficients of the polynomial q of so many terms by which (1 + u) ^ g is 1 + u q(u): through its values near the
/// zeros of Chebyshev's polynomial, in Newton's form first.
void fit_power(double g, int terms, float* coefficients) {
    const double low = std::numbers::sqrt2 / 2 - 1, high = std::numbers::sqrt2 - 1;
    const auto n = static_cast<std::size_t>(terms);
    std::array<double, qx::kPowerTerms> at{}, q{}, sum{};
    for (std::size_t i = 0; i < n; ++i) {
        const double angle = std::numbers::pi * (2 * static_cast<double>(i) + 1) / (2 * terms);
        at[i] = static_cast<float>((low + high) / 2 + (high - low) / 2 * std::cos(angle));
        q[i] = power_over_u(g, at[i]);
    }
    for (std::size_t k = 1; k < n; ++k) {
        for (std::size_t i = n - 1; i >= k; --i) q[i] = (q[i] - q[i - 1]) / (at[i] - at[i - k]);
    }
    for (std::size_t k = n; k-- > 0;) {
        for (std::size_t i = n - 1; i > 0; --i) sum[i] = sum[i - 1] - at[k] * sum[i];
        sum[0] = q[k] - at[k] * sum[0];
    }
    for (std::size_t i = 0; i < n; ++i) coefficients[i] = static_cast<float>(sum[i]);
}

float up_to_float(double x) {
    const auto near = static_cast<float>(x);
    return near < x ? std::nextafter(near, std::numeric_limits<float>::infinity()) : near;
}

/// Powers of less than 2 ^ first count as zero: of codes 2 ^ -50 is far below any, and into codes the power itself
/// is below 2 ^ -23.
qx::PowerCurve power_curve(const Formula& f, int terms) {
    qx::PowerCurve curve{};
    curve.limit = up_to_float(f.limit), curve.slope = static_cast<float>(f.slope);
    curve.foot = static_cast<float>(f.foot), curve.shift = static_cast<float>(f.shift);
    curve.lift = static_cast<float>(f.lift);
    fit_power(f.exponent, terms, curve.terms);
    const double least_base = std::max(f.limit + f.shift, 0x1p-126);
    const int negligible = f.exponent < 1 ? static_cast<int>(-23 / f.exponent) : -50;
    curve.first = std::clamp(std::max(std::ilogb(least_base) - 2, negligible) + 126, 0, 190);
    for (int place = curve.first + 1; place < 256; ++place) {
        curve.scales[place] = static_cast<float>(f.scale * std::exp2(f.exponent * (place - 126)));
    }
    return curve;
}

/// Numbers at which a curve is tried: both signs of every octave that matters, the scale, and around the limit.
std::vector<float> trials(float limit) {
    std::vector<float> x{0, limit, std::nextafter(limit, -1.0f), std::nextafter(limit, 2.0f)};
    for (int octave = -40; octave < 18; ++octave) {
        for (int i = 0; i < 32; ++i) {
            const float size = std::ldexp(1 + static_cast<float>(i) / 32, octave);
            x.insert(x.end(), {size, -size});
        }
    }
    for (int i = 1; i <= 4096; ++i) x.push_back(static_cast<float>(i) / 4096);
    return x;
}

/// Whether a curve is what the library makes of it. Into light a relative error counts, out of light the error beside
/// full; with few terms, for 8 bits, a hundredth of a code.
bool holds(const qx::PowerCurve& made, const cmsToneCurve* law, FormCurves::Side side, int terms,
           const qx::ColourKernels& kernels) {
    const std::vector<float> x = trials(made.limit);
    const double offset = std::fabs(made.foot) + std::fabs(made.lift);
    std::vector<float> y(x.size());
    kernels.power(made, terms, static_cast<std::int64_t>(x.size()), x.data(), y.data());
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double wanted = cmsEvalToneCurveFloat(law, x[i]), size = std::fabs(wanted);
        const double bound = terms == qx::kPowerTerms8      ? 3e-5 * std::max(size, 1.0)
                             : side == FormCurves::Side::in ? 6e-7 * size + 1e-7 * offset + 1e-13
                                                            : 2.5e-7 * std::max(size, 1.0);
        if (!(std::fabs(static_cast<double>(y[i]) - wanted) <= bound)) return false;
    }
    return true;
}

/// Its values at 65,536 steps are all that there is of it.
bool is_table(const cmsToneCurve* curve) {
    return cmsGetToneCurveParams(curve) == nullptr && cmsIsToneCurveMultisegment(curve) == 0;
}

bool is_line(const cmsToneCurve* curve) {
    const cmsFloat64Number* p = cmsGetToneCurveParams(curve);
    return p != nullptr && std::abs(cmsGetToneCurveParametricType(curve)) == 1 && p[0] == 1;
}

bool same(const cmsToneCurve* a, const cmsToneCurve* b) {
    if (a == b) return true;
    if (is_table(a) != is_table(b)) return false;
    if (is_table(a)) {
        const auto count = cmsGetToneCurveEstimatedTableEntries(a);
        return cmsGetToneCurveEstimatedTableEntries(b) == count &&
               std::memcmp(cmsGetToneCurveEstimatedTable(a), cmsGetToneCurveEstimatedTable(b), 2 * count) == 0;
    }
    const cmsFloat64Number *p = cmsGetToneCurveParams(a), *q = cmsGetToneCurveParams(b);
    const int type = cmsGetToneCurveParametricType(a);
    return p != nullptr && q != nullptr && type != 0 && type == cmsGetToneCurveParametricType(b) &&
           std::equal(p, p + 7, q);
}

/// The curve before that of colour i which equals it, or i.
std::size_t first_like(cmsToneCurve* const* curves, std::size_t i) {
    std::size_t k = 0;
    while (k < i && !same(curves[k], curves[i])) ++k;
    return k;
}

}  // namespace

bool FormCurves::make_for_floats(cmsToneCurve* const* curves, Side side, int terms, const qx::ColourKernels& kernels) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    curves_.lowest = -infinity, curves_.highest = infinity;
    curves_.outside = std::numeric_limits<float>::quiet_NaN();
    if (curves == nullptr) return true;
    curves_.lowest = std::nextafter(kOutside, 0.0f), curves_.highest = -kOutside, curves_.outside = kOutside;
    if (std::all_of(curves, curves + 3, is_line)) return true;
    if (std::all_of(curves, curves + 3, is_table)) {
        kind_ = qx::CurveKind::steps;
        return make_values(steps_, curves, [](const cmsToneCurve* curve, std::size_t place) {
            const auto step = static_cast<cmsUInt16Number>(place);
            return static_cast<float>(cmsEvalToneCurve16(curve, step) / 65535.0);
        });
    }
    kind_ = qx::CurveKind::power;
    return make_powers(curves, side, terms, kernels);
}

bool FormCurves::make_for_codes(cmsToneCurve* const* curves, bool eight) {
    kind_ = qx::CurveKind::codes;
    const auto value_over = [](float full) {
        return [full](const cmsToneCurve* curve, std::size_t code) {
            const float x = static_cast<float>(code) / full;
            return curve == nullptr ? x : cmsEvalToneCurveFloat(curve, x);
        };
    };
    return eight ? make_values(codes8_, curves, value_over(255)) : make_values(codes16_, curves, value_over(32768));
}

bool FormCurves::make_powers(cmsToneCurve* const* curves, Side side, int terms, const qx::ColourKernels& kernels) {
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t like = first_like(curves, i);
        if (like == i) {
            const auto formula = formula_of(curves[i]);
            if (!formula) return false;
            powers_[i] = std::make_unique<TrackedPower>();
            powers_[i]->curve = power_curve(*formula, terms);
            if (!holds(powers_[i]->curve, curves[i], side, terms, kernels)) return false;
        }
        curves_.powers[i] = &powers_[like]->curve;
    }
    return true;
}

template <std::size_t Count, class Value>
bool FormCurves::make_values(std::array<std::unique_ptr<CurveValues<Count>>, 3>& owned, cmsToneCurve* const* curves,
                             const Value& value) {
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t like = curves == nullptr ? 0 : first_like(curves, i);
        if (like == i) {
            owned[i] = std::make_unique<CurveValues<Count>>();
            const cmsToneCurve* curve = curves == nullptr ? nullptr : curves[i];
            for (std::size_t k = 0; k < Count; ++k) {
                owned[i]->at[k] = value(curve, k);
                if (!(std::fabs(owned[i]->at[k]) < 1e6f)) return false;
            }
        }
        curves_.values[i] = owned[like]->at;
    }
    return true;
}

}  // namespace standalone
