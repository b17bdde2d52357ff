// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "scene/Words.h"

namespace qx::scene {

/// A value of a scene file, and its place in it. What is not as it should be throws SceneFault.
class SceneNode {
public:
    /// The scene as a whole.
    SceneNode(const nlohmann::json& value, const std::string& file) : value_(&value), file_(&file) {}

    /// Such as /layers/2/mode, and behind it the title of what it lies in.
    std::string place() const;
    /// From here on messages tell this name beside the place.
    void set_title(const std::string& title) { title_ = title; }
    [[noreturn]] void fault(const std::string& words) const;

    double number(double least, double most) const;
    int whole(int least, int most) const;
    std::string text() const;
    bool flag() const;
    int choice(std::span<const char* const> words) const;
    /// What `read` makes of it; a text that it does not know is a fault here.
    template <class Read> auto read_by(const Read& read) const {
        try {
            return read();
        } catch (const BadText& bad) {
            fault(bad.what());
        }
    }

    bool is_list() const { return value_->is_array(); }
    bool is_text() const { return value_->is_string(); }
    bool is_object() const { return value_->is_object(); }
    bool is_number() const { return value_->is_number(); }
    std::vector<SceneNode> items(std::size_t fewest, std::size_t most) const;
    /// Numbers in a list; where one number is legal, also a number by itself.
    std::vector<double> numbers(std::size_t fewest, std::size_t most, double least, double highest) const;

    /// The value is to be an object with keys out of these.
    void check_keys(const std::vector<std::string>& known) const;
    void check_keys(std::span<const char* const> known) const {
        check_keys(std::vector<std::string>(known.begin(), known.end()));
    }
    std::optional<SceneNode> find(const std::string& key) const;
    SceneNode need(const std::string& key) const;

private:
    SceneNode child(const nlohmann::json& value, const std::string& key) const;
    const nlohmann::json* value_;
    const std::string* file_;
    std::string place_, title_;
};

/// The values of the text of a file. Throws SceneFault with line and column, or with a key that stands twice in an
/// object.
nlohmann::json parse_json(const std::string& text, const std::string& file);

}  // namespace qx::scene
