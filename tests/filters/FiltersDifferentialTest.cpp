// SPDX-License-Identifier: Apache-2.0
// The long random run of filters, masks, tables and fades: every level, in any number of bands, against the plain form
// in one, on cases that a seed remakes. A tenth of them has numbers that no picture has; of these nothing is asked but
// that they are survived.
#include "tests/filters/BlurModel.h"
#include "tests/support/TestLevels.h"

namespace qx::test {
namespace {

/// Draws what a case is made of from its seed, and remembers what was drawn, so that a case can be told.
class Draw {
public:
    explicit Draw(std::uint64_t seed) : random_(seed) {}
    std::uint64_t bits() { return random_(); }
    int whole(Text name, int low, int high) {
        return told(name, low + static_cast<int>(random_() % static_cast<unsigned>(high - low)));
    }
    bool once_in(int times, Text name) { return whole(name, 0, times) == 0; }
    template <class T> T one(Text name, std::initializer_list<T> of) {
        return told(name, of.begin()[random_() % of.size()]);
    }
    /// A place, now and then one that is far away.
    int place(Text name, int low, int high) {
        if (random_() % 8 != 0) return whole(name, low, high);
        return one(name, {-1'000'000'000, 1'000'000'000, INT_MIN, INT_MAX, -32769, 65536});
    }
    std::string all() const {
        std::ostringstream text;
        for (const auto& [name, value] : drawn_) text << name << ' ' << value << ", ";
        return text.str();
    }

private:
    template <class T> T told(Text name, T value) {
        drawn_.emplace_back(name, static_cast<double>(value));
        return value;
    }
    std::mt19937_64 random_;
    std::vector<std::pair<Text, double>> drawn_{};
};

/// What a case leaves: its code, and all that it could have written with what lies around.
struct Left {
    int code = 0;
    std::vector<std::byte> bytes{};

    template <class T> void keep(const T* from, std::size_t count) {
        const auto* const first = reinterpret_cast<const std::byte*>(from);
        bytes.insert(bytes.end(), first, first + count * sizeof(T));
    }
};

struct Size {
    int width, height;
};
Size size_of(Draw& draw) {
    const bool is_long = draw.once_in(60, "long"), turned = draw.once_in(2, "turned");
    const int a = is_long ? draw.whole("length", 200, 1500) : draw.whole("length", 1, 68);
    const int b = draw.whole("lines", 1, is_long ? 4 : 9);
    return turned ? Size{b, a} : Size{a, b};
}

/// Channels that no well-formed pixel has.
template <class Channel> Channel odd_channel(Draw& draw) {
    if constexpr (std::is_same_v<Channel, float>) {
        constexpr float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
        constexpr float odd[] = {nan, inf, -inf, 1e30f, -1e30f, 1e-42f, 3.4e38f, -0.0f};
        return odd[draw.bits() % std::size(odd)];
    } else {
        return static_cast<Channel>(draw.bits());
    }
}

/// A world over memory at any place that pixels may have, with bytes around it.
template <class Pixel> Plate<Pixel> plate(Draw& draw, Size size, bool odd) {
    using Channel = QX_ChannelOf<Pixel>;
    constexpr int step = sizeof(Channel);
    const FillKind fill = kAllFills[draw.whole("fill", 0, 6)];
    const int shift = step * draw.whole("shift", 0, 17), padding = step * draw.whole("padding", 0, 9);
    Plate<Pixel> made(size.width, size.height, fill, draw.bits() >> 32, shift, padding);
    made.world->origin_x = draw.place("origin x", -30, 30), made.world->origin_y = draw.place("origin y", -30, 30);
    for (int i = 0; odd && i < 9; ++i) {
        const Channel channel = odd_channel<Channel>(draw);
        auto* const pixel = made.place(static_cast<int>(draw.bits() % static_cast<unsigned>(size.width)),
                                       static_cast<int>(draw.bits() % static_cast<unsigned>(size.height)));
        std::memcpy(pixel + draw.bits() % 4 * sizeof channel, &channel, sizeof channel);
    }
    return made;
}
template <class Pixel> QX_LayerDef record_of(const Plate<Pixel>& plate) {
    QX_LayerDef record{};
    plate.world->FillOutEffectWorld(&record);
    return record;
}

/// Samples between others that nobody may touch.
template <class Sample> class Samples {
public:
    Samples(Draw& draw, std::size_t count, bool odd) : count_(count) {
        constexpr bool real = std::is_same_v<Sample, float>;
        constexpr int full = real ? 1 : sizeof(Sample) == 1 ? 255 : 32768;
        front_ = kGuard + static_cast<std::size_t>(draw.whole("offset", 0, 33));
        all_.assign(front_ + count + kGuard, Sample{77});
        const auto ends = static_cast<unsigned>(draw.whole("ends", 1, 5));
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint64_t bits = draw.bits();
            const bool end = bits % 5 < ends;
            Sample& sample = all_[front_ + i];
            if (end) sample = bits & 0x100 ? Sample{full} : Sample{0};
            if (!end && real) sample = static_cast<Sample>(static_cast<float>(bits >> 40) * 0x1p-24f);
            if (!end && !real) sample = static_cast<Sample>(bits % static_cast<unsigned>(full + 1));
            if (odd && (bits & 0xF000) == 0) sample = odd_channel<Sample>(draw);
        }
    }
    Sample* data() { return all_.data() + front_; }
    void leave(Left& left) const { left.keep(all_.data(), all_.size()); }

private:
    static constexpr std::size_t kGuard = 64;
    std::size_t count_, front_ = 0;
    std::vector<Sample> all_{};
};

/// A mask buffer over such samples.
template <class Sample> class Mask {
public:
    Mask(Draw& draw, Size size, bool odd)
        : samples(draw, static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height), odd),
          first_(samples.data()),
          own_(buffer.handle) {
        buffer.width = size.width, buffer.height = size.height, buffer.handle = &first_;
    }
    ~Mask() { buffer.handle = own_; }
    Mask(Mask&&) = delete;

