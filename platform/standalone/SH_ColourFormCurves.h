// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <lcms2.h>

#include <array>
#include <cstddef>
#include <memory>

#include "platform/TK_Memory.h"
#include "platform/standalone/SH_ColourKernels.h"

/// Curves of the colour library as the kernels of colour chains work them out.
namespace standalone {

template <std::size_t Count> struct CurveValues : TK_MemTrackedObject { float at[Count]; };
struct TrackedPower : TK_MemTrackedObject {
    qx::PowerCurve curve;
};

/// Three curves, which share what is equal. What makes them throws std::bad_alloc.
class FormCurves {
public:
    enum class Side { in, out };

    /// Curves on floats: null for none. @return false where a curve is not one that the kernels know
    bool make_for_floats(cmsToneCurve* const* curves, Side side, int terms, const qx::ColourKernels& kernels);
    /// What the curves answer to the codes of 8 bits or of 16 bits. @return false where that is no number to work with
    bool make_for_codes(cmsToneCurve* const* curves, bool eight);

    qx::CurveKind kind() const { return kind_; }
    const qx::ColourCurves& curves() const { return curves_; }

private:
    bool make_powers(cmsToneCurve* const* curves, Side side, int terms, const qx::ColourKernels& kernels);
    template <std::size_t Count, class Value>
    bool make_values(std::array<std::unique_ptr<CurveValues<Count>>, 3>& owned, cmsToneCurve* const* curves,
                     const Value& value);

    qx::CurveKind kind_ = qx::CurveKind::line;
    qx::ColourCurves curves_{};
    std::array<std::unique_ptr<TrackedPower>, 3> powers_;
    std::array<std::unique_ptr<CurveValues<qx::kSteps>>, 3> steps_;
    std::array<std::unique_ptr<CurveValues<256>>, 3> codes8_;
    std::array<std::unique_ptr<CurveValues<32769>>, 3> codes16_;
};

}  // namespace standalone
