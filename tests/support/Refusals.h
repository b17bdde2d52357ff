// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/FK_Frames.h"
#include "tests/support/TestHost.h"
#include "tests/support/Worlds.h"

namespace qx::test {

inline const char* const kBadParameter = "bad parameter passed to effect callback";
inline const char* const kOnGpu = "gpu effect world is not supported yet.";

/// Worlds that are refused: of a GPU, without pixels, and of a depth that is none.
struct BadWorlds {
    QX_LayerDef gpu{}, empty{};
    OddWorld odd{4, 4, 1};

    BadWorlds() { gpu.platform_ref = standalone::NewFakeFrame(GK::kPixelFormat_GPU_BGRA_4444_32f); }
    ~BadWorlds() { FK::DisposeVPixFromVideoFrame(gpu.platform_ref); }
    BadWorlds(BadWorlds&&) = delete;
};

/// A call that fails with a code and its report.
struct Refused {
    std::function<int()> call;
    std::string text;
    int code = 3;
    int site = 0;  ///< 0: any
    std::size_t reports = 1;
};
/// Bands that begin at one time may each report the same fault: calls run on one thread.
inline void expect_refused(const std::vector<Refused>& cases) {
    const int limit = standalone::PoolLimit();
    standalone::SetPoolLimit(1);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "case " << i << ": " << cases[i].text);
        const Reports reports;
        EXPECT_EQ(cases[i].call(), cases[i].code);
        ASSERT_EQ(reports.all().size(), cases[i].reports);
        EXPECT_EQ(reports.last_text(), cases[i].text);
        EXPECT_TRUE(cases[i].site == 0 || reports.all()[0].site == cases[i].site) << reports.all()[0].site;
    }
    standalone::SetPoolLimit(limit);
}

/// Calls that fail with code 3 and one report of this text.
inline void expect_refused(const std::string& text, const std::vector<std::function<int()>>& calls) {
    std::vector<Refused> cases;
    for (const auto& call : calls) cases.push_back({call, text});
    expect_refused(cases);
}

/// A body as a call, whose result is the code that it throws.
template <class Body> std::function<int()> thrown(const Body& body) {
    return [body] { return code_of(body); };
}

/// What a routine asks its caller while it works. From call `stop_at` on the answer is `code`.
struct Polls {
    int stop_at = -1, code = 517;
    std::vector<std::pair<int, int>> calls{};  ///< count and total; -1 of an abort

    int answer() { return stop_at >= 0 && static_cast<int>(calls.size()) > stop_at ? code : 0; }
    static int abort(void* refcon) { return progress(refcon, -1, -1); }
    static int progress(void* refcon, std::int32_t count, std::int32_t total) {
        auto& polls = *static_cast<Polls*>(refcon);
        polls.calls.emplace_back(count, total);
        return polls.answer();
    }
};

}  // namespace qx::test