    Samples<Sample> samples;
    QX_UnoBuffer buffer{1, 1, 8 * sizeof(Sample)};

private:
    void* first_;
    const TK_Handle own_;
};

M_LRect rect_of(Draw& draw) {
    const int left = draw.place("left", -20, 40), top = draw.place("top", -10, 20);
    return {left, top, draw.place("right", -20, 90), draw.place("bottom", -10, 40)};
}
float share_of(Draw& draw, Text name) {
    return draw.one(name, {1.0f, 1.0f, 0.0f, 0.5f, 0.997f, 0.004f, -3.0f, 9.0f, NAN});
}

template <class Pixel> Left run_blur(Draw& draw, bool odd) {
    constexpr float inf = std::numeric_limits<float>::infinity();
    Blur blur;
    blur.radius = draw.once_in(64, "huge") ? draw.one("radius", {NAN, inf, -inf, 1e9f, 32767.0f, -5.0f, 2000.5f})
                                           : static_cast<float>(draw.whole("radius", 0, 600)) / 17.0f;
    blur.flags = draw.once_in(3, "some") ? draw.bits() & 31 : 15 | (draw.bits() & 16);
    blur.iterations = draw.whole("passes", -1, 4);
    blur.from_columns = draw.once_in(2, "from columns");
    blur.to_columns = draw.once_in(6, "transposed") != blur.from_columns;
    blur.straight = draw.once_in(2, "straight"), blur.copies = draw.once_in(4, "copies");
    const Size size = size_of(draw);
    const Plate<Pixel> src = plate<Pixel>(draw, size, odd);
    const Plate<Pixel> dst = plate<Pixel>(draw, draw.once_in(4, "beside") ? size_of(draw) : size, odd);
    Left left;
    left.code = code_of([&] { blur(src.world.get(), dst.world.get()); });
    left.keep(dst.memory.data(), dst.memory.size());
    return left;
}

template <class Pixel> Left run_convolve(Draw& draw, bool odd) {
    const std::uint32_t flags = draw.bits() & 0x127;
    const int side =
        2 * ((flags & 1) != 0 && draw.once_in(4, "wide") ? draw.whole("half", 0, 150) : draw.whole("half", 0, 5)) + 1;
    const int weights = draw.whole("weights", 0, 4);
    std::vector<std::int32_t> kernels[4];
    for (auto& kernel : kernels) {
        for (int i = 0; i < ((flags & 1) != 0 ? side : side * side); ++i) {
            const auto v = static_cast<std::int32_t>(draw.bits());
            kernel.push_back(weights == 0 ? v : weights == 1 ? v % 512 : weights == 2 ? v & 255 : v % 70000);
        }
    }
    const Size size = size_of(draw);
    const Plate<Pixel> src = plate<Pixel>(draw, size, odd);
    const Plate<Pixel> dst = plate<Pixel>(draw, draw.once_in(4, "beside") ? size_of(draw) : size, odd);
    const QX_LayerDef from = record_of(src);
    QX_LayerDef to = record_of(dst);
    Left left;
    left.code = QX_Convolve(nullptr, &from, nullptr, flags, side, kernels[0].data(), kernels[1].data(),
                            kernels[2].data(), kernels[3].data(), &to);
    left.keep(dst.memory.data(), dst.memory.size());
    return left;
}

