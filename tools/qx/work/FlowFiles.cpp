// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/FlowFiles.h"

#include <bit>
#include <vector>

#include "pictures/ExrChannels.h"
#include "pictures/Picture.h"

namespace qx::tool {
namespace {

/// A tag that tells floats of the right order of bytes, width, height, and u and v of each pixel; low bytes first.
void write_flo(pictures::OutputFile& file, const scene::FlowField& field, pictures::Watch& watch) {
    constexpr float tag = 202021.25f;
    std::vector<unsigned char> bytes;
    const auto add = [&](std::uint32_t word) {
        for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<unsigned char>(word >> 8 * i));
    };
    const auto write = [&] {
        file.write(bytes.data(), bytes.size());
        bytes.clear();
    };
    bytes.reserve(static_cast<std::size_t>(field.width) * sizeof(scene::FlowField::Vector) + 12);
    add(std::bit_cast<std::uint32_t>(tag));
    add(static_cast<std::uint32_t>(field.width));
    add(static_cast<std::uint32_t>(field.height));
    for (int y = 0; y < field.height; ++y) {
        watch.must_next_row(y, field.height);
        for (int x = 0; x < field.width; ++x) {
            add(std::bit_cast<std::uint32_t>(field.at(x, y).u));
            add(std::bit_cast<std::uint32_t>(field.at(x, y).v));
        }
        write();
    }
}

void write_exr(pictures::OutputFile& file, const scene::FlowField* forward, const scene::FlowField* backward,
               pictures::Watch& watch) {
    std::vector<pictures::FloatChannel> channels;
    const auto add = [&](const char* name, const scene::FlowField* field) {
        if (field == nullptr) return;
        channels.push_back({std::string(name) + ".u", &field->vectors[0].u, 2});
        channels.push_back({std::string(name) + ".v", &field->vectors[0].v, 2});
    };
    add("forward", forward);
    add("backward", backward);
    const scene::FlowField& any = forward != nullptr ? *forward : *backward;
    pictures::write_exr_channels(file, any.width, any.height, channels, watch);
}

}  // namespace

bool is_field_file(const std::string& path) {
    const std::string ending = pictures::extension_of(path);
    return ending == "flo" || ending == "exr";
}

std::unique_ptr<pictures::OutputFile> write_fields(const std::string& path, const scene::FlowField* forward,
                                                   const scene::FlowField* backward, pictures::Watch& watch) {
    auto file = std::make_unique<pictures::OutputFile>(path);
    file->check();
    if (pictures::extension_of(path) == "flo") {
        write_flo(*file, forward != nullptr ? *forward : *backward, watch);
    } else {
        write_exr(*file, forward, backward, watch);
    }
    file->finish();
    return file;
}

}  // namespace qx::tool
