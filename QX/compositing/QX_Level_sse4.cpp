// SPDX-License-Identifier: Apache-2.0
// The SSE4.1 level: registers of 16 bytes.
#include "QX/compositing/QX_PixelAccess.h"

#define QX_ISA sse4
namespace qx::sse4 {
using Wide = Int4;
using WideFloat = Float4;
}  // namespace qx::sse4

#include "QX/compositing/QX_LevelVectorT.h"

const qx::Level qx::sse4::level = make_level();
