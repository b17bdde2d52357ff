// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/CandidateRows.h"

#include <algorithm>

namespace solvan_of {
namespace {

constexpr std::int32_t kNone = INT32_MIN;

}  // namespace

CandidateRows::CandidateRows(std::int32_t width, std::int32_t reach)
    : width_(width),
      reach_(reach),
      kept_(2 * reach + 1),
      vectors_(engineBlock<float>(2 * static_cast<std::size_t>(kept_) * qx::padded_row(width))),
      changed_(engineBlock<std::int32_t>(static_cast<std::size_t>(kept_) * qx::padded_row(width))),
      lines_(engineBlock<std::int32_t>(static_cast<std::size_t>(kept_))) {
    if (vectors_ == nullptr || changed_ == nullptr || lines_ == nullptr) throw 4;
    std::fill_n(lines_.get(), kept_, kNone);
}

qx::CandidateRow CandidateRows::slot(std::int32_t y) const {
    const auto place = static_cast<std::size_t>((y + kept_) % kept_);
    const std::size_t step = qx::padded_row(width_);
    float* const x = vectors_.get() + 2 * place * step + qx::kRowPadding;
    return {x, x + step, changed_.get() + place * step + qx::kRowPadding};
}

template <class MapRow>
void CandidateRows::around(const FieldTexture& field, const MapRow& map_row, std::int32_t y,
                           qx::CandidateRow (&rows)[3]) {
    for (int k = 0; k < 3; ++k) {
        const std::int32_t line = y + (k - 1) * reach_;
        rows[k] = slot(line);
        std::int32_t& kept = lines_[(line + kept_) % kept_];
        if (kept == line) continue;
        kept = line;
        const bool inside = line >= 0 && line < field.height();
        kernels().choice->spread(inside ? field.row(line) : nullptr, inside ? map_row(line) : nullptr, width_, rows[k]);
    }
}

void CandidateRows::around(const FieldTexture& field, std::int32_t y, qx::CandidateRow (&rows)[3]) {
    around(
        field, [](std::int32_t) -> const std::int32_t* { return nullptr; }, y, rows);
}

void CandidateRows::around(const FnMotionEstimateGradientChangedNeighboursMonitor& monitor, std::int32_t y,
                           qx::CandidateRow (&rows)[3]) {
    around(
        monitor.saved(),
        [&](std::int32_t line) {
            return monitor.all_changed() ? nullptr : static_cast<const std::int32_t*>(monitor.map().row(line));
        },
        y, rows);
}

}  // namespace solvan_of
