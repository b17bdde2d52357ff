// SPDX-License-Identifier: Apache-2.0
// Parts, layers and channels of OpenEXR files by their names.
#include <ImfMultiPartOutputFile.h>
#include <ImfOutputFile.h>
#include <ImfOutputPart.h>
#include <ImfPartType.h>
#include <ImfStandardAttributes.h>

#include "tests/pictures/ExrSamples.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;
using ExrLayers = InFolder;

/// A part's name and its channels, with a value of each.
struct PartOf {
    std::string name;
    std::vector<std::pair<std::string, float>> channels;
};

void write_parts(const std::string& path, const std::vector<PartOf>& parts) {
    std::vector<Imf::Header> headers(parts.size(), Imf::Header(10, 5));
    std::vector<Samples> samples(parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i) {
        for (const auto& [name, value] : parts[i].channels) samples[i].add(headers[i], name, value);
        headers[i].setType(Imf::SCANLINEIMAGE);
        headers[i].setName(parts[i].name);
        Imf::addOwner(headers[i], "of " + parts[i].name);
    }
    Imf::MultiPartOutputFile file(path.c_str(), headers.data(), static_cast<int>(parts.size()));
    for (std::size_t i = 0; i < parts.size(); ++i) {
        Imf::OutputPart part(file, static_cast<int>(i));
        part.setFrameBuffer(samples[i].buffer);
        part.writePixels(5);
    }
}

void write_layers(const std::string& path, const std::vector<std::pair<std::string, float>>& channels) {
    Imf::Header header(10, 5);
    Samples samples;
    for (const auto& [name, value] : channels) samples.add(header, name, value);
    Imf::OutputFile exr(path.c_str(), header);
    exr.setFrameBuffer(samples.buffer);
    exr.writePixels(5);
}

TEST_F(ExrLayers, PartsAreFoundByTheirNames) {
    write_parts(folder / "m.exr", {{"rgba", {{"R", 1.0f}, {"G", 1.0f}, {"B", 1.0f}}},
                                   {"left", {{"R", 0.25f}, {"G", 0.5f}, {"B", 0.75f}, {"A", 1.0f}, {"Z", 8.0f}}},
                                   {"diffuse", {{"diffuse.R", 0.125f}, {"diffuse.G", 0.0f}, {"diffuse.B", 0.0f}}},
                                   {"deep", {{"warm.r", 0.5f}, {"warm.g", 0.25f}, {"warm.b", 0.0f}, {"z", 3.0f}}}});
    const std::pair<const char*, List> rows[] = {
        {"m.exr", {1, 1, 1, 1}},
        {"m.exr:rgba", {1, 1, 1, 1}},
        {"m.exr:left", {1, 0.25, 0.5, 0.75}},
        {"m.exr:left.Z", {1, 8, 8, 8}},
        {"m.exr:Z", {1, 8, 8, 8}},
        {"m.exr:diffuse", {1, 0.125, 0, 0}},
        {"m.exr:deep.warm", {1, 0.5, 0.25, 0}},
        {"m.exr:warm", {1, 0.5, 0.25, 0}},
        {"m.exr:warm.g", {1, 0.25, 0.25, 0.25}},
        {"m.exr:deep.z", {1, 3, 3, 3}},
        {"m.exr:deep", {1, 3, 3, 3}},
    };
    for (const auto& [name, found] : rows) {
        const auto picture = read(name);
        EXPECT_EQ(channels(picture, 9, 4), found) << name;
        EXPECT_EQ(picture.notes, name == std::string("m.exr") ? Names{"only its first part is used"} : Names{}) << name;
    }
    EXPECT_EQ(read("m.exr").in_file.layers, (Names{"rgba", "left", "left.Z", "diffuse", "deep", "deep.warm"}));
    EXPECT_EQ(fault("m.exr:wrong"), folder / "m.exr:wrong" +
                                        ": no part, layer or channel of that name; it has rgba, "
                                        "left, left.Z, diffuse, deep, deep.warm");
    // What is written of a part keeps what the part tells of itself.
    write_picture(folder / "left.exr", read("m.exr:left"), 32);
    write_picture(folder / "again.exr", read("left.exr"), 32);
    EXPECT_TRUE(same_pixels(read("again.exr"), read("m.exr:left")));
}

TEST_F(ExrLayers, LayersAndLoneChannelsMakePictures) {
    write_layers(folder / "a.exr", {{"R", 0.5f},
                                    {"G", 0.5f},
                                    {"B", 0.5f},
                                    {"Z", 2.0f},
                                    {"left.diffuse.R", 0.25f},
                                    {"left.diffuse.G", 0.25f},
                                    {"left.diffuse.B", 0.5f},
                                    {"left.diffuse.A", 0.5f},
                                    {"P.X", -1.0f},
                                    {"P.Y", 2.0f},
                                    {"P.Z", 4.0f},
                                    {"mask.A", 0.75f}});
    EXPECT_EQ(channels(read("a.exr:left.diffuse"), 0, 0), (List{0.5, 0.5, 0.5, 1})) << "straight";
    EXPECT_EQ(channels(read("a.exr:P"), 0, 0), (List{1, -1, 2, 4}));
    EXPECT_EQ(channels(read("a.exr:mask"), 0, 0), (List{1, 0.75, 0.75, 0.75}));
    EXPECT_EQ(channels(read("a.exr:mask.A"), 0, 0), (List{1, 0.75, 0.75, 0.75}));
    EXPECT_EQ(channels(read("a.exr:Z"), 0, 0), (List{1, 2, 2, 2}));
    EXPECT_EQ(read("a.exr").in_file.layers, (Names{"P", "left.diffuse", "mask", "Z"}));
    write_layers(folder / "z.exr", {{"Z", 2.0f}});
    EXPECT_EQ(channels(read("z.exr"), 0, 0), (List{1, 2, 2, 2})) << "a lone channel is grey";
    write_layers(folder / "two.exr", {{"U", 2.0f}, {"V", 1.0f}});
    EXPECT_EQ(fault("two.exr"), folder / "two.exr" +
                                    ": has no channels R, G, B, and no Y alone, but U, V; name one "
                                    "behind the file and a colon");
    EXPECT_EQ(channels(read("two.exr:V"), 0, 0), (List{1, 1, 1, 1}));
}

TEST_F(ExrLayers, ColonsOfOtherNamesMeanNothing) {
    write("a:b.png", 2, 2, [](int, int) { return argb(255, 1, 2, 3); });
    write_layers(folder / "a.exr", {{"R", 0.5f}, {"G", 0.5f}, {"B", 0.5f}});
    std::filesystem::copy_file(folder / "a.exr", folder / "a.exr:left");
    EXPECT_EQ(read("a:b.png").notes, Names{});
    EXPECT_EQ(channels(read("a.exr:left"), 0, 0), (List{1, 0.5, 0.5, 0.5})) << "a file of the whole name goes before";
    EXPECT_EQ(fault("none.exr:left"), folder / "none.exr:left" + ": No such file or directory");
}

}  // namespace
