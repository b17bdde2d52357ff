// SPDX-License-Identifier: Apache-2.0
#include "platform/ALOG.h"
#include "platform/TK_Report.h"
#include "platform/TK_Strings.h"
#include "platform/tesselcore_Debug.h"
#include "platform/tesselcore_Utility.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

TEST(Report, CarriesKindSiteSeverityAndText) {
    Reports reports;
    TK_ReportError(0x250042, 8, L"gr\u00fc\u00df \U0001F600");
    TKp_ReportErrString(0x250001, 4, "plain");
    TK_ReportFailedVerification(0x250002, 120, 0, "world is null");
    const auto& all = reports.all();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0].text, "gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80");
    EXPECT_TRUE(all[0].site == 0x250042 && all[0].severity == 8);
    EXPECT_EQ(all[1].kind, standalone::ReportKind::error_string);
    EXPECT_TRUE(all[2].kind == standalone::ReportKind::failed_verification && all[2].text == "world is null");
}

TEST(Report, QuietSectionsNestAndEndWithTheirScopeOnTheirThread) {
    Reports reports;
    const auto report = [] { TKp_ReportErrString(1, 8, "x"); };
    try {
        const TK_QuietErrors outer;
        {
            const TK_QuietErrors inner;
            report();
        }
        report();
        EXPECT_TRUE(reports.all().empty());
        in_threads(1, [&](int) { report(); });
        EXPECT_EQ(reports.all().size(), 1u);
        throw std::runtime_error("ends the section");
    } catch (const std::exception&) {
        report();
    }
    EXPECT_EQ(reports.all().size(), 2u);
    TK_EndQuietErrorsOnCurrentThread();  // one too many does not make the next section loud
    TK_QuietErrors section;
    report();
    EXPECT_EQ(reports.all().size(), 2u);
    standalone::SetQuietEndCode(77);
    EXPECT_EQ(section.end(), 77);
    EXPECT_EQ(section.end(), 0) << "it is closed once";
    standalone::SetQuietEndCode(0);
    report();
    EXPECT_EQ(reports.all().size(), 3u);
}

TEST(Report, ExceptionsBecomeCodes) {
    Reports reports;
    EXPECT_EQ(TK_TranslateAndReportException(std::bad_alloc()), 4);
    EXPECT_EQ(reports.last_text(), "out of memory");
    EXPECT_EQ(TK_TranslateAndReportException(std::runtime_error("bad row")), 3);
    EXPECT_EQ(reports.last_text(), "bad row");
    const TK_QuietErrors section;
    EXPECT_EQ(TK_TranslateAndReportException(std::bad_array_new_length()), 4);
    EXPECT_EQ(reports.all().size(), 2u);
}

TEST(Report, AssertionsAreReportsAndStopNothing) {
    using namespace tesselcore::debug;
    Reports reports;
    const auto fail = [] { return BreakAfterAssertDialog("false", "RunThread", "some/folder", 134, "Missing."); };
    EXPECT_FALSE(fail());
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0].kind, standalone::ReportKind::assertion);
    EXPECT_EQ(reports.last_text(), "Missing. (false, in RunThread, some/folder:134)");
    EXPECT_FALSE(IsDebuggerAttached());
    standalone::SetDebuggerAttached(true);
    EXPECT_TRUE(IsDebuggerAttached() && !fail());
    standalone::SetDebuggerAttached(false);
    const TK_QuietErrors section;
    EXPECT_FALSE(fail());
    EXPECT_EQ(reports.all().size(), 2u);
}

TEST(Log, GoesToTheSinkThatAsked) {
    std::string lines;
    standalone::SetLogSink([&](int level, const std::string& line) { lines += std::to_string(level) + " " + line; });
    ALOG_Log(10, "QX", "Birth", "begins");
    standalone::SetLogSink({});
    ALOG_Log(10, "QX", "Birth", "nobody hears this");
    EXPECT_EQ(lines, "10 QX/Birth: begins");
}

TEST(Strings, KeysGiveTheirEnglish) {
    const char* const keys[] = {"$$$/QX/0=first", nullptr, "plain"};
    const TK_ZRef table{3, keys};
    EXPECT_STREQ(TK_ZLookupLStrCache(table, 0), "first");
    EXPECT_EQ(TK_ZLookupLStrCache(table, 1), nullptr);
    EXPECT_STREQ(TK_ZLookupLStrCache(table, 2), "plain");
    EXPECT_EQ(TK_ZLookupLStrCache(table, 3), nullptr);
    EXPECT_EQ(TK_ZLookupLStrCache(table, -1), nullptr);
    EXPECT_STREQ(TK_ZString("$$$/QX/2=a=b"), "a=b");
    EXPECT_STREQ(TK_ZString("a=b"), "a=b");
    EXPECT_EQ(TK_ZStringToUTF16String("$$$/k=\xC3\xBC\xE2\x82\xAC"), L"\u00fc\u20ac");
    EXPECT_EQ(TK_ZStringToUTF16String("\xC3(\xC0\x80\xED\xA0\x80"), L"\ufffd(\ufffd\ufffd\ufffd\ufffd\ufffd");
}

TEST(Strings, SubStringReplacesWithinTheBuffer) {
    // Columns: start, placeholder, text, room, code, result
    const Cases<Text, Text, Text, std::size_t, int, Text> cases = {
        {"size ^L1x^L2", "^L1", "640", 32, 0, "size 640x^L2"},
        {"^L1 ^L1", "^L1", "7", 32, 0, "7 ^L1"},
        {"a^L1", "^L1", "12345", 7, 0, "a12345"},
        {"a^L1", "^L1", "12345", 6, 3, "a^L1"},
        {"none here", "^L1", "1", 32, 3, "none here"},
        {"empty", "", "1", 32, 3, "empty"}};
    for (const auto& [start, placeholder, text, size, code, result] : cases) {
        char buffer[32];
        std::snprintf(buffer, sizeof buffer, "%s", start);
        EXPECT_EQ(TK_SubString(buffer, size, placeholder, text), code) << start;
        EXPECT_STREQ(buffer, result);
    }
}

TEST(Strings, ReplacementIsNotReplaced) {
    std::wstring text = L"@0 x @0 @@ @1";
    tesselcore::utility::ReplaceInString(text, L"@0", L"@0@0");
    tesselcore::utility::ReplaceInString(text, L"", L"never");
    EXPECT_EQ(text, L"@0@0 x @0@0 @@ @1");
}

}  // namespace
