// SPDX-License-Identifier: Apache-2.0
// The passes around the modes at 8 and 16 bits: filters, linear light, alpha merge; rows and functions of one pixel.
#include <algorithm>
#include <type_traits>

#include "tests/compositing/ModesModelJob.h"

namespace qx::test::model {
namespace {

I filter_channel(const Scale& k, Pivot pivot, bool forward, I c, I a) {
    if (pivot == Pivot::black) return forward ? k.mul(c, a) : k.div(c, a);
    if (pivot == Pivot::white) return k.comp(forward ? k.mul(k.comp(c), a) : k.div(k.comp(c), a));
    const bool upper = c >= k.half;
    if (forward) return upper ? k.half + k.mul(c - k.half, a) : c + k.mul(k.half - c, k.comp(a));
    const I v = k.div(upper ? c - k.half : k.half - c, a);
    return upper ? std::min(k.half + v, k.full) : std::max<I>(k.half - v, 0);
}

Px filter(const Scale& k, Pivot pivot, bool forward, Px p) {
    if (pivot == Pivot::none) return p;
    for (I& c : p.colour) c = filter_channel(k, pivot, forward, c, p.alpha);
    return p;
}

I to_linear(const QX_LinearBlendingTables& tables, I c) {
    const I i = c * 255 / 32768, f = c * 255 % 32768, y = tables.to_linear[i];
    return f == 0 ? y : y + floor_div((tables.to_linear[i + 1] - y) * f + 16384, 32768);
}

I from_linear(const QX_LinearBlendingTables& tables, I y) {
    const I i = y / 8, f = y % 8, c = tables.from_linear[i];
    return f == 0 ? c : c + floor_div((tables.from_linear[i + 1] - c) * f + 4, 8);
}

Px to_linear(const Scale& k, const QX_LinearBlendingTables& tables, const Px& p) {
    Px out{k.eight ? widen(p.alpha) : p.alpha, p.colour};
    for (I& c : out.colour) c = k.eight ? tables.to_linear[c] : to_linear(tables, c);
    return out;
}

Px from_linear(const Scale& k, const QX_LinearBlendingTables& tables, const Px& p) {
    Px out{k.eight ? narrow(p.alpha) : p.alpha, p.colour};
    for (I& c : out.colour) c = k.eight ? narrow(from_linear(tables, c)) : from_linear(tables, c);
    return out;
}

/// One row routine: plain, or in linear light at 16 bits.
Px row_routine(const Scale& k, Job job, const QX_LinearBlendingTables* tables, const Px& src, const Px& dst) {
    if (!tables || job.xfer == xfer_replace || job.xfer == xfer_copy) return mode_alone(k, job, src, dst);
    if (k.eight) {
        job.first = widen(job.first);
        job.second = widen(job.second);
    }
    const Px out = mode_alone(Scale(false), job, to_linear(k, *tables, src), to_linear(k, *tables, dst));
    return from_linear(k, *tables, out);
}

Px merge(const Scale& k, const Px& src, I opacity, I mask, Px dst) {
    if (opacity != 0) dst.alpha = k.combine(k.mul(k.mul(src.alpha, opacity), mask), dst.alpha);
    return dst;
}

/// The passes of a function of one pixel, whose merge has the mode's own effective alpha.
Px in_one(const Scale& k, const Job& job, const Px& src, const Px& dst) {
    const Passes passes = passes_of(job.xfer);
    const I s = job.effective(k, src.alpha);
    if (skips_uncovered(job.xfer) && s == 0) return dst;
    Px out = mode_alone(k, job, src, filter(k, passes.pivot, true, dst));
    if (passes.merges_alpha) out.alpha = k.combine(s, out.alpha);
    return filter(k, passes.pivot, false, out);
}

template <class Pixel> Scale scale_of() { return Scale(std::is_same_v<Pixel, QX_Pixel8>); }
template <class Pixel> Px unpack(const Pixel& p) { return {p.alpha, {p.red, p.green, p.blue}}; }
template <class Pixel> Pixel pack(const Px& p) {
    const auto channel = [](I v) { return static_cast<QX_ChannelOf<Pixel>>(scale_of<Pixel>().wrap(v)); };
    return {channel(p.alpha), channel(p.colour[0]), channel(p.colour[1]), channel(p.colour[2])};
}

template <class Pixel> Pixel row_of_one(const RowCall<Pixel>& call, const Pixel& src, const Pixel& dst) {
    const Scale k = scale_of<Pixel>();
    const Passes passes = passes_of(call.xfer);
    const Px s = unpack(src), before = unpack(dst);
    Job job{call.xfer, call.mask ? *call.mask : k.full, call.opacity, true, call.rgb_only, call.seed};
    Px d = filter(k, passes.pivot, true, before);
    if (passes.behind_first) {
        Job first = job;
        first.xfer = xfer_behind;
        d = row_routine(k, first, call.tables, s, d);
    }
    d = row_routine(k, job, call.tables, s, d);
    if (passes.merges_alpha) d = merge(k, s, call.opacity, job.first, d);
    d = filter(k, passes.pivot, false, d);
    if (passes.keeps_alpha && call.rgb_only) d.alpha = before.alpha;
    return pack<Pixel>(d);
}

template <class Pixel> Pixel function_of_one(const PixelCall<Pixel>& call, const Pixel& src, const Pixel& dst) {
    const Scale k = scale_of<Pixel>();
    const Px s = unpack(src);
    Job job{call.xfer, call.opacity ? *call.opacity : k.full, call.opacity2 ? *call.opacity2 : k.full, false};
    if (!call.tables || call.xfer == xfer_copy) return pack<Pixel>(in_one(k, job, s, unpack(dst)));
    const I effective = job.effective(k, s.alpha);
    if (skips_uncovered(call.xfer) && effective == 0) return dst;
    if (k.eight) {  // alpha takes the opacities at 8 bits; what else takes them does so at 16
        job.covered = widen(effective);
        job.first = widen(job.first);
        job.second = widen(job.second);
    }
    const Px out = in_one(Scale(false), job, to_linear(k, *call.tables, s), to_linear(k, *call.tables, unpack(dst)));
    return pack<Pixel>(from_linear(k, *call.tables, out));
}

}  // namespace

QX_Pixel8 row_pixel(const RowCall<QX_Pixel8>& call, const QX_Pixel8& src, const QX_Pixel8& dst) {
    return row_of_one(call, src, dst);
}
QX_Pixel16 row_pixel(const RowCall<QX_Pixel16>& call, const QX_Pixel16& src, const QX_Pixel16& dst) {
    return row_of_one(call, src, dst);
}
QX_Pixel8 one_pixel(const PixelCall<QX_Pixel8>& call, const QX_Pixel8& src, const QX_Pixel8& dst) {
    return function_of_one(call, src, dst);
}
QX_Pixel16 one_pixel(const PixelCall<QX_Pixel16>& call, const QX_Pixel16& src, const QX_Pixel16& dst) {
    return function_of_one(call, src, dst);
}
QX_Pixel8 filtered(Pivot pivot, bool forward, const QX_Pixel8& pixel) {
    return pack<QX_Pixel8>(filter(Scale(true), pivot, forward, unpack(pixel)));
}
QX_Pixel16 filtered(Pivot pivot, bool forward, const QX_Pixel16& pixel) {
    return pack<QX_Pixel16>(filter(Scale(false), pivot, forward, unpack(pixel)));
}
QX_Pixel8 merged(const QX_Pixel8& src, std::uint8_t opacity, std::optional<std::uint8_t> mask, QX_Pixel8 dst) {
    return pack<QX_Pixel8>(merge(Scale(true), unpack(src), opacity, mask ? *mask : 255, unpack(dst)));
}
QX_Pixel16 merged(const QX_Pixel16& src, std::uint16_t opacity, std::optional<std::uint16_t> mask, QX_Pixel16 dst) {
    return pack<QX_Pixel16>(merge(Scale(false), unpack(src), opacity, mask ? *mask : 32768, unpack(dst)));
}

}  // namespace qx::test::model
