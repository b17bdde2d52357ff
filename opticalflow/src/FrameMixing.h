// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/CopySampler.h"
#include "opticalflow/src/Pixels.h"

namespace solvan_of {

/// A plain mix of two frames, all channels alike.
template <class Pixel> class FnMotionEstimateFrameBlender : public GeneralCombiner<Pixel, Pixel, Pixel> {
public:
    FnMotionEstimateFrameBlender(InterruptState& state, float t) : GeneralCombiner<Pixel, Pixel, Pixel>(state), t_(t) {}

protected:
    void pixel(const Pixel& a, const Pixel& b, Pixel& out, int) override {
        const float t = t_;
        out = Pixel::of(
            [t](auto x, auto y) {
                return as_channel<typename Pixel::Channel>(lerp(static_cast<float>(x), static_cast<float>(y), t));
            },
            a, b);
    }

private:
    float t_;
};

/// Copies of a frame: as it is, with its colours inverted, or its alpha in all channels.
template <class Pixel>
class AlphaMatter : public Sampler<FnTexture<Pixel>, FnTexture<Pixel>>, private SimpleLineCopier<Pixel> {
public:
    enum class Mode { copy, inverted, alpha };
    AlphaMatter(InterruptState& state, Mode mode) : Sampler<FnTexture<Pixel>, FnTexture<Pixel>>(state), mode_(mode) {}

protected:
    void processPart(const FnTexture<Pixel>& in, FnTexture<Pixel>& out, int part) override {
        this->for_rows(part, [&](std::int32_t y) {
            for_runs(in, this->rectangle_, y, [&](std::int32_t x, const TexRun& run, const Pixel* from) {
                Pixel* const to = out.row(y) + x;
                if (mode_ == Mode::copy) return this->copy_line(run, from, to);
                for (std::int32_t i = 0; i < run.length; ++i) to[i] = made(from[i * run.step]);
            });
        });
    }

private:
    Pixel made(const Pixel& in) const {
        using Channel = typename Pixel::Channel;
        const bool inverts = mode_ == Mode::inverted;
        const auto alpha = in.alpha;
        Pixel out = Pixel::of(
            [=](Channel c) {
                return inverts ? static_cast<Channel>(static_cast<Channel>(kRange<Channel>) - c) : alpha;
            },
            in);
        out.alpha = alpha;
        return out;
    }

    Mode mode_;
};

/// Adds frames up: the first is stored.
template <class Pixel> class FnIntAccumulator : public GeneralSampler<Pixel, Accumulator> {
public:
    FnIntAccumulator(InterruptState& state, bool is_first)
        : GeneralSampler<Pixel, Accumulator>(state), is_first_(is_first) {}

protected:
    void pixel(const Pixel& in, Accumulator& out, int, std::int32_t, std::int32_t) override {
        const bool stores = is_first_;
        out = Accumulator::of(
            [stores](auto c, float sum) { return stores ? static_cast<float>(c) : sum + static_cast<float>(c); }, in,
            out);
    }

private:
    bool is_first_;
};

/// The mean of what was added up. A sum too small for a quotient gives 0.
template <class Pixel> class FnFloatDeaccumulator : public GeneralSampler<Accumulator, Pixel> {
public:
    FnFloatDeaccumulator(InterruptState& state, int passes)
        : GeneralSampler<Accumulator, Pixel>(state), passes_(static_cast<float>(passes)) {}

protected:
    void pixel(const Accumulator& in, Pixel& out, int, std::int32_t, std::int32_t) override {
        const float passes = passes_;
        out = Pixel::of(
            [passes](float sum) {
                const float size = sum < 0.0f ? -sum : sum;
                return as_channel<typename Pixel::Channel>(size < 2.3509887e-38f ? 0.0f : sum / passes);
            },
            in);
    }

private:
    float passes_;
};

}  // namespace solvan_of
