// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Report.h"
#include "QX/suites/QX_CallbackBlock.h"
#include "QX/suites/QX_CallbackPick.h"

namespace {

using qx::Private;
using qx::Slot;
namespace picks = qx::picks;

struct Entry {
    int selector;
    qx::Pick pick;
};

constexpr Entry kSelectors[] = {
    {-13, Slot::BoxBlurDeepUnoScan},
    {-12, Slot::SubpixelNoClip},
    {-11, Slot::SubpixelPlus},
    {-9, Slot::SubpixelTranslate},
    {-8, Slot::SampleWeight},
    {-6, Slot::BoxBlurUnoScan},
    {-5, Private::gaussian_value},
    {-4, Private::insert_planes},
    {-3, Private::extract_planes},
    {-2, picks::by_alpha(Slot::FastBlur, Slot::FastBlurPremul)},
    {-1, Private::paint_spot},
    {1, Slot::None0},
    {2, picks::subpixel_sample},
    {3, picks::area_sample},
    {4, Private::batch_sample},
    {5, Slot::None1},
    {6, picks::composite_rect},
    {7, picks::blend},
    {8, Slot::Convolve},
    {9, picks::copy},
    {10, Private::fill},
    {11, Private::gaussian_kernel},
    {12, Slot::Iterate},
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
    {25, Slot::IterateOrigin},
    {26, Slot::IterateLUT},
    {27, Private::transfer_rect},
    {28, Private::transform_world},
    {29, Slot::IterateOriginNoClip},
    {30, Slot::IterateGeneric},
    {31, picks::subpixel_sample16},
    {32, picks::area_sample16},
    {33, Private::fill16},
    {34, Private::premultiply_color16},
    {35, Slot::Iterate},
    {36, Slot::IterateOrigin},
    {37, Slot::IterateOriginNoClip},
};

const Entry* find(int selector) {
    for (const Entry& entry : kSelectors) {
        if (entry.selector == selector) return &entry;
    }
    return nullptr;
}

}  // namespace

int QX_GetCallbackAddr(void*, int quality, unsigned char flags, int selector, void** out) {
    if (out == nullptr) return qx::report_bad_parameter(qx::Place::callback_address);
    const Entry* entry = find(selector);
    *out = entry != nullptr ? entry->pick.at(quality, flags).address() : nullptr;
    if (entry != nullptr) return kQX_NoError;
    qx::report_text(qx::Place::callback_address, qx::Text::invalid_selector);
    return kQX_UnknownSelector;
}
