// SPDX-License-Identifier: Apache-2.0
// Prints a checksum of every render, a line each, so that two states of the library can be compared: qx_renders
#include <tuple>

#include "Picture.h"

namespace renders {
namespace {

struct Kind {
    const char* name;
    float opacity;
    bool rgb_only;
    int mask;  ///< kind, -1 without one
    bool linear;
    int field;
};
constexpr Kind kKinds[] = {
    {"plain", 1, false, -1, false, 0},          {"partial", 0.6f, true, -1, false, 0},
    {"masked-alpha", 1, false, 0, false, 0},    {"masked-inverse", 0.7f, false, 1, false, 1},
    {"masked-luma", 1, true, 2, false, 2},      {"masked-inverse-luma", 1, false, 3, false, 0},
    {"linear", 1, false, -1, true, 0},          {"linear-partial", 0.6f, true, -1, true, 0},
    {"linear-masked", 0.7f, false, 2, true, 0},
};

/// A mode: plain, masked, in linear light, with alpha kept and part of the opacity. Rows are longer than the runs of
/// rows in linear light and end in the middle of a register.
template <class Pixel> void transfers(int xfer) {
    for (const Kind& kind : kKinds) {
        const auto seed = static_cast<std::uint64_t>(xfer + 10) * 10;
        Picture<Pixel> layer(301, 40, seed), mask(260, 36, seed + 1), out(290, 41, seed + 2);
        const QX_MaskWorld at = mask.mask(5, 2, kind.mask);
        const QX_CompositeModePlus mode(xfer, kind.opacity, nullptr, kind.rgb_only, 77);
        const bool masked = kind.mask >= 0 || xfer == xfer_mask_crossfade;
        const M_LRect rect{3, 1, 298, 39};
        const int code =
            QX_TransferRect(nullptr, 1, 0, kind.field, &rect, &layer.record, &mode,
                            kind.linear ? gamma_tables() : nullptr, masked ? &at : nullptr, -4, 2, &out.record);
        tell("transfer/" + depth_name<Pixel>() + "/" + std::to_string(xfer) + "/" + kind.name, code, out);
    }
}

struct Placing {
    double size, degrees, scale, x, y, perspective;
    M_Matrix3 matrix() const {
        const double a = degrees * 0.017453292519943295, c = std::cos(a), s = std::sin(a);
        M_Matrix3 m{{{1, 0, 0}, {0, 1, 0}, {-size / 2, -size / 2, 1}}};
        m = M_MultiplyMatrix(m, {{{c, s, 0}, {-s, c, 0}, {0, 0, 1}}});
        m = M_MultiplyMatrix(m, {{{scale, 0, 0}, {0, scale * 0.9, 0}, {0, 0, 1}}});
        m = M_MultiplyMatrix(m, {{{1, 0, 0}, {0, 1, 0}, {x, y, 1}}});
        m.m[0][2] = perspective;
        return m;
    }
};

/// One matrix, two, or several with a pace that changes.
std::vector<M_Matrix3> path(Numbers& random, int size) {
    constexpr double kTurns[] = {0, 90, 17, -123.4, 301};
    constexpr double kScales[] = {1, 1, 0.3, 0.77, 1.6, 4};
    Placing placing{static_cast<double>(size),
                    kTurns[random.below(5)],
                    kScales[random.below(6)],
                    random.between(20, 100) + (random.below(2) == 0 ? 0 : random.unit()),
                    random.between(15, 80) + (random.below(3) == 0 ? 0 : random.unit()),
                    random.below(8) == 0 ? 0.002 : 0};
    std::vector<M_Matrix3> matrices{placing.matrix()};
    constexpr int kCounts[] = {1, 1, 2, 2, 3, 9};
    for (int more = kCounts[random.below(6)] - 1; more > 0; --more) {
        placing.x += random.unit() * 12;
        placing.y -= random.unit() * 3;
        if (random.below(3) == 0) placing.degrees += 4;
        matrices.push_back(placing.matrix());
    }
    return matrices;
}

/// A random transform: any quality; a layer that stands still, moves on a line or moves unevenly.
template <class Pixel> void transform(std::uint64_t seed) {
    Numbers random(seed);
    const int width = random.between(10, 90), height = random.between(10, 70);
    Picture<Pixel> layer(width, height, seed + 1), mask(100, 70, seed + 2), out(121, 83, seed + 3);
    const std::vector<M_Matrix3> matrices = path(random, width);
    const QX_MaskWorld at = mask.mask(random.between(-9, 30), random.between(-9, 30), random.below(4));
    constexpr int kModes[] = {xfer_over, xfer_over, xfer_copy, xfer_screen, xfer_premul_over, xfer_dissolve, xfer_hue};
    const int xfer = random.below(3) == 0 ? random.between(0, kQX_LastMode + 1) : kModes[random.below(7)];
    const QX_CompositeModePlus mode(xfer, random.below(2) == 0 ? 1.0f : 0.6f, nullptr, random.below(4) == 0, 5);
    const M_LRect rect{random.between(-5, 40), random.between(-5, 30), random.between(60, 130), random.between(40, 90)};
    const int quality = random.below(4), field = random.below(2) == 0 ? 0 : random.below(3);
    const bool whole = random.below(2) == 0, masked = random.below(3) == 0, linear = random.below(4) == 0;
    const int code = QX_TransformWorld(nullptr, quality, 0, field, &layer.record, &mode,
                                       linear ? gamma_tables() : nullptr, masked ? &at : nullptr, matrices.data(),
                                       static_cast<int>(matrices.size()), true, whole ? nullptr : &rect, &out.record);
    tell("transform/" + depth_name<Pixel>() + "/" + std::to_string(seed), code, out);
}

constexpr int kSize = 40;  // of the picture that is sampled

/// Many samples of one routine, inside, outside and across the edges.
/// @param inside  whether the taps must all lie in the picture
template <class Pixel, class Sample> void sampled(const std::string& name, bool inside, Sample sample) {
    Numbers random(static_cast<std::uint64_t>(name.size()));
    const int low = inside ? 12 : -8, high = kSize - low;
    std::vector<Pixel> out(3000);
    for (Pixel& pixel : out) {
        const int x = random.between(low * 65536, high * 65536), y = random.between(low * 65536, high * 65536);
        sample(x, y, &pixel);
    }
    tell("sample/" + depth_name<Pixel>() + "/" + name, out);
}

template <class Pixel> void samplers(int quality) {
    Picture<Pixel> source(kSize, kSize, 5);
    QX_SampPB params{};
    params.src = &source.record;
    const QX_SamplerSet<Pixel> set = QXp_GetSamplerSet<Pixel>(quality);
    const std::string q = "/quality-" + std::to_string(quality);
    const auto plain = [&](const std::string& name, bool inside, auto routine) {
        sampled<Pixel>(name + q, inside, [&](int x, int y, Pixel* out) { routine(nullptr, x, y, &params, out); });
    };
    plain("clipped", false, set.clipped);
    plain("unclipped", true, set.unclipped);
    for (const int radius : {20000, 40000, 90000, 400000}) {
        params.x_radius = radius;
        params.y_radius = radius / 2 + 20000;
        plain("area-" + std::to_string(radius), false, set.area);
    }
    sampled<Pixel>("plus" + q, false, [&](int x, int y, Pixel* out) {
        bool all_in = false;
        set.plus(nullptr, x, y, &params, &all_in, out);
    });
    sampled<Pixel>("translate" + q, true, [&](int x, int y, Pixel* out) {
        double weights[4];
        QX_SubpixelSampleComputeWeight(x & 65535, y & 65535, weights);
        set.translate(nullptr, x, y, weights, &params, out);
    });
    sampled<Pixel>("span" + q, true, [&](int x, int y, Pixel* out) {
        QX_AlphaSumOf<Pixel> alpha = 0;
        Pixel run[9];
        set.span(nullptr, 9, x, y, &params, &alpha, run);
        *out = run[(x >> 3 & 0xFFFF) % 9];
    });
}

/// Two ways to another depth: the draft copy, and the conversion through light.
template <class To, class From> void convert(Picture<From>& source) {
    const std::string name = depth_name<From>() + "-to-" + depth_name<To>();
    Picture<To> out(90, 60, 9);
    tell("copy-depth/" + name, QX_CopyBits_Draft(nullptr, &source.record, &out.record, nullptr, nullptr), out);
    QX_LayerDef from{}, into{};
    QX_NewEffectWorld(90, 60, kBits<From>, 0, 1, &from);
    QX_NewEffectWorld(90, 60, kBits<To>, 0, 1, &into);
    QX_CopyBits_Draft(nullptr, &source.record, &from, nullptr, nullptr);
    QX_DepthConvertWorld(gamma_tables(), from.world, into.world);
    QX_CopyBits_Draft(nullptr, &into, &out.record, nullptr, nullptr);
    QX_DisposeEffectWorld(&from);
    QX_DisposeEffectWorld(&into);
    tell("convert/" + name, 0, out);
}

/// Copies to other sizes and depths.
template <class Pixel> void copies() {
    const std::string depth = depth_name<Pixel>() + "/";
    constexpr M_LRect kFrom[] = {{0, 0, 90, 60}, {3, 4, 80, 50}, {0, 0, 90, 60}, {7, 2, 60, 33}};
    constexpr M_LRect kTo[] = {{0, 0, 90, 60}, {-5, 6, 150, 99}, {10, 3, 41, 22}, {1, 1, 95, 20}};
    Picture<Pixel> source(90, 60, 3);
    const auto copied = [&](const std::string& name, const auto& copy) {
        Picture<Pixel> out(101, 70, 4);
        tell(name, copy(&source.record, &out.record), out);
    };
    for (int i = 0; i < 4; ++i) {
        copied("copy-draft/" + depth + std::to_string(i), [&](QX_LayerDef* from, QX_LayerDef* to) {
            return QX_CopyBits_Draft(nullptr, from, to, &kFrom[i], &kTo[i]);
        });
        copied("copy-fine/" + depth + std::to_string(i), [&](QX_LayerDef* from, QX_LayerDef* to) {
            return QX_CopyBits_HQ_Straight(nullptr, from, to, &kFrom[i], &kTo[i]);
        });
    }
    copied("copy-matrix/" + depth, [](QX_LayerDef* from, QX_LayerDef* to) {
        const M_Matrix3 matrix{{{1.3, 0.4, 0}, {-0.5, 0.8, 0}, {20, 9, 1}}};
        return QX_CopyBits3_LO_Straight(nullptr, from, &matrix, 0, 0, to);
    });
    at_each_depth([&]<class To>(To) { convert<To>(source); });
}

/// Turns a pixel's channels round, and tells its place.
template <class Pixel> int turn(void*, std::int32_t x, std::int32_t y, void* in, void* out) {
    const Pixel p = *static_cast<Pixel*>(in);
    *static_cast<Pixel*>(out) = {p.blue, p.alpha, p.red, static_cast<decltype(p.alpha)>(x ^ y)};
    return 0;
}

/// The routine of a depth.
template <class Pixel, class... Routines> auto of_depth(Routines... routines) {
    return std::get<kBits<Pixel> / 16>(std::tuple(routines...));
}

/// What changes one world: fills, premultiplying, iterate.
template <class Pixel> void changes() {
    const auto changed = [](const std::string& name, const auto& change) {
        Picture<Pixel> world(143, 71, 8);
        const int code = change(&world.record);
        tell(name + "/" + depth_name<Pixel>(), code, world);
    };
    const Pixel colour{channel<Pixel>(0.8), channel<Pixel>(0.3), 0, channel<Pixel>(1)};
    const M_LRect rect{9, -3, 130, 55};
    const auto fill = of_depth<Pixel>(QX_Fill, QX_Fill16, QX_FillFloat);
    const auto matte = of_depth<Pixel>(QX_PremulColor, QX_PremulColor16, QX_PremulColorFloat);
    changed("fill", [&](QX_LayerDef* w) { return fill(nullptr, &colour, &rect, w); });
    changed("clear-alpha-except", [&](QX_LayerDef* w) { return QX_ClearAlphaExceptRect(nullptr, &rect, w); });
    for (const bool forward : {true, false}) {
        const std::string way = forward ? "-forward" : "-back";
        changed("premul" + way, [&](QX_LayerDef* w) { return QX_Premul(nullptr, forward, w); });
        changed("premul-colour" + way, [&](QX_LayerDef* w) { return matte(nullptr, w, &colour, forward, w); });
    }
    QX_InData in_data{};
    changed("iterate", [&](QX_LayerDef* w) {
        Picture<Pixel> source(143, 71, 2);
        return QX_Iterate(&in_data, 0, 0, &source.record, &rect, nullptr, turn<Pixel>, w);
    });
    changed("iterate-origin", [&](QX_LayerDef* w) {
        Picture<Pixel> source(60, 50, 2);
        const M_LPoint origin{11, 13};
        return QX_IterateOrigin(&in_data, 0, 0, &source.record, nullptr, &origin, nullptr, turn<Pixel>, w);
    });
}

template <class Pixel> void all() {
    for (int xfer = kQX_FirstMode; xfer <= kQX_LastMode; ++xfer) {
        if (QX_IsTransferMode(xfer)) transfers<Pixel>(xfer);
    }
    for (std::uint64_t seed = 1000; seed < 1070; ++seed) transform<Pixel>(seed);
    for (const int quality : {1, 2}) samplers<Pixel>(quality);
    copies<Pixel>();
    changes<Pixel>();
}

/// What exists for 8 bits alone.
void all_of_8_bits() {
    Picture<QX_Pixel8> sampled_one(kSize, kSize, 6), source(90, 60, 3), out(90, 60, 4);
    QX_SampPB params{};
    params.src = &sampled_one.record;
    params.x_radius = params.y_radius = 90000;
    params.area = static_cast<std::int32_t>(std::int64_t{4} * 90000 * 90000 >> 16);
    const auto plain = [&](const char* name, const auto& routine) {
        sampled<QX_Pixel8>(name, false, [&](int x, int y, QX_Pixel8* to) { routine(nullptr, x, y, &params, to); });
    };
    plain("nearest", QX_NNSample);
    plain("premul", QX_SubpixelSample_Premul);
    plain("area-premul", QX_AreaSample_Premul);

    std::uint8_t lut[256];
    for (int i = 0; i < 256; ++i) lut[i] = static_cast<std::uint8_t>(i * 7 + 3);
    QX_InData in_data{};
    const int code = QX_IterateLUT(&in_data, 0, 0, &source.record, nullptr, lut, nullptr, lut, lut, &out.record);
    tell("iterate-lut/8", code, out);
    const QX_Pixel8 colour{255, 40, 90, 200};
    tell("matte-colour/8", QX_MatteBlackToMatteColorARGB(&out.record, &colour, false), out);
    for (std::uint32_t planes = 1; planes < 16; ++planes) {
        Picture<QX_Pixel8> into(90, 60, 5);
        TK_Handle handle{};
        std::int32_t rowbytes = 0;
        int result = QX_ExtractPlanes(nullptr, &source.record, planes, &handle, &rowbytes);
        if (result == 0)
            result = QX_InsertPlanes(nullptr, handle, rowbytes, (planes << 1 | planes >> 3) & 15, &into.record);
        TK_FreeHandle(handle);
        tell("planes/8/" + std::to_string(planes), result, into);
    }
}

}  // namespace
}  // namespace renders

int main() {
    if (QX_Birth() != 0) return 1;
    renders::at_each_depth([]<class Pixel>(Pixel) { renders::all<Pixel>(); });
    renders::all_of_8_bits();
    return QX_Death() == 0 ? 0 : 1;
}
