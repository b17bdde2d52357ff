// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/view/Gate.h"

#include <sys/random.h>

#include <algorithm>

#include "tools/qx/terminal/Messages.h"

namespace qx::tool {
namespace {

constexpr std::size_t kRandomBytes = 24;

/// Takes as long whatever differs.
bool same_secret(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    int differing = 0;
    for (std::size_t i = 0; i < a.size(); ++i) differing |= a[i] ^ b[i];
    return differing == 0;
}

/// The first part of a path that has two at least.
std::string first_part(const std::string& path) {
    const std::size_t end = path.find('/', 1);
    return path.empty() || path[0] != '/' || end == std::string::npos ? "" : path.substr(1, end - 1);
}

}  // namespace

std::string random_word() {
    unsigned char bytes[kRandomBytes];
    if (::getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) {
        throw WorkFailed("the system gives no random numbers");
    }
    std::string word;
    for (const unsigned char byte : bytes) {
        word += "0123456789abcdef"[byte >> 4];
        word += "0123456789abcdef"[byte & 15];
    }
    return word;
}

Gate::Gate(int port, std::string token, std::string ticket)
    : host_("127.0.0.1:" + std::to_string(port)),
      named_host_("localhost:" + std::to_string(port)),
      origin_("http://" + host_),
      token_(std::move(token)),
      ticket_(std::move(ticket)) {}

bool Gate::comes_from_here(const HttpRequest& request) const {
    const auto all = [&](const char* name, const std::string& a, const std::string& b) {
        const auto [begin, end] = request.headers.equal_range(name);
        return std::all_of(begin, end, [&](const auto& header) { return header.second == a || header.second == b; });
    };
    return request.headers.count("host") == 1 && all("host", host_, named_host_) &&
           all("origin", origin_, "http://" + named_host_) && all("sec-fetch-site", "same-origin", "none");
}

std::optional<std::string> Gate::place(const HttpRequest& request) const {
    if (!comes_from_here(request) || !same_secret(first_part(request.path), token_)) return std::nullopt;
    return request.path.substr(token_.size() + 2);
}

bool Gate::takes_ticket(const HttpRequest& request) {
    return comes_from_here(request) && request.method == "GET" && same_secret(first_part(request.path), ticket_) &&
           !ticket_used_.exchange(true);
}

}  // namespace qx::tool
