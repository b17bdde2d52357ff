// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace qx::scene {

/// What a mode looks at.
enum class ModeKind {
    channel,  ///< each colour by itself
    colour,   ///< the three colours of a pixel together
    placing,  ///< how the layer covers what is below
    alpha     ///< the alpha of what is below, whose colours stay
};
inline constexpr const char* kModeKindWords[] = {"channel", "colour", "placing", "alpha"};

/// What people are told of a mode.
struct Mode {
    int number;
    const char* name;  ///< snake case
    ModeKind kind;
    std::vector<const char*> aliases;  ///< what paint and edit programs call it
    const char* words;                 ///< what it does, in a line
    /// What an opaque layer of colour `s` makes of an opaque background of colour `d`, both from 0 to 1, where each
    /// colour is by itself: as text, and to be called. Null elsewhere.
    const char* formula = nullptr;
    double (*blend)(double s, double d) = nullptr;
};

/// The 43 modes in number order.
const std::vector<Mode>& all_modes();

/// Number of a mode given by number, name or alias: in any case, with -, _, blanks or nothing between its words, with
/// or without `xfer_`, in British or American spelling. A mode's own name goes before another's alias.
/// Throws BadText with the nearest name, or where to find the list.
int mode_number(const std::string& text);

}  // namespace qx::scene
