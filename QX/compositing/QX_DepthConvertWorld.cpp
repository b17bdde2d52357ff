// SPDX-License-Identifier: Apache-2.0
#include <cstddef>

#include "QX/compositing/QX_LinearLookup.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/pixelops/QX_MoveRows.h"
#include "QX/world/QX_World.h"

namespace {

using namespace qx;

/// One pixel between an encoded integer world and a linear float one, or between two integer depths.
template <class To, class From> To convert(const QX_LinearBlendingTables& tables, const From& p) {
    if constexpr (std::is_same_v<To, From>) {
        return p;
    } else if constexpr (std::is_same_v<To, QX_PixelFloat>) {
        const auto colour = [&](auto c) {
            const std::int32_t linear =
                std::is_same_v<From, QX_Pixel8> ? tables.to_linear[c & 255] : to_linear16(tables, c);
            return static_cast<float>(linear) * kRow16ToFloat;
        };
        const float scale = std::is_same_v<From, QX_Pixel8> ? kRow8ToFloat : kRow16ToFloat;
        return {static_cast<float>(p.alpha) * scale, colour(p.red), colour(p.green), colour(p.blue)};
    } else if constexpr (std::is_same_v<From, QX_PixelFloat>) {
        using Channel = QX_ChannelOf<To>;
        const auto colour = [&](float c) {
            const std::int32_t linear = colour_from_float<QX_Pixel16>(c);
            const std::int32_t encoded = from_linear16(tables, linear);
            if constexpr (std::is_same_v<To, QX_Pixel8>) {
                return narrow_16_to_8(static_cast<std::uint32_t>(encoded));
            } else {
                return static_cast<Channel>(encoded);
            }
        };
        return {alpha_from_float<To>(p.alpha), colour(p.red), colour(p.green), colour(p.blue)};
    } else {
        return convert_pixel<To, float>(p);
    }
}

template <class From, class To>
void convert_world(const QX_LinearBlendingTables& tables, const QX_World& src, QX_World& dst) {
    if constexpr (std::is_same_v<From, To>) {
        const M_LRect all = whole_of(dst);
        move_rows({src.data, src.rowbytes}, {dst.data, dst.rowbytes}, columns_of(all) * sizeof(To), rows_of(all));
    } else {
        for (int y = 0; y < dst.height; ++y) {
            const From* from = row_of<From>(src, y);
            To* to = row_of<To>(dst, y);
            for (int x = 0; x < dst.width; ++x) to[x] = convert<To>(tables, from[x]);
        }
    }
}

/// Only the way between a float world and an integer one reads the tables.
const QX_LinearBlendingTables& tables_for(const QX_LinearBlendingTables* tables, int from, int to) {
    static constexpr QX_LinearBlendingTables unread{};
    if (tables != nullptr) return *tables;
    if ((from == 32) != (to == 32)) {
        throw report_failed_verification(Place::depth_convert, "Invalid tables for linearized blending");
    }
    return unread;
}

}  // namespace

void QX_DepthConvertWorld(const QX_LinearBlendingTables* tables, const QX_World* src, QX_World* dst) {
    if (src->width != dst->width || src->height != dst->height) return;
    const QX_LinearBlendingTables& lookups = tables_for(tables, src->Depth(), dst->Depth());
    constexpr const char* unknown_depth = "Unknown bit depth attempting to depth convert.";
    must_have_depth(
        src->Depth(), Place::depth_convert,
        [&]<class From>() {
            must_have_depth(
                dst->Depth(), Place::depth_convert, [&]<class To>() { convert_world<From, To>(lookups, *src, *dst); },
                unknown_depth);
        },
        unknown_depth);
}
