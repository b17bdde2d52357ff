// SPDX-License-Identifier: Apache-2.0
// What effects share: steps of a watch, rows on all threads, colours into their alpha and back.
#pragma once

#include <algorithm>
#include <atomic>

#include "QX/iterate/QX_Bands.h"
#include "pictures/Pixels.h"
#include "platform/standalone/Host.h"
#include "platform/tesselcore_Threads.h"
#include "scene/Faults.h"
#include "scene/RowCount.h"
#include "scene/effects/Effect.h"

namespace qx::scene {

/// One of several steps of equal weight that a watch hears of as one work.
class StepWatch : public pictures::Watch {
public:
    StepWatch(pictures::Watch& whole, int step, int steps) : whole_(whole), step_(step), steps_(steps) {}
    bool stops() const noexcept override { return whole_.stops(); }
    void rows(std::int64_t done, std::int64_t total) noexcept override {
        if (total > 0) whole_.rows(step_ * kFine + kFine * done / total, steps_ * kFine);
    }

private:
    static constexpr std::int64_t kFine = 1 << 16;
    pictures::Watch& whole_;
    const int step_, steps_;
};

/// Calls work(band, part) for bands of `count` rows on all threads; it gives back a code. Throws Stopped or WorkFault.
template <class Work> void on_all_bands(int count, const Moment& moment, pictures::Watch& watch, const Work& work) {
    RowCount rows(watch, count);
    const Bands bands({0, 0, 1, count}, std::min(standalone::BandCount(), kMaxBands));
    std::atomic<int> first_code{0};
    const auto task = [&](int i) {
        if (rows.stops() || first_code.load() != 0) return;
        RowPart part(rows, bands[i].bottom - bands[i].top);
        int none = 0;
        const int code = work(bands[i], part);
        if (code != 0) first_code.compare_exchange_strong(none, code);
        if (code == 0) part.finish();
    };
    tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors(task, bands.count());
    watch.must_go_on();
    must(first_code.load(), moment.subject);
}

/// Calls row(y) for all rows of a picture on all threads.
template <class Row> void on_all_rows(int count, const Moment& moment, pictures::Watch& watch, const Row& row) {
    on_all_bands(count, moment, watch, [&](const M_LRect& band, RowPart& part) {
        const QX_ProgressInfo progress = part.info();
        for (int y = band.top; y < band.bottom; ++y) {
            row(y);
            const int code = progress.progress_func(progress.refcon, y + 1 - band.top, band.bottom - band.top);
            if (code != 0) return code;
        }
        return 0;
    });
}

/// A routine that throws its code, or gives it back. Throws Stopped also where it ran through to its end, so that what
/// it makes needs an owner.
template <class Work> void must_do(const Moment& moment, const Work& work) {
    int code = 0;
    try {
        if constexpr (std::is_void_v<decltype(work())>) {
            work();
        } else {
            code = work();
        }
    } catch (int thrown) {
        code = thrown;
    }
    moment.watch.must_go_on();
    must(code, moment.subject);
}

/// What a routine is handed to ask and tell a watch, for a step whose rows it counts as it likes.
class StepProgress {
public:
    StepProgress(pictures::Watch& watch, int step, int steps) : watch_(watch, step, steps), rows_(watch_, kRows) {}
    QX_ProgressInfo info() { return part_.info(); }
    void finish() { part_.finish(); }

private:
    static constexpr int kRows = 1 << 10;
    StepWatch watch_;
    RowCount rows_;
    RowPart part_{rows_, kRows};
};

QX_LayerDef record_of(const QX_World& world);
/// Some rows of a world as a world, which lies where they do.
QX_LayerDef band_of(const QX_World& world, const M_LRect& band);

/// Colours times their alpha in place.
void multiply(QX_World& world, const Moment& moment);
/// Colours out of their alpha; under alpha 0 they stay.
void unmultiply(QX_World& world, const Moment& moment);

/// A clear world of the canvas's depth.
std::unique_ptr<QX_World> new_canvas(const Moment& moment, std::int64_t width, std::int64_t height, int depth);

/// Takes the canvas's pixels for the channels that are not among `selected`; what lies outside of it is clear.
/// @param selected  bits 0 to 3 for alpha, red, green, blue
/// @param left  where the canvas begins in `world`, as `top` tells of rows
void keep_channels(const Canvas& canvas, unsigned selected, int left, int top, QX_World& world);

}  // namespace qx::scene
