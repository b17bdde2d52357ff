// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/RenderWorker.h"

#include <algorithm>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>

#include "opticalflow/src/BuildPicture.h"
#include "opticalflow/src/CopySampler.h"
#include "opticalflow/src/FrameMixing.h"
#include "opticalflow/src/Tweener.h"

namespace solvan_of {
namespace {

using Item = boost::intrusive_ptr<QX_SolvanCache_Stuff>;

boost::posix_time::ptime now() { return boost::posix_time::microsec_clock::local_time(); }

}  // namespace

void follow(const QX_Solvan_InterruptFuncs& functions, InterruptState& state) {
    state.poll = functions.abortFunc;
    state.data = functions.abortData == nullptr ? nullptr : *functions.abortData;
}

template <class Pixel>
RenderWorker<Pixel>::RenderWorker(const QX_Solvan_AlgoParams& algo, const QX_Solvan_OtherParams& other,
                                  const QX_Solvan_InterruptFuncs& functions, RenderFrames<Pixel>& frames)
    : algo_(algo), other_(other), frames_(frames) {
    follow(functions, state_);
}

// The shutter's angle only tells whether there are passes at all; all of them show the same instant: kept.
template <class Pixel> int RenderWorker<Pixel>::passes() const {
    const float shutter = algo_.shutterAngle * 0.2777778f * 0.01f;
    return algo_.sampleCount >= 2 && shutter > 0.0f ? algo_.sampleCount : 1;
}

template <class Pixel> int RenderWorker<Pixel>::run() {
    const int count = passes();
    FnTexture<Accumulator> sum;
    if (count > 1 && !sum.allocate_clear(frames_.output.width(), frames_.output.height())) return 4;
    for (int pass = 0; pass < count && checkInterrupt(state_, 0) == 0 && !state_.is_stopped(); ++pass) {
        render_pass();
        if (count > 1 && !state_.is_stopped()) FnIntAccumulator<Pixel>(state_, pass == 0).process(frames_.output, &sum);
    }
    if (count > 1 && !state_.is_stopped()) FnFloatDeaccumulator<Pixel>(state_, count).process(sum, &frames_.output);
    return state_.current_code();
}

template <class Pixel> void RenderWorker<Pixel>::render_pass() {
    switch (algo_.interpolationMode) {
        case kQX_Solvan_Nearest:
            return copy(other_.position > 0.5 ? frames_.second : frames_.first);
        case kQX_Solvan_Mix:
            return mix();
        default:
            return tween_pass();
    }
}

template <class Pixel> void RenderWorker<Pixel>::copy(const FnTexture<Pixel>& frame) {
    SimpleCopySampler<Pixel>(state_).process(frame, &frames_.output);
}

template <class Pixel> void RenderWorker<Pixel>::mix() {
    FnMotionEstimateFrameBlender<Pixel>(state_, static_cast<float>(other_.position))
        .process(frames_.first, frames_.second, &frames_.output);
}

template <class Pixel> void RenderWorker<Pixel>::tween_pass() {
    KS_ScCheckout checkout;
    const FieldSize size = field_size(frames_.first, algo_.vectorDetail);
    const Item probe(new QX_SolvanCache_Stuff(size));
    probe->SetGuid(vectors_identity(algo_, other_.firstFrameId, other_.secondFrameId));
    checkout.FindAndCheckout(probe.get(), 1);
    auto* item = dynamic_cast<QX_SolvanCache_Stuff*>(checkout.GetStuff());
    // Vectors of another size are somebody else's, who used the ids of this pair.
    const bool is_found = item != nullptr && checkout.EnsureInMemory() && item->record().width == size.width &&
                          item->record().height == size.height;
    if (!is_found) {
        add_vectors(checkout);
        if (state_.is_stopped()) return;
        item = dynamic_cast<QX_SolvanCache_Stuff*>(checkout.GetStuff());
    }
    fill_luminance(*item);
    if (state_.is_stopped()) return;

    using Matter = AlphaMatter<Pixel>;
    const float t = tween_position(other_.position);
    if (t == 0.0f || t == 1.0f)
        return Matter(state_, Matter::Mode::copy).process(t == 0.0f ? frames_.first : frames_.second, &frames_.output);
    TweenedVectors tweened;
    tween(state_, algo_, item->record(), t, tweened);
    if (state_.is_stopped()) return;
    if (algo_.highQualityFilter != 0) tweened.parameters.flags |= kHighQualityFilter;
    FnMotionEstimateGradientTweenerBuildPicture<Pixel>(state_, frames_.first, frames_.second, tweened.parameters)
        .process(&frames_.output);
}

/// Makes the pair's vectors and hands them to the cache.
template <class Pixel> void RenderWorker<Pixel>::add_vectors(KS_ScCheckout& checkout) {
    const auto began = now();
    auto record = std::make_unique<SolvanVectorRecord>();
    make_luminance(state_, algo_, frames_.first, frames_.second, *record);
    if (!state_.is_stopped()) make_vectors(state_, algo_, *record);
    if (state_.is_stopped()) return;
    const Item item(new QX_SolvanCache_Stuff(std::move(record)));
    item->SetGuid(vectors_identity(algo_, other_.firstFrameId, other_.secondFrameId));
    const double seconds = static_cast<double>((now() - began).total_microseconds()) / 1e6;
    item->AddToBagAndSortDir(KS_GlobalBag(), std::max(seconds, 0.0));
    checkout.Checkout(item.get(), 1);
}

// Luminance is not kept on disk, and pictures are chosen by it: a restored item gets it back from the pair.
template <class Pixel> void RenderWorker<Pixel>::fill_luminance(QX_SolvanCache_Stuff& item) {
    const std::unique_lock<std::mutex> held(item.luminance_lock());
    SolvanVectorRecord& record = item.record();
    if (!record.has_luminance) make_luminance(state_, algo_, frames_.first, frames_.second, record);
}

template class RenderWorker<Argb<std::uint8_t>>;
template class RenderWorker<Argb<std::uint16_t>>;
template class RenderWorker<Argb<float>>;

}  // namespace solvan_of
