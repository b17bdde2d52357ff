// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Format.h"

namespace qx::pictures {

Picture read_tiff(InputFile& file, const ReadOptions& options, Watch& watch);
void write_tiff(OutputFile& file, const Picture& picture, bool with_alpha, const WriteOptions& options, Watch& watch);

}  // namespace qx::pictures
