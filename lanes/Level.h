// SPDX-License-Identifier: Apache-2.0
// What a text that is built once a level works with. The build defines QX_ISA, the level's name, which is the namespace
// of all that the text defines.
#pragma once

#include "lanes/Lanes.h"

#ifndef QX_ISA
#error "this header is for texts that are built for levels"
#endif

namespace qx::QX_ISA {

/// Bytes of a register; 0 where one number is worked on at a time.
#if defined __AVX512BW__
inline constexpr std::size_t kRegister = 64;
#elif defined __AVX2__
inline constexpr std::size_t kRegister = 32;
#elif defined __SSE4_1__
inline constexpr std::size_t kRegister = 16;
#else
inline constexpr std::size_t kRegister = 0;
#endif

/// A register of numbers, or one number.
template <class T> using Wide = Vector<T, kRegister>;

}  // namespace qx::QX_ISA
