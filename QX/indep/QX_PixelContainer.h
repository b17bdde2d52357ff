// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"
#include "platform/TK_Memory.h"

/// What a world object tells of its pixels. Every QX_World begins with this part.
class QX_EXPORT QX_PixelContainerBase : public TK_MemTrackedObject {
public:
    virtual ~QX_PixelContainerBase() = default;
    /// 8, 16 or 32.
    virtual std::int16_t Depth() const = 0;
    /// Bytes of a pixel: the depth divided by two.
    std::size_t PixelSize() const { return static_cast<std::size_t>(Depth()) / 2; }
};

namespace qx {

/// The depth of a world object, of which the records know the name alone.
inline std::int16_t depth_of(const QX_World* world) {
    return reinterpret_cast<const QX_PixelContainerBase*>(world)->Depth();
}

}  // namespace qx
