// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "tools/qx/view/Http.h"

/// What the command asks of the module that carries HTTP. The module links cpp-httplib, and with it OpenSSL, the
/// command does not: it loads the module when a view is opened, so that start-up of all else is free of them.
namespace qx::serve {

inline constexpr int kVersion = 1;
inline constexpr const char* kFileName = "libqxserve.so";
inline constexpr const char* kEntryName = "qx_serve_routines";

/// Listens on the loopback address alone, and answers on threads of its own until it ends.
class Server {
public:
    virtual ~Server() = default;  ///< waits for requests that are being answered
    virtual int port() const = 0;
    /// Begins to answer. Connections wait until then.
    virtual void start(const tool::Answerer& answerer) = 0;

protected:
    Server() = default;
};

struct Routines {
    int version;
    /// @param port   0: one that is free
    /// @param fault  why there is none, where null is returned
    std::unique_ptr<Server> (*open)(int port, std::string* fault);
};

/// Type of the entry, which has C linkage.
using Entry = const Routines* (*)();

}  // namespace qx::serve
