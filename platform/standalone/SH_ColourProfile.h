// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <lcms2.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/TK_Memory.h"
#include "platform/standalone/Colour.h"
#include "platform/standalone/SH_ColourContext.h"

namespace standalone {

/// Bytes of a profile's file, in the host's memory. Throws std::bad_alloc.
class ColourBytes {
public:
    explicit ColourBytes(std::size_t size);
    std::uint8_t* data() const { return bytes_.get(); }
    std::size_t size() const { return size_; }

private:
    struct Free {
        void operator()(std::uint8_t* bytes) const { TK_FreePtr(bytes); }
    };
    std::unique_ptr<std::uint8_t[], Free> bytes_;
    std::size_t size_;
};

/// Counts references of an object of the engine, which ends with the last.
template <class Interface> class ColourObject : public Interface, public TK_MemTrackedObject {
public:
    ColourObject() = default;
    virtual ~ColourObject() = default;
    ColourObject(const ColourObject&) = delete;
    ColourObject& operator=(const ColourObject&) = delete;
    void Reference() override { references_.fetch_add(1, std::memory_order_relaxed); }
    void UnReference() override {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

private:
    std::atomic<std::int64_t> references_{1};
};

/// A profile is its file, and what was read from that once. Never changes.
class ColourProfile final : public ColourObject<CMX_Profile> {
public:
    /// What the colour library tells of a file.
    struct Content {
        ProfileClass kind;
        ProfileSpace space;
        bool has_matrix, over_range;
        std::array<wchar_t, 256> name;
        std::array<double, 3> gammas;
        bool has_gammas;
        Primaries primaries;
        t_CMX_ID id;
    };
    ColourProfile(ColourBytes file, const Content& content) : file_(std::move(file)), content_(content) {}

    std::wstring Name() const override { return content_.name.data(); }
    bool IsOverRange() const override { return content_.over_range; }
    t_CMX_ID ID() const override { return content_.id; }
    CMX_Error MakeLinear(CMX_Profile** linear) const override;
    const ColourBytes& file() const { return file_; }
    const Content& content() const { return content_; }

private:
    ColourBytes file_;
    Content content_;
};
using ColourProfileRef = HCL_CMX_Reference<ColourProfile>;

/// Every CMX_Profile that reaches this engine is one of its own.
inline const ColourProfile& ColourProfileOf(const CMX_Profile* profile) {
    return *static_cast<const ColourProfile*>(profile);
}

/// Vets and reads a file, of which a profile of grey becomes one of RGB. Throws ColourFault and std::bad_alloc, as all
/// below do.
ColourProfileRef ReadColourProfile(const std::uint8_t* bytes, std::size_t count);
/// Made, then read from its file: what the file rounds, all know rounded.
ColourProfileRef MakeColourProfile(const ProfileRecipe& recipe);
/// Of the same colorants and white to the last bit, with curves that change nothing.
ColourProfileRef MakeLinearProfile(const ColourProfile& profile);

/// One of NamedProfile. @return empty for a name that is none
std::optional<ColourProfileRef> FindNamedProfile(const std::string& name);
/// The same, of a name that is known.
ColourProfileRef MustNamedProfile(const char* name);
ColourProfileRef ColourProfileByNameOrFile(const std::string& text);

/// Throws std::bad_alloc.
HCL_CMX_ProfilePtr OwnColourProfile(ColourProfileRef profile);
/// The profile that `get` gives, or null with the fault in words.
template <class Get> HCL_CMX_ProfilePtr ColourProfileOrFault(std::string* fault, const Get& get) {
    HCL_CMX_ProfilePtr profile;
    const CMX_Error error = ColourBoundary([&] { profile = OwnColourProfile(get()); });
    TellColourFault(error, fault);
    return profile;
}

}  // namespace standalone
