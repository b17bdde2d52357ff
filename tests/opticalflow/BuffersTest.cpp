// SPDX-License-Identifier: Apache-2.0
// The second way in: fields alone, of plain buffers.
#include "tests/opticalflow/FrontSupport.h"

namespace qx::test {
namespace {

/// A buffer with bytes of its own, and gaps between its rows.
struct Buffer {
    std::vector<std::uint8_t> bytes;
    YetAnotherImgBuffer record{};

    Buffer(int w, int h, int bits, int channels)
        : bytes(static_cast<std::size_t>(h) * static_cast<std::size_t>(w * channels * bits / 8 + 8), 0x55) {
        record = {static_cast<std::uint32_t>(w),        static_cast<std::uint32_t>(h), static_cast<std::uint32_t>(bits),
                  static_cast<std::uint32_t>(channels), w * channels * bits / 8 + 8,   bytes.data()};
    }
    std::uint8_t* row(int y) { return bytes.data() + y * record.rowBytes; }

    /// Three channels are blue, green and red.
    void put(const Frame& frame) {
        constexpr std::size_t kOrders[2][4] = {{3, 2, 1, 0}, {0, 1, 2, 3}};
        const auto write = [&]<class Channel>(Channel) {
            for (const auto& [x, y] : places(frame.w, frame.h)) {
                Channel c[4];
                for (std::size_t i = 0; i < record.channels; ++i)
                    c[i] = static_cast<Channel>(frame.read(x, y)[kOrders[record.channels - 3][i]]);
                const std::size_t pixel = record.channels * sizeof(Channel);
                std::memcpy(row(y) + static_cast<std::size_t>(x) * pixel, c, pixel);
            }
        };
        if (record.bits == 8) write(std::uint8_t{});
        if (record.bits == 16) write(std::uint16_t{});
        if (record.bits == 32) write(float{});
    }
    flow_model::Field field() {
        flow_model::Field field(static_cast<int>(record.width), static_cast<int>(record.height));
        for (int y = 0; y < field.h; ++y) std::memcpy(static_cast<void*>(&field.at(0, y)), row(y), 8u * record.width);
        return field;
    }
};
Buffer field_buffer(int w, int h) { return Buffer(w, h, 32, 2); }

QX_Solvan_AlgoParams fractions_of(const flow_model::Params& p) {
    QX_Solvan_AlgoParams a = percentages_of(p);
    a.vectorDetail = p.detail, a.convergenceError = p.convergence;
    a.lumaRed = p.red, a.lumaGreen = p.green, a.lumaBlue = p.blue;
    return a;
}

class FlowBuffers : public testing::Test {
protected:
    ~FlowBuffers() override { EXPECT_EQ(standalone::CacheStatistics().items, 0u); }

