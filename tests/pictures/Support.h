// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "pictures/Picture.h"

namespace qx::test {

/// A folder of its own for a test, removed with all in it.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    std::vector<std::string> names() const;  ///< of its files, sorted

private:
    std::string path_;
};

std::string contents(const std::string& path);
void put_contents(const std::string& path, const std::string& bytes);

/// A picture whose pixels a function makes from their position.
template <class Pixel>
pictures::Picture picture(int width, int height, bool has_alpha, const std::function<Pixel(int, int)>& pixel) {
    pictures::Picture p;
    p.world = pictures::new_world("test", width, height, static_cast<int>(sizeof(Pixel)) * 2);
    p.has_alpha = has_alpha;
    pictures::each_pixel<Pixel>(*p.world, [&](Pixel& to, int x, int y) { to = pixel(x, y); });
    return p;
}

/// A pixel of bytes from the low bits of numbers.
inline QX_Pixel8 argb(int alpha, int red, int green, int blue) {
    const auto byte = [](int v) { return static_cast<std::uint8_t>(v); };
    return {byte(alpha), byte(red), byte(green), byte(blue)};
}
/// Writes an 8-bit picture whose pixels a function makes; it has alpha unless told otherwise.
inline void write_bytes(const std::string& path, int width, int height, const std::function<QX_Pixel8(int, int)>& pixel,
                        bool has_alpha = true) {
    pictures::write_picture(path, picture<QX_Pixel8>(width, height, has_alpha, pixel), 8);
}

/// Pixel (x, y) as alpha, red, green, blue, whatever the depth.
std::vector<double> channels(const QX_World& world, int x, int y);
/// True when two worlds have the same size, depth and pixels.
bool same_pixels(const QX_World& a, const QX_World& b);

/// A small RGB profile, complete enough for the libraries that look at it.
std::vector<std::uint8_t> small_profile();

}  // namespace qx::test
