#include "tools/LiteralCommand.h"

#include <sstream>

#include <gtest/gtest.h>

namespace tn61131 {
namespace {

struct Shown {
    int exitStatus;
    std::string output;
    std::string messages;
};

Shown Show(LiteralOptions options) {
    std::ostringstream output;
    std::ostringstream messages;
    const int exitStatus = ShowLiterals(options, output, messages);
    return {exitStatus, output.str(), messages.str()};
}

TEST(GuessLiteralType, ByTheText) {
    struct Row {
        const char* text;
        ElementaryType type;
    };
    const Row rows[] = {
        {"'a'", ElementaryType::String},        {"\"a\"", ElementaryType::WString},
        {"true", ElementaryType::Bool},         {"FALSE", ElementaryType::Bool},
        {"NULL", ElementaryType::Pointer},      {"1.5", ElementaryType::LReal},
        {".", ElementaryType::LReal},           {"1E5", ElementaryType::LReal},
        {"-2e-3", ElementaryType::LReal},       {"16#1E5", ElementaryType::Undefined},
        {"-16#1E5", ElementaryType::Undefined}, {"5", ElementaryType::Undefined},
        {"DINT#5", ElementaryType::Undefined},  {"T#1.5s", ElementaryType::Undefined},
        {"hello", ElementaryType::Undefined},   {"", ElementaryType::Undefined},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(GuessLiteralType(row.text), row.type);
    }
}

TEST(LiteralCommand, JsonLineForEachText) {
    struct Row {
        LiteralOptions options;
        const char* line;
    };
    const Row rows[] = {
        {{{"16#FF"}},
         R"({"text":"16#FF","type":"DWORD","plain":"16#FF","literal":"16#FF","declaration":"DWORD#16#FF","raw":"ff000000"})"},
        {{{"-5"}},
         R"({"text":"-5","type":"DINT","plain":"-5","literal":"-5","declaration":"DINT#-5","raw":"fbffffff"})"},
        {{{"5"}, ElementaryType::Int},
         R"({"text":"5","type":"INT","plain":"5","literal":"5","declaration":"INT#5","raw":"0500"})"},
        {{{"T#90m"}},
         R"({"text":"T#90m","type":"TIME","plain":"1h30m","literal":"T#1h30m","declaration":"T#1h30m","raw":"c065520000000000"})"},
        {{{"'a$Lb'"}},
         R"({"text":"'a$Lb'","type":"STRING","plain":"'a$Lb'","literal":"'a$Lb'","declaration":"STRING#'a$Lb'","raw":"0300610a62"})"},
        {{{"\"a\""}},
         R"({"text":"\"a\"","type":"WSTRING","plain":"\"a\"","literal":"\"a\"","declaration":"WSTRING#\"a\"","raw":"01006100"})"},
        {{{"true"}},
         R"({"text":"true","type":"BOOL","plain":"TRUE","literal":"TRUE","declaration":"BOOL#TRUE","raw":"01"})"},
        {{{"1.5"}},
         R"({"text":"1.5","type":"LREAL","plain":"1.5","literal":"1.5","declaration":"LREAL#1.5","raw":"000000000000f83f"})"},
        {{{"1.5"}, ElementaryType::Real},
         R"({"text":"1.5","type":"REAL","plain":"1.5","literal":"1.5","declaration":"REAL#1.5","raw":"0000c03f"})"},
        {{{"NULL"}},
         R"({"text":"NULL","type":"POINTER","plain":"Null","literal":"Null","declaration":"POINTER#Null","raw":"0000000000000000"})"},
        {{{"STRING[80]"}, ElementaryType::Type},
         R"({"text":"STRING[80]","type":"TYPE","plain":"STRING[80]","literal":"STRING[80]","declaration":"TYPE#STRING[80]","raw":"145000"})"},
    };
    for (Row row : rows) {
        SCOPED_TRACE(row.line);
        row.options.json = true;
        const Shown shown = Show(row.options);
        EXPECT_EQ(shown.output, std::string(row.line) + "\n");
        EXPECT_EQ(shown.exitStatus, 0);
        EXPECT_EQ(shown.messages, "");
    }
}

TEST(LiteralCommand, ARefusedTextGivesItsMessageAndTheOthersGoOn) {
    const Shown shown = Show({{"abc", "1"}, ElementaryType::Undefined, true});
    EXPECT_EQ(shown.output,
              R"({"text":"abc","errors":[{"id":224,"location":"","text":"'abc' is not a valid integer."}]})"
              "\n"
              R"({"text":"1","type":"DINT","plain":"1","literal":"1","declaration":"DINT#1","raw":"01000000"})"
              "\n");
    EXPECT_EQ(shown.exitStatus, 1);
    EXPECT_EQ(shown.messages, "tn61131: error 224: 'abc' is not a valid integer.\n");
}

TEST(LiteralCommand, ATypeWithoutLiteralsIsRefused) {
    const Shown shown = Show({{"1"}, ElementaryType::Composite, true});
    EXPECT_EQ(shown.output, R"({"text":"1","errors":[{"id":0,"location":"","text":"The type has no literal."}]})"
                            "\n");
    EXPECT_EQ(shown.exitStatus, 1);
}

TEST(LiteralCommand, HumanTextShowsEveryForm) {
    const Shown shown = Show({{"T#5s"}, ElementaryType::Undefined, false});
    EXPECT_EQ(shown.output,
              "T#5s\n  type         TIME\n  plain        5s\n  literal      T#5s\n  declaration  T#5s\n"
              "  raw          8813000000000000\n");
}

}  // namespace
}  // namespace tn61131
