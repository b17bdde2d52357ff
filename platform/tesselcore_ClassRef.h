// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <exception>
#include <utility>

#include "platform/Platform_Export.h"
#include "platform/tesselcore_Guid.h"

/// Objects of the host behind interfaces that are found by identifiers.
namespace tesselcore::classref {

/// What a query answers for an identifier that the object does not know.
inline constexpr auto kUnknownInterface = static_cast<std::int32_t>(0xA00A0001);

/// Thrown where an interface that is needed is not there.
class PLATFORM_EXPORT NullInterfaceException : public std::exception {
public:
    NullInterfaceException() = default;
    NullInterfaceException(const NullInterfaceException&) = default;
    NullInterfaceException& operator=(const NullInterfaceException&) = default;
    ~NullInterfaceException() override;
    const char* what() const noexcept override;
};

/// What all objects of the host have: a count of references, which are atomic, and a query for interfaces. Any thread.
class Unknown {
public:
    virtual void AddRef() noexcept = 0;
    virtual void Release() noexcept = 0;
    /// Stores the interface with this identifier, with a reference for the caller.
    /// @return 0; kUnknownInterface with null in `*interface`
    virtual std::int32_t QueryInterface(const Guid& id, void** interface) noexcept = 0;

protected:
    ~Unknown() = default;
};

}  // namespace tesselcore::classref

/// A reference to an interface of an object of the host, or none. Interface has a constant kID.
template <class Interface> class InterfaceRef {
public:
    InterfaceRef() = default;
    InterfaceRef(std::nullptr_t) {}
    /// One more reference to what somebody holds.
    explicit InterfaceRef(Interface* held) : interface_(held) {
        if (interface_ != nullptr) interface_->AddRef();
    }
    InterfaceRef(const InterfaceRef& other) : InterfaceRef(other.interface_) {}
    InterfaceRef(InterfaceRef&& other) noexcept : interface_(std::exchange(other.interface_, nullptr)) {}
    InterfaceRef& operator=(InterfaceRef other) noexcept {
        std::swap(interface_, other.interface_);
        return *this;
    }
    ~InterfaceRef() {
        if (interface_ != nullptr) interface_->Release();
    }
    /// Takes a reference over.
    static InterfaceRef adopt(Interface* held) {
        InterfaceRef made;
        made.interface_ = held;
        return made;
    }

    explicit operator bool() const { return interface_ != nullptr; }
    Interface* get() const { return interface_; }
    /// Throws NullInterfaceException where there is none.
    Interface* operator->() const {
        if (interface_ == nullptr) throw tesselcore::classref::NullInterfaceException();
        return interface_;
    }
    /// Another interface of the object; none where it has no such one, or there is no object.
    template <class Other> InterfaceRef<Other> query() const {
        void* found = nullptr;
        if (interface_ == nullptr || interface_->QueryInterface(Other::kID, &found) != 0) return {};
        return InterfaceRef<Other>::adopt(static_cast<Other*>(found));
    }

private:
    Interface* interface_ = nullptr;
};
