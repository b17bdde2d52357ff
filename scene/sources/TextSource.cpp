// SPDX-License-Identifier: Apache-2.0
#include "scene/sources/TextSource.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "pictures/Pixels.h"
#include "scene/SceneValues.h"
#include "scene/sources/MadePicture.h"
#include "scene/sources/Rounded.h"

namespace qx::scene {
namespace {

constexpr const char* kAlignWords[] = {"left", "center", "right"};
constexpr const char* kUsualFont = "DejaVu Sans";
constexpr double kMostSize = 10'000, kMostLineHeight = 100;

/// A file beside the scene, or a font of the machine by its name.
std::string read_font(const SceneNode& layer, const ReadContext& context) {
    const auto node = layer.find("font");
    if (!node) return layer.read_by([&] { return file_of_font(kUsualFont); });
    const std::string path = (std::filesystem::path(context.folder) / node->text()).string();
    std::error_code ignored;
    if (std::filesystem::exists(path, ignored)) return path;
    const std::string ending = pictures::extension_of(path);
    const bool is_file = node->text().find('/') != std::string::npos || ending == "ttf" || ending == "otf";
    if (is_file) node->fault(path + ": no such file");
    return node->read_by([&] { return file_of_font(node->text()); });
}

}  // namespace

Piece TextSource::picture(const SourceMoment& moment) const {
    if (!text_.note().empty()) moment.note("the font " + text_.note());
    const auto coverage =
        coverage_.get(0, 0, [&] { return std::make_shared<const std::vector<unsigned char>>(text_.coverage()); });
    const text::Box& box = text_.box();
    auto picture = new_made(moment, {box.width, box.height});
    const auto colour = colour_.at(moment.frame);
    pictures::with_pixel_of(*picture->world, [&]<class Pixel>() {
        std::array<Pixel, 256> pixels;  // for each coverage
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const double alpha = colour[0] * static_cast<double>(i) / 255;
            pixels[i] = rounded<Pixel>({alpha, colour[1], colour[2], colour[3]});
        }
        const unsigned char* from = coverage->data();
        pictures::each_pixel<Pixel>(*picture->world, [&](Pixel& pixel, int, int) { pixel = pixels[*from++]; });
    });
    return {picture, box.x, box.y};
}

std::shared_ptr<const Source> read_text(const SceneNode& layer, const ReadContext& context) {
    TextChoice choice;
    choice.text = layer.need("text").text();
    choice.font = read_font(layer, context);
    choice.size = layer.need("size").number(1, kMostSize);
    if (const auto height = layer.find("line-height")) choice.line_height = height->number(0.01, kMostLineHeight);
    if (const auto width = layer.find("width")) choice.width = width->number(1, pictures::kMostSide);
    if (const auto align = layer.find("align")) choice.align = static_cast<text::Align>(align->choice(kAlignWords));
    const auto colour = layer.find("colour");
    const Track<4> white(Track<4>::Value{1, 1, 1, 1});
    return std::make_shared<TextSource>(choice, colour ? read_colour_track(*colour) : white);
}

}  // namespace qx::scene
