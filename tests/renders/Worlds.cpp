// SPDX-License-Identifier: Apache-2.0
// What changes one world or copies it: copies to other sizes and depths, fills, premultiplying, planes, iterate.
#include <utility>

#include "Picture.h"

namespace renders {
namespace {

/// Two ways to another depth: the draft copy, and the conversion through light.
template <class To, class From> void convert(Picture<From>& source) {
    const std::string name = depth_name<From>() + "-to-" + depth_name<To>();
    Picture<To> out(90, 60, 9);
    tell("copy-depth/" + name, QX_CopyBits_Draft(nullptr, source.record(), out.record(), nullptr, nullptr), out);
    QX_LayerDef from{}, into{};
    QX_NewEffectWorld(90, 60, kBits<From>, 0, 1, &from);
    QX_NewEffectWorld(90, 60, kBits<To>, 0, 1, &into);
    QX_CopyBits_Draft(nullptr, source.record(), &from, nullptr, nullptr);
    QX_DepthConvertWorld(gamma_tables(), from.world, into.world);
    QX_CopyBits_Draft(nullptr, &into, out.record(), nullptr, nullptr);
    QX_DisposeEffectWorld(&from);
    QX_DisposeEffectWorld(&into);
    tell("convert/" + name, 0, out);
}

template <class Pixel> void copy() {
    const std::string depth = depth_name<Pixel>() + "/";
    const std::pair<M_LRect, M_LRect> rects[] = {{{0, 0, 90, 60}, {0, 0, 90, 60}},
                                                 {{3, 4, 80, 50}, {-5, 6, 150, 99}},
                                                 {{0, 0, 90, 60}, {10, 3, 41, 22}},
                                                 {{7, 2, 60, 33}, {1, 1, 95, 20}}};
    Picture<Pixel> source(90, 60, 3), out(101, 70, 4);
    for (int i = 0; i < 4; ++i) {
        Picture<Pixel> draft(101, 70, 4), fine(101, 70, 4);
        const auto& [from, to] = rects[i];
        int code = QX_CopyBits_Draft(nullptr, source.record(), draft.record(), &from, &to);
        tell("copy-draft/" + depth + std::to_string(i), code, draft);
        code = QX_CopyBits_HQ_Straight(nullptr, source.record(), fine.record(), &from, &to);
        tell("copy-fine/" + depth + std::to_string(i), code, fine);
    }
    const M_Matrix3 matrix{{{1.3, 0.4, 0}, {-0.5, 0.8, 0}, {20, 9, 1}}};
    tell("copy-matrix/" + depth, QX_CopyBits3_LO_Straight(nullptr, source.record(), &matrix, 0, 0, out.record()), out);
    at_each_depth([&]<class To>(To) { convert<To>(source); });
}

int fill(const QX_Pixel8& c, const M_LRect& r, QX_LayerDef* w) { return QX_Fill(nullptr, &c, &r, w); }
int fill(const QX_Pixel16& c, const M_LRect& r, QX_LayerDef* w) { return QX_Fill16(nullptr, &c, &r, w); }
int fill(const QX_PixelFloat& c, const M_LRect& r, QX_LayerDef* w) { return QX_FillFloat(nullptr, &c, &r, w); }
int matte(const QX_Pixel8& c, bool f, QX_LayerDef* w) { return QX_PremulColor(nullptr, w, &c, f, w); }
int matte(const QX_Pixel16& c, bool f, QX_LayerDef* w) { return QX_PremulColor16(nullptr, w, &c, f, w); }
int matte(const QX_PixelFloat& c, bool f, QX_LayerDef* w) { return QX_PremulColorFloat(nullptr, w, &c, f, w); }

/// Turns a pixel's channels round, and tells its place.
template <class Pixel> int turn(void*, std::int32_t x, std::int32_t y, void* in, void* out) {
    const Pixel p = *static_cast<Pixel*>(in);
    using Channel = decltype(p.alpha);
    *static_cast<Pixel*>(out) = {p.blue, p.alpha, p.red, static_cast<Channel>(x ^ y)};
    return 0;
}

template <class Pixel> void change() {
    const auto changed = [](const std::string& name, const auto& change) {
        Picture<Pixel> world(143, 71, 8);
        const int code = change(world.record());
        tell(name + "/" + depth_name<Pixel>(), code, world);
    };
    const Pixel colour{channel<Pixel>(0.8), channel<Pixel>(0.3), 0, channel<Pixel>(1)};
    const M_LRect rect{9, -3, 130, 55};
    changed("fill", [&](QX_LayerDef* w) { return fill(colour, rect, w); });
    changed("clear-alpha-except", [&](QX_LayerDef* w) { return QX_ClearAlphaExceptRect(nullptr, &rect, w); });
    for (const bool forward : {true, false}) {
        const std::string way = forward ? "-forward" : "-back";
        changed("premul" + way, [&](QX_LayerDef* w) { return QX_Premul(nullptr, forward, w); });
        changed("premul-colour" + way, [&](QX_LayerDef* w) { return matte(colour, forward, w); });
    }
    QX_InData in_data{};
    changed("iterate", [&](QX_LayerDef* w) {
        Picture<Pixel> source(143, 71, 2);
        return QX_Iterate(&in_data, 0, 0, source.record(), &rect, nullptr, turn<Pixel>, w);
    });
    changed("iterate-origin", [&](QX_LayerDef* w) {
        Picture<Pixel> source(60, 50, 2);
        const M_LPoint origin{11, 13};
        return QX_IterateOrigin(&in_data, 0, 0, source.record(), nullptr, &origin, nullptr, turn<Pixel>, w);
    });
}

/// What exists for 8 bits alone.
void worlds8() {
    std::uint8_t lut[256];
    for (int i = 0; i < 256; ++i) lut[i] = static_cast<std::uint8_t>(i * 7 + 3);
    Picture<QX_Pixel8> source(90, 60, 3), out(90, 60, 4);
    QX_InData in_data{};
    const int code = QX_IterateLUT(&in_data, 0, 0, source.record(), nullptr, lut, nullptr, lut, lut, out.record());
    tell("iterate-lut/8", code, out);
    const QX_Pixel8 colour{255, 40, 90, 200};
    tell("matte-colour/8", QX_MatteBlackToMatteColorARGB(out.record(), &colour, false), out);
    for (std::uint32_t planes = 1; planes < 16; ++planes) {
        Picture<QX_Pixel8> into(90, 60, 5);
        TK_Handle handle{};
        std::int32_t rowbytes = 0;
        int result = QX_ExtractPlanes(nullptr, source.record(), planes, &handle, &rowbytes);
        if (result == 0)
            result = QX_InsertPlanes(nullptr, handle, rowbytes, (planes << 1 | planes >> 3) & 15, into.record());
        TK_FreeHandle(handle);
        tell("planes/8/" + std::to_string(planes), result, into);
    }
}

}  // namespace

void copies() {
    at_each_depth([]<class Pixel>(Pixel) { copy<Pixel>(); });
}
void worlds() {
    at_each_depth([]<class Pixel>(Pixel) { change<Pixel>(); });
    worlds8();
}

}  // namespace renders
