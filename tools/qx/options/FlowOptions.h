// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "scene/retime/Quality.h"

namespace CLI {
class App;
}

namespace qx::tool {

/// How motion is followed. Texts, of which empty ones leave the quality what it is.
struct FlowOptions {
    std::string quality, detail, smoothness, refine_smoothness, iterations, convergence, block, filter;

    scene::FlowChoices choices() const;  ///< throws WrongUsage
    bool is_any() const;                 ///< something is asked for
    std::string words() const;           ///< all of them, by which frames of a job are known again
};
void add_flow_options(CLI::App& command, FlowOptions& options);

}  // namespace qx::tool
