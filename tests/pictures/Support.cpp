// SPDX-License-Identifier: Apache-2.0
#include "tests/pictures/Support.h"

#include <unistd.h>

#include <fstream>
#include <iterator>

namespace qx::test {

namespace fs = std::filesystem;

Folder::Folder() {
    std::string name = (fs::temp_directory_path() / "qx_test_XXXXXX").string();
    path_ = ::mkdtemp(name.data());
}

Folder::~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

Names Folder::names() const {
    Names names;
    for (const auto& entry : fs::directory_iterator(path_)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string contents(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void put_contents(const std::string& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

pictures::Picture noise(int width, int height) {
    std::mt19937 random(1);
    return picture<QX_Pixel8>(width, height, false, [&](int, int) {
        const std::int64_t bits = random();
        return argb(255, bits >> 8, bits >> 16, bits >> 24);
    });
}

List channels(const QX_World& world, int x, int y) {
    return pictures::with_pixel_of(world, [&]<class Pixel>() {
        const Pixel& p = pictures::row_of<Pixel>(world, y)[x];
        return List{double(p.alpha), double(p.red), double(p.green), double(p.blue)};
    });
}

bool same_pixels(const QX_World& a, const QX_World& b) {
    if (a.width != b.width || a.height != b.height || a.Depth() != b.Depth()) return false;
    const std::size_t bytes = static_cast<std::size_t>(a.width) * a.PixelSize();
    for (int y = 0; y < a.height; ++y) {
        if (std::memcmp(pictures::row_of<std::byte>(a, y), pictures::row_of<std::byte>(b, y), bytes) != 0) return false;
    }
    return true;
}

std::vector<std::uint8_t> profile_of(const char* space) {
    constexpr std::size_t bytes = 516;  // a very short one is refused by libpng
    std::vector<std::uint8_t> profile(bytes);
    for (std::size_t i = 144; i < bytes; ++i) profile[i] = static_cast<std::uint8_t>(i * i * 73 >> 4);
    const auto put = [&](std::size_t at, const char* text) { std::memcpy(profile.data() + at, text, 4); };
    profile[2] = bytes >> 8;
    profile[3] = bytes & 255;
    profile[8] = 4;
    put(12, "mntr");
    put(16, space);
    put(20, "XYZ ");
    put(36, "acsp");
    put(132, "desc");
    const std::uint8_t one_tag[] = {0, 0, 0, 1}, its_place[] = {0, 0, 0, 144, 0, 0, 1, 116};
    std::copy(std::begin(one_tag), std::end(one_tag), profile.begin() + 128);
    std::copy(std::begin(its_place), std::end(its_place), profile.begin() + 136);
    const std::uint8_t d50[] = {0, 0, 0xF6, 0xD6, 0, 1, 0, 0, 0, 0, 0xD3, 0x2D};
    std::copy(std::begin(d50), std::end(d50), profile.begin() + 68);
    return profile;
}

}  // namespace qx::test
