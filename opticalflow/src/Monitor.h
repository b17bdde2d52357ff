// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

#include "opticalflow/src/Candidates.h"
#include "opticalflow/src/ImgProc.h"

namespace solvan_of {

/// Watches a field from pass to pass: which cells have changed, and what they were when it ran last.
class FnMotionEstimateGradientChangedNeighboursMonitor : public FnImgProc1<HvVec2> {
public:
    using FnImgProc1::FnImgProc1;

    /// The next run is a first one again: all cells count as changed.
    void restart() { is_first_ = true; }
    void treat_all_as_changed() { all_changed_ = true; }
    bool all_changed() const { return all_changed_; }
    bool saw_invalid() const { return saw_invalid_.load(std::memory_order_relaxed); }

    /// The neighbours of a cell that have changed, in the order below, beside, above, as they were saved.
    template <int Most> void add_changed_neighbours(std::int32_t x, std::int32_t y, Candidates<Most>& to) const {
        const auto add = [&](std::int32_t nx, std::int32_t ny) {
            if (nx < 0 || ny < 0 || nx >= saved_.width() || ny >= saved_.height()) return;
            if (all_changed_ || map_.at(nx, ny) != 0) to.add(saved_.at(nx, ny));
        };
        for (int dx = -1; dx <= 1; ++dx) add(x + dx, y + 1);
        add(x - 1, y), add(x + 1, y);
        for (int dx = -1; dx <= 1; ++dx) add(x + dx, y - 1);
    }

    const FieldTexture& saved() const { return saved_; }
    const IntTexture& map() const { return map_; }

protected:
    void initialise() override;
    void processPart(int part) override;

private:
    void begin();
    void save_rows(int part);

    IntTexture map_;
    FieldTexture saved_;
    bool is_first_ = true, all_changed_ = false;
    std::atomic<bool> saw_invalid_{false};
};

}  // namespace solvan_of