template <class Pixel> Left run_blend(Draw& draw, bool odd) {
    const Size size = size_of(draw);
    const Plate<Pixel> a = plate<Pixel>(draw, size, odd), b = plate<Pixel>(draw, size, odd);
    const Plate<Pixel> other = plate<Pixel>(draw, size, odd);
    const Plate<Pixel>* const target[] = {&other, &a, &b};
    const Plate<Pixel>& dst = *target[draw.whole("in place", 0, 3)];
    const QX_LayerDef first = record_of(a), second = record_of(b);
    QX_LayerDef to = record_of(dst);
    const int ratio = draw.place("ratio", -1, 0x10002);
    auto* const blend = draw.once_in(2, "premultiplied") ? QX_Blend_Premul : QX_Blend_Straight;
    Left left{blend(nullptr, &first, &second, ratio, &to)};
    left.keep(dst.memory.data(), dst.memory.size());
    return left;
}

template <class Pixel, class Cell>
void sample(Draw& draw, const QX_SummedAreaTable& table, const Cell* cells, Left& left) {
    for (int i = 0; i < 6; ++i) {
        Pixel out[2];
        float edges[4];
        for (float& edge : edges) {
            edge = draw.once_in(12, "far edge") ? draw.one("edge", {1e30f, -1e30f, NAN, 1e9f, -1e9f, 2147483648.0f})
                                                : static_cast<float>(draw.whole("edge", -300, 900)) / 13.0f;
        }
        QX_SummedAreaTable_SampleAA<Pixel, Cell>(table.width, table.height, cells, edges[0], edges[1], edges[2],
                                                 edges[3], &out[0]);
        const M_LRect r = rect_of(draw);
        QX_SummedAreaTable_SampleDraft<Pixel, Cell>(table.width, table.height, cells, r.left, r.top, r.right, r.bottom,
                                                    &out[1]);
        left.keep(out, 2);
    }
}

template <class Pixel> Left run_sums(Draw& draw, bool odd) {
    const Plate<Pixel> src = plate<Pixel>(draw, size_of(draw), odd);
    const QX_SummedAreaTable table(src.world.get(), draw.once_in(2, "doubles"));
    const std::size_t cells = static_cast<std::size_t>(table.width) * static_cast<std::size_t>(table.height);
    Left left;
    if (table.use_double) {
        left.keep(table.double_table, cells);
        sample<Pixel>(draw, table, table.double_table, left);
    } else {
        left.keep(table.float_table, cells);
        sample<Pixel>(draw, table, table.float_table, left);
    }
    return left;
}

template <class Pixel> Left run_horizontal(Draw& draw, bool odd) {
    const Plate<Pixel> src = plate<Pixel>(draw, size_of(draw), odd);
    const auto part = [&](Text name) { return draw.whole(name, -30, 90) / 20.0; };
    const double radius =
        draw.once_in(16, "huge") ? draw.one("radius", {std::nan(""), 1e300, 1e9, -4.0}) : part("radius");
    const double gain = part("gain"), threshold = part("threshold"), saturation = part("saturation");
    const double aspect = part("aspect"), rotation = part("rotation");
    QX_LinearBlendingTables light{};
    light.to_linear_gamma = 2.2f;
    const bool padded = draw.once_in(2, "padded"), linear = draw.once_in(3, "linear");
    Left left;
    left.code = code_of([&] {
        const QX_HorizontalSumTable<Pixel> table(dynamic_cast<const QX_WorldX<Pixel>*>(src.world.get()), 1, 2, radius,
                                                 gain, threshold, saturation, aspect, rotation, padded,
                                                 linear ? &light : nullptr);
        left.keep(table.Cells(), static_cast<std::size_t>(table.Width()) * static_cast<std::size_t>(table.Height()));
    });
    return left;
}

