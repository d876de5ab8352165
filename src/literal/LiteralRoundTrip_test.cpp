#include <bit>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "platform/BinaryStream.h"
#include "support/LiteralTest.h"

using enum ElementaryType;
using literal_test::AsDeclaration;
using literal_test::AsLiteral;

namespace {

using Random = std::mt19937_64;
using Bytes = std::vector<unsigned char>;

constexpr ElementaryType kScalarTypes[] = {Bool,  SInt,  USInt,     Byte, Int,         UInt,  Word,
                                           DInt,  UDInt, DWord,     LInt, ULInt,       LWord, Real,
                                           LReal, Time,  TimeOfDay, Date, DateAndTime, Char,  WChar};

// Numbers of every magnitude, with the neighbours of powers of two among them.
std::uint64_t RandomBits(Random& random) {
    const std::uint64_t bits = random() >> (random() % 64);
    switch (random() % 4) {
        case 0: return std::bit_floor(bits) - 1;
        case 1: return 0 - bits;
        default: return bits;
    }
}

CValue RandomScalar(Random& random, ElementaryType type) {
    const std::uint64_t bits = RandomBits(random);
    CValue value;
    EXPECT_TRUE(value.SetFromDataBytes(type, reinterpret_cast<const unsigned char*>(&bits), sizeof(bits)));
    return value;
}

// The last day and the last millisecond that a literal can name.
constexpr std::uint64_t kLastDay = 2'932'896;
constexpr std::uint64_t kLastMillisecond = (kLastDay + 1) * 86'400'000 - 1;

// A scalar that its literal can express.
CValue RandomExpressible(Random& random, ElementaryType type) {
    CValue value = RandomScalar(random, type);
    if (type == Date) value.SetInteger(static_cast<long long>(random() % (kLastDay + 1)), Date);
    if (type == DateAndTime) value.SetInteger(static_cast<long long>(random() % (kLastMillisecond + 1)), DateAndTime);
    if (type == Real && std::isnan(value.GetPayload<float>())) value.SetFloat(0.0F);
    if (type == LReal && std::isnan(value.GetPayload<double>())) value.SetDouble(0.0);
    return value;
}

CValue RandomString(Random& random, ElementaryType type) {
    // Quotes, escapes, control characters, all lengths of UTF-8 and bytes that are none.
    static constexpr const char* kPieces[] = {"a",        "$",      "'",      "\"",         "\n",   "\x7f",
                                              "\xc2\x85", "\u00e9", "\u20ac", "\U0001F600", "\xff", "\xc3",
                                              "$41",      "\u2028", "\uFEFF", "A"};
    std::string text;
    for (std::uint64_t left = random() % 12; left > 0; --left)
        text += kPieces[random() % std::size(kPieces)];
    if (type == String) {
        CValue value;
        value.SetFromVMString(reinterpret_cast<const unsigned char*>(text.data()),
                              static_cast<unsigned int>(text.size()));
        return value;
    }
    // For units: pairs and unpaired surrogates.
    std::vector<unsigned short> units;
    for (const char c : text)
        units.push_back(
            static_cast<unsigned short>(random() % 5 == 0 ? 0xD800 + random() % 0x800 : static_cast<unsigned char>(c)));
    CValue value;
    value.SetFromVMWString(units.data(), static_cast<unsigned int>(units.size()));
    return value;
}

Bytes RawOf(const CValueLiteral& value) {
    Bytes bytes(value.GetRawDataSize());
    EXPECT_TRUE(value.GetRawData(bytes.data(), bytes.size()));
    return bytes;
}

CValue Parse(const std::string& text, ElementaryType wanted) {
    CErrorLog log;
    CValue value;
    EXPECT_TRUE(value.SetFromText(log, ErrorLocationNull::Get(), text, wanted)) << literal_test::Messages(log);
    return value;
}

// Seconds are read as a binary fraction and cut to milliseconds: 1.001 is 1000 ms. So these two may lose one.
bool MayLoseAMillisecond(ElementaryType type) {
    return type == TimeOfDay || type == DateAndTime;
}

void ExpectSame(const CValue& parsed, const CValue& value) {
    ASSERT_EQ(parsed.GetType(), value.GetType());
    if (MayLoseAMillisecond(value.GetType())) {
        const auto first =
            value.GetType() == TimeOfDay ? value.GetPayload<std::uint32_t>() : value.GetPayload<std::uint64_t>();
        const auto second =
            value.GetType() == TimeOfDay ? parsed.GetPayload<std::uint32_t>() : parsed.GetPayload<std::uint64_t>();
        ASSERT_LE(first - second, 1U);
        if (first % 1000 == 0) {
            ASSERT_EQ(first, second);
        }
        return;
    }
    ASSERT_EQ(RawOf(parsed), RawOf(value));
}

TEST(LiteralRoundTrip, ScalarsParseBackToTheirBits) {
    Random random(61131);
    for (const ElementaryType type : kScalarTypes) {
        for (int i = 0; i < 2'000; ++i) {
            const CValue value = RandomExpressible(random, type);
            SCOPED_TRACE(AsDeclaration(value));
            ExpectSame(Parse(AsLiteral(value), type), value);
            ExpectSame(Parse(AsDeclaration(value), Undefined), value);
        }
    }
}

TEST(LiteralRoundTrip, EveryCharacterParsesBack) {
    for (long long unit = 0; unit < 0x10000; ++unit) {
        const CValue wide(unit, WChar);
        SCOPED_TRACE(AsDeclaration(wide));
        ASSERT_TRUE(Parse(AsLiteral(wide), WChar).IsEqual(wide));
    }
    for (long long byte = 0; byte < 0x100; ++byte) {
        const CValue narrow(byte, Char);
        SCOPED_TRACE(AsDeclaration(narrow));
        ASSERT_TRUE(Parse(AsLiteral(narrow), Char).IsEqual(narrow));
    }
}

TEST(LiteralRoundTrip, StringsParseBackToTheirUnits) {
    Random random(646);
    for (int i = 0; i < 5'000; ++i) {
        for (const ElementaryType type : {String, WString}) {
            const CValue value = RandomString(random, type);
            SCOPED_TRACE(AsDeclaration(value));
            ASSERT_TRUE(Parse(AsLiteral(value), type).IsEqual(value));
            ASSERT_TRUE(Parse(AsDeclaration(value), Undefined).IsEqual(value));
        }
    }
}

TEST(LiteralRoundTrip, TypesParseBack) {
    // All but the composites, which have no name in a literal.
    constexpr unsigned int kCodes[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13,
                                       14, 15, 16, 17, 18, 19, 20, 21, 22, 25, 26, 27};
    for (const unsigned int code : kCodes) {
        for (const unsigned int length : {0U, 1U, 80U, 65535U}) {
            const CValue value(code | (length << 8), Type);
            SCOPED_TRACE(AsLiteral(value));
            EXPECT_EQ(RawOf(Parse(AsLiteral(value), Type)), RawOf(value));
        }
    }
}

TEST(LiteralRoundTrip, TheNullPointerParsesBack) {
    CValue value;
    value.SetAddress(0, 0, 0);
    EXPECT_EQ(RawOf(Parse(AsLiteral(value), Pointer)), RawOf(value));
}

TEST(RawRoundTrip, BytesComeBack) {
    Random random(16);
    for (const ElementaryType type : kScalarTypes) {
        for (int i = 0; i < 500; ++i) {
            const CValue value = RandomScalar(random, type);
            SCOPED_TRACE(AsDeclaration(value));
            const Bytes bytes = RawOf(value);
            CValue read;
            ASSERT_TRUE(read.SetFromDataBytes(type, bytes.data(), static_cast<unsigned int>(bytes.size())));
            ASSERT_EQ(RawOf(read), bytes);
        }
    }
    for (int i = 0; i < 500; ++i) {
        for (const ElementaryType type : {String, WString}) {
            const CValue value = RandomString(random, type);
            const Bytes bytes = RawOf(value);
            CValue read;
            ASSERT_TRUE(read.SetFromDataBytes(type, bytes.data(), static_cast<unsigned int>(bytes.size())));
            ASSERT_TRUE(read.IsEqual(value)) << AsDeclaration(value);
        }
    }
}

Bytes Save(const CValueLiteral& value, unsigned short version) {
    CBinaryOutputBuffer output;
    EXPECT_TRUE(value.SaveValue(version, output));
    return output.GetData();
}

CValue Load(const Bytes& bytes, unsigned short version) {
    CBinaryInputMemory input(bytes);
    CValue value;
    EXPECT_TRUE(value.LoadValue(version, input));
    EXPECT_FALSE(input.HasFailed());
    EXPECT_EQ(input.GetBytesLeft(), 0U);
    return value;
}

TEST(PersistRoundTrip, ValuesComeBack) {
    Random random(14);
    for (int i = 0; i < 500; ++i) {
        for (const unsigned short version : std::vector<unsigned short>{13, 14}) {
            for (const ElementaryType type : kScalarTypes) {
                const CValue value = RandomScalar(random, type);
                SCOPED_TRACE(AsDeclaration(value));
                const CValue loaded = Load(Save(value, version), version);
                ASSERT_EQ(loaded.GetType(), type);
                ASSERT_EQ(RawOf(loaded), RawOf(value));
            }
        }
        for (const ElementaryType type : {String, WString}) {
            const CValue value = RandomString(random, type);
            SCOPED_TRACE(AsDeclaration(value));
            ASSERT_TRUE(Load(Save(value, 14), 14).IsEqual(value));
            // Before version 14 only text survives: what is none is replaced first.
            std::string text;
            value.GetStringValue(text);
            const CValue valid(text.data(), static_cast<unsigned int>(text.size()), type);
            ASSERT_TRUE(Load(Save(valid, 13), 13).IsEqual(valid));
        }
    }
}

}  // namespace
