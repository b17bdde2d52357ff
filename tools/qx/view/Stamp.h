// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace qx::tool {

/// A word that is another one when one of the files has been saved, has come or has gone. Files are known by their
/// times and sizes, so that a stamp costs no reading.
std::string stamp_of(const std::vector<std::string>& files);

/// Texts in a scene that may be names of files, as they lie from its folder: those of pictures, profiles, fonts,
/// kernels alike. A text that names none costs a look at a file that is not there.
/// @param json  the values of the scene
std::vector<std::string> files_named_in(const std::string& json, const std::string& scene);

}  // namespace qx::tool
