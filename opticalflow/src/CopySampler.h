// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>

#include "opticalflow/src/GeneralSampler.h"
#include "opticalflow/src/Pixels.h"

namespace solvan_of {

/// Copies a run of pixels.
template <class Pixel> class SimpleLineCopier {
protected:
    ~SimpleLineCopier() = default;
    void copy_line(const TexRun& run, const Pixel* from, Pixel* to) const {
        if (run.step == 1) {
            std::copy_n(from, run.length, to);
        } else {
            for (std::int32_t i = 0; i < run.length; ++i) to[i] = from[i * run.step];
        }
    }
};

/// Copies a run of pixels to another type of channel, in proportion to their ranges.
template <class In, class Out> class LineCopier {
protected:
    ~LineCopier() = default;
    LineCopier(float in_range, float out_range) : factor_(out_range / in_range) {}
    void copy_line(const TexRun& run, const In* from, Out* to) const {
        for (std::int32_t i = 0; i < run.length; ++i) to[i] = converted(from[i * run.step]);
    }

private:
    Out converted(const In& in) const {
        if constexpr (std::is_arithmetic_v<In>) {
            return as_channel<Out>(static_cast<float>(in) * factor_);
        } else {
            const float factor = factor_;
            using Channel = typename Out::Channel;
            return Out::of([factor](auto c) { return as_channel<Channel>(static_cast<float>(c) * factor); }, in);
        }
    }

    float factor_;
};

/// Copies, line by line.
template <class Pixel>
class SimpleCopySampler : public Sampler<FnTexture<Pixel>, FnTexture<Pixel>>, protected SimpleLineCopier<Pixel> {
public:
    using Sampler<FnTexture<Pixel>, FnTexture<Pixel>>::Sampler;

protected:
    void processPart(const FnTexture<Pixel>& in, FnTexture<Pixel>& out, int part) override {
        this->for_rows(part, [&](std::int32_t y) {
            for_runs(in, this->rectangle_, y, [&](std::int32_t x, const TexRun& run, const Pixel* from) {
                this->copy_line(run, from, out.row(y) + x);
            });
        });
    }
};

/// Copies to another type of channel.
template <class In, class Out>
class CopySampler : public Sampler<FnTexture<In>, FnTexture<Out>>, protected LineCopier<In, Out> {
public:
    CopySampler(InterruptState& state, float in_range, float out_range)
        : Sampler<FnTexture<In>, FnTexture<Out>>(state), LineCopier<In, Out>(in_range, out_range) {}

protected:
    void processPart(const FnTexture<In>& in, FnTexture<Out>& out, int part) override {
        this->for_rows(part, [&](std::int32_t y) {
            for_runs(in, this->rectangle_, y, [&](std::int32_t x, const TexRun& run, const In* from) {
                this->copy_line(run, from, out.row(y) + x);
            });
        });
    }
};

}  // namespace solvan_of
