// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "pictures/Files.h"
#include "scene/retime/Field.h"

// Fields of motion as files, by their endings: flo, which holds one field, or exr.
namespace qx::tool {

bool is_field_file(const std::string& path);

/// The file is complete, and `commit` gives it its name. A null field is left out; of two fields a flo holds the first.
std::unique_ptr<pictures::OutputFile> write_fields(const std::string& path, const scene::FlowField* forward,
                                                   const scene::FlowField* backward, pictures::Watch& watch);

}  // namespace qx::tool