    int calculate(Buffer* forward, Buffer* backward, const QX_Solvan_InterruptFuncs* interrupt = nullptr) {
        const auto record = [](Buffer* buffer) { return buffer == nullptr ? nullptr : &buffer->record; };
        return calcSolvanOpticalFlowParamsNoIpl(fractions_of(params), interrupt, record(first), record(second),
                                                record(first_mask), record(second_mask), record(forward),
                                                record(backward), nullptr);
    }
    Born born{7};
    flow_model::Params params;
    Buffer *first = nullptr, *second = nullptr, *first_mask = nullptr, *second_mask = nullptr;
};

/// Bits are depths, and masks hide bytes of 0.
TEST_F(FlowBuffers, FieldsAreTheModels) {
    for (std::uint64_t seed = 1; seed <= 60; ++seed) {
        scenes::Dice dice(seed);
        const scenes::Scene scene = scenes::drawn(seed);
        const int w = scene.first.w, h = scene.first.h, out_w = 3 + dice.below(80), out_h = 3 + dice.below(80);
        params = scene.params;
        const int channels = 3 + dice.below(2);
        Buffer a(w, h, scene.first.depth, channels), b(w, h, scene.first.depth, channels);
        a.put(scene.first), b.put(scene.second);
        flow_model::Image masks[2] = {{w, h}, {w, h}};
        Buffer hides[2] = {{w, h, 8, 1}, {w, h, 8, 1}};
        const bool masked[2] = {dice.once_in(2), dice.once_in(2)};
        for (const std::size_t i : {0u, 1u}) {
            for (const auto& [x, y] : places(w, h)) {
                const int value = x < w / 3 ? 0 : dice.once_in(20) ? dice.below(256) : 255;
                masks[i].at(x, y) = flow_model::real(value);
                hides[i].row(y)[x] = static_cast<std::uint8_t>(value);
            }
        }
        first = &a, second = &b;
        first_mask = masked[0] ? &hides[0] : nullptr, second_mask = masked[1] ? &hides[1] : nullptr;
        Buffer forward = field_buffer(out_w, out_h), backward = field_buffer(w, h);
        const auto wanted = [&](int to_w, int to_h) {
            return flow_model::buffer_fields(scene.first, scene.second, masked[0] ? &masks[0] : nullptr,
                                             masked[1] ? &masks[1] : nullptr, to_w, to_h, params, 7);
        };
        const auto narrow = wanted(out_w, out_h), whole = wanted(w, h);
        ASSERT_EQ(calculate(&forward, &backward), narrow.code) << scene.name;
        if (narrow.code != 0) continue;
        ASSERT_TRUE(same_bits(forward.field(), narrow.forward)) << scene.name;
        ASSERT_TRUE(same_bits(backward.field(), whole.backward)) << scene.name;
        Buffer alone = field_buffer(out_w, out_h);
        EXPECT_EQ(calculate(&alone, nullptr), 0);
        EXPECT_EQ(alone.bytes, forward.bytes);
        EXPECT_EQ(calculate(nullptr, nullptr), 0);
    }
}

TEST_F(FlowBuffers, OthersAreRefused) {
    Buffer a(20, 16, 8, 4), b(20, 16, 8, 4), narrow(19, 16, 8, 4), low(20, 15, 8, 4), deep(20, 16, 16, 4),
        three(20, 16, 8, 3), mask(20, 16, 8, 1), empty(20, 16, 8, 4), forward = field_buffer(20, 16);
    empty.record.pixels = nullptr;
    const auto code = [&](Buffer* one, Buffer* other, Buffer* hides = nullptr, Buffer* out = nullptr) {
        first = one, second = other, first_mask = nullptr, second_mask = hides;
        const std::vector<std::uint8_t> before = forward.bytes;
        const int result = calculate(out == nullptr ? &forward : out, nullptr);
        EXPECT_EQ(forward.bytes == before, result != 0 || one->record.channels != 4 || one->record.bits != 8);
        forward.bytes = before;
        forward.record.pixels = forward.bytes.data();
        return result;
    };
    for (Buffer* const bad : {&narrow, &low, &deep, &three, &empty}) {
        EXPECT_EQ(code(&a, bad), 516);
        EXPECT_EQ(code(bad, &a), 516);
    }
    EXPECT_EQ(code(&a, nullptr), 516);
    EXPECT_EQ(code(&a, &b, &narrow), 516);
    EXPECT_EQ(code(&a, &b, &empty), 516);
    EXPECT_EQ(code(&a, &b, nullptr, &empty), 516);
    params.block = 2;
    EXPECT_EQ(code(&a, &b), 516);
    params.block = 3;
    EXPECT_EQ(code(&a, &b, &mask), 0);
    for (const float none : {0.01f, 0.0f, -1.0f, -HUGE_VALF, std::nanf("")}) {
        params.detail = none;
        EXPECT_EQ(code(&a, &b), 4) << none;
    }
    params.detail = 0.2f;
    for (const auto& [bits, channels] : {std::pair{8u, 2u}, {8u, 5u}, {10u, 4u}, {64u, 3u}}) {
        for (Buffer* const buffer : {&a, &b}) buffer->record.bits = bits, buffer->record.channels = channels;
        EXPECT_EQ(code(&a, &b), 0) << bits << " " << channels;
    }
}

TEST_F(FlowBuffers, FailuresAreCodes) {
    standalone::SetPoolLimit(1);
    params.detail = 1, params.iterations = 1;
    Buffer a(20, 16, 8, 4), b(20, 16, 8, 4), mask(20, 16, 8, 1), out = field_buffer(20, 16);
    a.put(scenes::painted(scenes::cloth(3), 20, 16, 8)), b.put(scenes::painted(scenes::cloth(4), 20, 16, 8));
    first = &a, second = &b, first_mask = second_mask = &mask;
    EXPECT_EQ(calculate(&out, nullptr), 0);
    const auto right = out.bytes;
    const std::int64_t blocks = blocks_in_use();
    const Reports reports;
    for (const auto fail : {standalone::FailAllocation, standalone::FailAllocationsFrom}) {
        int n = 1;
        for (int code = 4; code != 0; ++n) {
            fail(n);
            code = calculate(&out, nullptr);
            fail(0);
            ASSERT_TRUE(code == 0 || code == 4) << n;
            ASSERT_EQ(blocks_in_use(), blocks) << n;
        }
        EXPECT_GT(n, 100);
        EXPECT_EQ(out.bytes, right);
    }
    static int left;
    for (int n = 1;; ++n) {
        left = n;
        const QX_Solvan_InterruptFuncs asks{[](void*) { return --left <= 0 ? 77 : 0; }, nullptr};
        const int code = calculate(&out, nullptr, &asks);
        if (code == 0) break;
        ASSERT_EQ(code, 77) << n;
        ASSERT_EQ(left, 0) << "asked again";
    }
    EXPECT_EQ(out.bytes, right);
    standalone::SetPoolLimit(0);
}

}  // namespace
}  // namespace qx::test
