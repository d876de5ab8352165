#include "literal/LogicToken.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Type = LogicTokenType;

CErrorLocationTextRange SomeRange() {
    return {nullptr, TextPosition{3, 1, 4}, TextPosition{5, 1, 6}};
}

// Keyword, type, reserved, second flag, block step, categories, help page: hosts rely on every number.
constexpr const char* kKeywordTable = R"(ACTION 217 1 1 1 4 -
AND 227 1 1 0 16 /iec-61131/common-elements/functions-bitwise-boolean.html
ARRAY 165 1 1 0 128 /iec-61131/common-elements/derived-data-types/array.html
AT 169 1 1 0 64 -
BY 205 1 1 0 1 -
CASE 199 1 1 1 1 /iec-61131/structured-text/st-case.html
CONFIGURATION 150 1 1 1 8 -
CONSTANT 170 1 1 0 64 -
DO 206 1 1 0 1 -
ELSE 201 1 1 0 1 -
ELSEIF 210 1 1 0 1 /iec-61131/structured-text/st-if.html
EN 188 1 1 0 64 -
END_ACTION 218 1 1 -1 4 -
END_CASE 200 1 1 -1 1 /iec-61131/structured-text/st-case.html
END_CONFIGURATION 151 1 1 -1 8 -
END_FOR 204 1 1 -1 1 /iec-61131/structured-text/st-for.html
END_FUNCTION 196 1 1 -1 32 /iec-61131/common-elements/program-unit/function.html
END_FUNCTION_BLOCK 198 1 1 -1 32 /iec-61131/common-elements/program-unit/function-block.html
END_IF 209 1 1 -1 1 /iec-61131/structured-text/st-if.html
END_PROGRAM 194 1 1 -1 40 /iec-61131/common-elements/program-unit/program.html
END_REPEAT 213 1 1 -1 1 /iec-61131/structured-text/st-repeat.html
END_RESOURCE 156 1 1 -1 8 -
END_STEP 221 1 1 -1 4 -
END_STRUCT 161 1 1 -1 128 /iec-61131/common-elements/derived-data-types/struct.html
END_TRANSITION 223 1 1 -1 4 -
END_TYPE 159 1 1 -1 128 /iec-61131/common-elements/derived-data-types/index.html
END_UNION 163 1 0 -1 128 -
END_VAR 187 1 1 -1 64 /iec-61131/common-elements/variable-declaration.html
END_WHILE 216 1 1 -1 1 /iec-61131/structured-text/st-while.html
ENO 189 1 1 0 64 -
EXIT 202 1 1 0 1 /iec-61131/structured-text/st-exit.html
EXTENDS 164 1 0 0 128 -
F_EDGE 171 1 1 0 128 /iec-61131/common-elements/datatypes-bool-edge.html
FALSE 190 1 1 0 16 -
FOR 203 1 1 1 1 /iec-61131/structured-text/st-for.html
FROM 224 1 1 0 4 -
FUNCTION 195 1 1 1 32 /iec-61131/common-elements/program-unit/function.html
FUNCTION_BLOCK 197 1 1 1 32 /iec-61131/common-elements/program-unit/function-block.html
IF 207 1 1 1 1 /iec-61131/structured-text/st-if.html
INITIAL_STEP 219 1 1 1 4 -
MOD 226 1 1 0 16 -
NON_RETAIN 175 1 1 0 64 -
NOT 225 1 1 0 16 -
NULL 192 1 0 0 16 /iec-61131/common-elements/derived-data-types/reference.html#null
OF 166 1 1 0 128 -
OR 228 1 1 0 16 /iec-61131/common-elements/functions-bitwise-boolean.html
POINTER 167 0 0 0 128 /iec-61131/common-elements/derived-data-types/pointer.html
PROGRAM 193 1 1 1 32 /iec-61131/common-elements/program-unit/program.html
R_EDGE 172 1 1 0 128 /iec-61131/common-elements/datatypes-bool-edge.html
READ_ONLY 153 1 1 0 8 -
READ_WRITE 154 1 1 0 8 -
REF 230 1 1 0 16 /iec-61131/common-elements/derived-data-types/reference.html#ref
REF_TO 231 1 1 0 128 /iec-61131/common-elements/derived-data-types/reference.html
REPEAT 211 1 1 1 1 /iec-61131/structured-text/st-repeat.html
RESOURCE 155 1 1 1 8 -
RETAIN 174 1 1 0 64 /iec-61131/common-elements/variable-declaration.html
RETURN 214 1 1 0 1 /iec-61131/structured-text/st-return.html
SIZEOF 173 1 0 0 16 -
STEP 220 1 1 1 4 -
STRUCT 160 1 1 1 128 /iec-61131/common-elements/derived-data-types/struct.html
TASK 157 1 1 1 8 -
THEN 208 1 1 0 1 /iec-61131/structured-text/st-if.html
TO 168 1 1 0 132 -
TRANSITION 222 1 1 1 4 -
TRUE 191 1 1 0 16 -
TYPE 158 1 1 1 128 /iec-61131/common-elements/derived-data-types/index.html
UNION 162 1 0 1 128 -
UNTIL 212 1 1 1 1 /iec-61131/structured-text/st-repeat.html
VAR 177 1 1 1 64 /iec-61131/common-elements/variable-declaration.html
VAR_ACCESS 184 1 1 1 64 /iec-61131/common-elements/variable-declaration.html
VAR_CONFIG 185 1 1 1 64 /iec-61131/common-elements/variable-declaration.html
VAR_EXTERNAL 183 1 1 1 64 /iec-61131/common-elements/variable-declaration.html
VAR_GLOBAL 186 1 1 1 64 /iec-61131/common-elements/variable-declaration.html
VAR_IN_OUT 180 1 1 1 64 /iec-61131/common-elements/variable-declaration.html
VAR_INPUT 178 1 1 1 64 /iec-61131/common-elements/variable-declaration.html
VAR_OUTPUT 179 1 1 1 64 /iec-61131/common-elements/variable-declaration.html
VAR_TEMP 182 1 1 1 64 /iec-61131/common-elements/variable-declaration.html
VOLATILE 176 0 1 0 64 -
WHILE 215 1 1 1 1 /iec-61131/structured-text/st-while.html
WITH 152 1 1 0 8 -
XOR 229 1 1 0 16 /iec-61131/common-elements/functions-bitwise-boolean.html
)";

