#include "platform/BinaryStream.h"

#include <array>
#include <bit>
#include <limits>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<unsigned char>;

template <typename Action>
Bytes Written(Action action) {
    CBinaryOutputBuffer output;
    action(output);
    return output.GetData();
}

template <typename T>
Bytes BytesOf(const T& value) {
    return Written([&](CBinaryOutput& output) { output << value; });
}

TEST(CBinaryOutput, NumbersAreLittleEndian) {
    EXPECT_EQ(BytesOf(true), (Bytes{1}));
    EXPECT_EQ(BytesOf(false), (Bytes{0}));
    EXPECT_EQ(BytesOf(static_cast<signed char>(-1)), (Bytes{0xFF}));
    EXPECT_EQ(BytesOf(static_cast<unsigned char>(0x80)), (Bytes{0x80}));
    EXPECT_EQ(BytesOf(static_cast<short>(-2)), (Bytes{0xFE, 0xFF}));
    EXPECT_EQ(BytesOf(static_cast<unsigned short>(0x1234)), (Bytes{0x34, 0x12}));
    EXPECT_EQ(BytesOf(std::numeric_limits<int>::min()), (Bytes{0, 0, 0, 0x80}));
    EXPECT_EQ(BytesOf(0x12345678U), (Bytes{0x78, 0x56, 0x34, 0x12}));
    EXPECT_EQ(BytesOf(-2LL), (Bytes{0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(BytesOf(0x0123456789ABCDEFULL), (Bytes{0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01}));
    EXPECT_EQ(BytesOf(1.0F), (Bytes{0, 0, 0x80, 0x3F}));
    EXPECT_EQ(BytesOf(-2.0), (Bytes{0, 0, 0, 0, 0, 0, 0, 0xC0}));
    EXPECT_EQ(BytesOf(std::string("a\0b", 3)), (Bytes{3, 'a', 0, 'b'}));
    EXPECT_EQ(BytesOf(std::string()), (Bytes{0}));
}

TEST(CBinaryOutput, LongTextHasALongerLength) {
    const Bytes bytes = BytesOf(std::string(128, 'x'));
    ASSERT_EQ(bytes.size(), 130u);
    EXPECT_EQ(bytes[0], 0x80);
    EXPECT_EQ(bytes[1], 0x01);
}

struct EncodedNumber {
    std::uint32_t value;
    Bytes bytes;
};

const std::vector<EncodedNumber> k7BitNumbers = {
    {0, {0}},
    {1, {1}},
    {0x7F, {0x7F}},
    {0x80, {0x80, 0x01}},
    {300, {0xAC, 0x02}},
    {0x3FFF, {0xFF, 0x7F}},
    {0x4000, {0x80, 0x80, 0x01}},
    {0x1FFFFF, {0xFF, 0xFF, 0x7F}},
    {0x200000, {0x80, 0x80, 0x80, 0x01}},
    {0xFFFFFFF, {0xFF, 0xFF, 0xFF, 0x7F}},
    {0x10000000, {0x80, 0x80, 0x80, 0x80, 0x01}},
    {0xFFFFFFFF, {0xFF, 0xFF, 0xFF, 0xFF, 0x0F}},
};

const std::vector<EncodedNumber> kUtfNumbers = {
    {0, {0}},
    {0x7F, {0x7F}},
    {0x80, {0xC2, 0x80}},
    {0x7FF, {0xDF, 0xBF}},
    {0x800, {0xE0, 0xA0, 0x80}},
    {0xD800, {0xED, 0xA0, 0x80}},
    {0xFFFF, {0xEF, 0xBF, 0xBF}},
    {0x10000, {0xF0, 0x90, 0x80, 0x80}},
    {0x1FFFFF, {0xF7, 0xBF, 0xBF, 0xBF}},
    {0x200000, {0xF8, 0x88, 0x80, 0x80, 0x80}},
    {0x3FFFFFF, {0xFB, 0xBF, 0xBF, 0xBF, 0xBF}},
    {0x4000000, {0xFC, 0x84, 0x80, 0x80, 0x80, 0x80}},
    {0x7FFFFFFF, {0xFD, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF}},
};

TEST(SevenBitEncodedInt, WritesAndReads) {
    for (const EncodedNumber& row : k7BitNumbers) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(Written([&](CBinaryOutput& output) { output.Write7BitEncodedInt(row.value); }), row.bytes);
        CBinaryInputMemory input(row.bytes);
        EXPECT_EQ(input.Read7BitEncodedInt(), row.value);
        EXPECT_EQ(input.GetBytesLeft(), 0u);
        EXPECT_FALSE(input.HasFailed());
    }
}

TEST(UtfCharacter, WritesAndReads) {
    for (const EncodedNumber& row : kUtfNumbers) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(Written([&](CBinaryOutput& output) { output.WriteUTFCharacter(row.value); }), row.bytes);
        CBinaryInputMemory input(row.bytes);
        EXPECT_EQ(input.ReadUTF8Character(), row.value);
        EXPECT_EQ(input.GetBytesLeft(), 0u);
        EXPECT_FALSE(input.HasFailed());
    }
}

TEST(UtfCharacter, TopBitIsDropped) {
    EXPECT_EQ(Written([](CBinaryOutput& output) { output.WriteUTFCharacter(0x80000041); }), (Bytes{0x41}));
}

TEST(SevenBitEncodedInt, EveryCutFails) {
    for (const EncodedNumber& row : k7BitNumbers) {
        for (std::size_t size = 0; size < row.bytes.size(); ++size) {
            CBinaryInputMemory input(std::span<const unsigned char>(row.bytes).first(size));
            EXPECT_EQ(input.Read7BitEncodedInt(), 0u);
            EXPECT_TRUE(input.HasFailed());
        }
    }
}

TEST(UtfCharacter, EveryCutFails) {
    for (const EncodedNumber& row : kUtfNumbers) {
        for (std::size_t size = 0; size < row.bytes.size(); ++size) {
            CBinaryInputMemory input(std::span<const unsigned char>(row.bytes).first(size));
            EXPECT_EQ(input.ReadUTF8Character(), 0u);
            EXPECT_TRUE(input.HasFailed());
        }
    }
}

TEST(SevenBitEncodedInt, BitsBeyond32AndSixthByteFail) {
    for (const Bytes& bytes : {Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0x10}, Bytes{0x80, 0x80, 0x80, 0x80, 0x80, 0x00},
                               Bytes{0x80, 0x80, 0x80, 0x80, 0x8F, 0x00}}) {
        CBinaryInputMemory input(bytes);
        EXPECT_EQ(input.Read7BitEncodedInt(), 0u);
        EXPECT_TRUE(input.HasFailed());
    }
}

