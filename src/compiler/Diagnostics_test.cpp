#include "compiler/Diagnostics.h"

#include <gtest/gtest.h>

#include "compiler/Parser.h"

namespace tn61131::st {
namespace {

class DiagnosticsTest : public ::testing::Test {
 protected:
    void SetText(std::string text) {
        std::uint32_t file = 0;
        ASSERT_TRUE(sources_.AddFile("main.st", std::move(text), file));
    }
    std::string Format(SourceRange range) {
        return FormatDiagnostic(sources_, {DiagnosticCode::UnknownName, Severity::Error, range, "text", {}});
    }

    SourceManager sources_;
    Diagnostics diagnostics_{sources_};
};

TEST_F(DiagnosticsTest, PlaceLineAndCaretsArePrinted) {
    SetText("x := 1;\ny := unknown + 1;\n");
    diagnostics_.Report(DiagnosticCode::UnknownName, {14, 21}, {"unknown"});
    ASSERT_EQ(diagnostics_.GetErrorCount(), 1U);
    EXPECT_EQ(FormatDiagnostic(sources_, diagnostics_.Sort()[0]),
              "main.st:2:6: error[ST0401]: unknown name 'unknown'\n"
              "y := unknown + 1;\n"
              "     ^~~~~~~\n");
}

TEST_F(DiagnosticsTest, NotesFollowLikewise) {
    SetText("a : INT;\na : INT;\n");
    Diagnostic& report = diagnostics_.Report(DiagnosticCode::DuplicateName, Severity::Warning, {10, 11}, {"a"});
    report.notes.push_back({{1, 2}, "declared here first"});
    EXPECT_EQ(FormatDiagnostic(sources_, diagnostics_.Sort()[0]),
              "main.st:2:1: warning[ST0201]: 'a' is declared twice\n"
              "a : INT;\n"
              "^\n"
              "main.st:1:1: note: declared here first\n"
              "a : INT;\n"
              "^\n");
    EXPECT_FALSE(diagnostics_.HasErrors());
}

TEST_F(DiagnosticsTest, WithoutAPlaceThereIsOnlyTheText) {
    EXPECT_EQ(Format({}), "error[ST0401]: text\n");
}

struct Excerpt {
    const char* text;
    SourceRange range;
    const char* expected;  ///< line and caret line
};

TEST_F(DiagnosticsTest, CaretsStandUnderWhatIsShown) {
    constexpr Excerpt kExcerpts[] = {
        {"\tx y", {2, 3}, "    x y\n    ^\n"},  // a tab ends at the next multiple of four
        {"ab\tx y", {4, 7}, "ab  x y\n    ^~~\n"},
        {"\xC3\xA4\xC3\xB6 x", {6, 7}, "\xC3\xA4\xC3\xB6 x\n   ^\n"},  // two bytes each, one cell each
        {"\xE4 x", {3, 4}, "\xEF\xBF\xBD x\n  ^\n"},                   // a byte that is no character
        {"a\x01x", {3, 4}, "a x\n  ^\n"},
        {"x", {2, 2}, "x\n ^\n"},            // behind the last character
        {"ab\ncd", {2, 6}, "ab\n ^\n"},      // ends with the line
        {"a\tb", {1, 4}, "a   b\n^~~~~\n"},  // over a tab
        {"", {1, 1}, "\n^\n"},
    };
    for (const Excerpt& row : kExcerpts) {
        SourceManager sources;
        std::uint32_t file = 0;
        ASSERT_TRUE(sources.AddFile("f", row.text, file));
        const std::string printed =
            FormatDiagnostic(sources, {DiagnosticCode::UnknownName, Severity::Error, row.range, "t", {}});
        EXPECT_EQ(printed.substr(printed.find('\n') + 1), row.expected) << row.text;
    }
}

TEST_F(DiagnosticsTest, LongLinesAreCutAroundThePlace) {
    SetText(std::string(500, 'a') + "HERE" + std::string(500, 'b'));
    const std::string printed = Format({501, 505});
    EXPECT_EQ(printed, "main.st:1:501: error[ST0401]: text\n" + std::string(60, 'a') + "HERE" + std::string(96, 'b') +
                           "\n" + std::string(60, ' ') + "^~~~\n");
}

TEST_F(DiagnosticsTest, OnePlaceGetsOneErrorOfACode) {
    SetText("abc");
    diagnostics_.Report(DiagnosticCode::UnknownName, {1, 2}, {"first"});
    diagnostics_.Report(DiagnosticCode::UnknownName, {1, 3}, {"again"}).notes.push_back({{}, "lost"});
    diagnostics_.Report(DiagnosticCode::UnknownType, {1, 2}, {"other code"});
    diagnostics_.Report(DiagnosticCode::UnknownName, {2, 3}, {"other place"});
    EXPECT_EQ(diagnostics_.GetErrorCount(), 3U);
    ASSERT_EQ(diagnostics_.Sort().size(), 3U);
    EXPECT_EQ(diagnostics_.Sort()[0].text, "unknown name 'first'");
    EXPECT_TRUE(diagnostics_.Sort()[0].notes.empty());
    EXPECT_EQ(diagnostics_.Sort()[2].text, "unknown name 'other place'");
}

TEST_F(DiagnosticsTest, ErrorsBeyondTheLimitAreCountedOnly) {
    SetText(std::string(2000, 'x'));
    for (SourceOffset at = 1; at <= Diagnostics::kMaxErrors + 5; ++at)
        diagnostics_.Report(DiagnosticCode::UnknownName, {at, at + 1}, {"x"});
    EXPECT_EQ(diagnostics_.GetErrorCount(), Diagnostics::kMaxErrors + 5);
    EXPECT_EQ(diagnostics_.Sort().size(), Diagnostics::kMaxErrors);
}

TEST_F(DiagnosticsTest, SortedByPlaceInTheOrderOfReports) {
    SetText("abc");
    diagnostics_.Report(DiagnosticCode::UnknownName, {3, 4}, {"c"});
    diagnostics_.Report(DiagnosticCode::UnknownType, {1, 2}, {"a"});
    diagnostics_.Report(DiagnosticCode::UnknownName, {1, 2}, {"a"});
    const std::vector<Diagnostic>& sorted = diagnostics_.Sort();
    EXPECT_EQ(sorted[0].code, DiagnosticCode::UnknownType);
    EXPECT_EQ(sorted[1].code, DiagnosticCode::UnknownName);
    EXPECT_EQ(sorted[2].range.begin, 3U);
}

TEST(FormatCode, FourDigits) {
    EXPECT_EQ(FormatCode(DiagnosticCode::UnexpectedToken), "ST0101");
    EXPECT_EQ(FormatCode(DiagnosticCode::ProjectTooLarge), "ST0801");
}

TEST(DiagnosticTable, EveryTextStandsBehindItsCode) {
    for (const DiagnosticRow& row : kDiagnosticTable) {
        EXPECT_EQ(&GetDiagnosticRow(row.code), &row);
        EXPECT_FALSE(row.text.empty());
    }
}

struct Nearest {
    const char* name;
    const char* expected;
};

TEST(FindNearestName, FindsWhatWasMeant) {
    constexpr std::string_view kCandidates[] = {"Temperature", "Pressure", "Flow", "iMax", "x"};
    constexpr Nearest kRows[] = {
        {"Temprature", "Temperature"},  // one left out
        {"PRESURE", "Pressure"},        // case does not count
        {"Folw", "Flow"},               // neighbours exchanged: one step
        {"Flaws", ""},                  // two steps, a third of five is one
        {"pressure", "Pressure"},       // none at all
        {"iMin", ""},                   // two of four
        {"y", ""},                      // a third of one is none
        {"Humidity", ""},
        {"", ""},
    };
    for (const Nearest& row : kRows)
        EXPECT_EQ(FindNearestName(row.name, kCandidates), row.expected) << row.name;
    EXPECT_EQ(FindNearestName("x", {}), "");
}

TEST(FindNearestName, TheNearestOfSeveralWins) {
    constexpr std::string_view kCandidates[] = {"counter2", "counters", "Counter"};
    EXPECT_EQ(FindNearestName("countr", kCandidates), "Counter");
}

}  // namespace
}  // namespace tn61131::st
