// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/QX_SolvanCache.h"

namespace solvan_of {

/// The frames of a render, wrapped.
template <class Pixel> struct RenderFrames { FnTexture<Pixel> first, second, output; };

/// Starts a state that polls by these functions.
void follow(const QX_Solvan_InterruptFuncs& functions, InterruptState& state);

/// One render at one depth.
template <class Pixel> class RenderWorker {
public:
    RenderWorker(const QX_Solvan_AlgoParams& algo, const QX_Solvan_OtherParams& other,
                 const QX_Solvan_InterruptFuncs& functions, RenderFrames<Pixel>& frames);

    /// @return 0 or the code that ended the render
    int run();

private:
    int passes() const;
    void render_pass();
    void copy(const FnTexture<Pixel>& frame);
    void mix();
    void tween_pass();
    void add_vectors(KS_ScCheckout& checkout);
    void fill_luminance(QX_SolvanCache_Stuff& item);

    QX_Solvan_AlgoParams algo_;
    QX_Solvan_OtherParams other_;
    RenderFrames<Pixel>& frames_;
    InterruptState state_;
};

}  // namespace solvan_of
