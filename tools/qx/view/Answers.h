// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "tools/qx/view/Frames.h"
#include "tools/qx/view/Gate.h"
#include "tools/qx/view/Http.h"
#include "tools/qx/view/Source.h"

namespace qx::tool {

/// What the page is told. It asks for its own files, the state of the sources, frames, and values of a frame's pixels;
/// docs/view.md lists the requests. For any number of threads.
class Answers {
public:
    Answers(Gate& gate, std::vector<std::unique_ptr<Source>>& sources, Frames& frames)
        : gate_(gate), sources_(sources), frames_(frames) {}
    /// Throws nothing but std::bad_alloc.
    HttpAnswer answer(const HttpRequest& request);

private:
    HttpAnswer answer_place(const std::string& place, const HttpRequest& request);
    HttpAnswer state(const HttpRequest& request);
    HttpAnswer frame(const HttpRequest& request);
    HttpAnswer values(const HttpRequest& request);
    nlohmann::ordered_json state_of(Source& source);
    Source& source_of(int number);

    Gate& gate_;
    std::vector<std::unique_ptr<Source>>& sources_;
    Frames& frames_;
};

}  // namespace qx::tool
