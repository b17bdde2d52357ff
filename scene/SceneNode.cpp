// SPDX-License-Identifier: Apache-2.0
#include "scene/SceneNode.h"

#include <algorithm>
#include <set>

#include "scene/Faults.h"

namespace qx::scene {
namespace {

using nlohmann::json;

std::string range_of(std::size_t fewest, std::size_t most) {
    return fewest == most ? std::to_string(fewest) : std::to_string(fewest) + " to " + std::to_string(most);
}

/// What the library calls a fault, without its own number in brackets.
std::string plain(const std::string& what) {
    const auto end = what.find("] ");
    return end == std::string::npos ? what : what.substr(end + 2);
}

}  // namespace

std::string SceneNode::place() const {
    const std::string place = place_.empty() ? "/" : place_;
    return title_.empty() ? place : place + " (" + title_ + ")";
}

SceneNode SceneNode::child(const json& value, const std::string& key) const {
    SceneNode child = *this;
    child.value_ = &value;
    child.place_ += "/" + key;
    return child;
}

void SceneNode::fault(const std::string& words) const { throw SceneFault(*file_, place(), words); }

double SceneNode::number(double least, double most) const {
    const double number = value_->is_number() ? value_->get<double>() : 0;
    if (value_->is_number() && number >= least && number <= most) return number;
    fault("is not a number from " + words(least) + " to " + words(most));
}

int SceneNode::whole(int least, int most) const {
    const double number = value_->is_number() ? value_->get<double>() : 0.5;
    if (number >= least && number <= most && number == static_cast<int>(number)) return static_cast<int>(number);
    fault("is not a whole number from " + std::to_string(least) + " to " + std::to_string(most));
}

std::string SceneNode::text() const {
    if (!is_text()) fault("is not a text");
    if (value_->get_ref<const std::string&>().empty()) fault("is an empty text");
    return value_->get<std::string>();
}

bool SceneNode::flag() const {
    if (!value_->is_boolean()) fault("is neither true nor false");
    return value_->get<bool>();
}

int SceneNode::choice(std::span<const char* const> words) const {
    return read_by([&] { return scene::choice(text(), words); });
}

std::vector<SceneNode> SceneNode::items(std::size_t fewest, std::size_t most) const {
    if (!is_list()) fault("is not a list");
    if (value_->size() < fewest || value_->size() > most) fault("does not have " + range_of(fewest, most) + " items");
    std::vector<SceneNode> items;
    for (std::size_t i = 0; i < value_->size(); ++i) items.push_back(child((*value_)[i], std::to_string(i)));
    return items;
}

std::vector<double> SceneNode::numbers(std::size_t fewest, std::size_t most, double least, double highest) const {
    if (fewest == 1 && is_number()) return {number(least, highest)};
    if (!is_list() && most == 1) fault("is not a number");
    if (!is_list()) fault("is not a list of " + range_of(fewest, most) + " numbers");
    std::vector<double> numbers;
    for (const SceneNode& item : items(fewest, most)) numbers.push_back(item.number(least, highest));
    return numbers;
}

void SceneNode::check_keys(const std::vector<std::string>& known) const {
    if (!is_object()) fault("is not an object");
    for (const auto& item : value_->items()) {
        if (std::find(known.begin(), known.end(), item.key()) != known.end()) continue;
        child(item.value(), item.key()).fault("is an unknown key" + suggestion(item.key(), known));
    }
}

std::optional<SceneNode> SceneNode::find(const std::string& key) const {
    const auto found = value_->find(key);
    if (found == value_->end()) return std::nullopt;
    return child(*found, key);
}

SceneNode SceneNode::need(const std::string& key) const {
    if (const auto found = find(key)) return *found;
    child(*value_, key).fault("is missing");
}

json parse_json(const std::string& text, const std::string& file) {
    std::vector<std::set<std::string>> open;
    const auto watch = [&](int, json::parse_event_t event, json& value) {
        if (event == json::parse_event_t::object_start) open.emplace_back();
        if (event == json::parse_event_t::object_end) open.pop_back();
        if (event == json::parse_event_t::key && !open.back().insert(value.get<std::string>()).second) {
            throw SceneFault(file, "", "key " + value.get<std::string>() + " stands twice in an object");
        }
        return true;
    };
    try {
        return json::parse(text, watch);
    } catch (const json::exception& fault) {
        throw SceneFault(file, "", plain(fault.what()));
    }
}

}  // namespace qx::scene
