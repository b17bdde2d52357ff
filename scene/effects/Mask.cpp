// SPDX-License-Identifier: Apache-2.0
#include "scene/effects/Mask.h"

#include <cmath>
#include <vector>

#include "QX/compositing/QX_TrackMatte.h"
#include "QX/filters/QX_UnoScan.h"
#include "QX/indep/QX_Depth.h"
#include "QX/pixelops/QX_ColourModels.h"
#include "QX/world/QX_UnoCombine.h"
#include "pictures/Picture.h"
#include "scene/LayerWords.h"
#include "scene/effects/Work.h"

namespace qx::scene {
namespace {

constexpr const char* kMaskKinds[] = {"alpha", "inverse",   "luma",      "inverse-luma",
                                      "hue",   "lightness", "luminance", "saturation"};
constexpr int kFirstModel = 4;  ///< those before it are a QX_MaskKind
constexpr const char* kPassWords[] = {"1", "3"};
constexpr const char* kOperatorWords[] = {"screen", "subtract", "intersect", "max", "min", "difference", "add", "grow"};
constexpr int kOperators[] = {1, 2, 3, 4, 5, 6, 7, -1};
constexpr int kMaximum = 4;
constexpr double kMostFeather = 30000;

using Query8 = int(void*, const QX_Pixel8*, std::int32_t*);
using Query16 = int(void*, const QX_Pixel16*, std::int32_t*);
constexpr Query8* kQueries8[] = {QX_Hue_Straight, QX_Lightness_Straight, QX_Luminance_Straight, QX_Saturation_Straight};
constexpr Query16* kQueries16[] = {QX_Hue_Straight16, QX_Lightness_Straight16, QX_Luminance_Straight16,
                                   QX_Saturation_Straight16};
constexpr std::int32_t kScales[] = {1, 1, 100, 1};  ///< luminance is a sum of hundredths

/// One sample of a model, as far as the pixel covers.
template <class Pixel> std::int32_t model_sample(int model, const Pixel& p) {
    using D = DepthOf<Pixel>;
    std::int32_t value = 0;
    if constexpr (D::number == 8) {
        kQueries8[model](nullptr, &p, &value);
    } else {
        kQueries16[model](nullptr, &p, &value);
    }
    return D::mul(std::min<std::int32_t>(value / kScales[model], D::full), std::int32_t{p.alpha});
}

template <class Sample> Sample* samples(const QX_UnoBuffer& buffer, std::int64_t y) {
    return static_cast<Sample*>(*buffer.handle) + y * buffer.width;
}

/// A mask in a buffer of its own, which reaches `margin` samples beyond the canvas.
template <class Pixel> class Drawing {
public:
    using Sample = QX_ChannelOf<Pixel>;
    Drawing(const Mask& mask, const Moment& moment, QX_UnoBuffer& buffer, int margin)
        : mask_(mask), moment_(moment), buffer_(buffer), margin_(margin) {}

    /// @param x, y  where the mask's left top corner lies on the canvas
    void draw(const QX_World& from, std::int64_t x, std::int64_t y, pictures::Watch& watch) {
        on_all_bands(buffer_.height, moment_, watch, [&](const M_LRect& band, RowPart&) {
            std::vector<Pixel> row(static_cast<std::size_t>(buffer_.width));
            for (int i = band.top; i < band.bottom; ++i) cover(from, x + margin_, i - (y + margin_), row, i);
            return 0;
        });
    }

    /// Along rows, then along columns, a few of them at a time so that memory is read in lines.
    void feather(double radius, pictures::Watch& watch) {
        const auto fixed = static_cast<std::int32_t>(radius * 0x1p16);
        StepWatch rows(watch, 0, 2), columns(watch, 1, 2);
        on_all_bands(buffer_.height, moment_, rows, [&](const M_LRect& band, RowPart&) {
            std::vector<Sample> scratch(static_cast<std::size_t>(buffer_.width));
            int code = 0;
            for (int y = band.top; y < band.bottom && code == 0; ++y) {
                code = scan(buffer_.width, fixed, scratch.data(), samples<Sample>(buffer_, y));
            }
            return code;
        });
        const int groups = (buffer_.width + kGroup - 1) / kGroup;
        on_all_bands(groups, moment_, columns, [&](const M_LRect& band, RowPart&) {
            const auto height = static_cast<std::size_t>(buffer_.height);
            std::vector<Sample> scratch(height), lines(height * kGroup);
            int code = 0;
            for (int g = band.top; g < band.bottom && code == 0; ++g) code = feather_columns(g, fixed, scratch, lines);
            return code;
        });
    }

private:
    static constexpr int kGroup = 32;

    /// @param left  where the mask begins in the buffer
    /// @param y     the mask's row
    void cover(const QX_World& from, std::int64_t left, std::int64_t y, std::vector<Pixel>& row, int to) {
        Sample* const out = samples<Sample>(buffer_, to);
        const bool inside = y >= 0 && y < from.height;
        const Pixel* const pixels = inside ? row_of<Pixel>(from, static_cast<int>(y)) : nullptr;
        if (mask_.kind < kFirstModel) {
            QX_PrepTrackMatteUniv(buffer_.width, pixels, static_cast<std::int32_t>(left), inside ? from.width : 0,
                                  static_cast<std::uint32_t>(mask_.kind), sizeof(Sample) == 2, row.data());
            for (int x = 0; x < buffer_.width; ++x) out[x] = row[static_cast<std::size_t>(x)].alpha;
            return;
        }
        for (int x = 0; x < buffer_.width; ++x) {
            const std::int64_t at = x - left;
            const bool covers = inside && at >= 0 && at < from.width;
            out[x] = static_cast<Sample>(covers ? model_sample(mask_.kind - kFirstModel, pixels[at]) : 0);
        }
    }

    int scan(int length, std::int32_t radius, Sample* scratch, Sample* line) {
        if constexpr (sizeof(Sample) == 1) {
            return QX_BoxBlurUnoScan(mask_.passes, length, 0, length, radius, scratch, line);
        } else {
            return QX_BoxBlurDeepUnoScan(mask_.passes, length, 0, length, radius, scratch, line);
        }
    }

    int feather_columns(int group, std::int32_t radius, std::vector<Sample>& scratch, std::vector<Sample>& lines) {
        const int first = group * kGroup, count = std::min(kGroup, buffer_.width - first), height = buffer_.height;
        const auto line = [&](int i) { return lines.data() + std::ptrdiff_t{i} * height; };
        for (int y = 0; y < height; ++y) {
            for (int i = 0; i < count; ++i) line(i)[y] = samples<Sample>(buffer_, y)[first + i];
        }
        int code = 0;
        for (int i = 0; i < count && code == 0; ++i) code = scan(height, radius, scratch.data(), line(i));
        for (int y = 0; y < height; ++y) {
            for (int i = 0; i < count; ++i) samples<Sample>(buffer_, y)[first + i] = line(i)[y];
        }
        return code;
    }

    const Mask& mask_;
    const Moment& moment_;
    QX_UnoBuffer& buffer_;
    const int margin_;
};

/// What a feather's edge may reach: three boxes of its radius over 2.71, and the samples just outside of them.
int margin_of(double feather) { return feather == 0 ? 0 : static_cast<int>(std::ceil(feather * 1.2)) + 6; }

}  // namespace

Keys Mask::keys() {
    return {
        {"file", "MASK", "picture that the mask is made of", PictureKey{&file}},
        {"kind", "KIND", "alpha, inverse, luma, inverse-luma, hue, lightness, luminance or saturation (default: alpha)",
         ChoiceKey{kMaskKinds, &kind}},
        {"at", "X,Y", "where its left top corner lands (default: 0,0)", NumbersKey{2, -kFarthest, kFarthest, &at}},
        {"invert", nullptr, "cover what it does not cover", FlagKey{&invert}},
        {"opacity", "0..1", "how much it covers at most (default: 1)", NumbersKey{1, 0, 1, &opacity}},
        {"feather", "R", "softens its edge by so many pixels (default: 0)", NumbersKey{1, 0, kMostFeather, &feather}},
        {"passes", "1|3", "of the feather: three are smoother (default: 3)", ChoiceKey{kPassWords, &passes}},
        {"op", "OPERATOR",
         "how it joins the masks before: screen, subtract, intersect, max, min, difference, add or grow "
         "(default: screen)",
         ChoiceKey{kOperatorWords, &how}}};
}

UnoBuffer new_mask_buffer(int width, int height, int depth, const Moment& moment) {
    QX_UnoBuffer* made = nullptr;
    must_do(moment, [&] { return (depth == 8 ? QX_NewUnoBuffer : QX_NewDeepUnoBuffer)(width, height, &made); });
    UnoBuffer buffer(made, QX_DisposeUnoBuffer);
    must_do(moment,
            [&] { return depth == 8 ? QX_FillUnoBuffer(0, nullptr, made) : QX_FillDeepUnoBuffer(0, nullptr, made); });
    return buffer;
}

void add_mask(const Mask& mask, bool first, const Canvas& canvas, QX_UnoBuffer& total, const Moment& moment,
              pictures::Watch& watch) {
    const double feather = mask.feather.at(moment.frame)[0];
    const int margin = margin_of(feather), depth = total.depth;
    std::shared_ptr<const QX_World> from = moment.picture(*mask.file);
    if (from->Depth() != depth) from = pictures::at_depth(moment.subject, *from, depth);
    const UnoBuffer own = new_mask_buffer(total.width + 2 * margin, total.height + 2 * margin, depth, moment);
    const auto at = mask.at.at(moment.frame);
    StepWatch drawing(watch, 0, 2), feathering(watch, 1, 2);
    pictures::with_pixel_of(*from, [&]<class Pixel>() {
        if constexpr (!std::is_same_v<Pixel, QX_PixelFloat>) {
            Drawing<Pixel> made(mask, moment, *own, margin);
            made.draw(*from, std::llround(at[0]) - canvas.x, std::llround(at[1]) - canvas.y, drawing);
            if (feather > 0) made.feather(feather, feathering);
        }
    });
    must_do(moment, [&] { return mask.invert ? QX_InvertUnoBuffer(nullptr, own.get()) : 0; });
    const auto opacity = static_cast<float>(mask.opacity.at(moment.frame)[0]);
    must_do(moment, [&] { return opacity < 1 ? QX_FadeUnoBuffer(nullptr, opacity, own.get()) : 0; });
    const M_LPoint corner{-margin, -margin};
    const int how = first ? kMaximum : kOperators[mask.how];
    must_do(moment, [&] { return QX_AccumulateUnoBuffers(nullptr, own.get(), how, nullptr, &corner, &total); });
}

}  // namespace qx::scene
