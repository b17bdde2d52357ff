// SPDX-License-Identifier: Apache-2.0
// Filters through the library: a mask buffer that is filled tile by tile where it is looked at, means of rectangles
// from a table, and a convolution as effect plug-ins reach it, through the callback block.
#include <QX/QX.h>

#include <cstdio>
#include <memory>

namespace {

/// Counts the tiles that are filled.
class CountedFill : public QX_LazyFillUnoBufferOperator {
public:
    using QX_LazyFillUnoBufferOperator::QX_LazyFillUnoBufferOperator;
    int runs = 0;

protected:
    void DoItImp(const M_Rect& rect) override {
        ++runs;
        QX_LazyFillUnoBufferOperator::DoItImp(rect);
    }
};

void tiles_over_a_mask() {
    boost::scoped_ptr<QX_UnoBuffer> mask(new QX_UnoBuffer(4000, 3000, 8));
    auto* const fill = new CountedFill(&mask, 255);
    boost::scoped_ptr<QX_LazyOperator> work(fill);
    QX_LazyTiles tiles(64, &work);
    tiles.MakeValid({100, 100, 200, 300});  // top, left, bottom, right: three rows of tiles
    tiles.MakeValid({100, 100, 200, 300});  // there already
    std::printf("tiles: %d runs fill what is looked at\n", fill->runs);
}

void means_from_a_table(const QX_World& world) {
    const QX_SummedAreaTable table(&world, false);
    QX_Pixel8 mean{};
    QX_SummedAreaTable_SampleDraft(world.width, world.height, table.float_table, 0, 0, 32, 64, &mean);
    std::printf("table: the left half's mean is %d, %d, %d\n", mean.red, mean.green, mean.blue);
}

void convolve_as_plug_ins_do(const QX_World& world) {
    using Convolve =
        int(const QX_ProgressInfo*, const QX_LayerDef*, const M_LRect*, std::uint32_t, std::int32_t,
            const std::int32_t*, const std::int32_t*, const std::int32_t*, const std::int32_t*, QX_LayerDef*);
    QX_CallbackBlock block;
    QX_GetCallbackBlock(1, 1, &block);
    auto* const convolve = reinterpret_cast<Convolve*>(block.fields[kQX_CB_convolve]);
    const std::int32_t edges[9] = {-1, -1, -1, -1, 8, -1, -1, -1, -1}, same[9] = {0, 0, 0, 0, 1, 0, 0, 0, 0};
    const std::unique_ptr<QX_World> out(QX_World::New(world.width, world.height, 8, 1));
    QX_LayerDef from{}, to{};
    world.FillOutEffectWorld(&from);
    out->FillOutEffectWorld(&to);
    const int code = convolve(nullptr, &from, nullptr, kQX_Convolve_Normalise, 3, same, edges, edges, edges, &to);
    const auto* const row =
        reinterpret_cast<const QX_Pixel8*>(static_cast<const std::byte*>(to.data) + 20 * to.rowbytes);
    std::printf("convolve: code %d, %d at the edge, %d beside it\n", code, row[32].red, row[10].red);
}

}  // namespace

int main() {
    if (const int code = QX_Birth()) return code;
    {
        // Black on the left, white on the right.
        const std::unique_ptr<QX_World> world(QX_World::New(64, 64, 8, 1));
        const M_LRect right{32, 0, 64, 64};
        world->Fill(QX_PixelFloat{1, 0, 0, 0}, nullptr);
        world->Fill(QX_PixelFloat{1, 1, 1, 1}, &right);
        tiles_over_a_mask();
        means_from_a_table(*world);
        convolve_as_plug_ins_do(*world);
    }
    QX_Death();
    return 0;
}
