// SPDX-License-Identifier: Apache-2.0
// The AVX2 level: registers of 32 bytes.
#include "QX/compositing/QX_PixelAccess.h"

#define QX_ISA avx2
namespace qx::avx2 {
using Wide = Int8;
using WideFloat = Float8;
}  // namespace qx::avx2

#include "QX/compositing/QX_LevelVectorT.h"

const qx::Level qx::avx2::level = make_level();
