// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

#include "platform/Platform_Export.h"

namespace tesselcore::utility {

/// An object that its owners share: it begins without any, each owner adds itself, and the last one that leaves deletes
/// it. boost::intrusive_ptr is such an owner. Any thread.
class PLATFORM_EXPORT RefCountedObject {
public:
    RefCountedObject() = default;
    RefCountedObject(const RefCountedObject&) = delete;
    RefCountedObject& operator=(const RefCountedObject&) = delete;
    virtual ~RefCountedObject() = default;

    void AddRef() const noexcept { owners_.fetch_add(1, std::memory_order_relaxed); }
    void Release() const noexcept {
        if (owners_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

    friend void intrusive_ptr_add_ref(const RefCountedObject* object) noexcept { object->AddRef(); }
    friend void intrusive_ptr_release(const RefCountedObject* object) noexcept { object->Release(); }

private:
    mutable std::atomic<int> owners_{0};
};

}  // namespace tesselcore::utility
