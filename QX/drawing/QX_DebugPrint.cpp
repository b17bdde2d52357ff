// SPDX-License-Identifier: Apache-2.0
#include "QX/drawing/QX_DebugPrint.h"

#include <cstdarg>
#include <cstdio>

#include "QX/compositing/QX_XferTables.h"
#include "QX/drawing/QX_DebugFont.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_DepthSteps.h"
#include "QX/indep/QX_Report.h"

namespace {

constexpr std::size_t kLongestText = 1024;
constexpr int kTabColumns = 24;

/// One colour, laid over pixels of one depth.
template <class Pixel> class Pen {
public:
    Pen(const QX_PixelFloat& colour, QX_Xfer1_Opacity<Pixel> over)
        : colour_(qx::colour_argument<Pixel>(&colour)), over_(over) {}

    /// The top row of a cell stays free: its last one lies at y + 10.
    void draw(const QX_LayerDef& world, int x, int y, char character) const {
        for (int row = 0; row < qx::kDebugGlyphHeight; ++row) {
            auto* pixels = qx::pixel_at<Pixel>(world, x, y + row + 1);
            for (int column = 0; column < qx::kDebugGlyphWidth; ++column) {
                if (qx::debug_font_covers(character, column, row)) put(pixels[column]);
            }
        }
    }

private:
    void put(Pixel& pixel) const {
        over_(&colour_, nullptr, static_cast<QX_ChannelOf<Pixel>>(qx::DepthOf<Pixel>::full), &pixel);
    }

    Pixel colour_;
    QX_Xfer1_Opacity<Pixel> over_;
};

bool fits(const QX_LayerDef& world, std::int64_t x, std::int64_t y) {
    return x >= 0 && x + qx::kDebugGlyphWidth < world.width && y >= 0 && y + qx::kDebugGlyphHeight < world.height;
}

template <class Pixel>
void print(const QX_LayerDef& world, std::int64_t x, std::int64_t y, const Pen<Pixel>& pen, const char* text) {
    const std::int64_t start = x;
    for (; *text != 0; ++text) {
        switch (*text) {
            case '\t':
                x = x % 4 + kTabColumns;
                break;
            case '\n':
                y += qx::kDebugGlyphHeight;
                x = start;
                break;
            case '\r':
                break;
            default:
                if (fits(world, x, y)) pen.draw(world, static_cast<int>(x), static_cast<int>(y), *text);
                x += qx::kDebugGlyphWidth;
        }
    }
}

}  // namespace

void QX_DebugPrint(QX_World* world, int x, int y, const QX_PixelFloat& colour, const char* format, ...) {
    char text[kLongestText];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (length < 0) return;
    switch (world->Depth()) {
        case 8:
            return print(*world, x, y, Pen<QX_Pixel8>(colour, QX_Get_Xfer1_Opacity_table8(xfer_over)), text);
        case 16:
            return print(*world, x, y, Pen<QX_Pixel16>(colour, QX_Get_Xfer1_Opacity_table16(xfer_over)), text);
        default:
            throw qx::report_failed_verification(qx::Place::debug_print,
                                                 "QX_DebugPrint draws on worlds of 8 and 16 bits only");
    }
}
