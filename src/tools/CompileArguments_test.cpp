#include "tools/CompileArguments.h"

#include <gtest/gtest.h>

namespace tn61131 {
namespace {

TEST(CompileArguments, StandaloneTextsHaveANumberInFront) {
    struct Row {
        const char* text;
        bool isOne;
        bool isTaken;
        std::uint32_t id;
        const char* rest;
    };
    const Row rows[] = {
        {"1:x", true, true, 1, "x"},
        {"4294967295:", true, true, 4294967295, ""},
        {"007: a := 1; (* : *)", true, true, 7, " a := 1; (* : *)"},
        {"4294967296:x", true, false, 0, ""},  // looks like one, but the number is too large
        {"x:1", false, false, 0, ""},
        {":x", false, false, 0, ""},
        {"12", false, false, 0, ""},
        {"", false, false, 0, ""},
        {"+1:x", false, false, 0, ""},
        {"1 :x", false, false, 0, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        st::StandaloneText standalone;
        std::string error;
        EXPECT_EQ(IsStandaloneText(row.text), row.isOne);
        ASSERT_EQ(ParseStandaloneText(row.text, standalone, error), row.isTaken);
        if (row.isTaken) {
            EXPECT_EQ(standalone.id, row.id);
            EXPECT_EQ(standalone.text, row.rest);
        } else {
            EXPECT_EQ(error, "'" + std::string(row.text) + "' is not of the form ID:TEXT");
        }
    }
}

TEST(CompileArguments, NothingGivenIsTheStandardDialect) {
    st::CompileOptions options;
    std::string error;
    ASSERT_TRUE(MakeCompileOptions({}, options, error)) << error;
    EXPECT_EQ(options.profile, st::Profile::Iec);
    EXPECT_EQ(options.switches.stringLength, 254);
    EXPECT_TRUE(options.expressions.empty());
    EXPECT_TRUE(options.codeBlocks.empty());
    EXPECT_TRUE(options.tags.empty());
}

TEST(CompileArguments, LaterSwitchesWin) {
    st::CompileOptions options;
    std::string error;
    CompileArguments arguments;
    arguments.profile = "TwinCAT";
    arguments.switches = {"string-length=10", "bounds=off", "string-length=20"};
    ASSERT_TRUE(MakeCompileOptions(arguments, options, error)) << error;
    EXPECT_EQ(options.profile, st::Profile::Codesys);
    EXPECT_EQ(options.switches.stringLength, 20);
    EXPECT_EQ(options.switches.bounds, st::Switches::Bounds::Off);
    EXPECT_TRUE(options.switches.promoteIntegers) << "of the profile";
}

TEST(CompileArguments, NoTagsFileIsNoTags) {
    std::vector<st::TagSymbol> symbols;
    std::string error;
    EXPECT_TRUE(ReadTagSymbols("", symbols, error));
    EXPECT_TRUE(symbols.empty());
    EXPECT_FALSE(ReadTagSymbols("/no/such/file", symbols, error));
    EXPECT_EQ(error, "the tags file '/no/such/file' cannot be read");
}

}  // namespace
}  // namespace tn61131
