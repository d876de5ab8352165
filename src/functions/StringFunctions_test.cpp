#include "functions/StringFunctions.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/CharTable.h"
#include "platform/StringObject.h"
#include "platform/Transcode.h"
#include "support/FunctionCall.h"
#include "value/CompositeValue.h"

namespace {

using function_test::CallCase;
using function_test::ExpectCalls;
using function_test::FindByName;
using function_test::FunctionCaller;

TEST(StringFunctions, PartsOfAText) {
    const CallCase cases[] = {
        {"LEN('')", "UINT#0"},
        {"LEN('ABC')", "UINT#3"},
        {"LEN('\xC3\xA4')", "UINT#2", "bytes of a STRING"},
        {"LEN(\"\xC3\xA4\")", "UINT#1", "16-bit units of a WSTRING"},
        {"LEN(\"\xF0\x9F\x98\x80\")", "UINT#2"},
        {"LEN('ABC', 1, 2)", "UINT#3", "further arguments are not looked at"},
        {"LEFT('ABC', 2)", "STRING#'AB'"},
        {"LEFT('ABC', 0)", "STRING#''"},
        {"LEFT('ABC', -1)", "STRING#''"},
        {"LEFT('ABC', 3)", "STRING#'ABC'"},
        {"LEFT('ABC', 4)", "STRING#'ABC'"},
        {"LEFT(\"ABC\", 1)", "WSTRING#\"A\""},
        {"LEFT('\xC3\xA4', 1)", "STRING#'$C3'", "a part of a character is allowed"},
        {"LEFT('ABC', '2')", "STRING#'AB'", "lengths are converted"},
        {"LEFT('ABC', 1.5)", "STRING#'AB'"},
        {"LEFT('ABC', ULINT#4294967297)", "STRING#'A'", "to 32 bits"},
        {"RIGHT('ABC', 2)", "STRING#'BC'"},
        {"RIGHT('ABC', 0)", "STRING#''"},
        {"RIGHT('ABC', 4)", "STRING#'ABC'"},
        {"RIGHT(\"ABC\", 2)", "WSTRING#\"BC\""},
        {"MID('ABCDE', 2, 3)", "STRING#'CD'"},
        {"MID('ABCDE', 9, 4)", "STRING#'DE'"},
        {"MID('ABCDE', 2, 0)", "STRING#'A'", "of the positions 0 and 1 only 1 exists"},
        {"MID('ABCDE', 2, 6)", "STRING#''"},
        {"MID('ABCDE', 2147483647, 2147483647)", "STRING#''"},
        {"MID('ABCDE', 2147483647, -2147483640)", "STRING#'ABCDE'", "positions to 6 in 64 bits"},
        {"MID(\"ABCDE\", 1, 5)", "WSTRING#\"E\""},
        {"GET_ELEMENT('a,b,,c', CHAR#',', 1)", "STRING#'a'"},
        {"GET_ELEMENT('a,b,,c', CHAR#',', 2)", "STRING#'b'"},
        {"GET_ELEMENT('a,b,,c', CHAR#',', 3)", "STRING#''"},
        {"GET_ELEMENT('a,b,,c', CHAR#',', 4)", "STRING#'c'"},
        {"GET_ELEMENT('a,b,,c', CHAR#',', 5)", "STRING#''"},
        {"GET_ELEMENT('a,b,,c', CHAR#',', 0)", "STRING#''"},
        {"GET_ELEMENT('a,b,,c', ',;', 2)", "STRING#'b'", "of a text the first character separates"},
        {"GET_ELEMENT('a,b', ',', '2')", "STRING#'b'"},
        {"GET_ELEMENT(\"a|b\", '|', 2)", "WSTRING#\"b\""},
        {"GET_ELEMENT('a9b', 57, 2)", "STRING#'b'", "a number is the character's code"},
    };
    ExpectCalls(cases);
}

TEST(StringFunctions, ChangesOfAText) {
    const CallCase cases[] = {
        {"CONCAT('A')", "STRING#'A'"},
        {"CONCAT('A', 'B', 'C')", "STRING#'ABC'"},
        {"CONCAT('A', 5, TRUE)", "STRING#'A5TRUE'", "the texts of the values are appended"},
        {"CONCAT(\"A\", 'B')", "WSTRING#\"AB\"", "the first argument decides the type"},
        {"CONCAT('A', \"\xC3\xA4\")", "STRING#'A\xC3\xA4'"},
        {"CONCAT('', T#1s, Undefined)", "STRING#'1sUndefined'"},
        {"INSERT('ABC', 'XY', 2)", "STRING#'ABXYC'"},
        {"INSERT('ABC', 'XY', 0)", "STRING#'XYABC'"},
        {"INSERT('ABC', 'XY', -7)", "STRING#'XYABC'"},
        {"INSERT('ABC', 'XY', 3)", "STRING#'ABCXY'"},
        {"INSERT('ABC', 'XY', 99)", "STRING#'ABCXY'"},
        {"INSERT('ABC', 7, 1)", "STRING#'A7BC'"},
        {"INSERT(\"ABC\", 'X', 1)", "WSTRING#\"AXBC\""},
        {"DELETE('ABCDE', 2, 3)", "STRING#'ABE'"},
        {"DELETE('ABCDE', 0, 3)", "STRING#'ABCDE'"},
        {"DELETE('ABCDE', 9, 3)", "STRING#'AB'"},
        {"DELETE('ABCDE', 2, 0)", "STRING#'BCDE'"},
        {"DELETE(\"ABCDE\", 4, 1)", "WSTRING#\"E\""},
        {"REPLACE('ABCDE', 'X', 2, 3)", "STRING#'ABXE'"},
        {"REPLACE('ABCDE', 'XYZ', 0, 1)", "STRING#'XYZABCDE'"},
        {"REPLACE('ABCDE', 'X', 9, 4)", "STRING#'ABCX'"},
        {"REPLACE('ABCDE', 'X', 1, 99)", "STRING#'ABCDEX'"},
        {"REPLACE('ABCDE', 5, 1, 1)", "STRING#'5BCDE'"},
        {"REPLACE(\"ABCDE\", 'X', 2, 3)", "WSTRING#\"ABXE\""},
        {"FIND('ABC', 'B')", "UINT#2"},
        {"FIND('ABC', 'X')", "UINT#0"},
        {"FIND('ABC', '')", "UINT#0"},
        {"FIND('', '')", "UINT#0"},
        {"FIND('ABC', 'ABCD')", "UINT#0"},
        {"FIND('A12', 12)", "UINT#2"},
        {"FIND(\"ABAB\", 'B')", "UINT#2"},
        {"FIND('\xC3\xA4X', 'X')", "UINT#3"},
        {"UPPER('aB\xC3\xA4\xC3\x9F')", "STRING#'AB\xC3\x84\xC3\x9F'"},
        {"LOWER('aB\xC3\x84')", "STRING#'ab\xC3\xA4'"},
        {"UPPER(\"a\xC3\xA4\xF0\x90\x90\xA8\")", "WSTRING#\"A\xC3\x84\xF0\x90\x90\x80\""},
        {"LOWER(\"A\xF0\x90\x90\x80\")", "WSTRING#\"a\xF0\x90\x90\xA8\""},
        {"LOWER('\xC8\xBA')", "STRING#'\xE2\xB1\xA5'", "two bytes become three"},
        {"UPPER('$FFa')",
         "STRING#'\xEF\xBF\xBD"
         "A'",
         "what is no character becomes U+FFFD"},
        {"UPPER(\"$D800a\")",
         "WSTRING#\"\xEF\xBF\xBD"
         "A\""},
        {"UPPER('')", "STRING#''"},
        {"UPPER('a', 'b')", "STRING#'A'"},
    };
    ExpectCalls(cases);
}

TEST(StringFunctions, Trim) {
    const CallCase cases[] = {
        {"TRIM('  a  ', 0)", "STRING#'  a  '"},
        {"TRIM('  a  ', 1)", "STRING#'a  '"},
        {"TRIM('  a  ', 2)", "STRING#'  a'"},
        {"TRIM('  a  ', 3)", "STRING#'a'"},
        {"TRIM('  a  ', 7)", "STRING#'a'", "only two bits count"},
        {"TRIM('  a  ', 4)", "STRING#'  a  '"},
        {"TRIM('  a  ', -1)", "STRING#'a'"},
        {"TRIM('   ', 1)", "STRING#''"},
        {"TRIM('   ', 2)", "STRING#''"},
        {"TRIM('', 3)", "STRING#''"},
        {"TRIM('$09$0A$0B$0C$0D$20a b$20', 3)", "STRING#'a b'"},
        {"TRIM('$C2$A0a', 3)",
         "STRING#'\xC2\xA0"
         "a'",
         "of a STRING only single bytes are white space"},
        {"TRIM(\"$00A0$3000a$2003\", 3)", "WSTRING#\"a\"", "of a WSTRING any white space"},
    };
    ExpectCalls(cases);
}

TEST(StringFunctions, CodePointAt) {
    const CallCase cases[] = {
        {"CODE_POINT_AT('AB', 0)", "DINT#-1"},
        {"CODE_POINT_AT('AB', -1)", "DINT#-1"},
        {"CODE_POINT_AT('AB', 1)", "DINT#65"},
        {"CODE_POINT_AT('AB', 2)", "DINT#66"},
        {"CODE_POINT_AT('AB', 3)", "DINT#-1"},
        {"CODE_POINT_AT('', 1)", "DINT#-1"},
        {"CODE_POINT_AT('\xC3\xA4', 1)", "DINT#228"},
        {"CODE_POINT_AT('\xC3\xA4', 2)", "DINT#65533", "inside a character"},
        {"CODE_POINT_AT(\"\xF0\x9F\x98\x80\", 1)", "DINT#128512", "a surrogate pair is one code point"},
        {"CODE_POINT_AT(\"\xF0\x9F\x98\x80\", 2)", "DINT#65533"},
        {"CODE_POINT_AT('AB', '2')", "DINT#66"},
    };
    ExpectCalls(cases);
}

TEST(StringFunctions, Characters) {
    const CallCase cases[] = {
        {"UPPER(CHAR#'a')", "CHAR#A"},
        {"UPPER(CHAR#'A')", "CHAR#A"},
        {"LOWER(CHAR#'Z')", "CHAR#z"},
        {"LOWER(CHAR#'[')", "CHAR#["},
        {"LOWER(CHAR#'$C4')", "CHAR#$C4", "bytes above 127 stay"},
        {"UPPER(CHAR#'$E4')", "CHAR#$E4"},
        {"UPPER(WCHAR#\"\xC3\xA4\")", "WCHAR#\xC3\x84"},
        {"LOWER(WCHAR#\"\xC3\x84\")", "WCHAR#\xC3\xA4"},
        {"LEN(CHAR#'a')", "Invalid 243 [Function LEN]"},
        {"CONCAT(WCHAR#\"a\", 'b')", "Invalid 243 [Function CONCAT]"},
        {"7.0(CHAR#'a')", "Invalid 243 []"},
    };
    for (const CallCase& row : cases) {
        SCOPED_TRACE(row.call);
        FunctionCaller caller;
        std::string actual = caller.Call(row.call);
        // Character literals print with quotes of their kind.
        std::erase_if(actual, [](char c) { return c == '\'' || c == '"'; });
        EXPECT_EQ(actual, row.expected) << row.why;
    }
    FunctionCaller caller;
    caller.Call("LEN(CHAR#'a')");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Invalid Char function code '1'.");
}

TEST(StringFunctions, FailuresNameTheParameter) {
    const CallCase cases[] = {
        {"LEN(5)", "Failed 220 [Function LEN]"},
        {"UPPER(Undefined)", "Failed 220 [Function UPPER]"},
        {"7.99(5)", "Failed 220 []", "the type is checked before the id"},
        {"LEN()", "Failed 242 [Function LEN]"},
        {"7.99()", "Failed 242 []"},
        {"7.0('A')", "Invalid 243 []"},
        {"7.17('A')", "Invalid 243 []"},
        {"CODE_POINT_CHAR_LEN('A')", "Invalid 243 [Function CODE_POINT_CHAR_LEN]"},
        {"CODE_POINT_WCHAR_LEN(\"A\", 1)", "Invalid 243 [Function CODE_POINT_WCHAR_LEN]"},
        {"LEFT('A')", "Failed 242 [Function LEFT]"},
        {"LEFT('A', 1, 2)", "Failed 242 [Function LEFT]"},
        {"RIGHT('A')", "Failed 242 [Function RIGHT]"},
        {"MID('A', 1)", "Failed 242 [Function MID]"},
        {"INSERT('A', 'B')", "Failed 242 [Function INSERT]"},
        {"DELETE('A', 1)", "Failed 242 [Function DELETE]"},
        {"REPLACE('A', 'B', 1)", "Failed 242 [Function REPLACE]"},
        {"TRIM('A')", "Failed 242 [Function TRIM]"},
        {"CODE_POINT_AT('A')", "Failed 242 [Function CODE_POINT_AT]"},
        {"GET_ELEMENT('A', ',')", "Failed 242 [Function GET_ELEMENT]"},
        {"FIND('A')", "Failed 242 [Function FIND]"},
        {"LEFT('A', 'x')", "Failed 224 [Function LEFT Parameter 2]"},
        {"RIGHT(\"A\", Undefined)", "Failed 214 [Function RIGHT Parameter 2]"},
        {"MID('A', 'x', 'y')", "Failed 224 [Function MID Parameter 2]"},
        {"MID('A', 1, 'y')", "Failed 224 [Function MID Parameter 3]"},
        {"DELETE('A', 'x', 1)", "Failed 224 [Function DELETE Parameter 2]"},
        {"DELETE('A', 1, 'x')", "Failed 224 [Function DELETE Parameter 3]"},
        {"INSERT('A', 'B', 'x')", "Failed 224 [Function INSERT Parameter 3]"},
        {"REPLACE('A', 'B', 'x', 'y')", "Failed 224 [Function REPLACE Parameter 3]"},
        {"REPLACE('A', 'B', 1, 'y')", "Failed 224 [Function REPLACE Parameter 4]"},
        {"TRIM('A', 'x')", "Failed 224 [Function TRIM Parameter 2]"},
        {"CODE_POINT_AT('A', 'x')", "Failed 224 [Function CODE_POINT_AT Parameter 2]"},
        {"GET_ELEMENT('A', POINTER#NULL, 1)", "Failed 214 [Function GET_ELEMENT Parameter 2]"},
        {"GET_ELEMENT('A', ',', 'x')", "Failed 224 [Function GET_ELEMENT Parameter 3]"},
    };
    ExpectCalls(cases);
}

TEST(StringFunctions, MessagesNameTypeGroupAndCount) {
    struct Case {
        const char* call;
        const char* text;
    };
    const Case cases[] = {
        {"LEN(INT#5)", "String operation not supported on type 'INT'."},
        {"LEN(TOD#01:00:00)", "String operation not supported on type 'TIME_OF_DAY'."},
        {"7.17('A')", "Invalid String function code '17'."},
        {"MID('A', 1)", "Function requires 3 argument(s)."},
        {"REPLACE('A')", "Function requires 4 argument(s)."},
        {"LEFT('A')", "Function requires 2 argument(s)."},
        {"LEN()", "Function requires 1 argument(s)."},
    };
    for (const Case& row : cases) {
        FunctionCaller caller;
        caller.Call(row.call);
        ASSERT_EQ(caller.GetLog().GetEntries().size(), 1U) << row.call;
        EXPECT_EQ(caller.GetLog().GetEntries()[0].text, row.text);
    }
}

TEST(StringFunctions, ArgumentsAreConvertedInPlace) {
    FunctionCaller caller;
    caller.Call("CONCAT(\"A\", 'B', 5)");
    EXPECT_EQ(function_test::Declare(caller.GetArguments()[1]), "WSTRING#\"B\"");
    EXPECT_EQ(function_test::Declare(caller.GetArguments()[2]), "WSTRING#\"5\"");
    caller.Call("LEFT('ABC', '2')");
    EXPECT_EQ(function_test::Declare(caller.GetArguments()[1]), "DINT#2");
    caller.Call("GET_ELEMENT('a,b', ',', '2')");
    EXPECT_EQ(caller.GetArguments()[1].GetType(), ElementaryType::Char);
}

TEST(StringFunctions, CompositesBecomeText) {
    FunctionCaller caller;
    CValue composite;
    composite.SetCompositeValue(nullptr);
    caller.Call(FindByName("LEN"), {composite});
    EXPECT_EQ(caller.Describe(), "Failed 220 [Function LEN]");
}

std::string Repeat(std::string_view part, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += part;
    return text;
}

CValue MakeString(const std::string& bytes) {
    CValue value;
    value.SetUtf8StringFromVMString(reinterpret_cast<const unsigned char*>(bytes.data()),
                                    static_cast<unsigned int>(bytes.size()));
    return value;
}

std::string BytesOf(const CValue& value) {
    const std::span<const unsigned char> units = GetUnits(value.GetUtf8String());
    return {units.begin(), units.end()};
}

TEST(StringFunctions, ResultsAreCutAtTheLongestString) {
    FunctionCaller caller;
    const std::string longest = Repeat("x", kMaxStringUnits);
    caller.Call(FindByName("CONCAT"), {MakeString(longest), MakeString("y")});
    EXPECT_EQ(BytesOf(caller.GetResult()), longest);
    caller.Call(FindByName("CONCAT"), {MakeString(longest.substr(1)), MakeString("\xC3\xA4"), MakeString("z")});
    EXPECT_EQ(BytesOf(caller.GetResult()), longest.substr(1) + "z") << "never inside a code point";
    caller.Call(FindByName("INSERT"), {MakeString(longest), MakeString("yz"), CValue(1)});
    EXPECT_EQ(BytesOf(caller.GetResult()), 'x' + std::string("yz") + longest.substr(3));
    caller.Call(FindByName("UPPER"), {MakeString(Repeat("\xFF", kMaxStringUnits))});
    EXPECT_EQ(BytesOf(caller.GetResult()), Repeat("\xEF\xBF\xBD", kMaxStringUnits / 3));
    caller.Call(FindByName("LEN"), {MakeString(longest)});
    EXPECT_EQ(caller.Describe(), "UINT#65535");
    caller.Call(FindByName("FIND"), {MakeString(longest.substr(1) + "y"), MakeString("y")});
    EXPECT_EQ(caller.Describe(), "UINT#65535");
}

// --- every function against a plain model over random units ---

/// A text as its units; what the functions do, written as plainly as possible.
template <typename Unit>
struct Model {
    using Units = std::vector<Unit>;
    static constexpr std::int64_t kToEnd = std::numeric_limits<std::int64_t>::max();

