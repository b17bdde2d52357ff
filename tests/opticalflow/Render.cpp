// SPDX-License-Identifier: Apache-2.0
#include "tests/opticalflow/FlowModel.h"

namespace flow_model {

Pair vectors(const Image& frame0, const Image& frame1, const Params& params, const Parts& parts) {
    Pair pair{.code = 0, .frame0 = frame0, .frame1 = frame1, .forward = {}, .backward = {}};
    if (frame0.px.empty() || frame1.px.empty()) {
        pair.code = 4;
        return pair;
    }
    pair.backward = refine(estimate(frame0, frame1, params, parts), frame0, frame1, params, parts);
    pair.forward = refine(estimate(frame1, frame0, params, parts), frame1, frame0, params, parts);
    return pair;
}

Pair vectors(const Frame& frame0, const Frame& frame1, const Params& params, const Parts& parts) {
    return vectors(working_frame(frame0, params), working_frame(frame1, params), params, parts);
}

Tween tweened(const Pair& pair, float t, const Params& params, const Parts& parts) {
    Tween tween;
    tween.w = pair.frame0.w;
    tween.h = pair.frame0.h;
    tween.t = t;
    tween.iterations = params.iterations;
    tween.occlusion_rounds = 2;
    tween.weights = weights_of(params.refine_smoothness);
    tween.flags = 0xF;
    tween.frame0 = pair.frame0;
    tween.frame1 = pair.frame1;
    tween.forward = pair.forward;
    tween.backward = pair.backward;
    tween.map = States(tween.w, tween.h);
    run_tween(tween, parts);
    return tween;
}

Frame picture(const Frame& frame0, const Frame& frame1, const Pair& pair, double position, const Params& params,
              const Parts& parts) {
    const float t = rounded_position(position);
    const int w = frame0.w, h = frame0.h;
    if (t == 0 || t == 1) return copy(t == 0 ? frame0 : frame1, w, h);
    const Tween tween = tweened(pair, t, params, parts);
    const float scale = real(w) / real(tween.w), back = 1.0F / scale;
    return build_picture(frame0, frame1, enlarged(tween.to1, w, h, back), enlarged(tween.to0, w, h, back),
                         enlarged(tween.map, w, h), scale, t, {.sinc = params.sinc});
}

Rendered render(const Frame& frame0, const Frame& frame1, int w, int h, double position, const Params& params,
                const Parts& parts) {
    Rendered out;
    if (params.mode == 0) {
        out.frame = copy(position > 0.5 ? frame1 : frame0, w, h);
    } else if (params.mode == 1) {
        out.frame = blend(frame0, frame1, static_cast<float>(position), w, h);
    } else {
        const Pair pair = vectors(frame0, frame1, params, parts);
        if (pair.code != 0) return {pair.code, {}};
        out.frame = picture(frame0, frame1, pair, position, params, parts);
    }
    const float shutter = params.shutter * 0.2777778F * 0.01F;
    if (params.samples >= 2 && shutter > 0) out.frame = mean_of_equal_passes(out.frame, params.samples);
    return out;
}

BufferFields buffer_fields(const Frame& frame0, const Frame& frame1, const Image* mask0, const Image* mask1, int w,
                           int h, const Params& params, const Parts& parts) {
    const auto working = [&](const Frame& frame, const Image* mask) {
        return mask == nullptr ? working_frame(frame, params) : masked_working_frame(frame, *mask, params, parts);
    };
    const Pair pair = vectors(working(frame0, mask0), working(frame1, mask1), params, parts);
    if (pair.code != 0) return {pair.code, {}, {}};
    const Tween tween = tweened(pair, 0, params, parts);
    const float scale = real(tween.w) / real(w);
    return {0, enlarged(tween.to1, w, h, scale), enlarged(tween.to0, w, h, scale)};
}

}  // namespace flow_model
