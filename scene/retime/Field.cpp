// SPDX-License-Identifier: Apache-2.0
#include "scene/retime/Field.h"

#include <algorithm>

#include "QX/indep/QX_Errors.h"
#include "opticalflow/src/HvVec2.h"
#include "opticalflow/src/QX_AdvancedFrameBlending.h"
#include "pictures/Carried.h"
#include "scene/Faults.h"
#include "scene/retime/Quality.h"

namespace qx::scene {
namespace {

constexpr int kChannels = 4;

std::unique_ptr<QX_World> at_working_depth(const std::string& subject, const pictures::Picture& picture) {
    const int own = picture.world->Depth();
    pictures::Picture copy;
    copy.carried = picture.carried;
    copy.world = pictures::at_depth(subject, *picture.world, own);
    pictures::bring_to_depth(subject, copy, own == 8 ? 16 : own);
    return std::move(copy.world);
}

YetAnotherImgBuffer buffer_of(const QX_World& world) {
    const auto bits = static_cast<std::uint32_t>(world.Depth());
    return {static_cast<std::uint32_t>(world.width),
            static_cast<std::uint32_t>(world.height),
            bits,
            kChannels,
            world.rowbytes,
            world.data};
}

/// From pixels of the engine's field, whose x is negated, to pixels of the picture.
FlowField in_pixels(const std::vector<HvVec2>& vectors, int width, int height, float detail) {
    const auto columns = static_cast<int>(static_cast<float>(width) * detail);
    const float scale = static_cast<float>(width) / static_cast<float>(columns);
    FlowField field{width, height, {}};
    field.vectors.reserve(vectors.size());
    for (const HvVec2& vector : vectors) {
        const FlowField::Vector scaled{-vector.x * scale, vector.y * scale};
        field.vectors.push_back(is_known(scaled) ? scaled : FlowField::Vector{kUnknownFlow, kUnknownFlow});
    }
    return field;
}

}  // namespace

FlowFields flow_fields(const std::string& subject, const pictures::Picture& first, const pictures::Picture& second,
                       const QX_Solvan_AlgoParams& params, pictures::Watch& watch) {
    auto a = at_working_depth(subject, first), b = at_working_depth(subject, second);
    if (a->Depth() != b->Depth()) {
        const int depth = std::max(a->Depth(), b->Depth());
        a = pictures::at_depth(subject, *a, depth);
        b = pictures::at_depth(subject, *b, depth);
    }
    const int width = a->width, height = a->height;
    // As a render converts them, so that both have the same vectors.
    const QX_AdvancedFrameBlending converted(in_percent(fitted(params, width, height)), {}, {});
    if (const int code = converted.CheckParamRange()) must(code, subject);
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<HvVec2> forward(count), backward(count);
    const auto field_buffer = [&](std::vector<HvVec2>& field) {
        return YetAnotherImgBuffer{static_cast<std::uint32_t>(width),
                                   static_cast<std::uint32_t>(height),
                                   32,
                                   2,
                                   static_cast<std::int32_t>(sizeof(HvVec2)) * width,
                                   field.data()};
    };
    YetAnotherImgBuffer first_buffer = buffer_of(*a), second_buffer = buffer_of(*b);
    YetAnotherImgBuffer forward_buffer = field_buffer(forward), backward_buffer = field_buffer(backward);
    void* heard = &watch;
    const QX_Solvan_InterruptFuncs interrupt{stop_code, &heard};
    must(calcSolvanOpticalFlowParamsNoIpl(converted.algo(), &interrupt, &first_buffer, &second_buffer, nullptr, nullptr,
                                          &forward_buffer, &backward_buffer, nullptr),
         subject);
    const float detail = converted.algo().vectorDetail;
    return {in_pixels(forward, width, height, detail), in_pixels(backward, width, height, detail)};
}

}  // namespace qx::scene
