// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "opticalflow/src/FlowBox.h"
#include "opticalflow/src/Imager.h"

namespace solvan_of {

/// Rows of floats that a blur reads: a texture's, or made as they are wanted.
class FloatRows {
public:
    explicit FloatRows(const FnTexIndexer& shape, float background) : shape_(&shape), background_(background) {}
    virtual ~FloatRows() = default;

    const FnTexIndexer& shape() const { return *shape_; }
    float background() const { return background_; }
    /// Rows [first, first + count). @param room  for kMostLanes rows, to be used where the rows are made
    /// @param step  floats from one row to the next
    virtual const float* rows(std::int32_t first, std::int32_t count, float* room, std::ptrdiff_t* step) const = 0;

private:
    const FnTexIndexer* shape_;
    float background_;
};

class TextureRows : public FloatRows {
public:
    explicit TextureRows(const FloatTexture& texture) : FloatRows(texture, texture.background), texture_(&texture) {}
    const float* rows(std::int32_t first, std::int32_t, float*, std::ptrdiff_t* step) const override {
        *step = texture_->row_bytes / std::ptrdiff_t{sizeof(float)};
        return texture_->row(first);
    }

private:
    const FloatTexture* texture_;
};

/// Which pixels of an axis a smaller image takes, rising.
using Picks = std::vector<std::int32_t>;
Picks all_of(const TexAxis& axis);

/// A box of fractional radius, run several times along rows and then along columns: nearly a Gaussian. The target may
/// be smaller than the source: it then gets the blurred pixels that `picks` tell.
class BlurGeneralGauss : public Sampler<FloatRows, FloatTexture> {
public:
    using Sampler::Sampler;

    float radius_x = 0, radius_y = 0;
    int box_passes = 3;
    Picks columns, rows;  ///< empty: all

protected:
    void preProcess(const FloatRows& in, FloatTexture& out) override;
    void processPart(const FloatRows& in, FloatTexture& out, int part) override;

private:
    void blur_rows(const FloatRows& in, int part);
    void blur_columns(const FloatRows& in, FloatTexture& out, int part);
    void copy_rows(const FloatRows& in, FloatTexture& out, int part) const;

    qx::BoxShape across_{}, down_{};
    std::vector<std::int32_t> column_index_, row_index_;  ///< which pixel is read, a margin beside both ends
    FloatTexture between_;                                ///< blurred along rows: columns that were picked, all rows
};

}  // namespace solvan_of
