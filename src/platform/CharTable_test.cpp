#include "platform/CharTable.h"

#include <gtest/gtest.h>

namespace {

constexpr char32_t kBeyond[] = {0x110000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

}  // namespace

TEST(UnicodeCharTable, CaseMappingIsOneToOne) {
    struct Row {
        char32_t lower;
        char32_t upper;
        const char* why;
    };
    constexpr Row kRows[] = {
        {U'a', U'A', "ASCII"},
        {U'z', U'Z', "ASCII"},
        {0xE4, 0xC4, "a with diaeresis"},
        {0xFF, 0x178, "y with diaeresis maps out of Latin-1"},
        {0x3C9, 0x3A9, "omega"},
        {0x44F, 0x42F, "ya"},
        {0x10428, 0x10400, "Deseret, beyond 16 bits"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(UnicodeCharTable::ToUpper(row.lower), row.upper);
        EXPECT_EQ(UnicodeCharTable::ToLower(row.upper), row.lower);
        EXPECT_EQ(UnicodeCharTable::ToUpper(row.upper), row.upper);
        EXPECT_EQ(UnicodeCharTable::ToLower(row.lower), row.lower);
    }
    EXPECT_EQ(UnicodeCharTable::ToUpper(0xDF), char32_t{0xDF}) << "sharp s has no single capital letter";
    EXPECT_EQ(UnicodeCharTable::ToLower(0x130), U'i') << "dotted capital I";
    EXPECT_EQ(UnicodeCharTable::ToUpper(0x131), U'I') << "dotless i";
    EXPECT_EQ(UnicodeCharTable::ToUpper(U'1'), U'1');
}

TEST(UnicodeCharTable, ClassesFollowTheProperties) {
    struct Row {
        char32_t codePoint;
        bool letter;
        bool whiteSpace;
        bool printable;
        const char* why;
    };
    constexpr Row kRows[] = {
        {0, false, false, false, "NUL"},
        {8, false, false, false, "before the white space controls"},
        {9, false, true, false, "tab"},
        {13, false, true, false, "carriage return"},
        {14, false, false, false, "behind the white space controls"},
        {0x1C, false, false, false, "file separator is no white space"},
        {U' ', false, true, true, "space"},
        {U'_', false, false, true, "underscore is no letter"},
        {U'A', true, false, true, "letter"},
        {U'z', true, false, true, "letter"},
        {U'0', false, false, true, "digit is no letter"},
        {0x7F, false, false, false, "delete"},
        {0x85, false, true, false, "next line"},
        {0xA0, false, true, false, "no-break space"},
        {0xAA, true, false, true, "feminine ordinal, Lo"},
        {0xAD, false, false, false, "soft hyphen, a format character"},
        {0xE4, true, false, true, "a with diaeresis"},
        {0x2B0, true, false, true, "modifier letter"},
        {0x300, false, false, true, "combining mark"},
        {0x1C5, true, false, true, "title case letter"},
        {0x2160, false, false, true, "Roman numeral, Nl"},
        {0x180E, false, false, false, "Mongolian vowel separator, no white space any more"},
        {0x2003, false, true, false, "em space"},
        {0x200B, false, false, false, "zero width space is a format character"},
        {0x2028, false, true, false, "line separator"},
        {0x2029, false, true, false, "paragraph separator"},
        {0x20AC, false, false, true, "euro sign"},
        {0x3000, false, true, false, "ideographic space"},
        {0x4E00, true, false, true, "ideograph"},
        {0xD800, false, false, false, "surrogate"},
        {0xDFFF, false, false, false, "surrogate"},
        {0xE000, false, false, false, "private use"},
        {0xFEFF, false, false, false, "byte order mark"},
        {0xFFFD, false, false, true, "replacement character"},
        {0xFFFF, false, false, false, "no character"},
        {0x1F600, false, false, true, "emoji"},
        {0x10FFFF, false, false, false, "last number"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(UnicodeCharTable::IsLetter(row.codePoint), row.letter);
        EXPECT_EQ(UnicodeCharTable::IsWhiteSpace(row.codePoint), row.whiteSpace);
        EXPECT_EQ(UnicodeCharTable::IsPrintable(row.codePoint), row.printable);
    }
}

TEST(UnicodeCharTable, NumbersThatAreNoCharacterHaveNoProperty) {
    for (const char32_t number : kBeyond) {
        SCOPED_TRACE(static_cast<unsigned int>(number));
        EXPECT_EQ(UnicodeCharTable::ToUpper(number), number);
        EXPECT_EQ(UnicodeCharTable::ToLower(number), number);
        EXPECT_FALSE(UnicodeCharTable::IsLetter(number));
        EXPECT_FALSE(UnicodeCharTable::IsWhiteSpace(number));
        EXPECT_FALSE(UnicodeCharTable::IsPrintable(number));
    }
}

TEST(CTNChar, SpaceOfAByteIsAsciiAndOfAUnitUnicode) {
    for (unsigned int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        EXPECT_EQ(CTNChar::IsSpace(static_cast<unsigned char>(byte)),
                  byte == 9 || byte == 10 || byte == 11 || byte == 12 || byte == 13 || byte == 32);
    }
    EXPECT_TRUE(CTNChar::IsSpace(static_cast<unsigned short>(0xA0)));
    EXPECT_FALSE(CTNChar::IsSpace(static_cast<unsigned char>(0xA0)));
    EXPECT_TRUE(CTNChar::IsSpace(static_cast<unsigned short>(0x3000)));
    EXPECT_FALSE(CTNChar::IsSpace(static_cast<unsigned short>(u'A')));
}
