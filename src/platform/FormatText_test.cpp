#include "platform/FormatText.h"

#include <array>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t kMinInt64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMaxInt64 = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kMaxUint64 = std::numeric_limits<std::uint64_t>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct FormatCase {
    const char* format;
    std::vector<FormatArg> args;
    const char* expected;
    const char* why;
};

void Check(const std::vector<FormatCase>& rows) {
    for (const FormatCase& row : rows) {
        SCOPED_TRACE(std::string(row.format) + " (" + row.why + ")");
        std::string out = ">";
        AppendFormatted(out, row.format, row.args);
        EXPECT_EQ(out, std::string(">") + row.expected);
    }
}

enum class Colour : std::uint16_t { Red = 7 };

TEST(AppendFormatted, IntegersFollowLengthAndFlags) {
    Check({
        {"%d", {0}, "0", "zero"},
        {"%d", {-1}, "-1", "negative"},
        {"%i", {42}, "42", "i is d"},
        {"%d", {kMaxInt64}, "-1", "32 bits without a length"},
        {"%u", {kMaxUint64}, "4294967295", "32 bits without a length"},
        {"%u", {-1}, "4294967295", "the conversion decides on the sign"},
        {"%lld", {kMinInt64}, "-9223372036854775808", "lowest"},
        {"%ld", {kMaxInt64}, "9223372036854775807", "l takes all bits"},
        {"%llu", {kMaxUint64}, "18446744073709551615", "highest"},
        {"%zu", {kMaxUint64}, "18446744073709551615", "z takes all bits"},
        {"%llX", {kMaxUint64}, "FFFFFFFFFFFFFFFF", "all bits"},
        {"%hu", {65536 + 5}, "5", "16 bits"},
        {"%hd", {0x8000}, "-32768", "16 bits with a sign"},
        {"%hX", {-1}, "FFFF", "16 bits"},
        {"%hhX", {-1}, "FF", "8 bits"},
        {"%hhd", {0xFF}, "-1", "8 bits with a sign"},
        {"%04X", {0x1Fu}, "001F", "zeros"},
        {"%04X", {0x12345u}, "12345", "a wider number is whole"},
        {"%x", {0xABCu}, "abc", "lower case"},
        {"%o", {8}, "10", "octal"},
        {"%#x", {255}, "0xff", "prefix"},
        {"%#X", {255}, "0XFF", "prefix"},
        {"%#06x", {255}, "0x00ff", "zeros behind the prefix"},
        {"%#x", {0}, "0", "zero has no prefix"},
        {"%#o", {8}, "010", "octal prefix"},
        {"%#o", {0}, "0", "zero stays"},
        {"%+d", {5}, "+5", "sign"},
        {"%+d", {-5}, "-5", "sign"},
        {"%+d", {0}, "+0", "sign of zero"},
        {"% d", {5}, " 5", "blank sign"},
        {"%+ d", {5}, "+5", "plus wins over blank"},
        {"%+u", {5u}, "5", "unsigned has no sign"},
        {"%5d|", {-42}, "  -42|", "right aligned"},
        {"%-5d|", {-42}, "-42  |", "left aligned"},
        {"%05d", {-42}, "-0042", "zeros behind the sign"},
        {"%-05d|", {-42}, "-42  |", "left wins over zeros"},
        {"%02d", {7}, "07", "zeros"},
        {"%.3d", {7}, "007", "precision is a digit count"},
        {"%6.3d", {-7}, "  -007", "precision and width"},
        {"%06.3d", {7}, "   007", "no zero padding beside a precision"},
        {"%.0d", {0}, "", "no digit of zero"},
        {"%.0d", {1}, "1", "one digit"},
        {"%d", {true}, "1", "bool"},
        {"%u", {Colour::Red}, "7", "enumerator"},
    });
}

TEST(AppendFormatted, TextsAndCharacters) {
    Check({
        {"", {}, "", "empty"},
        {"plain", {}, "plain", "no placeholder"},
        {"%s", {"abc"}, "abc", "text"},
        {"%s", {static_cast<const char*>(nullptr)}, "", "null is empty"},
        {"[%5s]", {"ab"}, "[   ab]", "right aligned"},
        {"[%-5s]", {"ab"}, "[ab   ]", "left aligned"},
        {"[%.2s]", {"abc"}, "[ab]", "precision cuts"},
        {"[%.2s]", {"a\xC3\xA4"}, "[a]", "never inside a character"},
        {"[%05s]", {"ab"}, "[   ab]", "zeros are for numbers"},
        {"%c%c", {'x', 65}, "xA", "characters"},
        {"%3c|", {'x'}, "  x|", "width"},
        {"%lc", {U'\u00E4'}, "\xC3\xA4", "code point"},
        {"%lc", {0x1F600}, "\xF0\x9F\x98\x80", "beyond the basic plane"},
        {"%lc", {0xD800}, "\xEF\xBF\xBD", "a surrogate is no character"},
        {"%lc", {-1}, "\xEF\xBF\xBD", "no character"},
        {"%lc", {kMaxUint64}, "\xEF\xBF\xBD", "no character"},
        {"100%%", {}, "100%", "percent sign"},
        {"%%%s%%", {"x"}, "%x%", "percent signs take no argument"},
        {"%s=%d, %s", {"a", 1, "b"}, "a=1, b", "in order"},
    });
}

