// SPDX-License-Identifier: Apache-2.0
// What a render refuses, and what is left when it fails.
#include <cmath>

#include "tests/opticalflow/FrontSupport.h"

namespace qx::test {
namespace {

constexpr const char* kNoMemory = "Frame Blending - Failed to allocate memory.";
constexpr const char* kOther = "Frame Blending - Non-specific error.";

struct FlowFailure : testing::Test {
    Born born{2};
    ~FlowFailure() override { standalone::PurgeCacheMemory(); }
};

int checked(const QX_Solvan_AlgoParams& algo) { return QX_AdvancedFrameBlending(algo, {}, {}).CheckParamRange(); }
QX_Solvan_AlgoParams usual() { return percentages_of({}); }

TEST(FlowRanges, CountsHaveBothEnds) {
    using P = QX_Solvan_AlgoParams;
    const Cases<std::uint16_t P::*, int, int> cases = {// field, least, most
                                                       {&P::interpolationMode, 0, 2}, {&P::refineIterations, 1, 50},
                                                       {&P::highQualityFilter, 0, 1}, {&P::blockSize, 4, 40},
                                                       {&P::sampleCount, 1, 20},      {&P::reservedChoice, 0, 3}};
    for (const auto& [field, least, most] : cases) {
        for (int value = 0; value <= 65535; ++value) {
            P p = usual();
            p.*field = static_cast<std::uint16_t>(value);
            ASSERT_EQ(checked(p), value >= least && value <= most ? 0 : 514) << value;
        }
    }
}

TEST(FlowRanges, NumbersHaveBothEnds) {
    using P = QX_Solvan_AlgoParams;
    const Cases<float P::*, float, float, float> cases = {// field, factor, least, most
                                                          {&P::vectorDetail, 0.01f, 0.05f, 1.0f},
                                                          {&P::convergenceError, 0.01f, 0.0f, 0.1f},
                                                          {&P::estimatorSmoothness, 1.0f, -1000.0f, 1000.0f},
                                                          {&P::refineSmoothness, 1.0f, -1000.0f, 1000.0f},
                                                          {&P::shutterAngle, 1.0f, 0.0f, 360.0f}};
    for (const auto& [field, factor, least, most] : cases) {
        const auto code = [&, f = field](float value) {
            P p = usual();
            p.*f = value;
            return checked(p);
        };
        int inside = 0, outside = 0;
        for (const float edge : {least, most}) {
            float value = edge / factor;
            for (int k = 0; k < 50; ++k) value = std::nextafter(value, -1e9f);
            for (int k = 0; k < 100; ++k, value = std::nextafter(value, 1e9f)) {
                const bool fits = value * factor >= least && value * factor <= most;
                ASSERT_EQ(code(value), fits ? 0 : 514) << value;
                ++(fits ? inside : outside);
            }
        }
        EXPECT_TRUE(inside > 20 && outside > 20);
        for (const float wrong : {std::nanf(""), HUGE_VALF, -HUGE_VALF}) EXPECT_EQ(code(wrong), 514);
    }
    EXPECT_EQ(5.0f * 0.01f, 0.049999997f);
    P p = usual();
    p.vectorDetail = 5;
    EXPECT_EQ(checked(p), 514);
}

TEST(FlowRanges, WeightsMakeOne) {
    const double nan = std::nan("");
    const Cases<double, double, double, int> cases = {
        // red, green, blue in percent
        {100, 0, 0, 0},        {0, 100, 0, 0},     {0, 0, 100, 0},      {50, 50, 10, 514},     {50, 50, 1.9, 0},
        {50, 50, 2.1, 514},    {40, 40, 18.1, 0},  {40, 40, 17.9, 514}, {100.1, -0.1, 0, 514}, {-0.1, 100, 0.1, 514},
        {100, 0.1, -0.1, 514}, {nan, 50, 50, 514}, {50, nan, 50, 514},  {50, 50, nan, 514},    {0, 0, 0, 514}};
    for (const auto& [red, green, blue, code] : cases) {
        QX_Solvan_AlgoParams p = usual();
        p.lumaRed = red, p.lumaGreen = green, p.lumaBlue = blue;
        EXPECT_EQ(checked(p), code) << red << " " << green << " " << blue;
    }
}

TEST(FlowRanges, DefaultsHaveTheirChecksum) {
    const QX_AdvancedFrameBlending defaults({}, {});
    EXPECT_EQ(defaults.CheckParamRange(), 0);
    QX_AdvancedFrameBlending::Crc crc;
    defaults.ComputeCRC(crc);
    EXPECT_EQ(crc.checksum(), 0x746d1b58u);
    QX_AdvancedFrameBlending::Crc converted;
    QX_AdvancedFrameBlending(defaults.algo(), {}, {}).ComputeCRC(converted);  // what is converted counts
    EXPECT_NE(converted.checksum(), crc.checksum());
}

TEST_F(FlowFailure, WorldsAreRefused) {
    Shot shot, smaller(8, 40, 29), deeper(16);
    const Frame before = scenes::painted(scenes::cloth(9), 41, 29, 8);
    shot.copy_frame(before);
    const auto render = [&](int mode, QX_World* first, QX_World* second, QX_World* out) {
        return std::function<int()>([=, &shot] {
            shot.params.mode = mode;
            return QX_AdvancedFrameBlending(percentages_of(shot.params), shot.other, {}).Render(first, second, out);
        });
    };
    QX_World *const a = shot.first.get(), *const b = shot.second.get(), *const out = shot.out.get();
    const OwnedWorld empty(QX_World::NewReference(nullptr, 41, 29, 8, 4 * 41));
    std::vector<Refused> cases;
    for (const int mode : {0, 1, 2}) {
        for (QX_World* const bad : {static_cast<QX_World*>(nullptr), empty.get(), deeper.first.get()}) {
            cases.push_back({render(mode, bad, b, out), kOther, 516});
            cases.push_back({render(mode, a, bad, out), kOther, 516});
            if (bad != deeper.first.get()) cases.push_back({render(mode, a, b, bad), kOther, 516});
        }
    }
    cases.push_back({render(2, smaller.first.get(), b, out), kOther, 516});
    cases.push_back({render(2, a, smaller.first.get(), out), kOther, 516});
    expect_refused(cases);
    cases.clear();

    const BadWorlds bad;
    const OwnedWorld gpu(QX_World::New(41, 29, 8, 1));
    void* const pixels = std::exchange(gpu->data, nullptr);
    gpu->platform_ref = bad.gpu.platform_ref;
    shot.params.detail = 0.01f;  // not even looked at
    for (const int mode : {0, 1, 2}) {
        cases.push_back({render(mode, gpu.get(), nullptr, out), kOnGpu, 3});
        cases.push_back({render(mode, a, gpu.get(), out), kOnGpu, 3});
        cases.push_back({render(mode, a, b, gpu.get()), kOnGpu, 3});
    }
    expect_refused(cases);
    gpu->data = static_cast<decltype(gpu->data)>(pixels);
    gpu->platform_ref = nullptr;

    const Reports reports;
    OddWorld odd[3] = {{41, 29, 1}, {41, 29, 1}, {41, 29, 1}};  // of a depth that there is none of
    EXPECT_EQ(QX_AdvancedFrameBlending({}, {}).Render(&odd[0], &odd[1], &odd[2]), 0);
    EXPECT_EQ(shot.render(), 514);
    EXPECT_TRUE(reports.all().empty());
    EXPECT_TRUE(same_bits(shot.result(), before));
    EXPECT_EQ(standalone::CacheStatistics().items, 0u);
}

/// Other modes take smaller frames, whose edges go on.
TEST_F(FlowFailure, SmallerFramesAreReadByTheirEdge) {
    for (const int depth : kDepths) {
        for (const int mode : {0, 1}) {
            Shot shot(depth), smaller(depth, 33, 20);
            shot.params.mode = mode;
            shot.frames[0] = smaller.frames[0];
            shot.first = std::move(smaller.first);
            EXPECT_TRUE(same_bits(shot.rendered(), shot.expected(2))) << depth;
        }
    }
}

TEST_F(FlowFailure, FieldsWithoutPixelsAreNoMemory) {
    Shot shot(8, 19, 40);
    shot.params.detail = 0.0501f;
    for (const double position : {0.0, 0.5, 1.0}) {
        shot.other.position = position;
        const Reports reports;
        EXPECT_EQ(shot.render(), 4);
        EXPECT_EQ(reports.last_text(), kNoMemory);
    }
}

/// Nothing leaks, what the cache has is right, and so is the next render.
class AfterFailures {
public:
    explicit AfterFailures(Shot& shot) : shot_(shot), right_(shot.rendered()) {
        standalone::PurgeCacheMemory();
        blocks_ = blocks_in_use();
    }
    /// @return false once nothing failed any more
    bool expect_like_nothing(int code) {
        if (code == 0) {
            EXPECT_TRUE(same_bits(shot_.result(), right_));
        }
        const bool was_cached = shot_.is_cached();
        EXPECT_TRUE(same_bits(shot_.rendered(), right_)) << (was_cached ? "with what was kept" : "");
        standalone::PurgeCacheMemory();
        EXPECT_EQ(blocks_in_use(), blocks_);
        return code != 0;
    }

private:
    Shot& shot_;
    Frame right_;
    std::int64_t blocks_;
};

TEST_F(FlowFailure, EveryAllocationMayFail) {
    standalone::SetPoolLimit(1);
    for (const int samples : {1, 2}) {
        Shot shot(8, 24, 18);
        shot.params.samples = samples;
        shot.params.detail = 1;
        AfterFailures after(shot);
        for (const auto fail : {standalone::FailAllocation, standalone::FailAllocationsFrom}) {
            int failed = 0;
            for (bool fails = true; fails && !HasFailure();) {
                const Reports reports;
                fail(failed + 1);
                const int code = shot.render();
                fail(0);
                EXPECT_TRUE(code == 0 || (code == 4 && reports.last_text() == kNoMemory)) << code << ", " << failed;
                fails = after.expect_like_nothing(code);
                failed += fails;
            }
            EXPECT_GT(failed, 100);
        }
    }
    standalone::SetPoolLimit(0);
}

/// Also where the memory is a container's. The cache does without what it cannot keep.
TEST_F(FlowFailure, EveryNewMayFail) {
    standalone::SetPoolLimit(1);
    Shot shot(8, 24, 18);
    AfterFailures after(shot);
    const auto before = NewCounter::count();
    EXPECT_EQ(shot.render(), 0);
    const auto all = NewCounter::count() - before;
    standalone::PurgeCacheMemory();
    int failed = 0;
    for (std::int64_t nth = 1; nth <= all && !HasFailure(); ++nth) {
        const Reports reports;
        NewCounter::fail(nth);
        int code = -1;
        EXPECT_NO_THROW(code = shot.render()) << nth;
        NewCounter::fail(0);
        EXPECT_TRUE(code == 0 || code == 4) << code << ", " << nth;
        failed += after.expect_like_nothing(code);
    }
    EXPECT_GT(failed, 10);
    standalone::SetPoolLimit(0);
}

struct Asked {
    int stop_at, code, calls = 0;
    bool elsewhere = false;
    std::thread::id own = std::this_thread::get_id();

