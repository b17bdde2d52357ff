// SPDX-License-Identifier: Apache-2.0
#include <array>

#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Slots.h"
#include "QX/iterate/QX_Iterate.h"
#include "QX/iterate/QX_IterateT.h"

namespace qx {

namespace {

constexpr std::uint32_t kDeepFlag = 1;

constexpr auto kIdentity = [] {
    std::array<std::uint8_t, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<std::uint8_t>(i);
    return table;
}();

const std::uint8_t* or_identity(const std::uint8_t* table) { return table != nullptr ? table : kIdentity.data(); }

/// Kept: only the 16-bit flag is asked for; the format code of a float world is not seen.
bool is_deep(const QX_LayerDef* world) { return world != nullptr && (world->world_flags & kDeepFlag) != 0; }

struct Tables {
    const std::uint8_t *alpha, *red, *green, *blue;

    QX_Pixel8 operator()(const QX_Pixel8& in) const {
        return {alpha[in.alpha], red[in.red], green[in.green], blue[in.blue]};
    }
};

}  // namespace

int iterate_lut_plain(QX_InData* in_data, std::int32_t base, std::int32_t final, QX_LayerDef* src, const M_LRect* area,
                      const std::uint8_t* a_lut, const std::uint8_t* r_lut, const std::uint8_t* g_lut,
                      const std::uint8_t* b_lut, QX_LayerDef* dst) {
    if (const int code = iterate::check(src, dst, !is_deep(src) && !is_deep(dst), Place::iterate)) return code;
    M_LRect rect;
    if (!iterate::clip_to_both(area, src, *dst, &rect)) return 0;
    const Tables map{or_identity(a_lut), or_identity(r_lut), or_identity(g_lut), or_identity(b_lut)};
    return iterate::for_rows(rect, iterate::RowPoll{in_data, base, final}, [&](std::int32_t y) {
        QX_Pixel8* out = row_of<QX_Pixel8>(*dst, y);
        const QX_Pixel8* in = src != nullptr ? row_of<QX_Pixel8>(*src, y) : out;
        for (std::int32_t x = rect.left; x < rect.right; ++x) out[x] = map(in[x]);
        return 0;
    });
}

}  // namespace qx

int QX_IterateLUT(QX_InData* in_data, std::int32_t base, std::int32_t final, QX_LayerDef* src, const M_LRect* area,
                  const std::uint8_t* a_lut, const std::uint8_t* r_lut, const std::uint8_t* g_lut,
                  const std::uint8_t* b_lut, QX_LayerDef* dst) {
    return qx::guarded([&] {
        return qx::slot<qx::Slot::IterateLUT>()(in_data, base, final, src, area, a_lut, r_lut, g_lut, b_lut, dst);
    });
}