TEST(AppendFormatted, Doubles) {
    Check({
        {"%f", {1.5}, "1.500000", "six digits"},
        {"%.0f", {2.5}, "2", "half to even, as the exact value has it"},
        {"%.2f", {-0.005}, "-0.01", "rounded on the exact binary value"},
        {"%06.3f", {1.5}, "01.500", "zeros"},
        {"%06.3f", {59.9999}, "60.000", "rounded up"},
        {"%06.3f", {0.0}, "00.000", "zero"},
        {"%02g", {2.0}, "02", "zeros"},
        {"%02g", {1.5}, "1.5", "wider than the field"},
        {"%g", {100000.0}, "100000", "fixed"},
        {"%g", {1000000.0}, "1e+06", "scientific"},
        {"%g", {0.0001}, "0.0001", "fixed"},
        {"%g", {0.00001}, "1e-05", "scientific"},
        {"%g", {0.1}, "0.1", "no trailing zeros"},
        {"%#g", {1.5}, "1.50000", "with trailing zeros"},
        {"%#g", {1e20}, "1.00000e+20", "with trailing zeros"},
        {"%#.0g", {5.0}, "5.", "one digit and the point"},
        {"%#.0f", {5.0}, "5.", "point without fraction"},
        {"%#.0e", {5.0}, "5.e+00", "point before the exponent"},
        {"%.0g", {1234.0}, "1e+03", "precision 0 counts as 1"},
        {"%e", {12345.678}, "1.234568e+04", "scientific"},
        {"%.1E", {12345.678}, "1.2E+04", "capital"},
        {"%G", {1e-10}, "1E-10", "capital"},
        {"%+.1f", {0.0}, "+0.0", "sign"},
        {"% .1f", {1.0}, " 1.0", "blank sign"},
        {"%.1f", {-0.0}, "-0.0", "negative zero"},
        {"%8.2f|", {-1.0}, "   -1.00|", "width"},
        {"%-8.2f|", {-1.0}, "-1.00   |", "left"},
        {"%08.2f|", {-1.0}, "-0001.00|", "zeros behind the sign"},
        {"%05f", {kInfinity}, "  inf", "no zeros before words"},
        {"%F", {-kInfinity}, "-INF", "capital"},
        {"%g", {kNaN}, "nan", "NaN"},
        {"%E", {-kNaN}, "NAN", "NaN has no sign"},
        {"%lf", {0.5f}, "0.500000", "float"},
    });
}

TEST(AppendFormatted, LargestDoubleWithLargestPrecision) {
    std::string out;
    const FormatArg arg(std::numeric_limits<double>::max());
    AppendFormatted(out, "%.99999f", {&arg, 1});
    EXPECT_EQ(out.size(), 309u + 1 + 4095);
    EXPECT_EQ(out.substr(0, 10), "1797693134");
    out.clear();
    AppendFormatted(out, "%#.99999g", {&arg, 1});
    EXPECT_EQ(out.substr(0, 10), "1797693134");
}

TEST(AppendFormatted, WidthIsBounded) {
    EXPECT_EQ(FormatText("%99999999999999999999d", 1).size(), 4095u);
    EXPECT_EQ(FormatText("%.99999999999999999999d", 1).size(), 4095u);
}

TEST(AppendFormatted, MismatchesAreHarmless) {
    Check({
        {"%s", {-5}, "-5", "natural form of a number"},
        {"%s", {kMaxUint64}, "18446744073709551615", "natural form of a number"},
        {"%s", {1.5}, "1.5", "natural form of a floating-point number"},
        {"%d", {2.0}, "2.0", "natural form of a floating-point number"},
        {"%f", {7}, "7", "natural form of an integer"},
        {"%d", {"text"}, "text", "natural form of a text"},
        {"%.2d", {"text"}, "text", "the precision of a number cuts no text"},
        {"%c", {"text"}, "text", "natural form of a text"},
        {"%s|%s", {"a"}, "a|", "an argument is missing"},
        {"%d", {}, "", "an argument is missing"},
        {"%s", {"a", "b"}, "a", "an argument too many"},
        {"%n%s", {"a"}, "%na", "unknown, takes no argument"},
        {"%p%s", {"a"}, "%pa", "unknown, takes no argument"},
        {"%*d", {5}, "%*d", "no width from an argument"},
        {"%", {1}, "%", "cut"},
        {"%-", {1}, "%-", "cut"},
        {"%5.3", {1}, "%5.3", "cut"},
        {"%ll", {1}, "%ll", "cut"},
        {"a%", {}, "a%", "cut"},
        {"%s", {"%d%n%s"}, "%d%n%s", "an argument is no format"},
    });
}

