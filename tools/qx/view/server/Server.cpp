// SPDX-License-Identifier: Apache-2.0
// The module that carries HTTP: all that knows of cpp-httplib.
#include <httplib.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <future>
#include <thread>

#include "tools/qx/view/server/Module.h"

namespace qx::serve {
namespace {

constexpr std::size_t kThreads = 16;  // most of them wait for a frame
/// Connections that say nothing are not waited for longer, so that an interruption is soon over.
constexpr auto kSilence = std::chrono::milliseconds(900);
constexpr const char* kLoopback = "127.0.0.1";

/// Two commands may not listen on one port, as the library would have it.
void only_reuse(int socket) {
    const int yes = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

tool::HttpRequest request_of(const httplib::Request& asked) {
    tool::HttpRequest request{asked.method, asked.path, {}, {}};
    for (const auto& [name, key] :
         {std::pair{"Host", "host"}, {"Origin", "origin"}, {"Sec-Fetch-Site", "sec-fetch-site"}}) {
        const std::size_t count = asked.get_header_value_count(name);
        for (std::size_t i = 0; i < count; ++i) request.headers.emplace(key, asked.get_header_value(name, i));
    }
    for (const auto& [name, value] : asked.params) request.values.emplace(name, value);
    return request;
}

void give(tool::HttpAnswer answer, httplib::Response& response) {
    response.status = answer.status;
    for (const auto& [name, value] : answer.headers) response.set_header(name, value);
    if (answer.body.empty()) return;
    response.body = std::move(answer.body);
    response.set_header("Content-Type", answer.type);
}

class LoopbackServer final : public Server {
public:
    explicit LoopbackServer(int port) {
        server_.set_socket_options(only_reuse);
        server_.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
        server_.set_keep_alive_max_count(1);
        server_.set_keep_alive_timeout(1);
        server_.set_read_timeout(kSilence);
        server_.set_payload_max_length(0);
        errno = 0;
        port_ = port != 0 ? (server_.bind_to_port(kLoopback, port) ? port : -1) : server_.bind_to_any_port(kLoopback);
    }
    ~LoopbackServer() override {
        while (thread_.joinable() && ended_.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready) {
            server_.stop();  // heard only once it listens
        }
        if (thread_.joinable()) thread_.join();
    }
    int port() const override { return port_; }
    void start(const tool::Answerer& answerer) override {
        server_.set_pre_routing_handler([answerer](const httplib::Request& asked, httplib::Response& response) {
            give(answerer(request_of(asked)), response);
            return httplib::Server::HandlerResponse::Handled;
        });
        std::packaged_task<void()> listen([this] { server_.listen_after_bind(); });
        ended_ = listen.get_future();
        thread_ = std::thread(std::move(listen));
    }

private:
    httplib::Server server_;
    int port_ = -1;
    std::thread thread_;
    std::future<void> ended_;
};

std::unique_ptr<Server> open(int port, std::string* fault) {
    auto server = std::make_unique<LoopbackServer>(port);
    if (server->port() > 0) return server;
    *fault = errno != 0 ? std::strerror(errno) : "the port cannot be had";
    return nullptr;
}

constexpr Routines routines{kVersion, open};

}  // namespace
}  // namespace qx::serve

extern "C" __attribute__((visibility("default"))) const qx::serve::Routines* qx_serve_routines() {
    return &qx::serve::routines;
}
