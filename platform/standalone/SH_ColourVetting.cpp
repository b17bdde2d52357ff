// SPDX-License-Identifier: Apache-2.0
// The layouts are those of ICC.1. A table whose numbers do not fit its tag is a fault of the file, never a reason to
// read less of it.
#include "platform/standalone/SH_ColourVetting.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>

#include "platform/standalone/SH_ColourContext.h"

namespace standalone {
namespace {

[[noreturn]] void Refuse(const std::string& why) { throw ColourFault(kColour_BadProfile, why); }
void Must(bool holds, const char* why) {
    if (!holds) Refuse(why);
}

/// A stretch of the file, read in its order of bytes; nothing is read beyond its end.
class Stretch {
public:
    Stretch(const std::uint8_t* bytes, std::uint64_t size, const char* name) : at_(bytes), size_(size), name_(name) {}
    std::uint64_t size() const { return size_; }
    const char* name() const { return name_; }
    void holds(std::uint64_t bytes) const {
        if (bytes > size_) Refuse(std::string(name_) + " is cut off");
    }
    void must(bool holds, const char* why) const {
        if (!holds) Refuse(std::string(name_) + " " + why);
    }
    std::uint32_t number(std::uint64_t offset, int bytes) const {
        holds(offset + static_cast<std::uint64_t>(bytes));
        std::uint32_t value = 0;
        for (int i = 0; i < bytes; ++i) value = value << 8 | at_[offset + static_cast<std::uint64_t>(i)];
        return value;
    }
    std::uint32_t u8(std::uint64_t offset) const { return number(offset, 1); }
    std::uint32_t u16(std::uint64_t offset) const { return number(offset, 2); }
    std::uint32_t u32(std::uint64_t offset) const { return number(offset, 4); }
    double fixed(std::uint64_t offset) const { return static_cast<std::int32_t>(u32(offset)) / 65536.0; }
    Stretch from(std::uint64_t offset) const {
        holds(offset);
        return {at_ + offset, size_ - offset, name_};
    }
    Stretch part(std::uint64_t offset, std::uint64_t size, const char* name) const {
        holds(offset);
        holds(offset + size);
        return {at_ + offset, size, name};
    }

private:
    const std::uint8_t* at_;
    std::uint64_t size_;
    const char* name_;
};

constexpr std::uint64_t kHeader = 128, kFirstTag = kHeader + 4, kTagEntry = 12;
constexpr std::uint32_t kMostTags = 100;  ///< that the colour library takes

struct File {
    Stretch all;
    std::uint32_t tags;