    static std::int32_t ask(void* self) {
        auto& asked = *static_cast<Asked*>(self);
        asked.elsewhere |= std::this_thread::get_id() != asked.own;
        return ++asked.calls >= asked.stop_at ? asked.code : 0;
    }
    int render(Shot& shot) {
        void* argument = this;
        return shot.render({&Asked::ask, &argument});
    }
};

TEST_F(FlowFailure, EveryPollMayEndIt) {
    for (const int mode : {0, 1, 2}) {
        Shot shot(8, 24, 18);
        shot.params.mode = mode;
        shot.params.samples = mode == 2 ? 1 : 2;
        AfterFailures after(shot);
        Asked never{INT_MAX, 0};
        EXPECT_EQ(never.render(shot), 0);
        EXPECT_GT(never.calls, 18);
        EXPECT_FALSE(never.elsewhere);
        standalone::PurgeCacheMemory();
        for (int n = 1; n <= never.calls && !HasFailure(); ++n) {
            const int code = n % 3 == 0 ? 517 : n % 3 == 1 ? 10000 : 77;
            const Reports reports;
            Asked asked{n, code};
            EXPECT_EQ(asked.render(shot), code) << n;
            EXPECT_EQ(asked.calls, n);
            EXPECT_FALSE(asked.elsewhere);
            EXPECT_EQ(reports.last_text(), code == 77 ? kOther : "");
            after.expect_like_nothing(code);
        }
    }
    Shot shot;
    const Reports reports;
    EXPECT_EQ(shot.render({[](void* argument) { return argument == nullptr ? 12 : 13; }, nullptr}), 12);
}

TEST_F(FlowFailure, SuitesAndExceptionsBecomeCodes) {
    Shot shot;
    {
        const Reports reports;
        standalone::SetBasicSuite(nullptr, 12);
        EXPECT_EQ(shot.render(), 12);
        standalone::SetBasicSuite(nullptr);
        ASSERT_EQ(reports.all().size(), 1u);
        EXPECT_EQ(reports.last_text(), kOther);
    }
    const Cases<std::function<void()>, int, Text> cases = {
        {[] { throw std::runtime_error("the host's own words"); }, 3, kOther},
        {[] { throw std::bad_alloc(); }, 4, kNoMemory},
        {[] { throw 42; }, 42, kOther},
        {[] { throw 517; }, 517, ""}};
    for (const auto& [thrower, code, text] : cases) {
        const Reports reports;
        standalone::SetExecutor([t = thrower](const auto&, int) { t(); });
        EXPECT_EQ(shot.render(), code);
        standalone::SetExecutor({});
        EXPECT_EQ(reports.last_text(), text);
        if (code == 3) {
            EXPECT_EQ(reports.all().at(0).text, "the host's own words");
        }
    }
    EXPECT_TRUE(same_bits(shot.rendered(), shot.expected(2)));
}

}  // namespace
}  // namespace qx::test