template <class Pixel> Left run_merge(Draw& draw, bool odd) {
    const Plate<Pixel> dst = plate<Pixel>(draw, size_of(draw), odd);
    const bool whole = draw.once_in(2, "whole"), all = draw.once_in(2, "all"), deep = draw.once_in(2, "deep");
    const M_LRect part = rect_of(draw), area = rect_of(draw);
    const int x = draw.place("x", -20, 40), y = draw.place("y", -10, 20);
    Left left;
    const auto merge = [&](const QX_UnoBuffer& mask) {
        left.code = code_of([&] {
            QX_MergeMaskAlpha(nullptr, x, y, whole ? nullptr : &part, &mask, all ? nullptr : &area, dst.world.get());
        });
    };
    if (deep) merge(Mask<std::uint16_t>(draw, size_of(draw), odd).buffer);
    if (!deep) merge(Mask<std::uint8_t>(draw, size_of(draw), odd).buffer);
    left.keep(dst.memory.data(), dst.memory.size());
    return left;
}

/// The routines on buffers alone. Noise has an order where one thread works; so has its operator.
template <class Sample> Left run_masks(Draw& draw, bool odd) {
    constexpr bool real = std::is_same_v<Sample, float>;
    const Size size = size_of(draw);
    const auto beside = [&] { return draw.once_in(3, "beside") ? size_of(draw) : size; };
    Mask<Sample> dst(draw, size, odd), src(draw, beside(), odd);
    const M_LRect rect = rect_of(draw);
    const M_LPoint point{draw.place("x", -20, 40), draw.place("y", -10, 20)};
    const M_LRect* const wanted = draw.once_in(2, "whole") ? nullptr : &rect;
    const M_LPoint* const at = draw.once_in(2, "there") ? nullptr : &point;
    QX_ResetDitherRandomIndex();
    Left left;
    switch (draw.whole("call", real ? 2 : 0, 4)) {
        case 0: {
            const int mode = draw.whole("mode", -1, 8);
            const float opacity = share_of(draw, "opacity"), limit = share_of(draw, "limit");
            left.code = QX_AccumulateUnoBuffers(nullptr, &src.buffer, mode, opacity, limit, wanted, at, &dst.buffer);
            break;
        }
        case 1:
            left.code = QX_FadeUnoBuffer(nullptr, share_of(draw, "opacity"), &dst.buffer);
            left.code += QX_InvertAndFadeUnoBuffer(nullptr, draw.place("strength", -1, 0x10002), &dst.buffer);
            break;
        case 2: {
            const Mask<Sample> cover(draw, beside(), odd);
            left.code = QX_TransferUnoBuffers(nullptr, &cover.buffer, &src.buffer, draw.whole("mode", -1, 8), wanted,
                                              at, &dst.buffer);
            break;
        }
        default: {
            const Mask<std::uint16_t> deep(draw, beside(), odd);
            const int precision = draw.one("precision", {1, 4, 8, 16, 3, -7, INT_MIN});
            left.code = QX_ConvertDeepUnoBuffer(nullptr, &deep.buffer, wanted, precision, &dst.buffer);
        }
    }
    dst.samples.leave(left);
    return left;
}

template <class Sample> Left run_scan(Draw& draw, bool odd) {
    const int length = draw.once_in(8, "long") ? draw.whole("length", 68, 3000) : draw.whole("length", 1, 68);
    const auto count = static_cast<std::size_t>(length);
    Samples<Sample> line(draw, count, odd), scratch(draw, count, false);
    const int start = draw.place("start", -9, length), end = draw.place("end", 0, length + 9);
    const int radius = draw.once_in(64, "huge") ? draw.one("radius", {INT_MAX, INT_MIN, -1, 30000 << 16, 2000 << 16})
                                                : draw.whole("radius", 0, draw.one("reach", {3, 40, 200}) << 16);
    const int kind = draw.whole("kind", 0, 3);
    const bool box = draw.once_in(3, "bell") == false;
    Left left;
    if constexpr (sizeof(Sample) == 1) {
        left.code =
            (box ? QX_BoxBlurUnoScan : QX_GBlurUnoScan)(kind, length, start, end, radius, scratch.data(), line.data());
    } else {
        left.code = (box ? QX_BoxBlurDeepUnoScan : QX_GBlurDeepUnoScan)(kind, length, start, end, radius,
                                                                        scratch.data(), line.data());
    }
    line.leave(left);
    return left;
}

Left run_guess(Draw& draw, bool odd) {
    const Plate<QX_Pixel8> src = plate<QX_Pixel8>(draw, size_of(draw), odd);
    const QX_LayerDef world = record_of(src);
    std::int32_t kind = -1;
    QX_Pixel8 matte{1, 2, 3, 4};
    Left left{QX_GuessAlpha(nullptr, &world, &kind, &matte)};
    left.keep(&kind, 1);
    left.keep(&matte, 1);
    return left;
}

