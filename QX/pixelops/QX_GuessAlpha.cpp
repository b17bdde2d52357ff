// SPDX-License-Identifier: Apache-2.0
#include "QX/pixelops/QX_GuessAlpha.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Report.h"
#include "QX/pixelops/QX_GuessKernels.h"
#include "platform/tesselcore_Utility.h"

namespace {

const qx::GuessKernels* kernels = &qx::plain::guess_kernels;

constexpr QX_Pixel8 kWhite{255, 255, 255, 255}, kBlack{255, 0, 0, 0};

/// What the scan learns of a world.
struct Statistics {
    std::uint32_t red_hist[256]{}, green_hist[256]{}, blue_hist[256]{};  ///< of pixels of alpha 0, as are the counts
    std::uint32_t white_count = 0, black_count = 0, transparent_count = 0;
    std::uint32_t visible_count = 0;
    bool transparent_vary = false;  ///< one of alpha 0 lies 3 or more, in a channel, from the one before it
    bool visible_vary = false;      ///< one of alpha above 0 is not the one before it
    bool above_alpha = false;       ///< one of alpha above 0 has a colour above its alpha
    std::uint8_t min_alpha = 255;   ///< the smallest above 0
    const QX_Pixel8* min_alpha_pixel;

    explicit Statistics(const QX_Pixel8* first) : min_alpha_pixel(first) {}
};

std::uint32_t word_of(const QX_Pixel8& p) {
    std::uint32_t word;
    __builtin_memcpy(&word, &p, sizeof word);
    return word;
}

/// Goes over rows; what "the one before" is goes on from row to row.
class Scan {
public:
    explicit Scan(const QX_Pixel8* first) : found_(first) {}

    /// What is like the pixels before it is counted by stretches, all else one by one.
    void row(const QX_Pixel8* row, std::size_t columns) {
        constexpr std::size_t kSingles = 16;
        for (const QX_Pixel8 *p = row, *end = row + columns; p != end;) {
            p += stretch(p, static_cast<std::size_t>(end - p));
            const QX_Pixel8* const until = p + std::min(kSingles, static_cast<std::size_t>(end - p));
            for (; p != until; ++p) p->alpha == 0 ? transparent(p) : visible(p);
        }
    }
    const Statistics& found() const { return found_; }

private:
    /// Once clear pixels vary their histograms count no longer. Words of no pixel yet are such that all differ.
    std::size_t stretch(const QX_Pixel8* p, std::size_t columns) {
        const QX_Pixel8 *clear = transparent_before_, *seen = visible_before_;
        qx::AlphaStretch stretch{.watch_clear = !found_.transparent_vary,
                                 .watch_visible = !found_.visible_vary,
                                 .clear_word = clear != nullptr ? word_of(*clear) : ~colours_,
                                 .visible_word = seen != nullptr ? word_of(*seen) : 0,
                                 .min_alpha = found_.min_alpha};
        const std::size_t done = kernels->scan(p, columns, stretch);
        found_.transparent_count += stretch.clear;
        found_.white_count += stretch.white;
        found_.black_count += stretch.black;
        found_.visible_count += static_cast<std::uint32_t>(done) - stretch.clear;
        found_.above_alpha |= stretch.above_alpha;
        if (stretch.watch_clear && clear != nullptr) {
            found_.red_hist[clear->red] += stretch.clear;
            found_.green_hist[clear->green] += stretch.clear;
            found_.blue_hist[clear->blue] += stretch.clear;
        }
        return done;
    }

    void transparent(const QX_Pixel8* p) {
        const std::uint32_t colour = word_of(*p) & colours_;
        ++found_.transparent_count;
        found_.white_count += colour == colours_;
        found_.black_count += colour == 0;
        ++found_.red_hist[p->red];
        ++found_.green_hist[p->green];
        ++found_.blue_hist[p->blue];
        const auto far = [](int a, int b) { return std::abs(a - b) >= 3; };
        if (const QX_Pixel8* q = std::exchange(transparent_before_, p)) {
            found_.transparent_vary |= far(p->red, q->red) || far(p->green, q->green) || far(p->blue, q->blue);
        }
    }

