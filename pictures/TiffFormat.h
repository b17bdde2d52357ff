// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Format.h"

namespace qx::io {

Picture read_tiff(InputFile& file);
void write_tiff(OutputFile& file, const Picture& picture, bool with_alpha, const WriteOptions& options);

}  // namespace qx::io
