// SPDX-License-Identifier: Apache-2.0
// A frame between two frames: a textured square has moved by eight pixels, and is found half way.
#include <QX/QX.h>

#include <cstdio>
#include <memory>

namespace {

constexpr int kWidth = 160, kHeight = 120, kStep = 8;

/// Stripes that drift, with a square in front of them.
std::unique_ptr<QX_World> frame(int shift) {
    std::unique_ptr<QX_World> world(QX_World::New(kWidth, kHeight, 8, 0));
    QX_LayerDef record{};
    world->FillOutEffectWorld(&record);
    for (int y = 0; y < kHeight; ++y) {
        auto* const row = reinterpret_cast<QX_Pixel8*>(static_cast<std::byte*>(record.data) + y * record.rowbytes);
        for (int x = 0; x < kWidth; ++x) {
            const int u = x - shift;
            const bool inside = u >= 50 && u < 100 && y >= 35 && y < 85;
            const auto value = static_cast<std::uint8_t>(inside ? 120 + (u * 37 + y * 59) % 130 : 40 + (x + y) % 20);
            row[x] = {255, value, value, value};
        }
    }
    return world;
}

double distance(const QX_World& a, const QX_World& b) {
    QX_LayerDef one{}, other{};
    a.FillOutEffectWorld(&one);
    b.FillOutEffectWorld(&other);
    double sum = 0;
    for (int y = 0; y < kHeight; ++y) {
        const auto* const p = reinterpret_cast<const QX_Pixel8*>(static_cast<std::byte*>(one.data) + y * one.rowbytes);
        const auto* const q =
            reinterpret_cast<const QX_Pixel8*>(static_cast<std::byte*>(other.data) + y * other.rowbytes);
        for (int x = 0; x < kWidth; ++x) sum += p[x].red > q[x].red ? p[x].red - q[x].red : q[x].red - p[x].red;
    }
    return sum / (kWidth * kHeight);
}

}  // namespace

int main() {
    if (const int code = QX_Birth()) return code;
    int code = 0;
    {
        const auto first = frame(0), second = frame(kStep), half_way = frame(kStep / 2);
        const std::unique_ptr<QX_World> made(QX_World::New(kWidth, kHeight, 8, 0));
        QX_Solvan_OtherParams where{};
        where.firstFrameId.first = 1;  // numbers that tell frames apart: the motion of a pair is kept by them
        where.secondFrameId.first = 2;
        where.position = 0.5;
        code = QX_AdvancedFrameBlending(where, {}).Render(first.get(), second.get(), made.get());
        const bool near = distance(*made, *half_way) < 0.5 * distance(*first, *half_way);
        std::printf("retime: code %d, the frame made is %s that half way\n", code, near ? "near" : "far from");
    }
    QX_Death();
    return code;
}
