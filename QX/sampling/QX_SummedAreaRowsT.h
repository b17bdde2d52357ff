// SPDX-License-Identifier: Apache-2.0
// Body of the building of summed-area tables, for one level. A sum waits for that to its left, so rows one below
// another are worked on at once, each a column behind the one above it: a wave.
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Depth.h"
#include "QX/sampling/QX_SummedAreaKernels.h"
#include "lanes/Doubles.h"
#include "lanes/Level.h"
#include "lanes/PixelAccess.h"
#include "lanes/Streams.h"

namespace qx::QX_ISA {

/// The four channels of one sum, and of as many rows' as a register holds.
using OneRow = Vector<double, 32>;
using WideRows = Vector<double, kRegister == 64 ? 64 : 32>;
template <class V> inline constexpr int rows_in = lanes_in<V> / 4;

/// From one value a row, which follow each other from `first` on, to one a channel.
template <class V, int first, class Q> QX_INLINE V spread(Q values) {
    if constexpr (is_wide<Q>) {
        return reordered(values, values, [](int lane) { return first + lane / 4; });
    } else {
        return V{values, values, values, values};
    }
}

/// The lower or the upper half of a register where so many bytes are half of it, all of it where they are all.
template <std::size_t bytes, int at, class V> QX_INLINE Vector<NumberOf<V>, bytes> part_of(V v) {
    using Part [[maybe_unused]] = Vector<NumberOf<V>, bytes>;
    if constexpr (bytes == sizeof v) {
        return v;
#ifdef __AVX2__
    } else if constexpr (sizeof v == 32) {
        return (Part)_mm256_extractf128_pd((__m256d)v, at);
#endif
#ifdef __AVX512F__
    } else {
        return (Part)_mm512_extractf64x4_pd((__m512d)v, at);
#endif
    }
}
/// Two registers as one of twice their width.
template <class H> QX_INLINE auto of_both(H low, H high) {
    using V = Vector<NumberOf<H>, 2 * sizeof(H)>;
#ifdef __AVX2__
    if constexpr (sizeof(H) == 16) {
        return (V)_mm256_insertf128_pd(_mm256_castpd128_pd256((__m128d)low), (__m128d)high, 1);
#ifdef __AVX512F__
    } else {
        return (V)_mm512_insertf64x4(_mm512_castpd256_pd512((__m256d)low), (__m256d)high, 1);
#endif
    }
#else
    return V{low[0], high[0]};
#endif
}

/// Channels to doubles, and doubles to floats. A level without a register of 32 bytes leaves it to the compiler.
template <class V, class T> QX_INLINE V as_sums(T channels) {
    if constexpr (kRegister >= 32) {
        return to_double(channels);
    } else {
        return __builtin_convertvector(channels, V);
    }
}
template <class V> QX_INLINE auto as_floats(V sums) {
    if constexpr (kRegister >= 32) {
        return narrowed_to_float(sums);
    } else {
        return __builtin_convertvector(sums, Vector<float, sizeof(V) / 2>);
    }
}

/// Pixels, one a row, of which the colours are multiplied by their share of full alpha. Alphas above full count as
/// full.
template <class V, class Pixel> QX_INLINE V multiplied(const Pixel* const (&p)[rows_in<V>]) {
    constexpr int depth = DepthOf<Pixel>::number;
    using Channels = Vector<std::conditional_t<depth == 32, float, std::int32_t>, 16>;
    const auto sums = [&]<class Get>(const Get& get) QX_LAMBDA {
        if constexpr (rows_in<V> == 1) {
            return get(p[0]);
        } else {
            return of_both(get(p[0]), get(p[1]));
        }
    };
    const V v =
        as_sums<V>(sums([](const Pixel* one) QX_LAMBDA { return load_channels<Channels, QX_ChannelOf<Pixel>>(one); }));
    if constexpr (depth == 8) {
        return v * sums([](const Pixel* one) QX_LAMBDA { return load_lanes<OneRow>(shares_of_8.of[one->alpha]); });
    } else {
        const V one = V{} + 1.0, alpha = reordered(v, v, [](int lane) { return lane & ~3; });
        const V share = depth == 16 ? alpha * (1.0 / Depth16::full) : alpha;
        const V product = v * (one < share ? one : share);
        const V pixel = reordered(v, product, [](int lane) { return lane % 4 == 0 ? lane : lane + lanes_in<V>; });
        return depth == 16 ? pixel : alpha == 0.0 ? V{} : pixel;  // a colour may be no number
    }
}

/// A table's address is a multiple of 16 alone.
template <bool PastCaches, class Cell, class V> QX_INLINE void store_cell(Cell* cell, V mean) {
    if constexpr (!PastCaches) {
        store_lanes(cell, mean);
    } else if constexpr (sizeof(V) == 16) {
        stream_lanes(cell, mean);
    } else {
        stream_lanes(cell, __builtin_shufflevector(mean, mean, 0, 1));
        stream_lanes(&cell->green, __builtin_shufflevector(mean, mean, 2, 3));
    }
}

/// Rows one below another, from row `y` on, in registers of type V.
template <class Pixel, class Cell, class V, int Registers, bool PastCaches> class Wave {
public:
    static constexpr int rows = Registers * rows_in<V>;

    QX_INLINE Wave(const QX_LayerDef& world, std::int32_t y, const SumRows& sums, Cell* table)
        : width_(world.width), above_(sums.above + 1), made_(sums.made + 1) {
        for (int i = 0; i < rows; ++i) {
            source_[i] = row_of<const Pixel>(world, y + i) - i;
            cells_[i] = table + (std::ptrdiff_t{y} + i) * width_ - i;
        }
        if constexpr (rows > 1) {
            columns_ = 1.0 - lane_numbers<OfRows>();
            counts_ = lane_numbers<OfRows>() + (y + 1.0);
        } else {
            columns_ = 1.0;
            counts_ = y + 1.0;
        }
    }

    QX_INLINE void run() {
        std::ptrdiff_t at = 0;
        for (; at < std::min<std::ptrdiff_t>(rows - 1, width_); ++at) step<true>(at);
        for (; at < width_; ++at) step<false>(at);
        for (; at < width_ + rows - 1; ++at) step<true>(at);
    }

private:
    using OfRows = Vector<double, rows == 1 ? 0 : 8 * static_cast<std::size_t>(rows)>;

    /// The first row takes column `at`. At either end some rows have none: these take a clear pixel, of which the sums
    /// before the first column stay zero.
    template <bool Ends> QX_INLINE void step(std::ptrdiff_t at) {
        const OfRows share = 1.0 / (columns_ * counts_);
        columns_ += 1.0;
        backwards<Ends>(at, share, std::make_integer_sequence<int, Registers>{});
    }
    /// The last register first: it reads what the one above it made the step before.
    template <bool Ends, int... I>
    QX_INLINE void backwards(std::ptrdiff_t at, OfRows share, std::integer_sequence<int, I...>) {
        (take<Registers - 1 - I, Ends>(at, share), ...);
    }
    template <int I, bool Ends> QX_INLINE void take(std::ptrdiff_t at, OfRows share) {
        constexpr int first = I * rows_in<V>;
        const auto has = [&](int row) QX_LAMBDA { return !Ends || (at >= row && at - row < width_); };
        const Pixel clear{}, *pixels[rows_in<V>];
        for (int k = 0; k < rows_in<V>; ++k) pixels[k] = has(first + k) ? source_[first + k] + at : &clear;
        const V above = sums_above<I>(has(0) ? above_ + at : above_);
        left_[I] = ((multiplied<V>(pixels) + left_[I]) + above) - corner_[I];
        corner_[I] = above;
        store<I>(at, left_[I] * spread<V, first>(share), has);
    }
    template <int I> QX_INLINE V sums_above(const QX_PixelDouble* from) const {
        if constexpr (I == 0) {
            const auto row = load_lanes<OneRow>(from);
            if constexpr (rows_in<V> == 1) {
                return row;
            } else {
                return of_both(row, part_of<sizeof row, 0>(left_[0]));
            }
        } else if constexpr (rows_in<V> == 1) {
            return left_[I - 1];
        } else {
            return reordered(left_[I - 1], left_[I], [](int lane) { return lane + 4; });
        }
    }
    template <int I, class Has> QX_INLINE void store(std::ptrdiff_t at, V means, const Has& has) {
        const auto cells = [means]() QX_LAMBDA {
            if constexpr (sizeof(Cell) == 16) {
                return as_floats(means);
            } else {
                return means;
            }
        }();
        store_row<I * rows_in<V>>(at, part_of<sizeof(Cell), 0>(cells), has);
        if constexpr (rows_in<V> == 2) store_row<2 * I + 1>(at, part_of<sizeof(Cell), 1>(cells), has);
        if constexpr (I == Registers - 1) {
            if (has(rows - 1)) store_lanes(made_ + at - (rows - 1), part_of<sizeof(OneRow), rows_in<V> - 1>(left_[I]));
        }
    }
    template <int Row, class Mean, class Has> QX_INLINE void store_row(std::ptrdiff_t at, Mean mean, const Has& has) {
        if (has(Row)) store_cell<PastCaches>(cells_[Row] + at, mean);
    }

    const std::ptrdiff_t width_;
    const QX_PixelDouble* const above_;
    QX_PixelDouble* const made_;
    const Pixel* source_[rows];
    Cell* cells_[rows];
    OfRows columns_, counts_;
    V left_[Registers]{}, corner_[Registers]{};
};

template <class Pixel, class Cell, bool PastCaches>
QX_INLINE void sum_rows(const QX_LayerDef& world, SumRows sums, Cell* table) {
    std::int32_t y = 0;
    const auto waves = [&]<class V, int Registers>() QX_LAMBDA {
        using OfThese = Wave<Pixel, Cell, V, Registers, PastCaches>;
        for (; world.height - y >= OfThese::rows; y += OfThese::rows) {
            OfThese(world, y, sums, table).run();
            sums = {sums.made, sums.above};
        }
    };
    waves.template operator()<WideRows, 4>();
    waves.template operator()<OneRow, 1>();
}

template <class Pixel, class Cell>
void sum_world(const QX_LayerDef& world, SumRows sums, bool past_caches, Cell* table) {
    if (past_caches) {
        sum_rows<Pixel, Cell, true>(world, sums, table);
    } else {
        sum_rows<Pixel, Cell, false>(world, sums, table);
    }
}

const SummedAreaKernels summed_area_kernels{
    {&sum_world<QX_Pixel8, QX_PixelFloat>, &sum_world<QX_Pixel8, QX_PixelDouble>},
    {&sum_world<QX_Pixel16, QX_PixelFloat>, &sum_world<QX_Pixel16, QX_PixelDouble>},
    {nullptr, &sum_world<QX_PixelFloat, QX_PixelDouble>}};

}  // namespace qx::QX_ISA
