// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

/// Texts that stand for numbers and choices, in scene files as on a command line.
namespace qx::scene {

/// A text that means nothing where it stands: "TEXT: plain words". Who knows the place puts it in front.
struct BadText : std::invalid_argument {
    BadText(const std::string& text, const std::string& words) : std::invalid_argument(text + ": " + words) {}
};

/// A number as people write it: 0.5 is "0.5", 30000 is "30000".
std::string words(double number);

// These throw BadText.
int whole_number(const std::string& text, int least, int most);
double real_number(const std::string& text, double least, double most);
/// The number of a word in a list.
int choice(const std::string& text, std::span<const char* const> known);

/// The words in a row, with a text between each two.
std::string joined(std::span<const std::string> words, const char* between);

/// Insertions, deletions and exchanges that make one word of the other.
std::size_t edit_distance(const std::string& a, const std::string& b);

/// What a message about an unknown word ends in: "; the nearest is X" if one of the known words lies within two edits,
/// else where to look: "; LIST", or by default the known words themselves. A guess that is farther off misleads.
std::string suggestion(const std::string& word, const std::vector<std::string>& known, const std::string& list = "");

}  // namespace qx::scene
