// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>

namespace qx::pictures {

/// The text with blanks for control characters: names of files and texts of libraries may hold any, and a message is
/// one line wherever it is shown.
std::string one_line(std::string text);

/// What is said of a file.
inline std::string about(const std::string& file, const std::string& words) { return file + ": " + words; }

/// A file could not be read or written. The text names it, in one line: "FILE: plain words".
class Failure : public std::runtime_error {
public:
    Failure(const std::string& file, const std::string& words) : std::runtime_error(one_line(about(file, words))) {}
};

/// What was chosen for a file cannot be had in it, whatever it shows.
class BadChoice : public Failure {
public:
    using Failure::Failure;
};

}  // namespace qx::pictures
