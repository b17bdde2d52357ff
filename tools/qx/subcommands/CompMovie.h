// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/qx/subcommands/CompOptions.h"

// qx comp with movies: the line as a scene, of which every frame is rendered.
namespace qx::tool {

/// True when a movie is among what the line composites or makes. Throws pictures::Failure.
bool is_of_movies(const CompOptions& options);

/// As long as the background's movie, or without one as the longest layer's. Throws WrongUsage, and what the rendering
/// of a scene throws.
void comp_movies(const CompOptions& options);

}  // namespace qx::tool