using Run = Left(Draw& draw, bool odd);
struct Family {
    Text name;
    Run* at_depth[3];
};
#define QX_DEPTHS(run) \
    { &run<QX_Pixel8>, &run<QX_Pixel16>, &run<QX_PixelFloat> }
const Family kFamilies[] = {
    {"line blur", QX_DEPTHS(run_blur)},
    {"convolution", QX_DEPTHS(run_convolve)},
    {"fade", QX_DEPTHS(run_blend)},
    {"summed areas", QX_DEPTHS(run_sums)},
    {"horizontal sums", QX_DEPTHS(run_horizontal)},
    {"merge", QX_DEPTHS(run_merge)},
    {"mask buffers", {&run_masks<std::uint8_t>, &run_masks<std::uint16_t>, &run_masks<float>}},
    {"scan", {&run_scan<std::uint8_t>, &run_scan<std::uint16_t>, &run_scan<std::uint16_t>}},
    {"guess", {&run_guess, &run_guess, &run_guess}},
};
#undef QX_DEPTHS

/// A case of a seed, run by the library as it was born.
class SeededCase {
public:
    explicit SeededCase(std::uint64_t seed) : seed_(seed), draw_(seed) {
        family_ = draw_.whole("family", 0, std::size(kFamilies));
        depth_ = draw_.whole("depth", 0, 3);
        odd_ = draw_.once_in(10, "odd");
    }
    Left run() { return kFamilies[family_].at_depth[depth_](draw_, odd_); }
    bool odd() const { return odd_; }
    int depth() const { return 8 << depth_; }
    std::string name() const {
        return std::string(kFamilies[family_].name) + " of " + std::to_string(8 << depth_) + " bits, seed " +
               std::to_string(seed_) + ": " + draw_.all();
    }

private:
    const std::uint64_t seed_;
    Draw draw_;
    int family_, depth_;
    bool odd_;
};

/// Numbers that compare equal are equal: a zero has two signs.
template <class Number> std::string first_difference(const Left& made, const Left& want) {
    if (made.bytes.size() != want.bytes.size()) return "sizes";
    for (std::size_t i = 0; i + sizeof(Number) <= made.bytes.size(); i += sizeof(Number)) {
        Number m, w;
        std::memcpy(&m, &made.bytes[i], sizeof m);
        std::memcpy(&w, &want.bytes[i], sizeof w);
        if (m == w || std::memcmp(&m, &w, sizeof m) == 0) continue;
        std::ostringstream text;
        text.precision(9);
        text << +m << " instead of " << +w << " at byte " << i;
        return text.str();
    }
    return "";
}

class FiltersDifferential : public AtLevel {
protected:
    void expect_batch(const std::vector<std::uint64_t>& batch, int bands) {
        const Reports reports;
        std::vector<Left> plain;
        {
            const Born born(1, standalone::ProcessorLevel::plain);
            for (const std::uint64_t seed : batch) plain.push_back(SeededCase(seed).run());
        }
        const Born born(bands, GetParam());
        for (std::size_t i = 0; i < batch.size(); ++i) {
            SeededCase c(batch[i]);
            const Left made = c.run();
            if (c.odd()) continue;
            EXPECT_EQ(made.code, plain[i].code) << c.name();
            EXPECT_EQ(c.depth() == 32 ? first_difference<float>(made, plain[i])
                                      : first_difference<std::uint8_t>(made, plain[i]),
                      "")
                << "in " << bands << " bands, " << c.name();
        }
    }
};
QX_AT_LEVELS(FiltersDifferential, standalone::ProcessorLevel::vector, standalone::ProcessorLevel::faster,
             standalone::ProcessorLevel::widest);

TEST_P(FiltersDifferential, FormsAgreeWithThePlainOnes) {
    constexpr std::uint64_t size = 500;
    constexpr int bands[] = {1, 2, 7, 32};
    const auto batch_of = [](std::uint64_t seed) { return (seed - 1) / size; };  // the same whichever seeds run
    const auto all = seeds(6000);
    for (auto seed = all.begin(); seed != all.end();) {
        std::vector<std::uint64_t> batch;
        const auto number = batch_of(*seed);
        for (; seed != all.end() && batch_of(*seed) == number; ++seed) batch.push_back(*seed);
        expect_batch(batch, bands[number % 4]);
    }
}

}  // namespace
}  // namespace qx::test
