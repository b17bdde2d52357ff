// SPDX-License-Identifier: Apache-2.0
#pragma once

/// What the tests of pictures, of scenes and of the command begin with.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "pictures/Picture.h"
#include "pictures/Watch.h"

namespace qx::test {

using List = std::vector<double>;
using Names = std::vector<std::string>;

/// A folder of its own for a test, removed with all in it.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    Names names() const;  ///< of its files, sorted

private:
    std::string path_;
};

/// Takes CMYK too.
inline pictures::Picture read_inks(const std::string& path) {
    return pictures::read_picture(path, pictures::unwatched(), {.cmyk = true});
}

std::string contents(const std::string& path);
void put_contents(const std::string& path, const std::string& bytes);

/// A picture whose pixels a function makes from their position.
template <class Pixel, class Make> pictures::Picture picture(int width, int height, bool has_alpha, const Make& make) {
    pictures::Picture p;
    p.world = pictures::new_world("test", width, height, static_cast<int>(sizeof(Pixel)) * 2);
    p.has_alpha = has_alpha;
    pictures::each_pixel<Pixel>(*p.world, [&](Pixel& to, int x, int y) { to = make(x, y); });
    return p;
}

/// A pixel of bytes from the low bits of numbers.
inline QX_Pixel8 argb(std::int64_t alpha, std::int64_t red, std::int64_t green, std::int64_t blue) {
    const auto byte = [](std::int64_t v) { return static_cast<std::uint8_t>(v); };
    return {byte(alpha), byte(red), byte(green), byte(blue)};
}

/// An opaque picture of bytes that no format can make small.
pictures::Picture noise(int width, int height);

/// Pixel (x, y) as alpha, red, green, blue, whatever the depth.
List channels(const QX_World& world, int x, int y);
inline List channels(const pictures::Picture& picture, int x, int y) { return channels(*picture.world, x, y); }
/// The pixels of the first row so.
inline std::vector<List> first_row(const pictures::Picture& picture) {
    std::vector<List> row;
    for (int x = 0; x < picture.world->width; ++x) row.push_back(channels(picture, x, 0));
    return row;
}
/// True when two worlds have the same size, depth and pixels.
bool same_pixels(const QX_World& a, const QX_World& b);
inline bool same_pixels(const pictures::Picture& a, const pictures::Picture& b) {
    return same_pixels(*a.world, *b.world);
}

/// Counts the rows that it hears of, and stops at so many.
struct CountingWatch : pictures::Watch {
    explicit CountingWatch(int rows = 1 << 30) : most(rows) {}
    bool stops() const noexcept override { return told >= most; }
    void rows(std::int64_t done, std::int64_t total) noexcept override {
        ++told;
        last = done;
        if (done < 0 || done > total) wrong = true;
        if (done == total) ++finished;
    }
    const int most;
    std::atomic<int> told{0}, finished{0};
    std::atomic<std::int64_t> last{-1};
    std::atomic<bool> wrong{false};
};

/// A small profile of a display in a space ("RGB "), complete enough for the libraries that look at it: 516 bytes, of
/// which 144 to the end are those of its one tag.
std::vector<std::uint8_t> profile_of(const char* space);
inline std::vector<std::uint8_t> small_profile() { return profile_of("RGB "); }

/// What a call says of its fault; nothing without one.
template <class Fault, class Call> std::string fault_of(const Call& call) {
    try {
        call();
    } catch (const Fault& fault) {
        return fault.what();
    }
    return "";
}
/// The two parts of a row "text => words".
inline std::pair<std::string, std::string> halves(const std::string& row) {
    const std::size_t end = row.find(" => ");
    return {row.substr(0, end), row.substr(end + 4)};
}
#define EXPECT_HOLDS(text, words) EXPECT_PRED_FORMAT2(testing::IsSubstring, std::string(words), std::string(text))

/// A test in a folder of its own.
class InFolder : public testing::Test {
protected:
    const Folder folder;

    std::string bytes(const std::string& name) const { return contents(folder / name); }
    void put(const std::string& name, const std::string& bytes) const { put_contents(folder / name, bytes); }
    /// Puts a text with " for each '.
    void put_quoted(const std::string& name, std::string text) const {
        std::replace(text.begin(), text.end(), '\'', '"');
        put(name, text);
    }
    pictures::Picture read(const std::string& name) const { return pictures::read_picture(folder / name); }
    void write(const std::string& name, const pictures::Picture& picture, int depth = 8) const {
        pictures::write_picture(folder / name, picture, depth);
    }
    /// Writes an 8-bit picture, with alpha unless told otherwise.
    template <class Make>
    void write(const std::string& name, int width, int height, const Make& make, bool has_alpha = true) const {
        write(name, picture<QX_Pixel8>(width, height, has_alpha, make));
    }
    std::string fault(const std::string& name) const {
        return fault_of<pictures::Failure>([&] { read(name); });
    }
};

}  // namespace qx::test