    std::optional<Stretch> find(std::uint32_t code, const char* name) const {
        for (std::uint64_t entry = kFirstTag; entry < kFirstTag + tags * kTagEntry; entry += kTagEntry) {
            if (all.u32(entry) == code) return all.part(all.u32(entry + 4), all.u32(entry + 8), name);
        }
        return {};
    }
};

void VetTagTable(const File& file) {
    const Stretch& all = file.all;
    Must(file.tags > 0 && file.tags <= kMostTags, "its table of tags has no or too many entries");
    const std::uint64_t end = kFirstTag + file.tags * kTagEntry;
    Must(end <= all.size(), "its table of tags is cut off");
    std::array<std::uint32_t, kMostTags> codes{};
    for (std::uint32_t i = 0; i < file.tags; ++i) {
        const std::uint64_t entry = kFirstTag + i * kTagEntry, offset = all.u32(entry + 4), size = all.u32(entry + 8);
        Must(offset >= end && size >= 8 && offset + size <= all.size(), "a tag lies outside of the file");
        codes[i] = all.u32(entry);
    }
    const auto last = codes.begin() + file.tags;
    std::sort(codes.begin(), last);
    Must(std::adjacent_find(codes.begin(), last) == last, "a tag is there twice");
}

/// @return the bytes of the curve that stands at the beginning
std::uint64_t VetCurve(const Stretch& curve) {
    switch (curve.u32(0)) {
        case CMX_Code("curv"): {
            const std::uint64_t count = curve.u32(8);
            curve.must(count <= 0x7FFF, "has too many entries");
            curve.holds(12 + 2 * count);
            curve.must(count != 1 || curve.u16(12) != 0, "has an exponent of 0");
            return 12 + 2 * count;
        }
        case CMX_Code("para"): {
            constexpr std::array<std::uint64_t, 5> kParameters{1, 3, 4, 5, 7};
            const std::uint32_t kind = curve.u16(8);
            curve.must(kind < kParameters.size(), "is of an unknown kind");
            curve.holds(12 + 4 * kParameters[kind]);
            curve.must(curve.fixed(12) > 0, "has an exponent that is not above 0");
            return 12 + 4 * kParameters[kind];
        }
        default:
            Refuse(std::string(curve.name()) + " is of an unknown type");
    }
}

void VetCurves(const Stretch& table, std::uint64_t offset, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) offset = (offset + VetCurve(table.from(offset)) + 3) / 4 * 4;
}

/// The bytes of a grid of values; none is larger than a file.
std::uint64_t GridBytes(const Stretch& table, const std::uint32_t* points, std::uint32_t inputs, std::uint64_t bytes) {
    for (std::uint32_t i = 0; i < inputs; ++i) {
        table.must(points[i] >= 2, "has a grid of less than two points");
        bytes *= points[i];
        table.must(bytes <= kICC_MostBytes, "has too large a grid");
    }
    return bytes;
}

/// Of 8 bits ('mft1') and 16 bits ('mft2').
void VetTable(const Stretch& table, std::uint32_t inputs, std::uint32_t outputs, bool wide) {
    const std::uint64_t bytes = wide ? 2 : 1, start = wide ? 52 : 48;
    const std::uint64_t entries_in = wide ? table.u16(48) : 256, entries_out = wide ? table.u16(50) : 256;
    table.must(entries_in >= 2 && entries_in <= 4096 && entries_out >= 2 && entries_out <= 4096,
               "has curves of no or too many entries");
    std::array<std::uint32_t, 4> points{};
    points.fill(table.u8(10));
    table.must(points[0] != 0 || inputs == outputs, "has no grid");
    const std::uint64_t grid = points[0] == 0 ? 0 : GridBytes(table, points.data(), inputs, outputs * bytes);
    table.holds(start + bytes * (entries_in * inputs + entries_out * outputs) + grid);
}

/// Curves, grid, curves, matrix and curves, as 'mAB ' has them, or the other way round in 'mBA '.
void VetElements(const Stretch& table, std::uint32_t inputs, std::uint32_t outputs, bool to_colour) {
    const std::uint32_t curves_b = table.u32(12), matrix = table.u32(16), curves_m = table.u32(20);
    const std::uint32_t grid = table.u32(24), curves_a = table.u32(28);
    const std::uint32_t colour = to_colour ? outputs : inputs, device = to_colour ? inputs : outputs;
    table.must(grid != 0 || inputs == outputs, "has no grid");
    for (const std::uint32_t offset : {curves_b, matrix, curves_m, grid, curves_a}) {
        table.must(offset == 0 || offset >= 32, "has an element in its header");
    }
    if (curves_b != 0) VetCurves(table, curves_b, colour);
    if (curves_m != 0) VetCurves(table, curves_m, colour);
    if (curves_a != 0) VetCurves(table, curves_a, device);
    if (matrix != 0) table.holds(std::uint64_t{matrix} + 48);
    if (grid == 0) return;
    std::array<std::uint32_t, 4> points{};
    for (std::uint32_t i = 0; i < inputs; ++i) points.at(i) = table.u8(std::uint64_t{grid} + i);
    const std::uint32_t bytes = table.u8(std::uint64_t{grid} + 16);
    table.must(bytes == 1 || bytes == 2, "has a grid of unknown numbers");
    table.holds(grid + 20 + GridBytes(table, points.data(), inputs, std::uint64_t{outputs} * bytes));
}

/// @return whether the file has this table
bool VetTableTag(const File& file, std::uint32_t code, const char* name, std::uint32_t channels, bool to_colour) {
    const auto table = file.find(code, name);
    if (!table) return false;
    const std::uint32_t inputs = to_colour ? channels : 3, outputs = to_colour ? 3 : channels;
    table->must(table->u8(8) == inputs && table->u8(9) == outputs, "has another number of channels than the header");
    switch (table->u32(0)) {
        case CMX_Code("mft1"):
            VetTable(*table, inputs, outputs, false);
            return true;
        case CMX_Code("mft2"):
            VetTable(*table, inputs, outputs, true);
            return true;
        case CMX_Code("mAB "):
        case CMX_Code("mBA "):
            table->must((table->u32(0) == CMX_Code("mAB ")) == to_colour, "is of the other direction");
            VetElements(*table, inputs, outputs, to_colour);
            return true;
        default:
            Refuse(std::string(name) + " is of an unknown type");
    }
}

/// Tables of the three intents, of which the first stands in for those that are not there.
bool VetTables(const File& file, std::uint32_t channels, bool to_colour) {
    struct Tag {
        std::uint32_t code;
        const char* name;
    };
    constexpr Tag kTo[] = {{CMX_Code("A2B0"), "the table A2B0"},
                           {CMX_Code("A2B1"), "the table A2B1"},
                           {CMX_Code("A2B2"), "the table A2B2"}};
    constexpr Tag kFrom[] = {{CMX_Code("B2A0"), "the table B2A0"},
                             {CMX_Code("B2A1"), "the table B2A1"},
                             {CMX_Code("B2A2"), "the table B2A2"}};
    bool any = false;
    for (const Tag& tag : to_colour ? kTo : kFrom) any |= VetTableTag(file, tag.code, tag.name, channels, to_colour);
    return any;
}

using Matrix = std::array<double, 9>;

bool HasInverse(const Matrix& m) {
    const double determinant =
        m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) + m[2] * (m[3] * m[7] - m[4] * m[6]);
    return std::abs(determinant) >= 1e-4;  // the colour library's own bound
}

