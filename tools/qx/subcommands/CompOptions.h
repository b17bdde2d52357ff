// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "scene/Composite.h"
#include "scene/LayerPlace.h"
#include "scene/effects/Effect.h"
#include "tools/qx/options/ColourOptions.h"
#include "tools/qx/options/Options.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace qx::tool {

/// A layer as the command line describes it.
struct LayerOptions {
    std::string file;
    int mode = xfer_over;
    float opacity = 1;
    scene::LayerPlace place;
    bool has_scale = false;
    std::string mask_file;
    std::string mask_option;               ///< an option that makes sense with a mask only
    std::optional<QX_MaskKind> mask_kind;  ///< without it alpha, or luma of a mask that has none
    bool has_mask_at = false;
    Place mask_at{0, 0};
    scene::LightChoice light;
    scene::Profile profile;  ///< null: what the file says
    std::string profile_text;
    bool rgb_only = false;
    int seed = 0;
    int field = 0;
    std::optional<scene::Placing> placing;  ///< counts from `place`, as `matrix` does
    std::string placing_option;             ///< one that `placing` came from
    std::optional<M_Matrix3> matrix;
    int quality = 1;
    std::vector<std::string> effect_texts;  ///< done in order, before the transform
    std::vector<std::shared_ptr<const scene::Effect>> effects;
};

struct CompOptions : PictureOptions {
    std::string background;
    scene::Profile background_profile;
    scene::ColourChoices colours;
    std::vector<LayerOptions> layers;
    std::vector<std::string> effect_folders;
    ColourOptions colour_texts;
    std::string background_profile_text;
    std::string scene;  ///< a file that is to tell the same; empty for none
};

struct LayerOption;

/// The command line of `comp`. A layer takes the options that follow its name, up to the next layer's; what stands
/// before the first layer holds for all.
class CompCommandLine {
public:
    explicit CompCommandLine(CLI::App& command);
    /// To be called when the line has been read. Throws WrongUsage.
    CompOptions options() const;

private:
    void read_colours(CompOptions& options) const;

    CLI::App& command_;
    std::vector<std::string> files_;
    const CLI::Option* files_option_ = nullptr;
    std::vector<std::pair<const CLI::Option*, const LayerOption*>> layer_options_;
    CompOptions common_;
    ColourOptions colours_;
    std::string background_profile_;
};

}  // namespace qx::tool
