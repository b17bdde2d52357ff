// SPDX-License-Identifier: Apache-2.0
// qx matte: a matte of several masks, by itself or as a picture's alpha.
#include <CLI/CLI.hpp>
#include <map>
#include <memory>

#include "QX/indep/QX_Depth.h"
#include "pictures/Pixels.h"
#include "tools/qx/Commands.h"
#include "tools/qx/options/EffectOptions.h"
#include "tools/qx/work/PictureJob.h"

namespace qx::tool {
namespace {

const char* const kMatteFooter =
    R"(A MASK takes the options that follow it, up to the next MASK; options before the first MASK hold
for all. Each mask is joined to those before it by its --op. With --apply the matte multiplies
that picture's alpha; without it OUT is the matte in grey, of the first mask's size.

Example:
  qx matte face.png --feather 12 --apply photo.png -o cut.png
  qx matte sky.png tree.png --op subtract --feather 3 --passes 3 -o matte.png)";

const scene::ListKey& masks_of(const scene::Keys& keys) { return std::get<scene::ListKey>(keys.front().kind); }

void alpha_to_grey(const QX_World& world) {
    pictures::with_pixel_of(world, [&]<class Pixel>() {
        constexpr auto full = static_cast<QX_ChannelOf<Pixel>>(DepthOf<Pixel>::full);
        pictures::each_pixel<Pixel>(world, [](Pixel& p, int, int) { p = {full, p.alpha, p.alpha, p.alpha}; });
    });
}

class MatteLine {
public:
    explicit MatteLine(CLI::App& command)
        : matte_(scene::new_matte()),
          matte_keys_(matte_->keys()),
          options_(command, masks_of(scene::new_matte()->keys()).next(), "Options of a mask", "file") {
        files_option_ = command.add_option("masks", files_, "the masks")->type_name("MASK")->required();
        command.add_option("--apply", apply_, "picture whose alpha the matte multiplies")->type_name("PICTURE");
        add_picture_options(command, picture_);
        command.footer(kMatteFooter);
        set_usage(command, "MASK [options] [MASK [options]]... [--apply PICTURE] -o OUT");
    }

    void run() const {
        tell_masks();
        settle(*matte_);
        std::vector<std::string> inputs = {apply_.empty() ? files_.front() : apply_};
        inputs.insert(inputs.end(), files_.begin(), files_.end());
        PictureJob job(picture_, inputs);
        if (apply_.empty()) job.picture().world->Fill(QX_PixelFloat{1, 1, 1, 1}, nullptr);
        job.apply(*matte_, "masking");
        if (apply_.empty()) alpha_to_grey(*job.picture().world);
        job.picture().has_alpha = !apply_.empty();
        job.write();
    }

private:
    /// Texts of options go to the mask before them, in the order of the command line.
    void tell_masks() const {
        std::vector<EffectOptions::Texts> texts(1);
        std::map<const CLI::Option*, std::size_t> used;
        for (const CLI::Option* option : options_.command().parse_order()) {
            const std::size_t turn = used[option]++;
            if (option == files_option_) texts.push_back(texts.front());
            if (options_.has(option)) texts.back().emplace_back(option, option->results().at(turn));
        }
        for (std::size_t i = 0; i < files_.size(); ++i) {
            const scene::Keys keys = masks_of(matte_keys_).next();
            options_.read(texts.at(i + 1), keys);
            *std::get<scene::PictureKey>(keys.front().kind).to = file_named(files_[i]);
        }
    }

    const std::unique_ptr<scene::Effect> matte_;
    const scene::Keys matte_keys_;
    const EffectOptions options_;
    const CLI::Option* files_option_;
    std::vector<std::string> files_;
    std::string apply_;
    PictureOptions picture_;
};

}  // namespace

void add_matte(CLI::App& app) {
    auto* command = app.add_subcommand("matte", "Make a matte of masks, or a picture's alpha");
    const auto line = std::make_shared<MatteLine>(*command);
    command->callback([line] { line->run(); });
}

}  // namespace qx::tool
