// SPDX-License-Identifier: Apache-2.0
#include "scene/effects/Kernels.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <sstream>

#include "QX/filters/QX_GaussianKernel.h"
#include "scene/Faults.h"
#include "scene/Words.h"

namespace qx::scene {
namespace {

using Weights = std::vector<std::int32_t>;
using Line = std::vector<std::int32_t>;
using Block = std::vector<Line>;

constexpr std::size_t kMostShown = 40;  ///< letters of a word that is none
constexpr double kMostReach = (kMostKernelSize - 1) / 2.0;
constexpr double kMostBell = 181;  ///< squares of rows beyond it wrap in the library's bells

std::string in_line(int number) { return "line " + std::to_string(number); }

std::int32_t weight(const std::string& word, int line) {
    std::int32_t number = 0;
    const char* const first = word.data() + (word[0] == '+' ? 1 : 0);
    const auto parsed = std::from_chars(first, word.data() + word.size(), number);
    if (parsed.ec == std::errc() && parsed.ptr == word.data() + word.size()) return number;
    const bool is_text = std::all_of(word.begin(), word.end(), [](char c) { return c > ' '; });
    throw BadText(in_line(line), (is_text ? word.substr(0, kMostShown) : "this") + " is no whole number of 32 bits");
}

/// Lines without numbers end a block, those of a comment alone do not.
std::vector<Block> blocks_of(const std::string& contents) {
    std::vector<Block> blocks;
    std::istringstream lines(contents);
    bool open = false;
    int number = 0;
    for (std::string text; std::getline(lines, text);) {
        ++number;
        const bool comment = text.find('#') != std::string::npos;
        std::istringstream words(text.substr(0, text.find('#')));
        Line line;
        for (std::string word; words >> word;) line.push_back(weight(word, number));
        if (line.empty()) {
            open = open && comment;
            continue;
        }
        if (!open) blocks.emplace_back();
        open = true;
        Block& block = blocks.back();
        if (!block.empty() && line.size() != block.front().size()) {
            throw BadText(in_line(number), "has " + std::to_string(line.size()) + " numbers, the one before " +
                                               std::to_string(block.front().size()));
        }
        block.push_back(std::move(line));
    }
    return blocks;
}

void check_form(const Block& block, KernelForm form) {
    const std::size_t columns = block.front().size(), rows = block.size();
    const std::string size = std::to_string(columns) + " x " + std::to_string(rows);
    if (form != KernelForm::square && rows != 1) throw BadText(size, "a row or a column is told in one line");
    if (form == KernelForm::square && rows != columns) throw BadText(size, "is no square");
    if (columns % 2 == 0) throw BadText(size, "the size must be odd");
    if (columns > kMostKernelSize) {
        throw BadText(size, "the size is at most " + std::to_string(kMostKernelSize));
    }
}

Weights joined(const Block& block) {
    Weights weights;
    for (const Line& line : block) weights.insert(weights.end(), line.begin(), line.end());
    return weights;
}

Kernels same_for_all(int size, const Weights& weights) { return {size, {weights, weights, weights, weights}, true}; }

/// For colours alone: alpha stays what it is.
Kernels for_colours(const Weights& weights) {
    Kernels kernels = same_for_all(3, weights);
    kernels.weights[0] = {0, 0, 0, 0, 1, 0, 0, 0, 0};
    return kernels;
}

Kernels bell(double radius, KernelForm form) {
    const auto size = static_cast<std::size_t>(2 * std::ceil(radius) + 1);
    const bool one = form != KernelForm::square;
    std::vector<std::uint32_t> weights(one ? size : size * size);
    std::int32_t width = 0;
    must(QX_GaussianKernel(nullptr, radius, one ? kQX_GaussianKernel_OneRow : 0, 1, &width, weights.data()), "kernel");
    return same_for_all(width, Weights(weights.begin(), weights.end()));
}

Kernels box(int size, KernelForm form) {
    if (size % 2 == 0) throw BadText("filter box:" + std::to_string(size), "the size of a box must be odd");
    const auto side = static_cast<std::size_t>(size);
    return same_for_all(size, Weights(form == KernelForm::square ? side * side : side, 1));
}

}  // namespace

Kernels kernels_of_text(const std::string& contents, KernelForm form) {
    const std::vector<Block> blocks = blocks_of(contents);
    if (blocks.size() != 1 && blocks.size() != 4) {
        throw BadText(std::to_string(blocks.size()) + " blocks of numbers", "it has one or four");
    }
    Kernels kernels;
    kernels.size = static_cast<int>(blocks.front().front().size());
    for (std::size_t i = 0; i < 4; ++i) {
        const Block& block = blocks[blocks.size() == 1 ? 0 : i];
        check_form(block, form);
        if (block.front().size() != blocks.front().front().size()) throw BadText("blocks", "they have different sizes");
        kernels.weights[i] = joined(block);
    }
    return kernels;
}

Kernels kernels_of_filter(const std::string& filter, KernelForm form) {
    const auto colon = filter.find(':');
    const std::string name = filter.substr(0, colon);
    const std::string number = colon == std::string::npos ? "" : filter.substr(colon + 1);
    const auto in_filter = [&](const auto& read) {
        try {
            return read();
        } catch (const BadText& bad) {
            throw BadText("filter " + name, bad.what());
        }
    };
    if (name == "gaussian") {
        const double most = form == KernelForm::square ? kMostBell : kMostReach;
        return bell(in_filter([&] { return real_number(number, 0, most); }), form);
    }
    if (name == "box") return box(in_filter([&] { return whole_number(number, 1, kMostKernelSize); }), form);
    const std::vector<std::string> names = {"sharpen", "edges", "emboss", "gaussian:R", "box:N"};
    if (name == filter && (name == "sharpen" || name == "edges" || name == "emboss")) {
        if (form != KernelForm::square) throw BadText("filter " + filter, "is a square, no row or column");
        if (name == "sharpen") return same_for_all(3, {0, -1, 0, -1, 5, -1, 0, -1, 0});
        if (name == "edges") return for_colours({-1, -1, -1, -1, 8, -1, -1, -1, -1});
        return for_colours({-2, -1, 0, -1, 1, 1, 0, 1, 2});
    }
    throw BadText("filter " + filter, "no such filter" + suggestion(filter, names));
}

}  // namespace qx::scene
