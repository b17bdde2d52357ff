// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "tools/qx/view/Http.h"

namespace qx::tool {

/// So many random bits of the system that nobody guesses them, as text for an address. Throws WorkFailed.
std::string random_word();

/// Who may ask: requests that know the token, for the loopback address by its name and not in the name of another site.
/// A page elsewhere that lets its own name lead here (DNS rebinding) has neither.
class Gate {
public:
    Gate(int port, std::string token = random_word(), std::string ticket = random_word());

    std::string address() const { return origin_ + "/" + token_ + "/"; }
    /// Leads to the address once. Command lines are open to all users of a machine: what starts the browser tells it
    /// this in place of the token.
    std::string address_to_open() const { return origin_ + "/" + ticket_ + "/"; }

    /// What is asked for behind the token; nothing for one who may not ask.
    std::optional<std::string> place(const HttpRequest& request) const;
    /// True for the first request that has the ticket.
    bool takes_ticket(const HttpRequest& request);

private:
    bool comes_from_here(const HttpRequest& request) const;
    const std::string host_, named_host_, origin_, token_, ticket_;
    std::atomic<bool> ticket_used_{false};
};

}  // namespace qx::tool
