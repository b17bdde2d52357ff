// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "opticalflow/src/Texture.h"
#include "opticalflow/src/multiprocess/MultiProcess.h"

namespace solvan_of {

/// A rectangle of pixels; right and bottom lie outside.
struct TexRect {
    std::int32_t left = 0, top = 0, right = 0, bottom = 0;
    std::int32_t width() const { return right - left; }
    std::int32_t height() const { return bottom - top; }
};

/// What processing that walks its target row by row has in common.
class Imager : public FnInteruptable {
public:
    explicit Imager(InterruptState& state) : FnInteruptable(state) {}

    void set_single_threaded(bool single) { set(kSingleThreaded, single); }
    void set_rectangle(const TexRect& rectangle) {
        given_ = rectangle;
        set(kRestricted, true);
    }
    void set_pixel_aspect(float aspect) { pixel_aspect_ = aspect; }

protected:
    static constexpr std::uint32_t kSingleThreaded = 4, kRestricted = 8;

    void set(std::uint32_t flag, bool on) { flags_ = on ? flags_ | flag : flags_ & ~flag; }
    void enter(const FnTexIndexer& target) {
        target_width_ = target.width();
        target_height_ = target.height();
        const TexRect whole{target.x.origin, target.y.origin, target.x.origin + target_width_,
                            target.y.origin + target_height_};
        rectangle_ = whole;
        if ((flags_ & kRestricted) == 0) return;
        rectangle_.left = std::clamp(given_.left, whole.left, whole.right);
        rectangle_.right = std::clamp(given_.right, rectangle_.left, whole.right);
        rectangle_.top = std::clamp(given_.top, whole.top, whole.bottom);
        rectangle_.bottom = std::clamp(given_.bottom, rectangle_.top, whole.bottom);
    }
    /// The rows that a part works on.
    PartRows rows_of(int part) const {
        const bool single = (flags_ & kSingleThreaded) != 0;
        const PartRows rows = rows_of_part(rectangle_.height(), single ? 0 : part, single ? 1 : processorCount());
        return {rows.begin + rectangle_.top, rows.end + rectangle_.top};
    }
    /// Calls body(y) for each row of a part until it is to stop.
    template <class Body> void for_rows(int part, const Body& body) const {
        const PartRows rows = rows_of(part);
        for (std::int32_t line = rows.begin; line < rows.end && !interrupted(part); ++line) body(line);
    }
    /// Runs the passes: before(pass), then step(part) for each part.
    template <class Before, class Step> void run_passes(const Before& before, Step& step) {
        for (pass_ = 0; pass_ < pass_count_ && !interrupted(0); ++pass_) {
            before();
            if ((flags_ & kSingleThreaded) != 0) {
                step(0);
            } else {
                const auto enter_step = +[](std::intptr_t self, int part) { (*reinterpret_cast<Step*>(self))(part); };
                const auto argument = reinterpret_cast<std::intptr_t>(&step);
                if (!runOnAllProcessors(state(), reinterpret_cast<PartFunction>(enter_step), 1, &argument))
                    state().stop(4);
            }
        }
    }
    /// A target that can be worked on; says on the error stream what is wrong with others.
    template <class Target> static bool is_fit(const Target* target, const char* null, const char* bogus) {
        const char* const fault = target == nullptr ? null : target->has_pixels() ? nullptr : bogus;
        if (fault != nullptr) std::fputs(fault, stderr);
        return fault == nullptr;
    }

    std::uint32_t flags_ = 0;
    TexRect rectangle_, given_;
    int pass_count_ = 1, pass_ = 0;
    std::int32_t target_width_ = 0, target_height_ = 0;
    float pixel_aspect_ = 1;
};

/// Makes a texture out of nothing but what it holds itself.
template <class Tex> class Generator : public Imager {
public:
    using Imager::Imager;

    void process(Tex* target) {
        if (!is_fit(target, "Map passed into Generator::process is NULL\n",
                    "Map passed into Generator::process is bogus\n"))
            return;
        enter(*target);
        preProcess(*target);
        auto step = [&](int part) { processPart(*target, part); };
        run_passes([] {}, step);
        postProcess(*target);
    }

protected:
    virtual void preProcess(Tex&) {}
    virtual void processPart(Tex& target, int part) = 0;
    virtual void postProcess(Tex&) {}
};

/// Makes a texture out of another. What it says of bogus targets differs from Generator: kept.
template <class TexIn, class TexOut> class Sampler : public Imager {
public:
    using Imager::Imager;

    void process(const TexIn& in, TexOut* out) {
        if (!is_fit(out, "Map passed into Generator::process is NULL\n", "Map passed into Sampler::process is bogus\n"))
            return;
        enter(*out);
        preProcess(in, *out);
        auto step = [&](int part) { processPart(in, *out, part); };
        run_passes([&] { prePass(in, *out); }, step);
        postProcess(in, *out);
    }

protected:
    virtual void preProcess(const TexIn&, TexOut&) {}
    virtual void processPart(const TexIn& in, TexOut& out, int part) = 0;
    virtual void postProcess(const TexIn&, TexOut&) {}
    virtual void prePass(const TexIn&, TexOut&) {}
};

/// Makes a texture out of two others. Kept: what it says of bogus targets.
template <class TexA, class TexB, class TexOut> class Combiner : public Imager {
public:
    using Imager::Imager;

    void process(const TexA& a, const TexB& b, TexOut* out) {
        if (!is_fit(out, "Map passed into Combiner::process is NULL\n",
                    "Map passed into Generator::process is bogus\n"))
            return;
        enter(*out);
        preProcess(a, b, *out);
        auto step = [&](int part) { processPart(a, b, *out, part); };
        run_passes([] {}, step);
        postProcess(a, b, *out);
    }

protected:
    virtual void preProcess(const TexA&, const TexB&, TexOut&) {}
    virtual void processPart(const TexA& a, const TexB& b, TexOut& out, int part) = 0;
    virtual void postProcess(const TexA&, const TexB&, TexOut&) {}
};

}  // namespace solvan_of
