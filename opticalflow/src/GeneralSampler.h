// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/Imager.h"

namespace solvan_of {

/// Pixels of an axis that are read one after another: `length` of them, `step` apart (1, 0 or -1); index -1 is the
/// background.
struct TexRun {
    std::int32_t index, step, length;
};
/// The run that begins at place `from` of [from, end).
TexRun run_of(const TexAxis& axis, std::int32_t from, std::int32_t end);

/// Calls body(x, run, pixel) for each run of row y of the target's rectangle, with where it begins and its first pixel
/// in `in`.
template <class Pixel, class Accum, class Body>
void for_runs(const FnTexture<Pixel, Accum>& in, const TexRect& rectangle, std::int32_t y, const Body& body) {
    const std::int32_t line = in.y.index(y);
    for (std::int32_t x = rectangle.left; x < rectangle.right;) {
        TexRun run = run_of(in.x, x, rectangle.right);
        const bool outside = run.index < 0 || line < 0;
        if (outside) run.step = 0;
        body(x, run, outside ? &in.background : &in.at(run.index, line));
        x += run.length;
    }
}
/// Calls body(x, pixel) for each place of row y of the target's rectangle with what stands there in `in`.
template <class Pixel, class Accum, class Body>
void for_run_pixels(const FnTexture<Pixel, Accum>& in, const TexRect& rectangle, std::int32_t y, const Body& body) {
    for_runs(in, rectangle, y, [&](std::int32_t x, const TexRun& run, const Pixel* from) {
        for (std::int32_t i = 0; i < run.length; ++i) body(x + i, from[i * run.step]);
    });
}

/// Works pixel by pixel: `pixel` gets what is read and what is to be written.
template <class In, class Out> class GeneralSampler : public Sampler<FnTexture<In>, FnTexture<Out>> {
public:
    using Sampler<FnTexture<In>, FnTexture<Out>>::Sampler;

protected:
    void processPart(const FnTexture<In>& in, FnTexture<Out>& out, int part) override {
        this->for_rows(part, [&](std::int32_t y) {
            Out* const to = out.row(y);
            for_run_pixels(in, this->rectangle_, y,
                           [&](std::int32_t x, const In& from) { pixel(from, to[x], part, x, y); });
        });
    }
    virtual void pixel(const In& in, Out& out, int part, std::int32_t x, std::int32_t y) = 0;
};

/// Works place by place; what is read there is the slot's own matter.
template <class In, class Out> class GeneralSamplerPos : public Sampler<FnTexture<In>, FnTexture<Out>> {
public:
    using Sampler<FnTexture<In>, FnTexture<Out>>::Sampler;

protected:
    void processPart(const FnTexture<In>& in, FnTexture<Out>& out, int part) override {
        this->for_rows(part, [&](std::int32_t y) {
            Out* const to = out.row(y);
            for (std::int32_t x = this->rectangle_.left; x < this->rectangle_.right; ++x) pixel(in, to[x], part, x, y);
        });
    }
    virtual void pixel(const FnTexture<In>& in, Out& out, int part, std::int32_t x, std::int32_t y) = 0;
};

/// Works pixel by pixel on two textures.
template <class A, class B, class Out>
class GeneralCombiner : public Combiner<FnTexture<A>, FnTexture<B>, FnTexture<Out>> {
public:
    using Combiner<FnTexture<A>, FnTexture<B>, FnTexture<Out>>::Combiner;

protected:
    void processPart(const FnTexture<A>& a, const FnTexture<B>& b, FnTexture<Out>& out, int part) override {
        this->for_rows(part, [&](std::int32_t y) {
            Out* const to = out.row(y);
            for (std::int32_t x = this->rectangle_.left; x < this->rectangle_.right; ++x)
                pixel(a.read(x, y), b.read(x, y), to[x], part);
        });
    }
    virtual void pixel(const A& a, const B& b, Out& out, int part) = 0;
};

/// One colour all over.
template <class Pixel> class ColouredFrameGenerator : public Generator<FnTexture<Pixel>> {
public:
    ColouredFrameGenerator(InterruptState& state, const Pixel& colour)
        : Generator<FnTexture<Pixel>>(state), colour_(colour) {}

protected:
    void processPart(FnTexture<Pixel>& target, int part) override {
        this->for_rows(part, [&](std::int32_t y) {
            Pixel* const to = target.row(y);
            for (std::int32_t x = this->rectangle_.left; x < this->rectangle_.right; ++x) to[x] = colour_;
        });
    }

private:
    Pixel colour_;
};

}  // namespace solvan_of
