// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace qx {

/// The levels of processors that kernels are built for: one number at a time, SSE4.1, AVX2, and AVX-512 with the sets
/// F, BW, DQ and VL. Every level gives the plain one's values.
enum class Level { plain, sse4, avx2, avx512 };

}  // namespace qx

/// Declares `name`, which a text that is built for each level defines, and name_of(level).
#define QX_DECLARE_LEVELS(Type, name)                                                                 \
    namespace plain {                                                                                 \
    extern const Type name;                                                                           \
    }                                                                                                 \
    namespace sse4 {                                                                                  \
    extern const Type name;                                                                           \
    }                                                                                                 \
    namespace avx2 {                                                                                  \
    extern const Type name;                                                                           \
    }                                                                                                 \
    namespace avx512 {                                                                                \
    extern const Type name;                                                                           \
    }                                                                                                 \
    inline const Type& name##_of(Level level) {                                                       \
        static constexpr const Type* all[] = {&plain::name, &sse4::name, &avx2::name, &avx512::name}; \
        return *all[static_cast<int>(level)];                                                         \
    }
