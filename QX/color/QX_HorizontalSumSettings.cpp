// SPDX-License-Identifier: Apache-2.0
// Horizontal sums by settings of colour: the light of these, and the sums that know of tables alone.
#include "QX/color/QX_ColorSettings.h"
#include "QX/sampling/QX_HorizontalSum.h"

namespace {

using SettingsPtr = boost::shared_ptr<QX_ColorSettings>;

const QX_LinearBlendingTables* tables_of(const SettingsPtr& settings, bool linear) {
    return settings && linear ? settings->GetLinearBlendingTables(true) : nullptr;
}

}  // namespace

template <class Pixel>
QX_HorizontalSumTable<Pixel>::QX_HorizontalSumTable(
    const QX_WorldX<Pixel>* src, int a, int b, double radius, double gain, double threshold, double saturation,
    double aspect, double rotation, bool padded,
    SettingsPtr settings,  // NOLINT(performance-unnecessary-value-param): hosts hand it over
    bool linear)
    : QX_HorizontalSumTable(src, a, b, radius, gain, threshold, saturation, aspect, rotation, padded,
                            tables_of(settings, linear)) {}

#define QX_SUMS_BY_SETTINGS(Pixel)                                          \
    template QX_EXPORT QX_HorizontalSumTable<Pixel>::QX_HorizontalSumTable( \
        const QX_WorldX<Pixel>*, int, int, double, double, double, double, double, double, bool, SettingsPtr, bool);
QX_SUMS_BY_SETTINGS(QX_Pixel8)
QX_SUMS_BY_SETTINGS(QX_Pixel16)
QX_SUMS_BY_SETTINGS(QX_PixelFloat)
#undef QX_SUMS_BY_SETTINGS
