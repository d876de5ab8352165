#include "platform/Random.h"

#include <array>
#include <vector>

#include <gtest/gtest.h>

TEST(TNRandomGenerator, FillsExactlyTheBytesAskedFor) {
    std::array<unsigned char, 8> data{};
    data.fill(0xA5);
    TNRandomGenerator::GenerateRandom(data.data() + 2, 0);
    EXPECT_EQ(data[2], 0xA5);
    TNRandomGenerator::GenerateRandom(data.data() + 2, 4);
    EXPECT_EQ(data[1], 0xA5);
    EXPECT_EQ(data[6], 0xA5);
}

// Every bit of both bytes shows both values; the chance of a failure is below 1 in 2^240.
TEST(TNRandomGenerator, DrawsAllBits) {
    unsigned int ones = 0;
    unsigned int zeros = 0;
    for (int i = 0; i < 256; ++i) {
        std::array<unsigned char, 2> word{};
        TNRandomGenerator::GenerateRandom(word.data(), word.size());
        const unsigned int bits = static_cast<unsigned int>(word[0]) << 8 | word[1];
        ones |= bits;
        zeros |= ~bits & 0xFFFFU;
    }
    EXPECT_EQ(ones, 0xFFFFU);
    EXPECT_EQ(zeros, 0xFFFFU);
}

TEST(TNRandomGenerator, LargeBufferIsFilledToItsEnd) {
    std::vector<unsigned char> data(1'000'000, 0);
    TNRandomGenerator::GenerateRandom(data.data(), data.size());
    bool tailChanged = false;
    for (std::size_t i = data.size() - 32; i < data.size(); ++i)
        tailChanged |= data[i] != 0;
    EXPECT_TRUE(tailChanged);
}
