// SPDX-License-Identifier: Apache-2.0
// Transforms against a slow model: every pixel's samples are placed and summed one by one with tests for every tap,
// and the finished picture is transferred.
#include "platform/GK_Motion.h"
#include "tests/geometry/TransformSupport.h"

namespace qx::test {
namespace {

using Place = M_Vector2T<std::uint32_t>;  // 16.16, wrapping
std::uint32_t fixed(double v) {
    v = std::clamp(v, -32767.0, 32766.0) * 65536;
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(v < 0 ? v - 0.5 : v + 0.5));
}
std::int32_t as_int(std::uint32_t v) { return static_cast<std::int32_t>(v); }

/// One matrix of the call, both ways.
struct Way {
    M_Matrix3 there, back;
    bool invertible;
    Way(const M_Matrix3& given, bool src2dst) : there(given), back(given) {
        invertible = M_InverseMatrixQuiet(given, src2dst ? &back : &there);
    }
    double scale(int axis) const {
        const auto& r = there.m[axis];
        return std::sqrt((r[0] * r[0] + r[1] * r[1]) + r[2] * r[2]);
    }
    QX_SampPB block(const QX_LayerDef* src) const {
        const double rx = std::min(0.5 / scale(0), 127.0), ry = std::min(0.5 / scale(1), 127.0);
        QX_SampPB b{};
        b.x_radius = as_int(fixed(rx)), b.y_radius = as_int(fixed(ry)), b.src = src;
        return b;
    }
    Place at(int left, int top, int i, int j) const {
        M_FloatPoint p{left + 0.5, top + 0.5};
        M_TransformFloatPoints(back, &p, 1);
        const auto along = [&](double start, double dx, double dy) {
            return fixed(start - 0.5) + fixed(dx) * static_cast<std::uint32_t>(i) +
                   fixed(dy) * static_cast<std::uint32_t>(j);
        };
        return {along(p.x, back.m[0][0], back.m[1][0]), along(p.y, back.m[0][1], back.m[1][1])};
    }
    M_LRect image(const M_Matrix3& matrix, double l, double t, double r, double b, int grow) const {
        M_FloatRect f{l, t, r, b};
        M_TransformFloatRect(matrix, &f);
        const auto whole = [](double v) { return static_cast<int>(std::round(std::clamp(v, -32767.0, 32766.0))); };
        return {whole(f.left) - grow, whole(f.top) - grow, whole(f.right) + grow, whole(f.bottom) + grow};
    }
};

M_LRect sect(M_LRect a, const M_LRect& b) {
    M_SectLRect(a, b, &a);
    return a;
}
M_LRect join(M_LRect a, const M_LRect& b) {
    M_UnionLRect(a, b, &a);
    return a;
}

template <class Pixel> class Model {
    using D = DepthOf<Pixel>;

public:
    Model(const TransformCall& call, TestWorld<Pixel>& src, const M_LRect& clipped) : call_(call), src_(src) {
        for (const M_Matrix3& m : call.matrices) ways_.emplace_back(m, call.src2dst);
        moving_ = !M_EqualMatrixWithinEpsilon(call.matrices.front(), call.matrices.back(), 1e-12);
        const int w = src.world().width, h = src.world().height;
        const auto reached = [&](const Way& way) {
            if (!way.invertible) return M_LRect{};
            const M_LRect part = sect(way.image(way.back, clipped.left, clipped.top, clipped.right, clipped.bottom, 1),
                                      {-1, -1, w + 1, h + 1});
            if (M_EmptyLRect(part)) return M_LRect{};
            return sect(way.image(way.there, part.left, part.top, part.right, part.bottom, 1), clipped);
        };
        rect = reached(ways_[0]);
        if (!moving_) return;
        for (const Way& way : ways_) rect = join(rect, reached(way));
        M_LRect sweep = join(ways_.front().image(ways_.front().there, -1, -1, w + 1, h + 1, 0),
                             ways_.back().image(ways_.back().there, -1, -1, w + 1, h + 1, 0));
        M_InsetLRect(&sweep, -1, -1);
        rect = join(rect, sect(sweep, clipped));
    }

    Pixel at(int i, int j) const {
        const auto at = [&](const Way& way) { return way.at(rect.left, rect.top, i, j); };
        if (!moving_) return sample(ways_[0], at(ways_[0]), area(ways_[0]));
        const int n = static_cast<int>(ways_.size());
        std::vector<Pixel> samples;
        if (takes_sub_frames()) {
            const bool averages = std::any_of(ways_.begin(), ways_.end() - 1, [&](const Way& w) { return area(w); });
            for (int k = n - 2; k >= 0; --k) {
                const Way& way = ways_[static_cast<std::size_t>(k)];
                samples.push_back(sample(way, at(way), averages));
            }
        } else {
            const int steps = n != 2 ? n - 1 : call_.quality > 0 ? 16 : 8;
            const Place a = at(ways_.front()), b = at(ways_.back());
            for (int k = 0; k < steps; ++k) {
                const auto along = [&](std::uint32_t from, std::uint32_t to) {
                    return from + static_cast<std::uint32_t>(k * (as_int(to - from) / steps));
                };
                samples.push_back(sample(ways_[0], {along(a.x, b.x), along(a.y, b.y)}, area(ways_[0])));
            }
        }
        return mean(samples);
    }

    M_LRect rect{};

    /// Uneven motion is sampled from its last sub-frame to the first; the last matrix is only where they lead.
    bool takes_sub_frames() const { return moving_ && call_.quality > 0 && ways_.size() != 2 && uneven(); }

private:
    bool area(const Way& way) const {
        const QX_SampPB b = way.block(nullptr);
        return call_.quality > 0 && (b.x_radius > 32768 || b.y_radius > 32768);
    }
    bool uneven() const {
        for (int row = 0; row < 2; ++row) {
            const auto &a = ways_.front().back.m[row], &b = ways_.back().back.m[row];
            const double la = std::hypot(a[0], a[1]), lb = std::hypot(b[0], b[1]);
            for (int c = 0; c < 2; ++c) {
                if (std::fabs(a[c] / la - b[c] / lb) > 1e-11) return true;
            }
        }
        return GK::IsNonLinearSubframeMotion(call_.matrices.data(), static_cast<int>(call_.matrices.size()));
    }
    Pixel sample(const Way& way, Place p, bool averages) const {
        Pixel out{};
        if (call_.quality == 0) {
            const auto nearest = [](std::uint32_t v) { return static_cast<std::int16_t>((v + 32768) >> 16); };
            const int x = nearest(p.x), y = nearest(p.y);
            return src_.has(x, y) ? src_.at(x, y) : out;
        }
        const QX_SampPB block = way.block(src_.record());
        const auto set = QXp_GetSamplerSet<Pixel>(call_.quality);
        (averages ? set.area : set.clipped)(nullptr, as_int(p.x), as_int(p.y), &block, &out);
        return out;
    }
    Pixel mean(const std::vector<Pixel>& samples) const {
        using Sum = std::conditional_t<D::number == 32, float, double>;
        const Sum n = static_cast<Sum>(samples.size());
        Sum a = 0;
        for (const Pixel& p : samples) a += p.alpha;
        if (a == 0) return {};
        const bool covered = a == n * D::full;
        const auto colour = [&](auto channel) {
            Sum sum = 0;
            for (const Pixel& p : samples) sum += static_cast<Sum>(p.alpha) * p.*channel;
            if (D::number == 32) return static_cast<QX_ChannelOf<Pixel>>(sum / a);
            const float v = static_cast<float>(sum) / static_cast<float>(n);
            return static_cast<QX_ChannelOf<Pixel>>(covered ? std::trunc(v) / D::full + 0.5 : sum / a);
        };
        return {static_cast<QX_ChannelOf<Pixel>>(a / n), colour(&Pixel::red), colour(&Pixel::green),
                colour(&Pixel::blue)};
    }

    const TransformCall& call_;
    TestWorld<Pixel>& src_;
    std::vector<Way> ways_;
    bool moving_;
};

/// Equal, but for the order of the float sums of straight paths and for weights of translations.
template <class Pixel> bool alike(const Pixel& a, const Pixel& b, bool same_order) {
    if (DepthOf<Pixel>::number != 32 || same_order) return a == b;
    const auto near = [](double u, double v) { return std::fabs(u - v) <= 1e-5 * std::max(1.0, std::fabs(u)); };
    return near(a.alpha, b.alpha) && near(a.red, b.red) && near(a.green, b.green) && near(a.blue, b.blue);
}

/// At a level where the unclipped 8-bit sample is the clipped one.
template <class Pixel> using ModelAtDepth = BornAtDepth<Pixel, 1, standalone::ProcessorLevel::plain>;
TYPED_TEST_SUITE(ModelAtDepth, AllDepths);

TYPED_TEST(ModelAtDepth, GivesTheSamePictures) {
    TestWorld<TypeParam> src(37, 29, FillKind::opaque, 1), soft(37, 29, FillKind::layer, 1),
        mask(30, 30, FillKind::random, 2);
    const QX_MaskWorld record = mask_at(*mask.record(), 9, 11, kQX_MaskAlpha);
    std::mt19937 random(5);
    const auto any = [&](double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); };
    int drawn = 0;
    for (int run = 0; run < 300; ++run) {
        TransformCall call;
        const int n = run % 5 == 0 ? 1 : run % 5 == 4 ? 9 : run % 5 + 1;
        const double turn = run % 3 == 0 ? 0 : any(-180, 180), size = run % 7 == 0 ? 1 : std::exp2(any(-2.5, 2));
        const double spin = run % 4 == 0 ? any(-20, 20) : 0, grow = run % 6 == 0 ? any(0.7, 1.3) : 1;
        const double dx = any(-30, 30), dy = any(-30, 30), x = any(-10, 20), y = any(-10, 20);
        call.matrices.clear();
        for (int k = 0; k < n; ++k) {
            const double t = n > 1 ? static_cast<double>(k) / (n - 1) : 0;
            M_Matrix3 m = placed(33, turn + spin * t, size * std::pow(grow, t), x + dx * t, y + dy * t);
            if (run % 11 == 0) m.m[0][2] = 0.003;
            call.matrices.push_back(m);
        }
        call.src2dst = run % 2 == 0;
        call.field = run % 7 == 3 ? 1 + run % 2 : 0;
        call.quality = run % 4 % 3;
        call.mode.xfer = run % 8 == 1 ? int{xfer_replace} : run % 8 == 3 ? int{xfer_behind} : int{xfer_over};
        call.mode.opacity = run % 10 < 3 ? 0.5f : 1;
        call.mask = run % 9 == 0 ? &record : nullptr;
        const M_LRect limit{2, 3, 45, 41};
        call.rect = run % 3 == 1 ? &limit : nullptr;
        TestWorld<TypeParam>& layer = run % 2 == 0 ? src : soft;
        TestWorld<TypeParam> got(50, 44, FillKind::layer, 7), expected(50, 44, FillKind::layer, 7);
        SCOPED_TRACE(testing::Message() << "run " << run << ", " << n << " matrices, quality " << call.quality);
        ASSERT_EQ(call(layer.record(), got.record()), 0);

        M_LRect clipped = call.rect != nullptr ? limit : M_LRect{0, 0, 50, 44};
        if (call.mask != nullptr) clipped = sect(clipped, {9, 11, 39, 41});
        const Model<TypeParam> model(call, layer, clipped);
        if (!M_EmptyLRect(model.rect)) {
            const int w = model.rect.right - model.rect.left, h = model.rect.bottom - model.rect.top;
            TestWorld<TypeParam> picture(w, h, FillKind::clear, 1);
            for (const auto& [i, j] : places(w, h)) picture.at(i, j) = model.at(i, j);
            const M_LRect all{0, 0, w, h};
            ASSERT_EQ(QX_TransferRect(nullptr, 1, 0, call.field, &all, picture.record(), &call.mode, nullptr, call.mask,
                                      model.rect.left, model.rect.top, expected.record()),
                      0);
            drawn += w * h;
        }
        const bool same_order = model.takes_sub_frames();
        for (const auto& [i, j] : places(50, 44)) {
            ASSERT_TRUE(alike(got.at(i, j), expected.at(i, j), same_order)) << i << "," << j;
        }
    }
    EXPECT_GT(drawn, 100000);
}

}  // namespace
}  // namespace qx::test