TEST(LogicTokenTable, HoldsEveryKeywordAsListed) {
    std::istringstream lines(kKeywordTable);
    int index = 0;
    for (std::string line; std::getline(lines, line); ++index) {
        ASSERT_LT(index, CLogicToken::GetTokenCount());
        const LogicTokenInformation& entry = CLogicToken::GetTokenInformation(index);
        std::ostringstream actual;
        actual << entry.keyword << ' ' << static_cast<int>(entry.type) << ' ' << entry.isReserved << ' '
               << int{entry.secondFlag} << ' ' << entry.blockStep << ' ' << entry.categories << ' '
               << (entry.helpPath == nullptr ? "-" : entry.helpPath);
        EXPECT_EQ(actual.str(), line);
    }
    EXPECT_EQ(index, 81);
    EXPECT_EQ(CLogicToken::GetTokenCount(), 81);
}

TEST(LogicTokenTable, IsSortedAndEveryTypeStandsOnce) {
    std::set<int> types;
    for (int index = 0; index < CLogicToken::GetTokenCount(); ++index) {
        const LogicTokenInformation& entry = CLogicToken::GetTokenInformation(index);
        EXPECT_TRUE(types.insert(static_cast<int>(entry.type)).second) << entry.keyword;
        if (index == 0) continue;
        const std::string_view before = CLogicToken::GetTokenInformation(index - 1).keyword;
        EXPECT_LT(CParseToken::CompareIdentifier(before, entry.keyword), 0) << entry.keyword;
    }
    // 150 to 231 without 181.
    EXPECT_EQ(*types.begin(), 150);
    EXPECT_EQ(*types.rbegin(), 231);
    EXPECT_EQ(types.count(181), 0U);
}

