// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "platform/KS_Cache.h"
#include "platform/tesselcore_MixHash.h"
#include "tests/opticalflow/FlowModel.h"
#include "tests/opticalflow/Scenes.h"
#include "tests/support/TestHost.h"
#include "tests/support/Worlds.h"

/// Renders of the library beside those of the model.
namespace qx::test {

using flow_model::Frame;
using OwnedWorld = std::unique_ptr<QX_World>;

template <class Pixel> void copy_pixels(const Frame& frame, QX_World& world) {
    for (int y = 0; y < frame.h; ++y) {
        auto* const row =
            reinterpret_cast<Pixel*>(static_cast<std::byte*>(world.data) + y * std::ptrdiff_t{world.rowbytes});
        for (int x = 0; x < frame.w; ++x) {
            const flow_model::Colour& c = frame.px[flow_model::place(frame.w, x, y)];
            using Channel = decltype(row->alpha);
            row[x] = {static_cast<Channel>(c[0]), static_cast<Channel>(c[1]), static_cast<Channel>(c[2]),
                      static_cast<Channel>(c[3])};
        }
    }
}
inline OwnedWorld world_of(const Frame& frame) {
    OwnedWorld world(QX_World::New(frame.w, frame.h, static_cast<std::int16_t>(frame.depth), 1));
    if (frame.depth == 8) copy_pixels<QX_Pixel8>(frame, *world);
    if (frame.depth == 16) copy_pixels<QX_Pixel16>(frame, *world);
    if (frame.depth == 32) copy_pixels<QX_PixelFloat>(frame, *world);
    return world;
}

template <class Pixel> void read_pixels(const QX_World& world, Frame& frame) {
    for (int y = 0; y < frame.h; ++y) {
        const auto* const row = reinterpret_cast<const Pixel*>(static_cast<const std::byte*>(world.data) +
                                                               y * std::ptrdiff_t{world.rowbytes});
        for (int x = 0; x < frame.w; ++x)
            frame.at(x, y) = {static_cast<float>(row[x].alpha), static_cast<float>(row[x].red),
                              static_cast<float>(row[x].green), static_cast<float>(row[x].blue)};
    }
}
inline Frame frame_of(const QX_World& world) {
    Frame frame(world.width, world.height, world.Depth());
    if (frame.depth == 8) read_pixels<QX_Pixel8>(world, frame);
    if (frame.depth == 16) read_pixels<QX_Pixel16>(world, frame);
    if (frame.depth == 32) read_pixels<QX_PixelFloat>(world, frame);
    return frame;
}

/// What a constructor of QX_AdvancedFrameBlending makes of fractions that are given it as percentages.
inline QX_Solvan_AlgoParams percentages_of(const flow_model::Params& p) {
    QX_Solvan_AlgoParams a;
    a.interpolationMode = static_cast<std::uint16_t>(p.mode);
    a.vectorDetail = p.detail * 100;
    a.estimatorSmoothness = p.estimator_smoothness;
    a.refineSmoothness = p.refine_smoothness;
    a.refineIterations = static_cast<std::uint16_t>(p.iterations);
    a.convergenceError = p.convergence * 100;
    a.highQualityFilter = p.sinc ? 1 : 0;
    a.blockSize = static_cast<std::uint16_t>(p.block);
    a.lumaRed = p.red * 100;
    a.lumaGreen = p.green * 100;
    a.lumaBlue = p.blue * 100;
    a.shutterAngle = p.shutter;
    a.sampleCount = static_cast<std::uint16_t>(p.samples);
    return a;
}
/// The fractions that the library then works with.
inline void take_fractions(const QX_Solvan_AlgoParams& a, flow_model::Params& p) {
    p.detail = a.vectorDetail;
    p.convergence = a.convergenceError;
    p.red = a.lumaRed;
    p.green = a.lumaGreen;
    p.blue = a.lumaBlue;
}

inline Guid id_of(std::uint32_t number) { return {number, 0, 0, {}}; }

/// The name of a pair's vectors in the cache, by the rule for it.
inline Guid identity_of(const QX_Solvan_AlgoParams& a, const Guid& first, const Guid& second) {
    tesselcore::utility::MixHash hash(14);
    hash.MixInData("Solvan Vectors", 14);
    for (const Guid& id : {first, second}) {
        std::uint8_t bytes[16];
        tesselcore::utility::GuidToBytes(id, bytes);
        hash.MixInData(bytes, 16);
    }
    const auto mix = [&](const auto& value) { hash.MixInData(&value, sizeof value); };
    mix(a.interpolationMode), mix(a.vectorDetail), mix(a.estimatorSmoothness), mix(a.refineSmoothness);
    mix(a.refineIterations), mix(a.convergenceError), mix(a.highQualityFilter), mix(a.blockSize);
    mix(a.lumaRed), mix(a.lumaGreen), mix(a.lumaBlue), mix(a.shutterAngle), mix(a.sampleCount), mix(a.reservedChoice);
    return hash.ToGuid();
}

/// What an item writes, in memory.
class BytesWritten : public KS_Stream {
public:
    int Write(const void* from, std::size_t count) override {
        const auto* const begin = static_cast<const std::byte*>(from);
        bytes.insert(bytes.end(), begin, begin + count);
        return 0;
    }
    int Read(void*, std::size_t) override { return 3; }
    std::uint64_t BytesLeft() const override { return 0; }
    std::vector<std::byte> bytes;
};

/// An item that asks for another one.
class Probe : public KS_Stuff {
public:
    explicit Probe(std::uint32_t engine) : engine_(engine) {}
    std::uint32_t GetEngineNumber() const override { return engine_; }
    std::size_t GetSizeInBytes() const override { return 0; }
    bool PurgeFromMemory() override { return false; }
    bool HasData() const override { return false; }
    int Flatten(KS_Stream&) const override { return 3; }
    int Unflatten(KS_Stream&) override { return 3; }

private:
    std::uint32_t engine_;
};
inline constexpr std::uint32_t kEngineNumber = 1;

/// What the cache holds of a pair: the fields, and the words before them.
struct CachedVectors {
    std::vector<std::uint32_t> header;
    flow_model::Field forward, backward;
};
inline std::optional<CachedVectors> cached_vectors(const Guid& identity) {
    auto* const probe = new Probe(kEngineNumber);
    probe->AddRef();
    probe->SetGuid(identity);
    std::optional<CachedVectors> found;
    {
        KS_ScCheckout checkout;
        checkout.FindAndCheckout(probe, 1);
        if (checkout.DidCheckout()) {
            BytesWritten written;
            checkout.GetStuff()->Flatten(written);
            found.emplace();
            found->header.resize(54);
            std::memcpy(found->header.data(), written.bytes.data(), 216);
            const auto w = static_cast<int>(found->header[0]), h = static_cast<int>(found->header[1]);
            const std::byte* from = written.bytes.data() + 216;
            for (flow_model::Field* field : {&found->forward, &found->backward}) {
                *field = flow_model::Field(w, h);
                const std::size_t bytes = field->px.size() * sizeof(flow_model::Vec);
                std::memcpy(field->px.data(), from, bytes);
                from += bytes;
            }
        }
    }
    probe->Release();
    return found;
}

/// Equal bits; of numbers that are none neither sign nor payload count, which no rule tells.
template <class A> bool same_bits(const A& a, const A& b) {
    const auto* const p = reinterpret_cast<const float*>(a.px.data());
    const auto* const q = reinterpret_cast<const float*>(b.px.data());
    const std::size_t count = a.px.size() * sizeof(a.px[0]) / sizeof(float);
    if (a.px.size() != b.px.size()) return false;
    for (std::size_t i = 0; i < count; ++i)
        if (std::memcmp(p + i, q + i, sizeof *p) != 0 && (p[i] == p[i] || q[i] == q[i])) return false;
    return true;
}

}  // namespace qx::test
