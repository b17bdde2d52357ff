// SPDX-License-Identifier: Apache-2.0
// A layer over a plate: a world of the library's own, a record around pixels of the program's, a mode and a mask.
#include <QX/QX.h>

#include <cstdio>
#include <vector>

namespace {

constexpr int kWidth = 64, kHeight = 32;

/// A record around 8-bit pixels that stay the program's.
QX_LayerDef around(std::vector<QX_Pixel8>& pixels) {
    QX_LayerDef record{};
    record.data = pixels.data();
    record.rowbytes = kWidth * static_cast<int>(sizeof(QX_Pixel8));
    record.width = kWidth;
    record.height = kHeight;
    record.extent_hint = {0, 0, kWidth, kHeight};
    QXp_SetWorldDepth(&record, 8);
    return record;
}

}  // namespace

int main() {
    if (const int code = QX_Birth()) return code;
    std::vector<QX_Pixel8> pixels(kWidth * kHeight, QX_Pixel8{255, 100, 150, 200});
    QX_LayerDef plate = around(pixels), layer{};
    int code = QX_NewEffectWorld(kWidth, kHeight, 8, kQX_Reserved, kQX_ClearPixels, &layer);
    const QX_Pixel8 grey{255, 128, 128, 128};
    if (code == 0) code = QX_Fill(nullptr, &grey, nullptr, &layer);

    // The mask covers the left half, and half of the rest.
    std::vector<QX_Pixel8> covers(kWidth * kHeight, QX_Pixel8{128, 255, 255, 255});
    QX_MaskWorld mask{around(covers), 0, 0, kQX_MaskAlpha};
    const QX_Pixel8 full{255, 255, 255, 255};
    const M_LRect left{0, 0, kWidth / 2, kHeight}, whole{0, 0, kWidth, kHeight};
    if (code == 0) code = QX_Fill(nullptr, &full, &left, &mask.world);

    const QX_CompositeModePlus mode(xfer_multiply, 1.0f, nullptr, false, 0);
    if (code == 0) {
        code = QX_TransferRect(nullptr, kQX_QualityBilinear, kQX_NoFlags, kQX_AllRows, &whole, &layer, &mode, nullptr,
                               &mask, 0, 0, &plate);
    }
    std::printf("composite: code %d, red is %d where the layer covers, %d where half of it does\n", code, pixels[0].red,
                pixels[kWidth - 1].red);
    QX_DisposeEffectWorld(&layer);
    QX_Death();
    return code;
}
