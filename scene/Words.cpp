// SPDX-License-Identifier: Apache-2.0
#include "scene/Words.h"

#include <algorithm>
#include <charconv>

namespace qx::scene {
namespace {

template <class Number> bool parse(const std::string& text, Number& number) {
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    return parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
}

/// Small letters, one sign between words: what nobody means to be another word by.
std::string folded(std::string word) {
    for (char& c : word) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c == '_' || c == ' ' ? '-' : c);
    return word;
}

/// The nearest of the words if it lies within two edits, else empty.
std::string near_word(const std::string& word, const std::vector<std::string>& known) {
    constexpr std::size_t most_edits = 2;
    const std::string* nearest = nullptr;
    std::size_t fewest = std::min(most_edits + 1, word.size());  // not all of it may be changed
    for (const std::string& name : known) {
        const std::size_t edits = edit_distance(folded(name), folded(word));
        if (edits >= fewest) continue;
        fewest = edits;
        nearest = &name;
    }
    return nearest != nullptr ? *nearest : "";
}

}  // namespace

std::string words(double number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

int whole_number(const std::string& text, int least, int most) {
    int number = 0;
    if (parse(text, number) && number >= least && number <= most) return number;
    throw BadText(text, "not a whole number from " + std::to_string(least) + " to " + std::to_string(most));
}

double real_number(const std::string& text, double least, double most) {
    double number = 0;
    if (parse(text, number) && number >= least && number <= most) return number;  // false for not-a-number
    throw BadText(text, "not a number from " + words(least) + " to " + words(most));
}

int choice(const std::string& text, std::span<const char* const> known) {
    std::string list;
    std::vector<std::string> words;
    for (std::size_t i = 0; i < known.size(); ++i) {
        if (text == known[i]) return static_cast<int>(i);
        list.append(i == 0 ? "" : ", ").append(known[i]);
        words.emplace_back(known[i]);
    }
    const std::string near = near_word(text, words);
    throw BadText(text, "not one of " + list + (near.empty() ? "" : "; the nearest is " + near));
}

std::string joined(std::span<const std::string> words, const char* between) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
    return text;
}

std::size_t edit_distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t exchange = diagonal + (a[i - 1] != b[j - 1] ? 1 : 0);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, exchange});
        }
    }
    return row[b.size()];
}

std::string suggestion(const std::string& word, const std::vector<std::string>& known, const std::string& list) {
    const std::string near = near_word(word, known);
    if (!near.empty()) return "; the nearest is " + near;
    if (!list.empty()) return "; " + list;
    std::string all;
    for (const std::string& name : known) all += (all.empty() ? "" : ", ") + name;
    return all.empty() ? "" : "; known are " + all;
}

}  // namespace qx::scene
