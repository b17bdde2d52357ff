// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// Half-open rectangle: `right` and `bottom` are one past the last column and row.
struct M_LRect {
    std::int32_t left, top, right, bottom;
    friend constexpr bool operator==(const M_LRect& a, const M_LRect& b) {
        return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
    }
    friend constexpr bool operator!=(const M_LRect& a, const M_LRect& b) { return !(a == b); }
};

/// The same meaning in 16 bits, with another order of fields: `top` comes first.
struct M_Rect {
    std::int16_t top, left, bottom, right;
};

struct M_LPoint {
    std::int32_t x, y;
};

template <class T> struct M_Vector2T { T x, y; };

static_assert(sizeof(M_LRect) == 16 && offsetof(M_LRect, top) == 4 && offsetof(M_LRect, right) == 8);
static_assert(sizeof(M_Rect) == 8 && offsetof(M_Rect, left) == 2 && offsetof(M_Rect, bottom) == 4);
static_assert(sizeof(M_LPoint) == 8);

/// A rectangle is empty when it has no column or no row.
constexpr bool M_EmptyLRect(const M_LRect& r) { return r.right <= r.left || r.bottom <= r.top; }

template <class Number> struct RectT { Number left, top, right, bottom; };

constexpr M_LRect M_RectToLRect(const M_Rect& r) { return {r.left, r.top, r.right, r.bottom}; }

/// The negative in two's complement; the least number stays as it is.
constexpr std::int32_t M_WrappingNegate(std::int32_t x) {
    return static_cast<std::int32_t>(0u - static_cast<std::uint32_t>(x));
}

/// Moves a rectangle; wraps in two's complement as the host's routine does.
constexpr M_LRect M_OffsetLRect(const M_LRect& r, std::int32_t dx, std::int32_t dy) {
    const auto add = [](std::int32_t a, std::int32_t b) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
    };
    return {add(r.left, dx), add(r.top, dy), add(r.right, dx), add(r.bottom, dy)};
}

/// Section of two rectangles into `*out` (which may be one of them).
/// @return false, with `*out` all zero, when they have no pixel in common.
inline bool M_SectLRect(const M_LRect& a, const M_LRect& b, M_LRect* out) {
    const M_LRect r{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                    std::min(a.bottom, b.bottom)};
    *out = M_EmptyLRect(r) ? M_LRect{} : r;
    return !M_EmptyLRect(r);
}

/// Smallest rectangle around both; the union with an empty rectangle is the other one.
inline void M_UnionLRect(const M_LRect& a, const M_LRect& b, M_LRect* out) {
    if (M_EmptyLRect(a)) {
        *out = b;
    } else if (M_EmptyLRect(b)) {
        *out = a;
    } else {
        *out = {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
                std::max(a.bottom, b.bottom)};
    }
}

/// Moves every edge inwards by (dx, dy); negative values grow the rectangle.
inline void M_InsetLRect(M_LRect* r, std::int32_t dx, std::int32_t dy) {
    *r = {r->left + dx, r->top + dy, r->right - dx, r->bottom - dy};
}
