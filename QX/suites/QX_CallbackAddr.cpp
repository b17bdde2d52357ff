// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Report.h"
#include "QX/suites/QX_CallbackBlock.h"
#include "QX/suites/QX_CallbackPick.h"

namespace {

using qx::Private;
namespace picks = qx::picks;

constexpr int kPlace = 1;

struct Entry {
    int selector;
    qx::Pick pick;
};

constexpr Entry kSelectors[] = {
    {-13, 92},
    {-12, 61},
    {-11, 60},
    {-9, 58},
    {-8, 57},
    {-6, 54},
    {-5, Private::gaussian_value},
    {-4, Private::insert_planes},
    {-3, Private::extract_planes},
    {-2, picks::by_alpha(26, 27)},
    {-1, Private::paint_spot},
    {1, 0},
    {2, picks::subpixel_sample},
    {3, picks::area_sample},
    {4, Private::batch_sample},
    {5, 1},
    {6, picks::composite_rect},
    {7, picks::blend},
    {8, 28},
    {9, picks::copy},
    {10, Private::fill},
    {11, Private::gaussian_kernel},
    {12, 42},
    {13, Private::premultiply},
    {14, Private::premultiply_color},
    {15, picks::colour(0)},
    {16, picks::colour(1)},
    {17, picks::colour(2)},
    {18, picks::colour(3)},
    {19, picks::colour(4)},
    {20, picks::colour(5)},
    {21, picks::colour(6)},
    {22, picks::colour(7)},
    {23, Private::new_world},
    {24, Private::dispose_world},
    {25, 43},
    {26, 44},
    {27, Private::transfer_rect},
    {28, Private::transform_world},
    {29, 51},
    {30, 53},
    {31, picks::subpixel_sample16},
    {32, picks::area_sample16},
    {33, Private::fill16},
    {34, Private::premultiply_color16},
    {35, 42},
    {36, 43},
    {37, 51},
};

const Entry* find(int selector) {
    for (const Entry& entry : kSelectors) {
        if (entry.selector == selector) return &entry;
    }
    return nullptr;
}

}  // namespace

int QX_GetCallbackAddr(void*, int quality, unsigned char flags, int selector, void** out) {
    if (out == nullptr) return qx::report_bad_parameter(kPlace);
    const Entry* entry = find(selector);
    *out = entry != nullptr ? entry->pick.at(quality, flags).address() : nullptr;
    if (entry != nullptr) return kQX_NoError;
    qx::report_text(kPlace, qx::Text::invalid_selector);
    return kQX_UnknownSelector;
}