TEST(AppendFormatted, TextsGoByTheirLength) {
    EXPECT_EQ(FormatText("%s|", std::string_view("a\0b", 3)), std::string("a\0b|", 4));
    const std::array<char, 3> unterminated = {'a', 'b', 'c'};
    EXPECT_EQ(FormatText("%s", std::string_view(unterminated.data(), unterminated.size())), "abc");
}

TEST(AppendFormatted, LocaleOfTheCLibraryDoesNotMatter) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* const name : {"de_DE.UTF-8", "fr_FR.UTF-8", "C.UTF-8"}) {
        (void)std::setlocale(LC_ALL, name);
        EXPECT_EQ(FormatText("%.2f %g", 1234.5, 0.5), "1234.50 0.5");
    }
    (void)std::setlocale(LC_ALL, before.c_str());
}

TEST(FormatArg, NumbersOfOtherKindsSaturate) {
    EXPECT_EQ(FormatArg(1e300).AsSigned(), kMaxInt64);
    EXPECT_EQ(FormatArg(-1e300).AsSigned(), kMinInt64);
    EXPECT_EQ(FormatArg(0x1p63).AsSigned(), kMaxInt64);
    EXPECT_EQ(FormatArg(-0x1p63).AsSigned(), kMinInt64);
    EXPECT_EQ(FormatArg(-1.9).AsSigned(), -1);
    EXPECT_EQ(FormatArg(kNaN).AsSigned(), 0);
    EXPECT_EQ(FormatArg(1e300).AsUnsigned(), kMaxUint64);
    EXPECT_EQ(FormatArg(0x1p64).AsUnsigned(), kMaxUint64);
    EXPECT_EQ(FormatArg(-1.0).AsUnsigned(), 0u);
    EXPECT_EQ(FormatArg(kNaN).AsUnsigned(), 0u);
    EXPECT_EQ(FormatArg(-3).AsDouble(), -3.0);
    EXPECT_EQ(FormatArg(kMaxUint64).AsDouble(), 0x1p64);
    EXPECT_EQ(FormatArg("7").AsSigned(), 0);
    EXPECT_EQ(FormatArg("7").AsUnsigned(), 0u);
    EXPECT_EQ(FormatArg("7").AsDouble(), 0.0);
    EXPECT_EQ(FormatArg("7").AsText(), "7");
    EXPECT_EQ(FormatArg(7).AsText(), "");
}

struct CopyCase {
    unsigned int size;
    const char* text;
    const char* expected;
};

TEST(CopyBounded, CutsBetweenCharactersAndTerminates) {
    const std::vector<CopyCase> rows = {
        {8, "abc", "abc"},
        {4, "abc", "abc"},
        {3, "abc", "ab"},
        {1, "abc", ""},
        {3, "a\xC3\xA4", "a"},
        {4, "a\xC3\xA4", "a\xC3\xA4"},
        {4, "\xF0\x9F\x98\x80", ""},
        {5, "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
        {3, "\x80\x80\x80", "\x80\x80"},
    };
    for (const CopyCase& row : rows) {
        SCOPED_TRACE(std::string(row.text) + " into " + std::to_string(row.size));
        std::vector<char> buffer(row.size, '#');
        EXPECT_EQ(CopyBounded(buffer.data(), row.size, row.text), std::string(row.expected).size());
        EXPECT_STREQ(buffer.data(), row.expected);
    }
}

TEST(CopyBounded, WritesNothingIntoAnEmptyBuffer) {
    char untouched = '#';
    EXPECT_EQ(CopyBounded(&untouched, 0, "abc"), 0u);
    EXPECT_EQ(untouched, '#');
}

TEST(TnSprintf, FormatsBounded) {
    std::array<char, 8> buffer{};
    EXPECT_EQ(tn_sprintf(buffer.data(), buffer.size(), "%s-%d", "ab", 12345), 7u);
    EXPECT_STREQ(buffer.data(), "ab-1234");
}

}  // namespace
