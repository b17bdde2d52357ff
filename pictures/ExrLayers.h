// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ImfChannelList.h>
#include <ImfMultiPartInputFile.h>

#include <optional>
#include <string>
#include <vector>

namespace qx::pictures {

/// The channels of a part that make a picture: red, green and blue, or one that is all three; and alpha.
struct ExrChosen {
    std::vector<std::string> colours;  ///< three, or one
    std::string alpha;                 ///< empty where there is none
    bool is_grey() const { return colours.size() == 1; }
    bool uses(const std::string& channel) const;
};

/// What a name stands for in a file.
struct ExrLayer {
    int part = 0;
    ExrChosen channels;
};

/// What is shown of a file: the first part's own picture where no name is given. A name is that of a part, of a layer
/// ("diffuse" for channels such as diffuse.R), of both ("left.diffuse"), of a channel, or of a view. None where nothing
/// fits.
std::optional<ExrLayer> find_layer(const Imf::MultiPartInputFile& exr, const std::string& name);

/// All names but those of channels that belong to a layer, in the file's order.
std::vector<std::string> layers_of(const Imf::MultiPartInputFile& exr);

}  // namespace qx::pictures