    void visible(const QX_Pixel8* p) {
        ++found_.visible_count;
        found_.above_alpha |= std::max({p->red, p->green, p->blue}) > p->alpha;
        if (p->alpha < found_.min_alpha) {
            found_.min_alpha = p->alpha;
            found_.min_alpha_pixel = p;
        }
        if (const QX_Pixel8* q = std::exchange(visible_before_, p)) found_.visible_vary |= word_of(*p) != word_of(*q);
    }

    const std::uint32_t colours_ = TK_LongSwap(0xFFFFFF);  ///< of a pixel's word, the bits that are not alpha
    Statistics found_;
    const QX_Pixel8 *transparent_before_ = nullptr, *visible_before_ = nullptr;
};

/// The value that most have, the least of these; 0 where there is none.
std::uint8_t mode_of(const std::uint32_t (&histogram)[256]) {
    return static_cast<std::uint8_t>(std::max_element(histogram, histogram + 256) - histogram);
}

/// The matte that a world with visible pixels was mixed with; none where its colours are straight. The pixel of the
/// least alpha shows most of the matte, and can be off it by no more than that alpha.
std::optional<QX_Pixel8> matte_of(const Statistics& found) {
    const QX_Pixel8& p = *found.min_alpha_pixel;
    const auto within = [&](const QX_Pixel8& matte, int most) {
        const auto near = [=](int a, int b) { return std::abs(a - b) <= most; };
        return near(matte.red, p.red) && near(matte.green, p.green) && near(matte.blue, p.blue);
    };
    const auto all_clear = [&](std::uint32_t count) { return count != 0 && count == found.transparent_count; };
    if (all_clear(found.white_count) && within(kWhite, found.min_alpha)) return kWhite;
    if (all_clear(found.black_count) && !found.above_alpha) return kBlack;
    if (found.transparent_vary || !found.visible_vary) return std::nullopt;
    const QX_Pixel8 usual{255, mode_of(found.red_hist), mode_of(found.green_hist), mode_of(found.blue_hist)};
    return within(usual, found.min_alpha + 1) ? std::optional(usual) : std::nullopt;
}

void write_message(char* out, const char* text) {
    if (out != nullptr) std::snprintf(out, kQX_GuessMessageBytes, "%s", text != nullptr ? text : "");
}

}  // namespace

void qx::choose_guess_kernels(Level level) { kernels = &guess_kernels_of(level); }

int QX_GuessAlpha(void* effect_ref, const QX_LayerDef* world, std::int32_t* out_kind, QX_Pixel8* out_matte) {
    return QX_GuessAlphaMessage(effect_ref, world, out_kind, out_matte, nullptr);
}

int QX_GuessAlphaMessage(void*, const QX_LayerDef* world, std::int32_t* out_kind, QX_Pixel8* out_matte,
                         char* out_message) {
    const bool has_pixels = world != nullptr && world->data != nullptr && world->width > 0;
    Scan scan(has_pixels ? qx::row_of<QX_Pixel8>(*world, 0) : nullptr);
    for (std::int32_t y = 0; has_pixels && y < world->height; ++y) {
        scan.row(qx::row_of<QX_Pixel8>(*world, y), static_cast<std::size_t>(world->width));
    }
    if (scan.found().visible_count == 0) {
        *out_kind = kQX_AlphaUnknown;
        write_message(out_message, qx::text_of(qx::Text::guess_alpha));
        return 0;
    }
    write_message(out_message, "");
    const auto matte = matte_of(scan.found());
    *out_kind = matte ? kQX_AlphaPremultiplied : kQX_AlphaStraight;
    if (matte) *out_matte = *matte;
    return 0;
}
