// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Files.h"

namespace qx::pictures {

/// True for a file that begins as movies do, whatever its name: NUT, Matroska, WebM, MP4, MOV, AVI, MXF, FLV, Ogg, ASF,
/// and streams of MPEG.
bool has_movie_head(const InputFile& file);

}  // namespace qx::pictures
