// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/GeneralSampler.h"
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
template <class Pixel> class AlphaMatter : public GeneralSampler<Pixel, Pixel> {
public:
    enum class Mode { copy, inverted, alpha };
    AlphaMatter(InterruptState& state, Mode mode) : GeneralSampler<Pixel, Pixel>(state), mode_(mode) {}

protected:
    void pixel(const Pixel& in, Pixel& out, int, std::int32_t, std::int32_t) override {
        using Channel = typename Pixel::Channel;
        switch (mode_) {
            case Mode::copy:
                out = in;
                return;
            case Mode::inverted:
                out = Pixel::of(
                    [](Channel c) { return static_cast<Channel>(static_cast<Channel>(kRange<Channel>) - c); }, in);
                out.alpha = in.alpha;
                return;
            case Mode::alpha:
                out.alpha = out.red = out.green = out.blue = in.alpha;
        }
    }

private:
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
