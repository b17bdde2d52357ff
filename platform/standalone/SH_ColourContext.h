// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <lcms2.h>

#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "platform/HCL_CMX.h"
#include "platform/standalone/Colour.h"

/// The colour library's context of the engine, its memory and its faults.
namespace standalone {

inline constexpr CMX_Error kColour_NoMemory = 4;
inline constexpr auto kColour_BadArgument = static_cast<CMX_Error>(CMX_Code("parm"));
inline constexpr auto kColour_BadProfile =
    static_cast<CMX_Error>(CMX_Code("prof"));                                     ///< cannot be used, or not for this
inline constexpr auto kColour_NoLink = static_cast<CMX_Error>(CMX_Code("link"));  ///< no way between two profiles

class ColourFault : public std::runtime_error {
public:
    ColourFault(CMX_Error code, const std::string& text) : std::runtime_error(text), code_(code) {}
    CMX_Error code() const { return code_; }

private:
    CMX_Error code_;
};

/// Keeps the words for LastColourFault.
void RememberColourFault(const char* text) noexcept;
/// Gives the caller those words of an error, if there was one and `fault` is not null.
void TellColourFault(CMX_Error error, std::string* fault) noexcept;

/// Runs what may throw, and gives the engine's code for it.
template <class Body> CMX_Error ColourBoundary(Body&& body) noexcept {
    try {
        body();
        return 0;
    } catch (const ColourFault& fault) {
        RememberColourFault(fault.what());
        return fault.code();
    } catch (const std::exception&) {  // nothing below throws another but for want of memory
        RememberColourFault(kNoMemoryForColours);
        return kColour_NoMemory;
    }
}

/// Holds what the colour library allocates for objects that live and go together; none of them is ever given to its own
/// end. The library does not get over the failure of each of its allocations: some crash it, some leak. So none fails
/// in its sight: the call is left by a jump, and with the arena goes what was half made.
class ColourArena {
public:
    ColourArena() = default;
    ~ColourArena() { drop(); }
    ColourArena(const ColourArena&) = delete;
    ColourArena& operator=(const ColourArena&) = delete;

    /// Calls job(context), whose allocations are the arena's; `false` of it is a fault of this code, told in `what` and
    /// the library's own words. Throws ColourFault and std::bad_alloc. The job may be left anywhere between two calls
    /// of the library: it makes nothing that has to be destroyed, and locks nothing.
    template <class Job> void must(CMX_Error code, const char* what, const Job& job) {
        static_assert(std::is_trivially_destructible_v<Job>);
        const auto call = [](cmsContext context, const void* it) { return (*static_cast<const Job*>(it))(context); };
        run(code, what, call, &job);
    }

    struct Block;

private:
    void run(CMX_Error code, const char* what, bool (*call)(cmsContext, const void*), const void* job);
    void drop();

    Block* newest_ = nullptr;
};

/// The pipeline of the transform that this thread made last, with all its stages: nothing is optimised but that stages
/// which undo each other are gone.
const cmsPipeline* LastColourPipeline();

}  // namespace standalone
