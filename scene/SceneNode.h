// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace qx::tool {

/// A value of a scene file, and its place in it, such as /layers/2/mode. What is not as it should be throws WrongUsage
/// that begins with the place.
class SceneNode {
public:
    SceneNode(const nlohmann::json& value, std::string place) : value_(&value), place_(std::move(place)) {}

    const std::string& place() const { return place_; }
    [[noreturn]] void fault(const std::string& words) const;

    double number(double least, double most) const;
    int whole(int least, int most) const;
    std::string text() const;
    bool flag() const;
    int choice(const std::vector<std::string>& words) const;

    bool is_list() const { return value_->is_array(); }
    bool is_text() const { return value_->is_string(); }
    bool is_object() const { return value_->is_object(); }
    bool is_number() const { return value_->is_number(); }
    std::vector<SceneNode> items(std::size_t fewest, std::size_t most) const;
    /// Numbers in a list; where one number is legal, also a number by itself.
    std::vector<double> numbers(std::size_t fewest, std::size_t most, double least, double highest) const;

    /// The value is to be an object with keys out of these.
    void check_keys(const std::vector<std::string>& known) const;
    std::optional<SceneNode> find(const std::string& key) const;
    SceneNode need(const std::string& key) const;

private:
    const nlohmann::json* value_;
    std::string place_;
};

/// The values of a JSON text. Throws WrongUsage with line and column, or with a key that stands twice in an object.
nlohmann::json parse_json(const std::string& text);

}  // namespace qx::tool
