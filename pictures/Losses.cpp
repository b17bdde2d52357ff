// SPDX-License-Identifier: Apache-2.0
#include "pictures/Losses.h"

#include <Imath/half.h>

#include <algorithm>
#include <cmath>

#include "pictures/Carried.h"
#include "pictures/Exr.h"
#include "pictures/Light.h"
#include "pictures/Profiles.h"

namespace qx::pictures {
namespace {

constexpr const char* kBeyondIsCut = "values below 0 and above 1 are cut, only floats hold them";

/// Halves have a longer range than 16 bits, which have finer steps; 8 bits survive in either.
bool loses(Precision from, Precision to) { return together(from, to) != to; }

std::string becomes(Precision from, Precision to) {
    constexpr const char* words[] = {"8 bits", "16 bits", "half floats", "floats"};
    return std::string("its ") + words[static_cast<int>(from)] + " become " + words[static_cast<int>(to)];
}

template <class Is> bool any_channel(const QX_World& world, const Is& is) {
    return any_pixel<QX_PixelFloat>(
        world, [&](const QX_PixelFloat& p, int, int) { return is(p.alpha) || is(p.red) || is(p.green) || is(p.blue); });
}

bool any_beyond(const QX_World& world) {
    constexpr float nearest = 0.5f / 65535;  // what is so near is not cut, it is rounded
    return world.Depth() == 32 && any_channel(world, [](float v) { return !(v >= -nearest && v <= 1 + nearest); });
}

bool lies_outside(const Picture& picture) { return picture.window && !picture.window->outside.empty(); }

bool overflows(float v) { return std::isfinite(v) && half(v).isInfinity(); }
bool overflows(const QX_PixelFloat& p) {
    return overflows(p.alpha) || overflows(p.red) || overflows(p.green) || overflows(p.blue);
}

bool any_overflow(const Picture& picture) {
    const auto is_one = [](const QX_PixelFloat& p) { return overflows(p); };
    if (lies_outside(picture) && std::any_of(picture.window->outside.begin(), picture.window->outside.end(), is_one)) {
        return true;
    }
    if (picture.world->Depth() != 32) return false;
    return any_pixel<QX_PixelFloat>(
        *picture.world, [&](const QX_PixelFloat&, int x, int y) { return overflows(associated_pixel(picture, x, y)); });
}

/// What a file of this format does not tell of the colours: a note, or null. A plain sRGB is what all take for granted
/// of whole numbers, and on floats there is a note of its own.
const char* unsaid_colours(const Format& format, const ColourTags& tags) {
    if (format.linear && tags.primaries) return nullptr;
    if (!tags.icc.bytes.empty()) return profile_hindrance(format, tags);
    if (tags.primaries) return "its primaries are left out, only OpenEXR holds them";
    if (&format == &png_format() || tags.png.intent || tags.png.is_near_srgb()) return nullptr;
    return "what its chunks gAMA and cHRM say is left out, only PNG holds them";
}

}  // namespace

Precision together(Precision a, Precision b) {
    const bool both = std::min(a, b) == Precision::sixteen && std::max(a, b) == Precision::half;
    return both ? Precision::real : std::max(a, b);
}

void add_precision(Picture& onto, const Picture& layer) {
    onto.precision = together(onto.precision, layer.precision);
    onto.half = onto.half && !loses(onto.precision, Precision::half);
}

std::vector<std::string> lost_at_depth(const Picture& picture, int depth) {
    std::vector<std::string> notes;
    const Precision held = precision_of(depth);
    if (loses(picture.precision, held)) notes.push_back(becomes(picture.precision, held));
    if (depth < 32 && any_beyond(*picture.world)) notes.emplace_back(kBeyondIsCut);
    return notes;
}

std::vector<std::string> lost_beside(const Picture& picture) {
    std::vector<std::string> notes;
    if (!picture.light.empty()) notes.emplace_back(kLightIsLost);
    if (lies_outside(picture)) notes.emplace_back(kOutsideIsLost);
    return notes;
}

std::vector<std::string> left_out(const std::string& path, const Picture& picture, int depth,
                                  const WriteOptions& options) {
    std::vector<std::string> notes;
    const Format& format = format_to_write(path);
    const bool linear = format.linear;
    if (const char* note = unsaid_colours(format, picture.colours)) notes.emplace_back(note);
    if (!linear && picture.attributes) notes.emplace_back("its attributes are left out, only OpenEXR holds them");
    if (!linear && lies_outside(picture)) notes.emplace_back(kOutsideIsLost);
    if (linear ? covers_light(picture) : !picture.light.empty()) notes.emplace_back(kLightIsLost);
    const int file = file_depth(path, depth);
    if (options.packing && *options.packing >= format.first_lossy_packing) {
        const char* const packing = format.packings[static_cast<std::size_t>(*options.packing)];
        notes.push_back(std::string("values are changed a little by the compression ") + packing);
    }
    const bool halves = linear && options.half.value_or(picture.half);
    const Precision held = halves ? Precision::half : precision_of(file);
    if (loses(picture.precision, held)) notes.push_back(becomes(picture.precision, held));
    if (file < 32 && any_beyond(*picture.world)) notes.emplace_back(kBeyondIsCut);
    if (halves && any_overflow(picture)) notes.emplace_back("values above 65504 become infinite in half floats");
    return notes;
}

}  // namespace qx::pictures
