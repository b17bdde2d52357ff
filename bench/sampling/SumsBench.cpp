// SPDX-License-Identifier: Apache-2.0
// Tables of sums of whole frames on one thread, against a copy of the frame and the plain loop of the same formula.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <climits>
#include <cstring>
#include <optional>
#include <random>
#include <string>

#include "QX/indep/QX_Depth.h"
#include "QX/sampling/QX_HorizontalSum.h"
#include "QX/sampling/QX_SummedArea.h"
#include "bench/support/Frame.h"
#include "bench/support/Register.h"
#include "platform/TK_Memory.h"

namespace {

using namespace qx::bench;
using standalone::ProcessorLevel;

enum class Work { copy, loop, table, table_in_new_pages, rows, draft, fractional };
constexpr const char* kNames[] = {"copy", "loop", "table", "table in new pages", "rows", "draft", "fractional"};

/// While it lives, memory that is given back stays with the process, so that what the system takes to make pages is not
/// measured: several times what a table takes.
struct KeptPages {
    KeptPages() {
        mallopt(M_MMAP_MAX, 0);
        mallopt(M_TRIM_THRESHOLD, INT_MAX);
    }
    ~KeptPages() {
        mallopt(M_MMAP_MAX, 65536);
        mallopt(M_TRIM_THRESHOLD, 128 * 1024);
    }
    KeptPages(const KeptPages&) = delete;
    KeptPages& operator=(const KeptPages&) = delete;
};

/// A frame of random pixels, a third of them clear and a third opaque.
template <class Pixel> std::unique_ptr<QX_World> make_frame() {
    using D = qx::DepthOf<Pixel>;
    auto world = new_frame(D::number);
    std::minstd_rand random(1);
    fill_frame<Pixel>(*world, random);
    return world;
}

/// The plain loop, one number after the other; memory as the library's.
template <class Pixel, class Cell> Cell* plain_table(const QX_World& world) {
    const std::size_t width = static_cast<std::size_t>(world.width), height = static_cast<std::size_t>(world.height);
    auto* table = static_cast<Cell*>(TK_AllocatePtr(0, "table", width * height * sizeof(Cell)));
    std::unique_ptr<QX_PixelDouble[]> above(new QX_PixelDouble[width + 1]()), made(new QX_PixelDouble[width + 1]());
    constexpr double full = qx::DepthOf<Pixel>::full;
    for (std::size_t y = 0; y < height; ++y) {
        const auto* row = reinterpret_cast<const Pixel*>(row_of(world, static_cast<int>(y)));
        Cell* const cells = table + y * width;
        double count = 0;
        for (std::size_t x = 0; x < width; ++x) {
            const auto number = [](auto channel) { return static_cast<double>(channel); };
            const double alpha = number(row[x].alpha), share = alpha < full ? alpha / full : 1;
            QX_PixelDouble p{};
            if (alpha != 0)
                p = {alpha, number(row[x].red) * share, number(row[x].green) * share, number(row[x].blue) * share};
            count += static_cast<double>(y + 1);
            const double one = 1.0 / count;
            const auto sum = [&](double QX_PixelDouble::*c) {
                return made[x + 1].*c = ((p.*c + made[x].*c) + above[x + 1].*c) - above[x].*c;
            };
            using Channel = QX_ChannelOf<Cell>;
            cells[x].alpha = static_cast<Channel>(sum(&QX_PixelDouble::alpha) * one);
            cells[x].red = static_cast<Channel>(sum(&QX_PixelDouble::red) * one);
            cells[x].green = static_cast<Channel>(sum(&QX_PixelDouble::green) * one);
            cells[x].blue = static_cast<Channel>(sum(&QX_PixelDouble::blue) * one);
        }
        std::swap(above, made);
    }
    return table;
}

/// Means of 21 by 21 pixels around every pixel.
template <class Pixel> void sample_all(const QX_SummedAreaTable& table, bool fractional, Pixel* out) {
    const auto at = [&](const auto* cells) {
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const auto fx = static_cast<float>(x), fy = static_cast<float>(y);
                if (fractional) {
                    QX_SummedAreaTable_SampleAA(kWidth, kHeight, cells, fx - 10.3f, fy - 10.3f, fx + 10.3f, fy + 10.3f,
                                                out + x);
                } else {
                    QX_SummedAreaTable_SampleDraft(kWidth, kHeight, cells, x - 10, y - 10, x + 11, y + 11, out + x);
                }
            }
        }
    };
    table.use_double ? at(table.double_table) : at(table.float_table);
}

template <class Pixel> void run(benchmark::State& state, Work work, ProcessorLevel level) {
    using Cell = std::conditional_t<qx::DepthOf<Pixel>::number == 32, QX_PixelDouble, QX_PixelFloat>;
    be_born(level);
    static const auto frame = make_frame<Pixel>(), other = make_frame<Pixel>();
    std::optional<KeptPages> pages;
    if (work != Work::table_in_new_pages) {
        pages.emplace();
        QX_SummedAreaTable(frame.get(), false);  // makes them
    }
    std::optional<QX_SummedAreaTable> sampled;
    if (work == Work::draft || work == Work::fractional) sampled.emplace(frame.get(), false);
    for (auto _ : state) {
        switch (work) {
            case Work::copy:
                std::memcpy(other->data, frame->data, frame_bytes(*frame));
                break;
            case Work::loop:
                TK_FreePtr(plain_table<Pixel, Cell>(*frame));
                break;
            case Work::table:
            case Work::table_in_new_pages:
                QX_SummedAreaTable(frame.get(), false);
                break;
            case Work::rows:
                QX_HorizontalSumTable<Pixel>(static_cast<const QX_WorldX<Pixel>*>(frame.get()), 0, 0, 0, 0, 0, 0, 1, 0,
                                             false, static_cast<const QX_LinearBlendingTables*>(nullptr));
                break;
            case Work::draft:
            case Work::fractional:
                sample_all(*sampled, work == Work::fractional, reinterpret_cast<Pixel*>(other->data));
                break;
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

template <class Pixel> void add() {
    const auto add_one = [](Work work, ProcessorLevel level) {
        add_bench("sums", kNames[static_cast<int>(work)], qx::DepthOf<Pixel>::number, level,
                  [=](benchmark::State& s) { run<Pixel>(s, work, level); });
    };
    for (const Work work : {Work::copy, Work::loop}) add_one(work, ProcessorLevel::plain);
    for (const auto level : kLevels) {
        add_one(Work::table, level);
    }
    for (const Work work : {Work::table_in_new_pages, Work::rows, Work::draft, Work::fractional}) {
        add_one(work, ProcessorLevel::widest);
    }
}

[[maybe_unused]] const bool added = (add<QX_Pixel8>(), add<QX_Pixel16>(), add<QX_PixelFloat>(), true);

}  // namespace
