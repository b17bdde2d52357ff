// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_RoutineTypes.h"

/// The transfer modes, as X(number, name). -1 is no mode; negative ones have rows, but no function of one pixel.
#define QX_NEGATIVE_MODES(X) \
    X(-3, replace)           \
    X(-2, mask_crossfade)
#define QX_PIXEL_MODES(X)              \
    X(0, copy)                         \
    X(1, behind)                       \
    X(2, over)                         \
    X(3, dissolve)                     \
    X(4, add)                          \
    X(5, multiply)                     \
    X(6, screen)                       \
    X(7, overlay)                      \
    X(8, soft_light)                   \
    X(9, hard_light)                   \
    X(10, darken)                      \
    X(11, lighten)                     \
    X(12, difference_premul)           \
    X(13, hue)                         \
    X(14, saturation)                  \
    X(15, colour)                      \
    X(16, luminosity)                  \
    X(17, alpha_multiply)              \
    X(18, alpha_multiply_luma)         \
    X(19, alpha_multiply_inverse)      \
    X(20, alpha_multiply_inverse_luma) \
    X(21, premul_over)                 \
    X(22, alpha_add)                   \
    X(23, dodge_premul)                \
    X(24, burn_premul)                 \
    X(25, exclusion)                   \
    X(26, difference)                  \
    X(27, dodge)                       \
    X(28, burn)                        \
    X(29, linear_dodge)                \
    X(30, linear_burn)                 \
    X(31, linear_light)                \
    X(32, vivid_light)                 \
    X(33, pin_light)                   \
    X(34, hard_mix)                    \
    X(35, lighter_colour)              \
    X(36, darker_colour)               \
    X(37, subtract)                    \
    X(38, divide)                      \
    X(39, threshold_blue)              \
    X(40, marker_guard)
#define QX_TRANSFER_MODES(X) \
    QX_NEGATIVE_MODES(X)     \
    QX_PIXEL_MODES(X)

enum QX_TransferMode : std::int32_t {
#define X(number, name) xfer_##name = number,
    QX_TRANSFER_MODES(X)
#undef X
};
inline constexpr int kQX_FirstMode = -3, kQX_LastMode = 40;

/// True for the numbers of QX_TransferMode.
constexpr bool QX_IsTransferMode(int xfer) { return xfer >= kQX_FirstMode && xfer <= kQX_LastMode && xfer != -1; }

/// The plain record that the host and effects fill in.
struct QX_CompositeMode {
    std::int32_t xfer;        ///< QX_TransferMode
    std::int32_t rand_seed;   ///< start seed of dissolve
    std::uint8_t opacity;     ///< on 0..255
    std::uint8_t rgb_only;    ///< non-zero: destination alpha survives
    std::uint16_t opacity16;  ///< on 0..32768
};
static_assert(sizeof(QX_CompositeMode) == 12 && offsetof(QX_CompositeMode, opacity16) == 10);

namespace qx {
/// One step of the 8-bit opacity: below it a record may have the 16-bit one alone.
inline constexpr double kOpacityStep = 0.00392156862745098;
}  // namespace qx

/// The form that the transfer routines take.
class QX_EXPORT QX_CompositeModePlus {
public:
    QX_CompositeModePlus() {}  // NOLINT(modernize-use-equals-default): leaves every field as it is
    /// The 16-bit opacity wins while it agrees with the 8-bit one within a step; else the record is old, and
    /// only the 8-bit one was filled in. Leaves `tables` alone.
    QX_CompositeModePlus(const QX_CompositeMode& mode);  // NOLINT(google-explicit-constructor): part of the interface
    QX_CompositeModePlus(int xfer, float opacity, const QX_LinearBlendingTables* tables, bool rgb_only, int rand_seed);

    std::int32_t xfer;
    std::int32_t rand_seed;
    bool rgb_only;
    const QX_LinearBlendingTables* tables;  ///< carried; the `tables` argument of a transfer is what counts
    float opacity;                          ///< 0 to 1
};
static_assert(sizeof(QX_CompositeModePlus) == 32 && offsetof(QX_CompositeModePlus, opacity) == 24);

/// The form that a row routine of one depth takes.
template <class Pixel> struct QX_EXPORT QX_BlendingMode {
    using Channel = QX_ChannelOf<Pixel>;
    std::int32_t xfer;
    std::int32_t rand_seed;
    Channel opacity;
    std::uint8_t rgb_only;  ///< 0 or 1

    QX_BlendingMode() = default;
    explicit QX_BlendingMode(const QX_CompositeModePlus& mode);
};

/// An exported fact for the host about a mode; nothing in the library reads it. @return 1 or 0
QX_EXPORT int QX_GetTransferFlags(int xfer);