TEST(UtfCharacter, MalformedSequencesFail) {
    for (const Bytes& bytes : {Bytes{0x80}, Bytes{0xBF, 0x80}, Bytes{0xFE, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80},
                               Bytes{0xFF}, Bytes{0xC3, 0x41}, Bytes{0xE2, 0x82, 0xC0}}) {
        CBinaryInputMemory input(bytes);
        EXPECT_EQ(input.ReadUTF8Character(), 0u);
        EXPECT_TRUE(input.HasFailed());
    }
}

template <typename T>
void ExpectRoundTrip(const T& value) {
    const Bytes bytes = BytesOf(value);
    CBinaryInputMemory input(bytes);
    T read{};
    input >> read;
    EXPECT_EQ(BytesOf(read), bytes) << "bit for bit, NaN included";
    EXPECT_FALSE(input.HasFailed());
    EXPECT_EQ(input.GetBytesLeft(), 0u);

    CBinaryInputMemory cut(std::span(std::as_const(bytes)).first(bytes.size() - 1));
    cut >> read;
    EXPECT_TRUE(cut.HasFailed());
}

TEST(BinaryStream, EveryTypeReadsBackWhatWasWritten) {
    std::mt19937_64 random(2);
    for (int i = 0; i < 500; ++i) {
        const std::uint64_t bits = random();
        ExpectRoundTrip(static_cast<bool>(bits & 1));
        ExpectRoundTrip(static_cast<signed char>(bits));
        ExpectRoundTrip(static_cast<unsigned char>(bits));
        ExpectRoundTrip(static_cast<short>(bits));
        ExpectRoundTrip(static_cast<unsigned short>(bits));
        ExpectRoundTrip(static_cast<int>(bits));
        ExpectRoundTrip(static_cast<unsigned int>(bits));
        ExpectRoundTrip(static_cast<long long>(bits));
        ExpectRoundTrip(static_cast<unsigned long long>(bits));
        ExpectRoundTrip(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
        ExpectRoundTrip(std::bit_cast<double>(bits));
        ExpectRoundTrip(std::string(bits % 300, static_cast<char>(bits >> 32)) + "end");
    }
}

TEST(BinaryStream, EncodedNumbersReadBack) {
    std::mt19937 random(3);
    for (int i = 0; i < 5000; ++i) {
        const auto value = static_cast<std::uint32_t>(random() >> (random() % 32));
        const Bytes bytes = Written([&](CBinaryOutput& output) {
            output.Write7BitEncodedInt(value);
            output.WriteUTFCharacter(value);
        });
        CBinaryInputMemory input(bytes);
        ASSERT_EQ(input.Read7BitEncodedInt(), value);
        ASSERT_EQ(input.ReadUTF8Character(), value & 0x7FFFFFFF);
        ASSERT_FALSE(input.HasFailed());
    }
}

TEST(CBinaryInput, BoolIsTrueForEveryByteButZero) {
    for (const auto& [byte, expected] : {std::pair{0U, false}, {1U, true}, {2U, true}, {255U, true}}) {
        const Bytes bytes = {static_cast<unsigned char>(byte)};
        CBinaryInputMemory input(bytes);
        bool value = !expected;
        input >> value;
        EXPECT_EQ(value, expected) << byte;
    }
}

TEST(CBinaryInput, ShortReadDeliversZerosAndFailsForGood) {
    const Bytes bytes = {0x11, 0x22, 0x33};
    CBinaryInputMemory input(bytes);
    unsigned int value = 0xFFFFFFFF;
    input >> value;
    EXPECT_EQ(value, 0x00332211u);
    EXPECT_TRUE(input.HasFailed());
    EXPECT_EQ(input.GetBytesLeft(), 0u);
    value = 0xFFFFFFFF;
    input >> value;
    EXPECT_EQ(value, 0u);
    EXPECT_TRUE(input.TryRead(nullptr, 0));
    EXPECT_TRUE(input.HasFailed());
}

TEST(CBinaryInput, TryReadTellsWhetherAllWasThere) {
    const Bytes bytes = {1, 2, 3};
    CBinaryInputMemory input(bytes);
    std::array<unsigned char, 2> data{};
    EXPECT_TRUE(input.TryRead(data.data(), 2));
    EXPECT_EQ(input.GetPosition(), 2u);
    data = {9, 9};
    EXPECT_FALSE(input.TryRead(data.data(), 2));
    EXPECT_EQ(data, (std::array<unsigned char, 2>{3, 0}));
}

TEST(CBinaryInput, EmptyInputHasNothing) {
    CBinaryInputMemory input({});
    EXPECT_EQ(input.GetBytesLeft(), 0u);
    EXPECT_FALSE(input.HasFailed());
    unsigned char byte = 7;
    input >> byte;
    EXPECT_EQ(byte, 0);
    EXPECT_TRUE(input.HasFailed());
}

TEST(CBinaryInput, TextLengthBeyondTheEndTakesWhatIsThere) {
    const Bytes bytes = {0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 'a', 'b'};
    CBinaryInputMemory input(bytes);
    std::string text = "old";
    input >> text;
    EXPECT_EQ(text, "ab");
    EXPECT_LT(text.capacity(), 100u) << "nothing is allocated for the rest";
    EXPECT_TRUE(input.HasFailed());
}

TEST(CBinaryInput, BrokenTextLengthGivesAnEmptyText) {
    const Bytes bytes = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 'a'};
    CBinaryInputMemory input(bytes);
    std::string text = "old";
    input >> text;
    EXPECT_EQ(text, "");
    EXPECT_TRUE(input.HasFailed());
}

TEST(CBinaryInput, RandomBytesNeverPassTheEnd) {
    std::mt19937 random(4);
    for (int round = 0; round < 2000; ++round) {
        const std::size_t size = random() % 24;
        const auto bytes = std::make_unique<unsigned char[]>(size);
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<unsigned char>(random());
        CBinaryInputMemory input(std::span<const unsigned char>(bytes.get(), size));
        for (int step = 0; step < 30; ++step) {
            const std::size_t before = input.GetBytesLeft();
            std::string text;
            unsigned long long number = 0;
            switch (random() % 4) {
                case 0: (void)input.Read7BitEncodedInt(); break;
                case 1: (void)input.ReadUTF8Character(); break;
                case 2: input >> text; break;
                default: input >> number; break;
            }
            ASSERT_LE(text.size(), before);
            ASSERT_LE(input.GetBytesLeft(), before);
        }
        EXPECT_TRUE(input.HasFailed());
    }
}

}  // namespace
