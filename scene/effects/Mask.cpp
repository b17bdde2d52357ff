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

/// The mask with a kind, for a picture of its file.
Mask settled(const Mask& mask, const pictures::Picture& shown, const Moment& moment) {
    Mask kinded = mask;
    if (mask.kind != Mask::kKindOfFile) return kinded;
    kinded.kind = shown.has_alpha ? kQX_MaskAlpha : kQX_MaskLuma;
    if (!shown.has_alpha) moment.note("mask " + mask.file->at(0) + " " + kMaskCountsByLuma);
    return kinded;
}

/// What a feather's edge may reach: three boxes of its radius over 2.71, and the samples just outside of them.
int margin_of(double feather) { return feather == 0 ? 0 : static_cast<int>(std::ceil(feather * 1.2)) + 6; }

/// Where a mask lies on the canvas, and which rows of both are wanted. Beside them a feather sees nothing but what is
/// the same everywhere, so that its reach costs no memory but that of lines.
struct Lie {
    std::int64_t x, y;  ///< the mask's left top corner
    int margin;         ///< how far a feather sees beyond the canvas
    int top, bottom;    ///< the canvas's rows, and those of the mask that it sees

    Lie(const Mask& mask, const QX_World& from, const Canvas& canvas, const Moment& moment) {
        const auto at = mask.at.at(moment.frame);
        const int height = canvas.world->height;
        x = std::llround(at[0]) - canvas.x;
        y = std::llround(at[1]) - canvas.y;
        margin = margin_of(mask.feather.at(moment.frame)[0]);
        const auto seen = [&](std::int64_t row) {
            return static_cast<int>(std::clamp<std::int64_t>(row, -margin, height + margin));
        };
        const int first = seen(y), end = seen(y + from.height);
        top = first < end ? std::min(first, 0) : 0;
        bottom = first < end ? std::max(end, height) : height;
    }
};

/// A mask in a buffer of its own, of the canvas's columns and the rows of its lie.
template <class Pixel> class Drawing {
public:
    using Sample = QX_ChannelOf<Pixel>;
    Drawing(const Mask& mask, const QX_World& from, const Lie& lie, const Moment& moment, QX_UnoBuffer& buffer)
        : mask_(mask),
          from_(from),
          lie_(lie),
          moment_(moment),
          buffer_(buffer),
          radius_(static_cast<std::int32_t>(mask.feather.at(moment.frame)[0] * 0x1p16)) {}

    /// Draws rows, and feathers them.
    void rows(pictures::Watch& watch) {
        const auto length = static_cast<std::size_t>(buffer_.width) + 2 * static_cast<std::size_t>(lie_.margin);
        on_all_bands(buffer_.height, moment_, watch, [&](const M_LRect& band, RowPart&) {
            std::vector<Pixel> row(length);
            std::vector<Sample> line(length), scratch(length);
            int code = 0;
            for (int y = band.top; y < band.bottom && code == 0; ++y) {
                cover(y + lie_.top - lie_.y, row, line.data());
                if (lie_.margin != 0) code = scan(line.size(), scratch.data(), line.data());
                std::copy_n(line.data() + lie_.margin, buffer_.width, samples<Sample>(buffer_, y));
            }
            return code;
        });
    }

    /// Feathers columns, a few of them at a time so that memory is read in lines.
    /// @param height  the canvas's
    void columns(int height, pictures::Watch& watch) {
        const int groups = (buffer_.width + kGroup - 1) / kGroup;
        on_all_bands(groups, moment_, watch, [&](const M_LRect& band, RowPart&) {
            const auto length = static_cast<std::size_t>(height) + 2 * static_cast<std::size_t>(lie_.margin);
            std::vector<Sample> scratch(length), lines(length * kGroup);
            int code = 0;
            for (int g = band.top; g < band.bottom && code == 0; ++g) code = feather_columns(g, height, scratch, lines);
            return code;
        });
    }

private:
    static constexpr int kGroup = 32;

    /// @param y     the mask's row
    void cover(std::int64_t y, std::vector<Pixel>& row, Sample* to) const {
        const bool inside = y >= 0 && y < from_.height;
        const Pixel* const pixels = inside ? row_of<Pixel>(from_, static_cast<int>(y)) : nullptr;
        const std::int64_t left = lie_.x + lie_.margin;
        const auto count = static_cast<int>(row.size());
        if (mask_.kind < kFirstModel) {
            QX_PrepTrackMatteUniv(count, pixels, static_cast<std::int32_t>(left), inside ? from_.width : 0,
                                  static_cast<std::uint32_t>(mask_.kind), sizeof(Sample) == 2, row.data());
            for (std::size_t x = 0; x < row.size(); ++x) to[x] = row[x].alpha;
            return;
        }
        for (int x = 0; x < count; ++x) {
            const std::int64_t at = x - left;
            const bool covers = inside && at >= 0 && at < from_.width;
            to[x] = static_cast<Sample>(covers ? model_sample(mask_.kind - kFirstModel, pixels[at]) : 0);
        }
    }

    /// A sample where no mask lies; rows of it stay it.
    Sample beside() const {
        std::vector<Pixel> one(1);
        Sample sample = 0;
        cover(-1, one, &sample);
        return sample;
    }

    int scan(std::size_t count, Sample* scratch, Sample* line) const {
        const auto length = static_cast<std::int32_t>(count);
        if constexpr (sizeof(Sample) == 1) {
            return QX_BoxBlurUnoScan(mask_.passes, length, 0, length, radius_, scratch, line);
        } else {
            return QX_BoxBlurDeepUnoScan(mask_.passes, length, 0, length, radius_, scratch, line);
        }
    }

    int feather_columns(int group, int height, std::vector<Sample>& scratch, std::vector<Sample>& lines) {
        const int first = group * kGroup, count = std::min(kGroup, buffer_.width - first);
        /// Column i from the buffer's first row on.
        const auto column = [&](int i) {
            return lines.data() + static_cast<std::size_t>(i) * scratch.size() + (lie_.top + lie_.margin);
        };
        std::fill(lines.begin(), lines.end(), beside());
        for (int y = 0; y < buffer_.height; ++y) {
            for (int i = 0; i < count; ++i) column(i)[y] = samples<Sample>(buffer_, y)[first + i];
        }
        int code = 0;
        for (int i = 0; i < count && code == 0; ++i) {
            code = scan(scratch.size(), scratch.data(), lines.data() + static_cast<std::size_t>(i) * scratch.size());
        }
        for (int y = -lie_.top; y < height - lie_.top; ++y) {
            for (int i = 0; i < count; ++i) samples<Sample>(buffer_, y)[first + i] = column(i)[y];
        }
        return code;
    }

    const Mask& mask_;
    const QX_World& from_;
    const Lie& lie_;
    const Moment& moment_;
    QX_UnoBuffer& buffer_;
    const std::int32_t radius_;
};

}  // namespace

