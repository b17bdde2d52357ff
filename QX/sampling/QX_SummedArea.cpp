// SPDX-License-Identifier: Apache-2.0
// Building of summed-area tables: memory, and which kernel a world takes.
#include "QX/sampling/QX_SummedArea.h"

#include <memory>

#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/sampling/QX_SummedAreaKernels.h"
#include "platform/TK_Memory.h"

namespace {

using namespace qx;

const SummedAreaKernels* kernels = &plain::summed_area_kernels;

constexpr SharesOf8 make_shares() {
    SharesOf8 shares{};
    for (int alpha = 0; alpha < 256; ++alpha) {
        shares.of[alpha][0] = 1.0;
        for (int i = 1; i < 4; ++i) shares.of[alpha][i] = alpha / 255.0;
    }
    return shares;
}

/// A row of sums, which the host's books know while it lives. Its contents begin at zero.
class RowOfSums {
public:
    explicit RowOfSums(std::size_t cells) : bytes_(cells * sizeof(QX_PixelDouble)) {
        throw_if(TK_ResizePtr(bytes_, &block_));
        TK_AccountAllocationEx(text_of(Text::blurring), static_cast<std::int64_t>(bytes_));
        std::uninitialized_value_construct_n(first(), cells);
    }
    ~RowOfSums() {
        TK_AccountAllocationEx(text_of(Text::blurring), -static_cast<std::int64_t>(bytes_));
        TK_FreePtr(block_);
    }
    RowOfSums(const RowOfSums&) = delete;
    RowOfSums& operator=(const RowOfSums&) = delete;

    QX_PixelDouble* first() const { return static_cast<QX_PixelDouble*>(block_); }

private:
    const std::size_t bytes_;
    void* block_ = nullptr;
};

/// Memory that goes back to the host unless it is released.
struct FreePtr {
    void operator()(void* block) const { TK_FreePtr(block); }
};

const QX_World& must_have_pixels(const QX_World* src) {
    if (is_gpu_world(src)) throw report_gpu_world(Place::summed_areas);
    if (src == nullptr || src->data == nullptr || src->width < 1 || src->height < 1) {
        throw report_bad_parameter(Place::summed_areas);
    }
    return *src;
}

template <class Pixel, class Cell> Cell* make_table(const QX_World& src, SumWorld<Pixel, Cell>* sum_world) {
    const auto columns = static_cast<std::size_t>(src.width), rows = static_cast<std::size_t>(src.height);
    const std::size_t bytes = columns * rows * sizeof(Cell);
    void* const memory = TK_AllocatePtr(site(Place::summed_areas), text_of(Text::blurring), bytes);
    if (memory == nullptr) throw static_cast<int>(kQX_OutOfMemory);
    std::unique_ptr<Cell, FreePtr> table(static_cast<Cell*>(memory));
    const RowOfSums above(columns + 1), made(columns + 1);
    sum_world(src, {above.first(), made.first()}, table.get());
    return table.release();
}

}  // namespace

constinit const qx::SharesOf8 qx::shares_of_8 = make_shares();

void qx::choose_summed_area_kernels(Level level) { kernels = &summed_area_kernels_of(level); }

QX_SummedAreaTable::QX_SummedAreaTable(const QX_World* src, bool doubles)
    : float_table(nullptr),
      double_table(nullptr),
      width(must_have_pixels(src).width),
      height(src->height),
      use_double(doubles) {
    must_have_depth(
        src->Depth(), Place::summed_areas,
        [&]<class Pixel>() {
            const SummedAreas<Pixel>& sums = kernels->of<Pixel>();
            use_double |= sums.in_floats == nullptr;
            if (use_double) {
                double_table = make_table<Pixel>(*src, sums.in_doubles);
            } else {
                float_table = make_table<Pixel>(*src, sums.in_floats);
            }
        },
        kUnknownDepth);
}

QX_SummedAreaTable::~QX_SummedAreaTable() {
    TK_FreePtr(float_table);
    TK_FreePtr(double_table);
}
