// SPDX-License-Identifier: Apache-2.0
// A kernel of whole numbers over a layer.
#include "QX/filters/QX_Convolve.h"

#include "scene/Words.h"
#include "scene/effects/Kernels.h"
#include "scene/effects/Work.h"

namespace qx::scene {
namespace {

constexpr const char* kConvolveEdges[] = {"clear", "repeat"};
enum ConvolveEdge { edge_clear, edge_repeat };

/// A copy that is larger on all sides, by pixels of its edge.
std::unique_ptr<QX_World> with_repeated_edge(const QX_World& world, int across, int down, const Moment& moment) {
    auto larger = new_canvas(moment, world.width + 2 * std::int64_t{across}, world.height + 2 * std::int64_t{down},
                             world.Depth());
    pictures::with_pixel_of(world, [&]<class Pixel>() {
        pictures::each_pixel<Pixel>(*larger, [&](Pixel& p, int x, int y) {
            const int sx = std::clamp(x - across, 0, world.width - 1), sy = std::clamp(y - down, 0, world.height - 1);
            p = row_of<Pixel>(world, sy)[sx];
        });
    });
    larger->origin_x = -across;
    larger->origin_y = -down;
    return larger;
}

class Convolve : public Effect {
public:
    Keys keys() override {
        return {{"kernel", "FILE", "text file with rows of whole numbers, of which 256 stands for one; see below",
                 DocumentKey{&kernel_}},
                {"filter", "NAME", "in place of a kernel: sharpen, edges, emboss, gaussian:R or box:N",
                 TextKey{[&](const std::string& text) { filter_ = text; }}},
                {"row", nullptr, "the kernel is one line, which lies along rows", FlagKey{&row_}},
                {"column", nullptr, "the kernel is one line, which lies along columns", FlagKey{&column_}},
                {"normalise", nullptr, "divide by the sum of the weights, not by 256 for each of them",
                 FlagKey{&normalise_}},
                {"no-clamp", nullptr, "what leaves the scale wraps; floats stay as they are", FlagKey{&no_clamp_}},
                {"edge", "EDGE", "what lies outside: clear, or repeat the picture's edge (default: repeat)",
                 ChoiceKey{kConvolveEdges, &edge_}},
                {"straight", nullptr, "take colours as they are, not times their alpha", FlagKey{&straight_}}};
    }

    void settle() override {
        if (row_ && column_) throw BadText("row", "excludes column");
        if (kernel_.name.empty() == filter_.empty()) throw BadText("kernel", "either that or a filter is needed");
        const KernelForm form = row_ ? KernelForm::row : column_ ? KernelForm::column : KernelForm::square;
        kernels_ = filter_.empty() ? kernels_of(kernel_, form) : kernels_of_filter(filter_, form);
    }

    void apply(Canvas& canvas, const Moment& moment) const override {
        if (!straight_) multiply(*canvas.world, moment);
        std::unique_ptr<QX_World> source = std::move(canvas.world);
        canvas.world = new_canvas(moment, source->width, source->height, source->Depth());
        if (edge_ == edge_repeat) {
            const int half = kernels_.size / 2;
            source = with_repeated_edge(*source, column_ ? 0 : half, row_ ? 0 : half, moment);
        }
        const QX_LayerDef from = band_of(*source, whole_of(*source));
        on_all_bands(canvas.world->height, moment, moment.watch, [&](const M_LRect& band, RowPart& part) {
            const QX_ProgressInfo progress = part.info();
            QX_LayerDef to = band_of(*canvas.world, band);
            return convolve(progress, from, to);
        });
        if (!straight_) unmultiply(*canvas.world, moment);
    }

private:
    int convolve(const QX_ProgressInfo& progress, const QX_LayerDef& from, QX_LayerDef& to) const {
        const auto weights = [&](std::size_t i) { return kernels_.weights[i].data(); };
        std::uint32_t flags = kQX_Convolve_HonourOrigin;
        if (row_ || column_) flags |= kQX_Convolve_OneDimension;
        if (column_) flags |= kQX_Convolve_DownColumn;
        if (normalise_ || kernels_.normalise) flags |= kQX_Convolve_Normalise;
        if (no_clamp_) flags |= kQX_Convolve_Unclamped;
        return QX_Convolve(&progress, &from, nullptr, flags, kernels_.size, weights(0), weights(1), weights(2),
                           weights(3), &to);
    }

    static Kernels kernels_of(const Document& file, KernelForm form) {
        try {
            return kernels_of_text(file.contents, form);
        } catch (const BadText& bad) {
            throw BadText("kernel " + file.name, bad.what());
        }
    }

    Document kernel_;
    std::string filter_;
    Kernels kernels_;
    bool row_ = false, column_ = false, normalise_ = false, no_clamp_ = false, straight_ = false;
    int edge_ = edge_repeat;
};

}  // namespace

std::unique_ptr<Effect> new_convolve() { return std::make_unique<Convolve>(); }

}  // namespace qx::scene
