// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <vector>

#include "opticalflow/src/FlowPicture.h"
#include "opticalflow/src/GeneralSampler.h"
#include "opticalflow/src/ImgProc.h"
#include "opticalflow/src/Pixels.h"
#include "opticalflow/src/TweeningParameters.h"

namespace solvan_of {

/// A field at a picture's size, row by row.
class EnlargedField {
public:
    /// @param step  field pixels a pixel of the picture
    EnlargedField(const FieldTexture& field, std::int32_t picture_width, float step);

    qx::FlowColumns columns() const { return {whole_.data(), fraction_.data(), std::int32_t(whole_.size())}; }
    const FieldTexture& field() const { return *field_; }
    /// Where row y of the picture lies in the field.
    Place row(std::int32_t y) const { return place_of(step_ * (static_cast<float>(y) + 0.5f) - 0.5f); }

    /// Rows for one part, which are best asked for downwards.
    class Rows {
    public:
        explicit Rows(const EnlargedField& enlarged);  ///< Want of memory is thrown as a code.
        qx::VectorRow row(std::int32_t y);

    private:
        qx::VectorRow buffer(int which) const;
        qx::VectorRow widened(std::int32_t line, int which);

        const EnlargedField& enlarged_;
        EngineBlock<float> room_;
        std::int32_t lines_[2];
    };

private:
    const FieldTexture* field_;
    float step_;
    std::vector<std::int32_t> whole_;
    std::vector<float> fraction_;
};

/// The picture at time t: both frames sampled where the vectors of a pixel lead, and mixed.
template <class Pixel> class FnMotionEstimateGradientTweenerBuildPicture : public FnImgProc1<Pixel> {
public:
    using Frame = FnTexture<Pixel>;

    FnMotionEstimateGradientTweenerBuildPicture(InterruptState& state, const Frame& first, const Frame& second,
                                                const FnMotionEstimateGradientTweeningParameters& parameters)
        : FnImgProc1<Pixel>(state), first_frame_(&first), second_frame_(&second), parameters_(parameters) {}

    bool takes_nearer_frame = false;                       ///< in place of a mix
    bool tests_for_low_alpha = true;                       ///< alpha textures: at most 1, not above 0
    const FnTexture<std::uint8_t>* first_alpha = nullptr;  ///< or null
    const FnTexture<std::uint8_t>* second_alpha = nullptr;

protected:
    void initialise() override;
    void processPart(int part) override;

private:
    /// Where a pixel leads in both frames.
    struct Ends;
    FloatPixel sample(const Frame& frame, const HvVec2& v, float k, std::int32_t x, std::int32_t y) const;
    FloatPixel read(const Frame& frame, float px, float py) const;
    FloatPixel read_by_sinc(const Frame& frame, const Place& across, const Place& down) const;
    std::int32_t state_of(std::int32_t x, std::int32_t y, const HvVec2& to_second, const HvVec2& to_first) const;
    FloatPixel made(std::int32_t x, std::int32_t y, const HvVec2& to_second, const HvVec2& to_first) const;
    bool is_plain() const;
    bool fill_row(std::int32_t y, const qx::VectorRow& to_second, const qx::VectorRow& to_first) const;

    const Frame *first_frame_, *second_frame_;
    FnMotionEstimateGradientTweeningParameters parameters_;
    float scale_ = 1;                                    ///< picture pixels a pixel of the field
    std::optional<EnlargedField> to_second_, to_first_;  ///< the results at the picture's size
    bool has_states_ = false;
};

}  // namespace solvan_of