TEST(LogicTokenTable, EveryKeywordIsFoundInAnyCase) {
    for (int index = 0; index < CLogicToken::GetTokenCount(); ++index) {
        const LogicTokenInformation& entry = CLogicToken::GetTokenInformation(index);
        std::string word(entry.keyword);
        EXPECT_EQ(CLogicToken::FindKeyword(word), &entry);
        std::transform(word.begin(), word.end(), word.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
        EXPECT_EQ(CLogicToken::FindKeyword(word), &entry);
        word[0] = entry.keyword[0];
        EXPECT_EQ(CLogicToken::FindKeyword(word), &entry);
    }
}

TEST(LogicTokenTable, NearMissesAreNoKeywords) {
    for (const char* word :
         {"",     "A",     "I",  "IFF", "I F",  "_",        "IF_", "END", "END_",  "END_I", "END_IFS", "VAR_INPU",
          "VAR_", "FEDGE", "F_", "Z",   "XORX", "\xC3\x84", "@ND", "[IF", "ELSIF", "{",     "`",       "0IF"}) {
        EXPECT_EQ(CLogicToken::FindKeyword(word), nullptr) << word;
    }
}

// The Kelvin sign has "k" for its lower-case form, the dotted capital I has "i".
TEST(LogicTokenTable, WordsAreComparedByTheirLowerCaseForms) {
    const LogicTokenInformation* const task = CLogicToken::FindKeyword("TAS\xE2\x84\xAA");
    ASSERT_NE(task, nullptr);
    EXPECT_EQ(task->type, Type::Task);
    const LogicTokenInformation* const keyword = CLogicToken::FindKeyword(
        "\xC4\xB0"
        "F");
    ASSERT_NE(keyword, nullptr);
    EXPECT_EQ(keyword->type, Type::If);
}

TEST(LogicTokenName, ByType) {
    struct Row {
        int type;
        const char* name;
    };
    const Row rows[] = {{1, "End of input"},
                        {2, "Line end"},
                        {3, "White space"},
                        {6, "Identifier"},
                        {7, "Number"},
                        {34, "\""},
                        {40, "("},
                        {95, "_"},
                        {125, "}"},
                        {128, "Comment"},
                        {129, "CppComment"},
                        {130, "Pragma"},
                        {131, "String"},
                        {132, "WString"},
                        {133, "Integer"},
                        {134, "Real"},
                        {135, "Time Literal"},
                        {136, "Date Literal"},
                        {137, "Date and time literatl"},
                        {138, "Time of day literal"},
                        {139, "Boolean Literal"},
                        {144, "CHAR Literal"},
                        {145, "WCHAR Literal"},
                        {150, "CONFIGURATION"},
                        {207, "IF"},
                        {231, "REF_TO"}};
    for (const Row& row : rows) {
        ASSERT_NE(CLogicToken::GetTokenName(row.type), nullptr) << row.type;
        EXPECT_STREQ(CLogicToken::GetTokenName(row.type), row.name);
    }
    for (const int type : {-1, 0, 5, 140, 141, 142, 143, 146, 149, 181, 232, 1000, -2147483647})
        EXPECT_EQ(CLogicToken::GetTokenName(type), nullptr) << type;
}

TEST(LogicToken, FromATextIsAnIdentifier) {
    const CLogicToken fromCharacters("IF", SomeRange());
    const CLogicToken fromString(std::string("IF"), SomeRange());
    const CLogicToken fromNothing(static_cast<const char*>(nullptr), SomeRange());
    for (const CLogicToken* token : {&fromCharacters, &fromString}) {
        EXPECT_EQ(token->GetType(), 6);
        EXPECT_EQ(token->GetText(), "IF");
        EXPECT_FALSE(token->IsKeyword());
        EXPECT_EQ(token->Location().GetStart().column, 4U);
        EXPECT_FALSE(token->IsNotTerminated());
    }
    EXPECT_EQ(fromNothing.GetText(), "");
    EXPECT_EQ(CLogicToken().GetType(), 0);
}

TEST(LogicToken, FromAParseTokenBecomesItsKeyword) {
    CParseToken word(6, "End_If", SomeRange());
    word.SetNotTerminated();
    const CLogicToken copied(word);
    EXPECT_EQ(copied.GetType(), 209);
    EXPECT_EQ(copied.GetText(), "End_If");
    EXPECT_EQ(copied.GetKeyword()->keyword, "END_IF");
    EXPECT_TRUE(copied.IsNotTerminated());
    const CLogicToken moved(std::move(word));
    EXPECT_EQ(moved.GetType(), 209);
    EXPECT_EQ(moved.Location().GetEnd().offset, 5U);
    EXPECT_EQ(CLogicToken(CParseToken(6, "END_IFF")).GetType(), 6);
    // Only identifiers are looked up.
    EXPECT_EQ(CLogicToken(CParseToken(131, "IF")).GetType(), 131);
    EXPECT_FALSE(CLogicToken(CParseToken(131, "IF")).IsKeyword());
}

TEST(LogicToken, Queries) {
    struct Row {
        const char* text;
        int type;
        bool reserved, anyIdentifier, declaration, magnitude, literal;
    };
    const Row rows[] = {
        {"x", 6, false, true, false, false, false},         {"IF", 207, true, true, false, false, false},
        {"POINTER", 167, false, true, false, false, false}, {"VOLATILE", 176, false, true, false, false, false},
        {"VAR", 177, true, true, true, false, false},       {"VAR_GLOBAL", 186, true, true, true, false, false},
        {"VAR_TEMP", 182, true, true, true, false, false},  {"END_VAR", 187, true, true, false, false, false},
        {"TRUE", 191, true, true, false, false, true},      {"FALSE", 190, true, true, false, false, true},
        {"NULL", 192, true, true, false, false, true},      {"ENO", 189, true, true, false, false, false},
    };
    for (const Row& row : rows) {
        const CLogicToken token(CParseToken(6, row.text));
        SCOPED_TRACE(row.text);
        EXPECT_EQ(token.GetType(), row.type);
        EXPECT_EQ(token.IsReservedWord(), row.reserved);
        EXPECT_EQ(token.IsAnyIdentifier(), row.anyIdentifier);
        EXPECT_EQ(token.IsVarDeclarationToken(), row.declaration);
        EXPECT_EQ(token.IsMagnitudeLiteral(), row.magnitude);
        EXPECT_EQ(token.IsLiteral(), row.literal);
    }
}

TEST(LogicToken, LiteralsByType) {
    for (int type = 0; type < 300; ++type) {
        const CLogicToken token(CParseToken(type, ""));
        const bool magnitude = type >= 133 && type <= 135;
        const bool literal = (type >= 131 && type <= 139) || type == 144 || type == 145 || (type >= 190 && type <= 192);
        EXPECT_EQ(token.IsMagnitudeLiteral(), magnitude) << type;
        EXPECT_EQ(token.IsLiteral(), literal) << type;
        EXPECT_EQ(token.IsVarDeclarationToken(), type >= 177 && type <= 186) << type;
    }
}

}  // namespace