    static Units Part(const Units& in, std::int64_t first, std::int64_t last) {
        Units out;
        for (std::size_t i = 0; i < in.size(); ++i) {
            const auto position = static_cast<std::int64_t>(i) + 1;
            if (position >= first && position <= last) out.push_back(in[i]);
        }
        return out;
    }
    static Units Left(const Units& in, int length) { return Part(in, 1, length); }
    static Units Right(const Units& in, int length) {
        const auto size = static_cast<std::int64_t>(in.size());
        return Part(in, size - length + 1, size);
    }
    static Units Mid(const Units& in, int length, int position) {
        return Part(in, position, std::int64_t{position} + length - 1);
    }
    static Units Delete(const Units& in, int length, int position) {
        if (length < 1) return in;
        return Join(Part(in, 1, std::int64_t{position} - 1), Part(in, std::int64_t{position} + length, kToEnd));
    }
    static Units Insert(const Units& in, const Units& other, std::int64_t position) {
        return Join(Join(Part(in, 1, position), other), Part(in, position + 1, kToEnd));
    }
    static Units Replace(const Units& in, const Units& other, int length, int position) {
        return Insert(Delete(in, length, position), other, std::int64_t{position} - 1);
    }
    static Units Join(Units left, const Units& right) {
        left.insert(left.end(), right.begin(), right.end());
        return left;
    }
    static int Find(const Units& in, const Units& wanted) {
        for (std::size_t i = 0; !wanted.empty() && i + wanted.size() <= in.size(); ++i) {
            if (std::equal(wanted.begin(), wanted.end(), in.begin() + static_cast<std::ptrdiff_t>(i))) {
                return static_cast<int>(i) + 1;
            }
        }
        return 0;
    }
    static Units Element(const Units& in, Unit separator, int index) {
        std::vector<Units> elements(1);
        for (const Unit unit : in) {
            if (unit == separator) {
                elements.emplace_back();
            } else {
                elements.back().push_back(unit);
            }
        }
        const bool exists = index >= 1 && static_cast<std::size_t>(index) <= elements.size();
        return exists ? elements[static_cast<std::size_t>(index) - 1] : Units();
    }
    static Units Trim(Units in, int mode) {
        const auto isSpace = [](Unit unit) { return CTNChar::IsSpace(unit); };
        if ((mode & 1) != 0) in.erase(in.begin(), std::find_if_not(in.begin(), in.end(), isSpace));
        if ((mode & 2) != 0) in.erase(std::find_if_not(in.rbegin(), in.rend(), isSpace).base(), in.end());
        return in;
    }
};

template <typename Unit>
CValue MakeText(const std::vector<Unit>& units) {
    CValue value;
    const auto count = static_cast<unsigned int>(units.size());
    if constexpr (sizeof(Unit) == 1) {
        value.SetUtf8StringFromVMString(units.data(), count);
    } else {
        value.SetUtf16StringFromVMWString(units.data(), count);
    }
    return value;
}

template <typename Unit>
std::vector<Unit> UnitsOf(const CValue& value) {
    std::vector<Unit> units;
    if constexpr (sizeof(Unit) == 1) {
        EXPECT_EQ(value.GetType(), ElementaryType::String);
        const auto span = GetUnits(value.GetUtf8String());
        units.assign(span.begin(), span.end());
    } else {
        EXPECT_EQ(value.GetType(), ElementaryType::WString);
        const auto span = GetUnits(value.GetUtf16String());
        units.assign(span.begin(), span.end());
    }
    return units;
}

/// Few different units, so that texts occur in each other; among them parts of characters, alone and in sequence.
template <typename Unit>
std::vector<Unit> RandomUnits(std::mt19937& random) {
    static const std::vector<Unit> alphabet = [] {
        if constexpr (sizeof(Unit) == 1) {
            return std::vector<Unit>{'a',  'a',  'b',  'Z',  ',',  ' ',  9,    0,
                                     0xC3, 0xA4, 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0xFF};
        } else {
            return std::vector<Unit>{'a', 'a', 'b', 'Z', ',', ' ', 9, 0, 0xE4, 0xD83D, 0xDE00, 0x3000, 0xFFFF};
        }
    }();
    std::vector<Unit> units(random() % 12);
    for (Unit& unit : units)
        unit = alphabet[random() % alphabet.size()];
    return units;
}

int RandomNumber(std::mt19937& random) {
    static const int extremes[] = {-2147483647 - 1, -2147483647, 2147483647, 2147483646, 65536, -65536};
    if (random() % 8 == 0) return extremes[random() % std::size(extremes)];
    return static_cast<int>(random() % 18) - 3;
}

template <typename Unit>
class StringModel : public testing::Test {};
using Units = testing::Types<unsigned char, unsigned short>;
TYPED_TEST_SUITE(StringModel, Units);

TYPED_TEST(StringModel, FunctionsAgreeForRandomTexts) {
    using M = Model<TypeParam>;
    std::mt19937 random(61131);
    FunctionCaller caller;
    const auto run = [&](const char* name, std::vector<CValue> arguments) {
        caller.Call(FindByName(name), std::move(arguments));
        EXPECT_EQ(caller.GetStatus(), CallStatus::Continue);
        return UnitsOf<TypeParam>(caller.GetResult());
    };
    for (int round = 0; round < 3000; ++round) {
        const auto in = RandomUnits<TypeParam>(random);
        const auto other = RandomUnits<TypeParam>(random);
        const int length = RandomNumber(random);
        const int position = RandomNumber(random);
        SCOPED_TRACE("round " + std::to_string(round) + " length " + std::to_string(length) + " position " +
                     std::to_string(position) + " in " + testing::PrintToString(in) + " other " +
                     testing::PrintToString(other));
        const CValue text = MakeText(in);
        const CValue second = MakeText(other);
        const CValue l(length);
        const CValue p(position);
        ASSERT_EQ(run("LEFT", {text, l}), M::Left(in, length));
        ASSERT_EQ(run("RIGHT", {text, l}), M::Right(in, length));
        ASSERT_EQ(run("MID", {text, l, p}), M::Mid(in, length, position));
        ASSERT_EQ(run("DELETE", {text, l, p}), M::Delete(in, length, position));
        ASSERT_EQ(run("INSERT", {text, second, p}), M::Insert(in, other, position));
        ASSERT_EQ(run("REPLACE", {text, second, l, p}), M::Replace(in, other, length, position));
        ASSERT_EQ(run("CONCAT", {text, second, text}), M::Join(M::Join(in, other), in));
        ASSERT_EQ(run("TRIM", {text, l}), M::Trim(in, length));
        ASSERT_EQ(run("GET_ELEMENT", {text, CValue(",", ElementaryType::String), p}), M::Element(in, ',', position));
        caller.Call(FindByName("FIND"), {text, second});
        ASSERT_EQ(caller.GetResult().template GetPayload<unsigned short>(), M::Find(in, other));
        caller.Call(FindByName("LEN"), {text});
        ASSERT_EQ(caller.GetResult().template GetPayload<unsigned short>(), in.size());
    }
}

/// The code points of a text, read by the decoder that its own tests cover.
template <typename Unit>
std::vector<char32_t> CodePoints(const std::vector<Unit>& units) {
    std::vector<char32_t> out;
    for (std::size_t at = 0; at < units.size();) {
        char32_t codePoint = 0;
        const auto rest = static_cast<unsigned int>(units.size() - at);
        if constexpr (sizeof(Unit) == 1) {
            at += tn_decode_utf8(&units[at], rest, codePoint);
        } else {
            at += tn_decode_utf16(&units[at], rest, codePoint);
        }
        out.push_back(codePoint);
    }
    return out;
}

TYPED_TEST(StringModel, CaseAndCodePointsAgreeForRandomTexts) {
    std::mt19937 random(2013);
    FunctionCaller caller;
    for (int round = 0; round < 2000; ++round) {
        const auto in = RandomUnits<TypeParam>(random);
        SCOPED_TRACE(testing::PrintToString(in));
        std::vector<char32_t> expected = CodePoints(in);
        std::transform(expected.begin(), expected.end(), expected.begin(), UnicodeCharTable::ToUpper);
        caller.Call(FindByName("UPPER"), {MakeText(in)});
        ASSERT_EQ(CodePoints(UnitsOf<TypeParam>(caller.GetResult())), expected);
        expected = CodePoints(in);
        std::transform(expected.begin(), expected.end(), expected.begin(), UnicodeCharTable::ToLower);
        caller.Call(FindByName("LOWER"), {MakeText(in)});
        ASSERT_EQ(CodePoints(UnitsOf<TypeParam>(caller.GetResult())), expected);
        for (int position = -1; position <= static_cast<int>(in.size()) + 1; ++position) {
            caller.Call(FindByName("CODE_POINT_AT"), {MakeText(in), CValue(position)});
            const bool inside = position >= 1 && position <= static_cast<int>(in.size());
            const std::vector<TypeParam> rest(in.begin() + (inside ? position - 1 : 0), in.end());
            ASSERT_EQ(caller.GetResult().template GetPayload<int>(),
                      inside ? static_cast<int>(CodePoints(rest).front()) : -1);
        }
    }
}

}  // namespace
