// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

// What a browser asks and what it is answered, in our words: only the module that carries them knows more of HTTP.
namespace qx::tool {

struct HttpRequest {
    std::string method, path;                         ///< the path is decoded
    std::multimap<std::string, std::string> headers;  ///< of those that tell who asks, with names in small letters
    std::map<std::string, std::string> values;        ///< behind the path, the first of each name

    std::string value(const std::string& name) const {
        const auto found = values.find(name);
        return found == values.end() ? "" : found->second;
    }
};

struct HttpAnswer {
    int status = 200;
    std::string type{}, body{};
    std::vector<std::pair<std::string, std::string>> headers{};
};

/// Called on any number of threads; throws nothing.
using Answerer = std::function<HttpAnswer(const HttpRequest&)>;

}  // namespace qx::tool
