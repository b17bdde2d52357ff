// SPDX-License-Identifier: Apache-2.0
// Against black: worlds and rows, by the filters that stand in the table of slots.
#include "QX/pixelops/QX_Premul.h"

#include <array>

#include "QX/indep/QX_ColourTables.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_SlotsOf.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/iterate/QX_Iterate.h"
#include "QX/pixelops/QX_PremulRows.h"

namespace {

using qx::Slot;

template <class Pixel> qx::FilterFn<Pixel>* black_filter(bool forward) {
    return qx::filter_slot<Pixel>(qx::filter_place(0, forward));
}

template <class Pixel> int filter_rows(void* effect_ref, bool forward, const M_LRect* rect, const QX_LayerDef& world) {
    const M_LRect area = qx::clip_to(world, rect);
    const auto filter = black_filter<Pixel>(forward);
    const std::int32_t columns = static_cast<std::int32_t>(qx::columns_of(area));
    return qx::run_rows(&QX_IterateGeneric_Static, effect_ref, area,
                        [&](std::int32_t y) { filter(columns, nullptr, qx::pixel_at<Pixel>(world, area.left, y)); });
}

/// What the colour adds to a pixel by the pixel's alpha.
using MatteTable = std::array<QX_Pixel8, 256>;

MatteTable matte_table(const QX_Pixel8& colour) {
    MatteTable table{};
    for (unsigned i = 0; i < 256; ++i) {
        table[i] = {static_cast<std::uint8_t>(255 - i), colour.red, colour.green, colour.blue};
    }
    black_filter<QX_Pixel8>(true)(256, nullptr, table.data());
    return table;
}

/// Opaque pixels find an entry of zeros.
template <bool Add> void move_row(const MatteTable& table, std::size_t columns, QX_Pixel8* row) {
    const auto moved = [](int c, int k) { return static_cast<std::uint8_t>(Add ? c + k : c - k); };
    for (std::size_t i = 0; i < columns; ++i) {
        const QX_Pixel8& k = table[row[i].alpha];
        row[i] = {row[i].alpha, moved(row[i].red, k.red), moved(row[i].green, k.green), moved(row[i].blue, k.blue)};
    }
}

}  // namespace

int QX_Premul(void* effect_ref, bool forward, QX_LayerDef* world) {
    if (qx::is_gpu_world(world)) return qx::report_gpu_world(qx::Place::premul);
    return QX_PremulRect(effect_ref, forward, nullptr, world);
}

int QX_PremulRect(void* effect_ref, bool forward, const M_LRect* rect, QX_LayerDef* world) {
    return qx::guarded([&] { return qx::slot<Slot::PremulRect>()(effect_ref, forward, rect, world); });
}

int QX_PremulRect_S(void* effect_ref, bool forward, const M_LRect* rect, QX_LayerDef* world) {
    if (qx::is_gpu_world(world)) return qx::report_gpu_world(qx::Place::premul);
    if (world == nullptr || world->data == nullptr) return qx::report_bad_parameter(qx::Place::missing_pixels);
    return qx::with_depth(*world, qx::Place::premul,
                          [&]<class Pixel>() { return filter_rows<Pixel>(effect_ref, forward, rect, *world); });
}

int QX_BlackMatte(void*, std::int32_t count, const QX_Pixel8* src, QX_Pixel8* dst) {
    return black_filter<QX_Pixel8>(true)(count, src, dst);
}

int QX_BlackMatteARGB(void*, std::int32_t count, QX_Pixel8* pixels) {
    return black_filter<QX_Pixel8>(true)(count, nullptr, pixels);
}

int QX_DeBlackMatte(void*, std::int32_t count, const QX_Pixel8* src, QX_Pixel8* dst) {
    return black_filter<QX_Pixel8>(false)(count, src, dst);
}

int QX_DeBlackMatteARGB(void*, std::int32_t count, QX_Pixel8* pixels) {
    for (std::int32_t i = 0; i < count; ++i) {
        QX_Pixel8& p = pixels[i];
        const std::uint8_t* quotients = QXp_G_fcd_table + p.alpha * 256;  // row 255 leaves channels as they are
        p = p.alpha == 0 ? QX_Pixel8{} : QX_Pixel8{p.alpha, quotients[p.red], quotients[p.green], quotients[p.blue]};
    }
    return 0;
}

int QX_MatteBlackToMatteColorARGB(QX_LayerDef* world, const QX_Pixel8* colour, bool reverse) {
    if (qx::is_gpu_world(world)) return qx::report_gpu_world(qx::Place::premul);
    if (world == nullptr || world->data == nullptr) return qx::report_bad_parameter(qx::Place::missing_pixels);
    if (QXp_WorldDepth(world) != 8) {
        return qx::report_failed_verification(qx::Place::premul,
                                              "QX_MatteBlackToMatteColorARGB only works on 8bpc QX_EffectWorlds");
    }
    if (colour == nullptr || (colour->red == 0 && colour->green == 0 && colour->blue == 0)) return 0;
    const MatteTable table = matte_table(*colour);
    const M_LRect area = qx::whole_of(*world);
    const std::size_t columns = qx::columns_of(area);
    return qx::run_rows(qx::slot<Slot::IterateGeneric>(), nullptr, area, [&](std::int32_t y) {
        const auto move = reverse ? &move_row<true> : &move_row<false>;
        move(table, columns, qx::pixel_at<QX_Pixel8>(*world, 0, y));
    });
}