Keys Mask::keys() {
    return {
        {"file", "MASK", "picture that the mask is made of", PictureKey{&file, true}},
        {"kind", "KIND",
         "alpha, inverse, luma, inverse-luma, hue, lightness, luminance or saturation (default: alpha; "
         "luma of a mask without alpha)",
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
    must((depth == 8 ? QX_NewUnoBuffer : QX_NewDeepUnoBuffer)(width, height, &made), moment.subject);
    UnoBuffer buffer(made, QX_DisposeUnoBuffer);
    must_do(moment,
            [&] { return depth == 8 ? QX_FillUnoBuffer(0, nullptr, made) : QX_FillDeepUnoBuffer(0, nullptr, made); });
    return buffer;
}

void add_mask(const Mask& told, bool first, const Canvas& canvas, QX_UnoBuffer& total, const Moment& moment,
              pictures::Watch& watch) {
    const int depth = total.depth;
    const auto shown = moment.picture(*told.file);
    const Mask mask = settled(told, *shown, moment);
    std::shared_ptr<const QX_World> from{shown, shown->world.get()};
    if (from->Depth() != depth) from = pictures::at_depth(moment.subject, *from, depth);
    const Lie lie(mask, *from, canvas, moment);
    const UnoBuffer own = new_mask_buffer(total.width, lie.bottom - lie.top, depth, moment);
    const bool feathers = lie.margin != 0;
    StepWatch drawing(watch, 0, feathers ? 2 : 1), feathering(watch, 1, 2);
    pictures::with_pixel_of(*from, [&]<class Pixel>() {
        if constexpr (!std::is_same_v<Pixel, QX_PixelFloat>) {
            Drawing<Pixel> made(mask, *from, lie, moment, *own);
            made.rows(drawing);
            if (feathers) made.columns(total.height, feathering);
        }
    });
    must_do(moment, [&] { return mask.invert ? QX_InvertUnoBuffer(nullptr, own.get()) : 0; });
    const auto opacity = static_cast<float>(mask.opacity.at(moment.frame)[0]);
    must_do(moment, [&] { return opacity < 1 ? QX_FadeUnoBuffer(nullptr, opacity, own.get()) : 0; });
    const M_LPoint corner{0, lie.top};
    const int how = first ? kMaximum : kOperators[mask.how];
    must_do(moment, [&] { return QX_AccumulateUnoBuffers(nullptr, own.get(), how, nullptr, &corner, &total); });
}

}  // namespace qx::scene
