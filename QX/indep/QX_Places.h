// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Where reports come from: every report carries the library's number with one of these places in it.
namespace qx {

/// As X(name, number). Hosts know some of the numbers; none stands for more than one place.
#define QX_PLACES(X)           \
    X(callback_address, 1)     \
    X(new_effect_world, 2)     \
    X(dispose_effect_world, 3) \
    X(extract_planes, 4)       \
    X(insert_planes, 5)        \
    X(callback_routine, 6)     \
    X(paint_spot, 9)           \
    X(birth, 10)               \
    X(empty_slot, 11)          \
    X(blend, 12)               \
    X(missing_pixels, 13)      \
    X(iterate, 14)             \
    X(world_depth, 20)         \
    X(set_world_depth, 21)     \
    X(depth_to_format, 22)     \
    X(format_to_depth, 23)     \
    X(fill_gpu, 30)            \
    X(fill_depth, 31)          \
    X(re_reference, 40)        \
    X(shrink, 41)              \
    X(new_reference, 42)       \
    X(world_size, 45)          \
    X(copy_rect, 46)           \
    X(copy_bits_draft, 48)     \
    X(copy_bits_straight, 49)  \
    X(copy_bits_premul, 50)    \
    X(copy_bits_matrix, 51)    \
    X(draw_line, 55)           \
    X(debug_print, 56)         \
    X(blit, 57)                \
    X(pixel_data, 58)          \
    X(iterate_pixels, 59)      \
    X(sampler, 60)             \
    X(frame_allocation, 66)    \
    X(iterate_generic, 70)     \
    X(channel_copy, 72)        \
    X(premul, 80)              \
    X(premul_colour, 81)       \
    X(iterate_origin, 82)      \
    X(composite_rect, 83)      \
    X(iterate_bands, 85)       \
    X(transform_bands, 86)     \
    X(depth_convert, 90)       \
    X(linear_row, 91)          \
    X(unimplemented_mode, 92)  \
    X(scratch, 94)             \
    X(transfer, 95)            \
    X(transform, 96)           \
    X(premul_bands, 97)        \
    X(convolve, 110)           \
    X(mask_buffer, 111)        \
    X(gaussian_kernel, 112)    \
    X(blur, 113)               \
    X(merge_mask, 114)         \
    X(lazy_tiles, 115)         \
    X(summed_areas, 116)       \
    X(handles, 117)            \
    X(suites, 118)             \
    X(chunk, 119)              \
    X(colour_apply, 120)       \
    X(linear_tables, 121)      \
    X(colour_settings, 122)    \
    X(frame_blending, 123)

enum class Place : int {
#define X(name, number) name = number,
    QX_PLACES(X)
#undef X
};

/// No number stands for two places: the list is in rising order.
constexpr bool places_rise() {
    int before = 0;
    bool rise = true;
#define X(name, number)             \
    rise = rise && number > before; \
    before = number;
    QX_PLACES(X)
#undef X
    return rise;
}
static_assert(places_rise());

/// Every report carries the library's number with a place in it.
constexpr int site(int place) { return 0x250000 | place; }
constexpr int site(Place place) { return site(static_cast<int>(place)); }

/// The tag of frames in the host's recycled memory. Kept: its number is also that of `dispose_effect_world`.
inline constexpr int kFrameSite = site(3);

}  // namespace qx