/// @return whether the tag is there
bool VetXYZ(const File& file, std::uint32_t code, const char* name, double* value) {
    const auto tag = file.find(code, name);
    if (!tag) return false;
    tag->must(tag->u32(0) == CMX_Code("XYZ "), "is of an unknown type");
    for (std::uint64_t i = 0; i < 3; ++i) value[i] = tag->fixed(8 + 4 * i);
    return true;
}

void VetWhite(const File& file) {
    Matrix m{};
    VetXYZ(file, CMX_Code("wtpt"), "the white point", m.data());
    const auto chad = file.find(CMX_Code("chad"), "the adaptation");
    if (!chad) return;
    chad->must(chad->u32(0) == CMX_Code("sf32"), "is of an unknown type");
    for (std::size_t i = 0; i < m.size(); ++i) m[i] = chad->fixed(8 + 4 * i);
    chad->must(HasInverse(m), "has no inverse");
}

/// @return whether the file has curves and colorants
bool VetMatrix(const File& file) {
    Matrix m{};
    const bool colorants = VetXYZ(file, CMX_Code("rXYZ"), "the red colorant", m.data()) &&
                           VetXYZ(file, CMX_Code("gXYZ"), "the green colorant", m.data() + 3) &&
                           VetXYZ(file, CMX_Code("bXYZ"), "the blue colorant", m.data() + 6);
    int curves = 0;
    for (const std::uint32_t code : {CMX_Code("rTRC"), CMX_Code("gTRC"), CMX_Code("bTRC")}) {
        const auto curve = file.find(code, "a curve");
        if (!curve) continue;
        VetCurve(*curve);
        ++curves;
    }
    if (!colorants || curves < 3) return false;
    Must(HasInverse(m), "its colorants have no inverse");
    return true;
}

void VetHeader(const Stretch& all, VettedICC* vetted) {
    Must(all.size() >= kFirstTag && all.u32(36) == CMX_Code("acsp"), "it is no ICC profile");
    vetted->size = all.u32(0);
    Must(vetted->size >= kFirstTag && vetted->size <= all.size() && all.size() - vetted->size < 4,
         "its size is not what its header says");
    Must(all.u8(8) <= 4, "it is of a version above 4");
    vetted->class_code = all.u32(12);
    vetted->space = all.u32(16);
    switch (vetted->class_code) {
        case CMX_Code("scnr"):
        case CMX_Code("mntr"):
        case CMX_Code("prtr"):
        case CMX_Code("spac"):
            break;
        case CMX_Code("abst"):
            Refuse("it is an abstract profile");
        case CMX_Code("nmcl"):
            Refuse("it is a list of named colours");
        case CMX_Code("link"):
            Refuse("it is a link between devices");
        default:
            Refuse("it is of an unknown class");
    }
    Must(all.u32(20) == CMX_Code("XYZ ") || all.u32(20) == CMX_Code("Lab "), "its connection space is unknown");
}

}  // namespace

VettedICC VetICC(const std::uint8_t* bytes, std::size_t count) {
    Must(count <= kICC_MostBytes, "it is larger than 64 MB");
    VettedICC vetted{};
    VetHeader({bytes, count, "the profile"}, &vetted);
    const Stretch all(bytes, vetted.size, "the profile");
    const File file{all, all.u32(kHeader)};
    VetTagTable(file);
    for (const char digit : {'0', '1', '2', '3'}) {
        for (const std::uint32_t code : {CMX_Code("D2B0"), CMX_Code("B2D0")}) {
            Must(!file.find(code - '0' + static_cast<unsigned char>(digit), ""),
                 "it has tables of processing elements");
        }
    }
    VetWhite(file);
    switch (vetted.space) {
        case CMX_Code("RGB "):
            vetted.has_matrix = VetMatrix(file);
            vetted.to_colour = VetTables(file, 3, true);
            vetted.from_colour = VetTables(file, 3, false);
            Must(vetted.has_matrix || vetted.to_colour, "it has neither curves with a matrix nor tables");
            break;
        case CMX_Code("GRAY"): {
            const auto curve = file.find(CMX_Code("kTRC"), "the curve");
            Must(curve.has_value(), "it is of grey without a curve");
            Must(all.u32(20) == CMX_Code("XYZ "), "it is of grey by lightness");
            VetCurve(*curve);
            break;
        }
        case CMX_Code("CMYK"):
            vetted.to_colour = VetTables(file, 4, true);
            vetted.from_colour = VetTables(file, 4, false);
            Must(vetted.to_colour, "it is of inks without a table");
            break;
        case CMX_Code("Lab "):
            Refuse("its values are Lab");
        default:
            Refuse("its values are neither RGB, grey nor CMYK");
    }
    return vetted;
}

}  // namespace standalone
