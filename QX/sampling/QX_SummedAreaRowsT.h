// SPDX-License-Identifier: Apache-2.0
// Body of the building of summed-area tables, for one level. A sum waits for that to its left, so rows one below
// another are worked on at once, each a column behind the one above it: a wave.
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Depth.h"
#include "QX/sampling/QX_SummedAreaKernels.h"
#include "lanes/Doubles.h"
#include "lanes/Level.h"
#include "lanes/PixelAccess.h"
#include "lanes/Shuffles.h"

namespace qx::QX_ISA {

/// The four channels of one sum, and of as many rows' as a register holds.
using OneRow = Vector<double, 32>;
using WideRows = Vector<double, kRegister == 64 ? 64 : 32>;
template <class V> inline constexpr int rows_in = lanes_in<V> / 4;

/// From values of rows, the first of which counts `first` and the next of a register `next` more, to one a channel.
template <class V, int first, int next, class Q> QX_INLINE V spread(Q values) {
    if constexpr (is_wide<Q>) {
        return reordered(values, values, [](int lane) { return first + lane / 4 * next; });
    } else {
        return V{values, values, values, values};
    }
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

/// Channels of pixels, which lie one a 16 bytes, as numbers.
template <class Pixel> using ChannelNumber = std::conditional_t<DepthOf<Pixel>::number == 32, float, std::int32_t>;
template <class V, class Pixel> using ChannelsOf = Vector<ChannelNumber<Pixel>, sizeof(V) / 2>;

/// What get(pixel) gives of the pixels of a register's rows, side by side.
template <class V, class Pixel, class Get> QX_INLINE auto of_rows(const Pixel* const (&p)[rows_in<V>], const Get& get) {
    if constexpr (rows_in<V> == 1) {
        return get(p[0]);
    } else {
        return of_both(get(p[0]), get(p[1]));
    }
}
template <class V, class Pixel> QX_INLINE ChannelsOf<V, Pixel> load_rows(const Pixel* const (&p)[rows_in<V>]) {
    return of_rows<V>(p, [](const Pixel* one) QX_LAMBDA {
        return load_channels<Vector<ChannelNumber<Pixel>, 16>, QX_ChannelOf<Pixel>>(one);
    });
}

/// Pixels to come: 16 bytes of each row of a register, of which the next columns are had by one shuffle each.
template <class Pixel> inline constexpr int kAhead = kRegister < 32 ? 1 : 16 / static_cast<int>(sizeof(Pixel));
template <class V> using BytesAhead = Vector<std::uint8_t, sizeof(V) / 2>;
template <class V, class Pixel> QX_INLINE BytesAhead<V> load_ahead(const Pixel* const (&p)[rows_in<V>]) {
    return of_rows<V>(p, [](const Pixel* one) QX_LAMBDA { return load_lanes<Vector<std::uint8_t, 16>>(one); });
}
template <class Pixel, int Column, class B> QX_INLINE auto channels_ahead(B ahead) {
    constexpr int c = static_cast<int>(sizeof(QX_ChannelOf<Pixel>)), o = 4 * c * Column, high = c == 2 ? 1 : -16;
    return (Vector<std::int32_t, sizeof(B)>)
        shuffle_bytes<o, o + high, -1, -1, o + c, o + c + high, -1, -1, o + 2 * c, o + 2 * c + high, -1, -1, o + 3 * c,
                      o + 3 * c + high, -1, -1>(ahead);
}

/// Pixels of which the colours are multiplied by their share of full alpha. Alphas above full count as full.
template <class V, class Pixel>
QX_INLINE V multiplied(ChannelsOf<V, Pixel> channels, const Pixel* const (&p)[rows_in<V>]) {
    constexpr int depth = DepthOf<Pixel>::number;
    const V v = as_sums<V>(channels);
    if constexpr (depth == 8) {
        return v *
               of_rows<V>(p, [](const Pixel* one) QX_LAMBDA { return load_lanes<OneRow>(shares_of_8.of[one->alpha]); });
    } else {
        const V one = V{} + 1.0, alpha = reordered(v, v, [](int lane) { return lane & ~3; });
        const V share = depth == 16 ? alpha * (1.0 / Depth16::full) : alpha;
        const V product = v * (one < share ? one : share);
        const V pixel = reordered(v, product, [](int lane) { return lane % 4 == 0 ? lane : lane + lanes_in<V>; });
        return depth == 16 ? pixel : alpha == 0.0 ? V{} : pixel;  // a colour may be no number
    }
}

/// Rows one below another, from row `y` on, in registers of type V. One that holds two has a row of the upper half of
/// the rows and that of the lower half, so that the register before it has what lies above both.
template <class Pixel, class Cell, class V, int Registers> class Wave {
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
        if constexpr (kAhead < Pixel >> 1) {
            for (; at <= width_ - kAhead<Pixel>; at += kAhead<Pixel>) {
                steps_ahead(at, std::make_integer_sequence<int, kAhead<Pixel>>{},
                            std::make_integer_sequence<int, Registers>{});
            }
        }
        for (; at < width_; ++at) step<false>(at);
        for (; at < width_ + rows - 1; ++at) step<true>(at);
    }

private:
    using OfRows = Vector<double, rows == 1 ? 0 : 8 * static_cast<std::size_t>(rows)>;

    /// The first row takes column `at`. At either end some rows have none: these take a clear pixel, of which the sums
    /// before the first column stay zero.
    template <bool Ends> QX_INLINE void step(std::ptrdiff_t at) {
        const auto has = [=, this](int row) QX_LAMBDA { return !Ends || (at >= row && at - row < width_); };
        take(at, has, [](auto, const auto& pixels) QX_LAMBDA { return load_rows<V>(pixels); });
    }
    template <int... Column, int... I>
    QX_INLINE void steps_ahead(std::ptrdiff_t at, std::integer_sequence<int, Column...>,
                               std::integer_sequence<int, I...>) {
        const auto all = [](int) QX_LAMBDA { return true; };
        const BytesAhead<V> ahead[] = {load_ahead<V>(pixels_of<I>(at, all).of)...};
        (take(at + Column, all, [&](auto i, const auto&) QX_LAMBDA { return channels_ahead<Pixel, Column>(ahead[i]); }),
         ...);
    }

    /// A column of each row that `has` one; get(register, pixels) gives channels.
    template <class Has, class Get> QX_INLINE void take(std::ptrdiff_t at, const Has& has, const Get& get) {
        const OfRows share = 1.0 / (columns_ * counts_);
        columns_ += 1.0;
        const V top = sums_at_top(has(0) ? above_ + at : above_);
        [&]<int... I>(std::integer_sequence<int, I...>) QX_LAMBDA {
            (sum<Registers - 1 - I>(at, share, top, has, get),
             ...);  // the last first: it reads what the step before made
        }
        (std::make_integer_sequence<int, Registers>{});
    }
    template <int I, class Has, class Get>
    QX_INLINE void sum(std::ptrdiff_t at, OfRows share, V top, const Has& has, const Get& get) {
        const V above = I == 0 ? top : left_[I == 0 ? 0 : I - 1];
        const auto pixels = pixels_of<I>(at, has);
        const V v = multiplied<V, Pixel>(get(std::integral_constant<int, I>{}, pixels.of), pixels.of);
        left_[I] = ((v + left_[I]) + above) - corner_[I];
        corner_[I] = above;
        store<I>(at, left_[I] * spread<V, I, Registers>(share), has);
    }
    struct Pixels {
        const Pixel* of[rows_in<V>];
    };
    template <int I, class Has> QX_INLINE Pixels pixels_of(std::ptrdiff_t at, const Has& has) const {
        static constexpr Pixel clear{};
        Pixels pixels;
        for (int k = 0; k < rows_in<V>; ++k) {
            const int row = I + k * Registers;
            pixels.of[k] = has(row) ? source_[row] + at : &clear;
        }
        return pixels;
    }
    /// What lies above the first register: a row that is there, and the last of the upper half.
    QX_INLINE V sums_at_top(const QX_PixelDouble* from) const {
        const auto row = load_lanes<OneRow>(from);
        if constexpr (rows_in<V> == 1) {
            return row;
        } else {
            return of_both(row, part_of<sizeof row, 0>(left_[Registers - 1]));
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
        store_row<I>(at, part_of<sizeof(Cell), 0>(cells), has);
        if constexpr (rows_in<V> == 2) store_row<I + Registers>(at, part_of<sizeof(Cell), 1>(cells), has);
        if constexpr (I == Registers - 1) {
            if (has(rows - 1)) store_lanes(made_ + at - (rows - 1), part_of<sizeof(OneRow), rows_in<V> - 1>(left_[I]));
        }
    }
    template <int Row, class Mean, class Has> QX_INLINE void store_row(std::ptrdiff_t at, Mean mean, const Has& has) {
        if (has(Row)) store_lanes(cells_[Row] + at, mean);
    }

    const std::ptrdiff_t width_;
    const QX_PixelDouble* const above_;
    QX_PixelDouble* const made_;
    const Pixel* source_[rows];
    Cell* cells_[rows];
    OfRows columns_, counts_;
    V left_[Registers]{}, corner_[Registers]{};
};

template <class Pixel, class Cell> void sum_world(const QX_LayerDef& world, SumRows sums, Cell* table) {
    std::int32_t y = 0;
    const auto waves = [&]<class V, int Registers>() QX_LAMBDA {
        using OfThese = Wave<Pixel, Cell, V, Registers>;
        for (; world.height - y >= OfThese::rows; y += OfThese::rows) {
            OfThese(world, y, sums, table).run();
            sums = {sums.made, sums.above};
        }
    };
    waves.template operator()<WideRows, 4>();
    waves.template operator()<OneRow, 1>();
}

const SummedAreaKernels summed_area_kernels{
    {&sum_world<QX_Pixel8, QX_PixelFloat>, &sum_world<QX_Pixel8, QX_PixelDouble>},
    {&sum_world<QX_Pixel16, QX_PixelFloat>, &sum_world<QX_Pixel16, QX_PixelDouble>},
    {nullptr, &sum_world<QX_PixelFloat, QX_PixelDouble>}};

}  // namespace qx::QX_ISA
