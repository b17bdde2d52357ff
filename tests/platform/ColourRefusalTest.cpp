// SPDX-License-Identifier: Apache-2.0
#include <chrono>

#include "tests/platform/ColourKit.h"

namespace {

using namespace qx::test;

void put(ICC* file, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) (*file)[at + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}
std::uint32_t get(const ICC& file, std::size_t at) {
    return static_cast<std::uint32_t>(file[at] << 24 | file[at + 1] << 16 | file[at + 2] << 8 | file[at + 3]);
}
/// The entry of a tag in the table.
std::size_t entry_of(const ICC& file, std::uint32_t code) {
    std::size_t at = 132;
    while (get(file, at) != code) at += 12;
    return at;
}
std::size_t tag_at(const ICC& file, std::uint32_t code) { return get(file, entry_of(file, code) + 4); }

using Damage = std::function<void(ICC*)>;
Damage at(std::size_t place, std::uint32_t value) {
    return [=](ICC* file) { put(file, place, value); };
}
Damage in_tag(const char (&code)[5], std::size_t place, std::uint32_t value) {
    return [=, code = CMX_Code(code)](ICC* file) { put(file, tag_at(*file, code) + place, value); };
}
Damage in_entry(const char (&code)[5], std::size_t place, std::uint32_t value) {
    return [=, code = CMX_Code(code)](ICC* file) { put(file, entry_of(*file, code) + place, value); };
}

TEST(ColourRefusal, TellsWhatIsWrongWithAFile) {
    const ICC srgb = ICCOf(*named("srgb")), old = curve_profile(tabulated(1024, 2.2), 2.1), grey = grey_profile(2.2);
    const ICC table = table_profile(3, 2.1), elements = table_profile(3, 4.3), inks = table_profile(4, 2.1);
    const Cases<const ICC*, Damage, Text> kDamages{
        {&srgb, [](ICC* f) { f->clear(); }, "no ICC profile"},
        {&srgb, [](ICC* f) { f->resize(131); }, "no ICC profile"},
        {&srgb, [](ICC* f) { f->resize(f->size() - 1); }, "size"},
        {&srgb, [](ICC* f) { f->resize(f->size() + 9); }, "size"},
        {&srgb, at(0, 0), "size"},
        {&srgb, at(8, 0x05000000), "version"},
        {&srgb, at(12, CMX_Code("abst")), "abstract"},
        {&srgb, at(12, CMX_Code("nmcl")), "named"},
        {&srgb, at(12, CMX_Code("link")), "link"},
        {&srgb, at(12, CMX_Code("what")), "class"},
        {&srgb, at(16, CMX_Code("Lab ")), "Lab"},
        {&srgb, at(16, CMX_Code("6CLR")), "neither"},
        {&srgb, at(16, CMX_Code("CMYK")), "without a table"},
        {&srgb, at(16, CMX_Code("GRAY")), "without a curve"},
        {&srgb, at(20, CMX_Code("RGB ")), "connection"},
        {&srgb, at(36, 0), "no ICC profile"},
        {&srgb, at(128, 0), "entries"},
        {&srgb, at(128, 101), "entries"},
        {&srgb, at(128, 100), "cut off"},
        {&srgb, in_entry("rTRC", 4, 0xFFFFFFF0), "outside"},
        {&srgb, in_entry("rTRC", 4, 20), "outside"},
        {&srgb, in_entry("rTRC", 8, 0x7FFFFFFF), "outside"},
        {&srgb, in_entry("rXYZ", 0, CMX_Code("gXYZ")), "twice"},
        {&srgb, in_entry("rTRC", 0, CMX_Code("none")), "neither curves"},
        {&srgb, in_entry("chrm", 0, CMX_Code("D2B1")), "processing"},
        {&srgb, in_entry("rTRC", 8, 20), "cut off"},
        {&srgb, in_tag("rTRC", 0, CMX_Code("what")), "unknown type"},
        {&srgb, in_tag("rTRC", 8, 0x00050000), "unknown kind"},
        {&srgb, in_tag("rTRC", 12, 0), "exponent"},
        {&srgb, [](ICC* f) { in_tag("rTRC", 12, 0x7FFFFFFF)(f), in_tag("rTRC", 16, 0x7FFFFFFF)(f); }, "not numbers"},
        {&srgb, in_tag("rXYZ", 0, CMX_Code("curv")), "unknown type"},
        {&srgb, in_tag("chad", 0, CMX_Code("XYZ ")), "unknown type"},
        {&srgb, [](ICC* f) { std::fill_n(f->data() + tag_at(*f, CMX_Code("chad")) + 8, 12, 0); }, "adaptation has no"},
        {&srgb,
         [](ICC* f) {
             std::copy_n(f->begin() + static_cast<std::ptrdiff_t>(tag_at(*f, CMX_Code("rXYZ"))), 20,
                         f->begin() + static_cast<std::ptrdiff_t>(tag_at(*f, CMX_Code("gXYZ"))));
         },
         "no inverse"},
        {&old, in_tag("rTRC", 8, 1025), "cut off"},
        {&old, in_tag("rTRC", 8, 0xFFFFFFFF), "too many"},
        {&grey, in_tag("kTRC", 0, 0), "unknown type"},
        {&grey, at(20, CMX_Code("Lab ")), "lightness"},
        {&table, in_tag("A2B0", 8, 0x04030500), "channels"},
        {&table, in_tag("A2B0", 8, 0x03030600), "cut off"},
        {&table, in_tag("A2B0", 8, 0x03030100), "two points"},
        {&table, in_tag("A2B0", 8, 0x0303FF00), "too large"},
        {&table, in_tag("A2B0", 48, 0xFFFF0002), "entries"},
        {&table, in_tag("A2B0", 48, 0x00010002), "entries"},
        {&table, in_tag("B2A0", 0, CMX_Code("mAB ")), "direction"},
        {&elements, in_tag("A2B0", 0, CMX_Code("mBA ")), "direction"},
        {&elements, in_tag("A2B0", 24, 0xFFFFFFF0), "cut off"},
        {&elements, in_tag("A2B0", 24, 8), "header"},
        {&elements, in_tag("A2B0", 12, 0xFFFFFF00), "cut off"},
        {&inks, in_tag("A2B0", 8, 0x0403FF00), "grid"},
    };
    for (std::size_t i = 0; i < kDamages.size(); ++i) {
        const auto& [file, damage, words] = kDamages[i];
        ICC damaged = *file;
        damage(&damaged);
        std::string fault;
        EXPECT_EQ(read(damaged, &fault), nullptr) << i << ' ' << words;
        EXPECT_NE(fault.find(words), std::string::npos) << i << ": " << fault << " / " << words;
        EXPECT_EQ(standalone::LastColourFault(), fault);
    }
    std::string fault;
    ICC large(std::size_t{64} << 20 | 1);
    std::copy(srgb.begin(), srgb.end(), large.begin());
    EXPECT_EQ(read(large, &fault), nullptr);
    EXPECT_NE(fault.find("64 MB"), std::string::npos);
}

/// Damaged anywhere, a file is refused, or used without harm.
TEST(ColourRefusal, NoDamageDoesHarm) {
    const ICC files[] = {ICCOf(*named("srgb")), curve_profile(tabulated(1024, 2.2), 2.1),
                         grey_profile(2.2),     table_profile(3, 2.1),
                         table_profile(3, 4.3), table_profile(4, 4.3)};
    const auto srgb = named("srgb");
    const auto use = [&](const ICC& file, std::string& fault) {
        const auto profile = read(file, &fault);
        if (profile == nullptr) return false;
        const auto transform = standalone::MakeTransform(*profile, *srgb, Intent::perceptual, true, &fault);
        if (transform.get() == nullptr) return false;
        const bool inks = FactsOf(*profile).space == standalone::ProfileSpace::cmyk;
        const std::array<std::uint16_t, 4> src[] = {{0, 1, 2, 3}, {32768, 32768, 0, 77}, {65535, 40000, 9, 1}};
        std::array<float, 4> dst[3];
        EXPECT_EQ(apply(transform.get(), src, inks ? CMX_Code("CMYK") : kWords, dst, kFloats, 3), 0);
        return true;
    };
    int used = 0, refused = 0;
    for (const auto seed : seeds(kSanitized ? 600 : 3000)) {
        std::mt19937_64 random(seed);
        ICC file = files[random() % std::size(files)];
        // Most of a file are entries, which do no harm: its header, its tags and their beginnings are met more often.
        const std::size_t reach = random() % 2 == 0 ? std::min<std::size_t>(file.size(), 600) : file.size();
        for (std::uint64_t hits = 1 + random() % 3; hits > 0; --hits) {
            const std::size_t place = random() % (reach - 4);
            constexpr std::uint32_t kValues[] = {0, 1, 0xFF, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
            if (random() % 2 == 0)
                put(&file, place, kValues[random() % std::size(kValues)]);
            else
                file[place] = static_cast<std::uint8_t>(random());
        }
        if (random() % 8 == 0) file.resize(random() % file.size());
        SCOPED_TRACE("seed " + std::to_string(seed));
        const auto start = std::chrono::steady_clock::now();
        std::string fault;
        const bool usable = use(file, fault);
        EXPECT_NE(usable, !fault.empty()) << fault;
        (usable ? used : refused) += 1;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(kSanitized ? 10 : 1));
        standalone::ForgetTransforms();
    }
    EXPECT_GT(used, 20);
    EXPECT_GT(refused, 20);
}

/// Something that the engine does; gives its code.
struct Deed {
    std::string name;
    std::function<CMX_Error()> run;
};

CMX_Error made_or_fault(const HCL_CMX_ProfilePtr& made, const std::string& fault) {
    if (made != nullptr) return 0;
    EXPECT_EQ(fault, standalone::LastColourFault());
    return fault == "out of memory" ? 4 : 1;
}
CMX_Error thrown(const std::function<void()>& call) try {
    call();
    return 0;
} catch (int code) {
    return code;
}

std::vector<Deed> deeds() {
    const auto a = named("srgb"), b = named("display-p3"), tables = must_read(table_profile(3, 4.3));
    const auto inks = must_read(table_profile(4, 2.1));
    const ICC grey = grey_profile(2.2), old = curve_profile(tabulated(256, 2), 2.1);
    const auto make = [](const auto& from, const auto& to, std::uint32_t format) {
        CMX_Transform* made = nullptr;
        const auto fast = HCL_GetFastCMXOptions();
        CMX_Error error = QX_ENGINE(MakeColorTransform)(from->GetProfile(), to->GetProfile(), 1, &fast, &made);
        const HCL_CMX_Transform owner(made);
        std::array<std::uint16_t, 4> src[2] = {};
        std::array<float, 4> dst[2];
        const auto bpc = options({{CMX_Code("blpc"), 1}});
        if (error == 0) error = apply(made, src, format, dst, kFloats, 2);
        if (error == 0) error = apply(made, src, format, dst, kFloats, 2, &bpc);
        CMX_Transform* joined = nullptr;
        const auto next = standalone::MakeTransform(*to, *from, Intent::relative, false, nullptr);
        if (error == 0 && FactsOf(*from).space == standalone::ProfileSpace::rgb) {
            if (next.get() == nullptr) return CMX_Error{4};
            error = QX_ENGINE(ConcatTransforms)(made, next.get(), &joined);
        }
        if (error == 0 && joined != nullptr) error = apply(joined, src, format, dst, kFloats, 2);
        HCL_CMX_Transform(joined).Reset(nullptr);
        standalone::ForgetTransforms();
        return error;
    };
    const auto get_profile = [](auto&& procedure) {
        CMX_Profile* made = nullptr;
        const CMX_Error error = procedure(&made);
        if (made != nullptr) made->UnReference();
        return error;
    };
    std::string fault;
    return {
        {"named", [=]() mutable { return made_or_fault(NamedProfile("linear-rec2020", &fault), fault); }},
        {"read", [=]() mutable { return made_or_fault(read(old, &fault), fault); }},
        {"grey", [=]() mutable { return made_or_fault(read(grey, &fault), fault); }},
        {"code", [=] { return get_profile([](auto p) { return QX_ENGINE(ProfileFromCode)(CMX_Code("sRGB"), p); }); }},
        {"display", [=] { return get_profile([](auto p) { return QX_ENGINE(MainMonitorProfile)(p); }); }},
        {"default", [] { return thrown([] { HCL_CMX_GetDefaultProfile(kHCL_Gamma22); }); }},
        {"linear", [=] { return thrown([&] { HCL_CMX_GetLinearRGBProfile(a); }); }},
        {"pool",
         [] {
             return thrown([] {
                 const auto pool = standalone::NewProfilePool();
                 HCL_CMX_GetRec709Gamma24ReferenceProfile(pool);
             });
         }},
        {"curves", [=] { return make(a, b, kWords); }},
        {"tables", [=] { return make(tables, b, kWords); }},
        {"inks", [=] { return make(inks, b, CMX_Code("CMYK")); }},
    };
}

/// Each allocation of the host's, those of the colour library among them, and each of the language's.
TEST(ColourFailure, NoAllocationThatFailsLeaksOrHarms) {
    for (const Deed& deed : deeds()) {
        SCOPED_TRACE(deed.name);
        ASSERT_EQ(deed.run(), 0);
        const std::int64_t before = blocks_in_use();
        const std::int64_t start = standalone::Memory().allocations, news = NewCounter::count();
        ASSERT_EQ(deed.run(), 0);
        const std::int64_t count = standalone::Memory().allocations - start, new_count = NewCounter::count() - news;
        ASSERT_EQ(blocks_in_use(), before);
        ASSERT_GE(count, 20);
        const Reports reports;
        for (std::int64_t n = 1; n <= count; ++n) {
            ASSERT_EQ(short_of_memory(n, deed.run), 4) << "allocation " << n << " of " << count;
            ASSERT_EQ(out_of_memory_from(n, deed.run), 4) << "from allocation " << n << " of " << count;
            ASSERT_EQ(blocks_in_use(), before) << "allocation " << n << " of " << count;
        }
        EXPECT_TRUE(reports.all().empty()) << reports.last_text();
        for (std::int64_t n = 1; n <= new_count; ++n) {
            NewCounter::fail(n);
            CMX_Error error = 4;
            try {
                error = deed.run();
            } catch (const std::bad_alloc&) {  // of the test's own
            }
            NewCounter::fail(0);
            ASSERT_TRUE(error == 4 || error == 0) << "new " << n << " gave " << error;
            standalone::ForgetTransforms();
            ASSERT_EQ(blocks_in_use(), before) << "new " << n;
        }
        EXPECT_EQ(deed.run(), 0);
    }
}

/// What is made when it is first needed is asked for again after a failure, of which no pixel tells.
TEST(ColourFailure, WhatIsMadeLateIsTriedAgain) {
    const auto transform = link(named("srgb"), must_read(table_profile(3, 4.3)));
    const auto compensating = options({{CMX_Code("blpc"), 1}});
    std::array<std::uint8_t, 4> pixel{1, 2, 3, 4};
    const auto run = [&] { return apply(transform.get(), &pixel, kBytes, &pixel, kBytes, 1, &compensating); };
    for (const int n : {1, 10, 100}) EXPECT_EQ(short_of_memory(n, run), 4);
    EXPECT_EQ(pixel, (std::array<std::uint8_t, 4>{1, 2, 3, 4}));
    EXPECT_EQ(run(), 0);
    const auto late = standalone::Memory().allocations;
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(standalone::Memory().allocations, late) << "made once";
}

}  // namespace
