// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_LazyTiles.h"

#include <algorithm>

#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/world/QX_UnoRows.h"

namespace {

using namespace qx;

/// The checked size of tiles of an operator.
std::int16_t checked(short tile_size, const boost::scoped_ptr<QX_LazyOperator>* op) {
    if (tile_size < 1 || op == nullptr || op->get() == nullptr) throw report_bad_parameter(Place::lazy_tiles);
    return tile_size;
}

constexpr std::int16_t tiles_in(std::int32_t length, std::int32_t tile_size) {
    return static_cast<std::int16_t>(std::max(0, (length + tile_size - 1) / tile_size));
}

}  // namespace

QX_LazyOperator::~QX_LazyOperator() = default;

QX_LazyFillUnoBufferOperator::QX_LazyFillUnoBufferOperator(boost::scoped_ptr<QX_UnoBuffer>* buffer, std::uint16_t value)
    : value_(value) {
    if (buffer == nullptr || !is_live(buffer->get())) throw report_damaged_mask();
    buffer_.swap(*buffer);
}

M_Vector2T<short> QX_LazyFillUnoBufferOperator::GetExtent() const {
    return {static_cast<short>(buffer_->width), static_cast<short>(buffer_->height)};
}

void QX_LazyFillUnoBufferOperator::DoItImp(const M_Rect& rect) {
    const M_LRect r = M_RectToLRect(rect);
    throw_if(buffer_->depth == 16 ? QX_FillDeepUnoBuffer(value_, &r, buffer_.get())
                                  : QX_FillUnoBuffer(static_cast<std::uint8_t>(value_), &r, buffer_.get()));
}

QX_LazyTiles::QX_LazyTiles(short size, boost::scoped_ptr<QX_LazyOperator>* worker) : tile_size(checked(size, worker)) {
    op.swap(*worker);
    const M_Vector2T<short> extent = op->GetExtent();
    tiles_x = tiles_in(extent.x, tile_size);
    tiles_y = tiles_in(extent.y, tile_size);
    valid.assign(static_cast<std::size_t>(tiles_y), std::vector<bool>(static_cast<std::size_t>(tiles_x)));
}

void QX_LazyTiles::MakeValid(const M_Rect& rect) {
    MakeTargetValid({rect.left + offset.x, rect.top + offset.y, rect.right + offset.x, rect.bottom + offset.y});
}

void QX_LazyTiles::MakeTargetValid(const M_LRect& rect) {
    const M_Vector2T<short> extent = op->GetExtent();
    M_LRect r;
    if (!M_SectLRect(rect, {0, 0, extent.x, extent.y}, &r)) return;
    // An operator may have grown since its tiles were laid out.
    const std::int32_t last = std::min((r.right - 1) / tile_size, tiles_x - 1);
    const std::int32_t last_row = std::min((r.bottom - 1) / tile_size, tiles_y - 1);
    for (std::int32_t row = r.top / tile_size; row <= last_row; ++row) {
        MakeRowValid(row, r.left / tile_size, last, extent);
    }
}

void QX_LazyTiles::MakeRowValid(std::int32_t row, std::int32_t first, std::int32_t last, M_Vector2T<short> extent) {
    const auto place = [this](std::int32_t tile, std::int32_t length) {
        return static_cast<std::int16_t>(std::min(tile * tile_size, length));
    };
    const auto bits = valid[static_cast<std::size_t>(row)].begin();
    const auto end = bits + last + 1;
    for (auto run = std::find(bits + std::min(first, last + 1), end, false); run != end;) {
        const auto stop = std::find(run, end, true);
        std::fill(run, stop, true);
        op->DoIt({place(row, extent.y), place(static_cast<std::int32_t>(run - bits), extent.x),
                  place(row + 1, extent.y), place(static_cast<std::int32_t>(stop - bits), extent.x)});
        run = std::find(stop, end, false);
    }
}

QX_LazyTilesCondition::QX_LazyTilesCondition(short tile_size, boost::scoped_ptr<QX_LazyOperator>* op, bool on)
    : QX_LazyTiles(tile_size, op), condition(on) {}

void QX_LazyTilesCondition::ConditionalMakeValid(const M_Rect& rect) {
    if (condition) MakeTargetValid(M_RectToLRect(rect));
}
