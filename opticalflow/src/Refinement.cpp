// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/Refinement.h"

#include "opticalflow/src/CandidateRows.h"
#include "opticalflow/src/GeneralSampler.h"
#include "opticalflow/src/NeighbourMean.h"

namespace solvan_of {
namespace {

qx::FlowImage image_of(const FloatTexture& texture) { return {texture.row(0), texture.width(), texture.height()}; }

}  // namespace

void FnMotionEstimateGradientSmoothVectorsInitialAssignment::processPart(int part) {
    const PartRows mine = rows_of(part);
    if (mine.begin >= mine.end) return;
    if (is_quick()) return assign_quickly(part);
    PixelChoices choices(width_);
    RandomSequence random(0);
    for_rows(part, [&](std::int32_t y) { assign_row(y, random, choices); });
}

/// The lanes' form has room for blocks of ordinary size, and knows no mask.
bool FnMotionEstimateGradientSmoothVectorsInitialAssignment::is_quick() const {
    return images_.mask == nullptr && looks_at_neighbours && block_width == block_height &&
           block_width - overlap / 2 <= qx::kMostReach;
}

void FnMotionEstimateGradientSmoothVectorsInitialAssignment::assign_quickly(int part) {
    const std::int32_t reach = block_width - overlap / 2;
    CandidateRows rows(width_, reach);
    qx::AssignRow row{.image = image_of(*images_.first),
                      .data_weight = FnMotionEstimateGradientSmoothVectorsParameters::data_weight,
                      .width = width_,
                      .reach = reach,
                      .settle = &lowest_after_shuffle};
    for_rows(part, [&](std::int32_t y) {
        rows.around(*second_, y, row.rows);
        row.y = y;
        row.here = images_.second->row(y);
        row.out = first_->row(y);
        kernels().choice->assign(row);
    });
}

// The field of blocks has the same vector all over a block: a step of a block's own pixels leads to its neighbour's.
void FnMotionEstimateGradientSmoothVectorsInitialAssignment::add_candidates(std::int32_t x, std::int32_t y,
                                                                            PixelChoices::List& list) const {
    const auto add = [&](std::int32_t nx, std::int32_t ny) {
        if (nx >= 0 && ny >= 0 && nx < second_->width() && ny < second_->height()) list.add(second_->at(nx, ny));
    };
    if (looks_at_neighbours) {
        const std::int32_t half = overlap / 2, sx = block_width - half, sy = block_height - half;
        for (const std::int32_t dx : {-sx, 0, sx})
            for (const std::int32_t dy : {-sy, 0, sy})
                if (dx != 0 || dy != 0) add(x + dx, y + dy);
    }
    add(x, y);
}

void FnMotionEstimateGradientSmoothVectorsInitialAssignment::assign_row(std::int32_t y, RandomSequence& random,
                                                                        PixelChoices& choices) {
    choices.clear();
    for (std::int32_t x = 0; x < width_; ++x) {
        PixelChoices::List list;
        add_candidates(x, y, list);
        list.filter();
        const std::uint32_t state = random.state();
        const bool is_masked = images_.mask != nullptr && images_.mask->at(x, y) > 0.5f;
        if (list.count() > 1 && !is_masked) {
            random.skip(draws_of_shuffle(list.count()));
            choices.add(x, y, list, state);
        } else if (list.count() > 0) {
            list.shuffle(random);
            first_->at(x, y) = list[0];
        }
    }
    choices.sample(*images_.first);
    const float weight = FnMotionEstimateGradientSmoothVectorsParameters::data_weight;
    for (const PixelChoices::Pixel& pixel : choices) {
        float costs[PixelChoices::kMost];
        const float here = images_.second->at(pixel.x, y);
        for (int i = 0; i < pixel.count; ++i) costs[i] = data_cost(choices.samples(pixel)[i] - here, weight);
        first_->at(pixel.x, y) = choices.vectors(pixel)[lowest_after_shuffle(costs, pixel.count, pixel.state)];
    }
}

void FnMotionEstimateGradientSmoothVectorsSinglePass::prePass() {
    if (!borders_.save(*first_)) state().stop(4);
}

void FnMotionEstimateGradientSmoothVectorsSinglePass::processPart(int part) {
    const PartRows mine = rows_of(part);
    if (mine.begin >= mine.end) return;
    if (images_.mask == nullptr) return refine_quickly(part, mine);
    PixelChoices choices(width_);
    RandomSequence random(0);
    for_rows(part, [&](std::int32_t y) {
        find_choices(y, random, choices);
        choices.sample(*images_.first);
        choose(y, choices, [&](std::int32_t row) { return borders_.row(*first_, part, mine, row); });
    });
}

void FnMotionEstimateGradientSmoothVectorsSinglePass::refine_quickly(int part, const PartRows& mine) {
    CandidateRows rows(width_, 1);
    qx::RefineRow row{.image = image_of(*images_.first),
                      .data_weight = data_weight,
                      .smoothness = smoothness_weight,
                      .width = width_,
                      .settle = &lowest_after_shuffle};
    for_rows(part, [&](std::int32_t y) {
        rows.around(*monitor_, y, row.rows);
        row.y = y;
        row.here = images_.second->row(y);
        row.row = first_->row(y);
        row.above = borders_.row(*first_, part, mine, y - 1);
        row.below = borders_.row(*first_, part, mine, y + 1);
        kernels().choice->refine(row);
    });
}

void FnMotionEstimateGradientSmoothVectorsSinglePass::find_choices(std::int32_t y, RandomSequence& random,
                                                                   PixelChoices& choices) {
    choices.clear();
    for (std::int32_t x = 0; x < width_; ++x) {
        PixelChoices::List list;
        list.add(first_->at(x, y));
        monitor_->add_changed_neighbours(x, y, list);
        if (list.count() == 1) continue;
        list.filter();
        const std::uint32_t state = random.state();
        random.skip(draws_of_shuffle(list.count()));
        const bool stays = list.count() == 0 || (list.count() == 1 && equal(list[0], first_->at(x, y)));
        if (!stays) choices.add(x, y, list, state);
    }
}

template <class RowOf>
void FnMotionEstimateGradientSmoothVectorsSinglePass::choose(std::int32_t y, const PixelChoices& choices,
                                                             const RowOf& row_of) {
    const float masked_cost = data_weight / 123.0f * 65535.0f * 123.0f;
    for (const PixelChoices::Pixel& pixel : choices) {
        const bool is_masked = images_.mask != nullptr && images_.mask->at(pixel.x, y) > 0.5f;
        const HvVec2 mean = qx::mean_around({row_of(y - 1), row_of(y), row_of(y + 1)}, pixel.x, width_);
        const float here = images_.second->at(pixel.x, y);
        const HvVec2* const vectors = choices.vectors(pixel);
        float costs[PixelChoices::kMost];
        for (int i = 0; i < pixel.count; ++i) {
            const float data = is_masked ? masked_cost : data_cost(choices.samples(pixel)[i] - here, data_weight);
            costs[i] = data + distance(mean, vectors[i]) * smoothness_weight * 8.0f;
        }
        first_->at(pixel.x, y) = vectors[lowest_after_shuffle(costs, pixel.count, pixel.state)];
    }
}

void refine(InterruptState& state, const FnMotionEstimateGradientSmoothVectorsParameters& parameters,
            const FnMotionEstimateGradientBlockParameters& blocks, const ImagePair& images, FieldTexture& input,
            FieldTexture& output) {
    output.setAddressing(Addressing::background, Addressing::background);
    output.background = {0, 0};
    output.setIntegerOffset(0, 0);
    if (images.first == nullptr || images.second == nullptr) {
        ColouredFrameGenerator<HvVec2>(state, {0, 0}).process(&output);
        return;
    }
    FnMotionEstimateGradientSmoothVectorsInitialAssignment assignment(state, images);
    static_cast<FnMotionEstimateGradientBlockParameters&>(assignment) = blocks;
    static_cast<FnMotionEstimateGradientSmoothVectorsParameters&>(assignment) = parameters;
    assignment.process(&output, &input);
    FnMotionEstimateGradientChangedNeighboursMonitor monitor(state);
    monitor.treat_all_as_changed();
    if (!state.is_stopped()) monitor.process(&output);
    FnMotionEstimateGradientSmoothVectorsSinglePass pass(state, images, monitor);
    static_cast<FnMotionEstimateGradientSmoothVectorsParameters&>(pass) = parameters;
    for (int k = 0; k < parameters.iterations && !state.is_stopped(); ++k) {
        pass.process(&output);
        if (k + 1 < parameters.iterations && !state.is_stopped()) monitor.process(&output);
    }
}

}  // namespace solvan_of
