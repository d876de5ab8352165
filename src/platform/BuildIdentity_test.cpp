#include "platform/BuildIdentity.h"

#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "platform/BinaryStream.h"

namespace {

const CBuildIdentity& Sample() {
    static const CBuildIdentity identity{"Tool", 1, 0x0203, 4, 65535, -2, "ab"};
    return identity;
}

const std::vector<unsigned char> kSampleBytes = {
    1,                                               // record format
    4,    'T',  'o',  'o',  'l',                     // product
    1,    0,    3,    2,    4,    0,    0xFF, 0xFF,  // major, minor, build, revision
    0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,  // build time
    2,    'a',  'b',                                 // source revision
};

TEST(CBuildIdentity, SavesItsRecord) {
    CBinaryOutputBuffer output;
    Sample().SaveContent(output);
    EXPECT_EQ(output.GetData(), kSampleBytes);
}

TEST(CBuildIdentity, LoadsItsRecordAndNoMore) {
    std::vector<unsigned char> bytes = kSampleBytes;
    bytes.push_back(77);
    CBinaryInputMemory input(bytes);
    CBuildIdentity identity;
    ASSERT_TRUE(identity.LoadContent(input));
    EXPECT_EQ(identity, Sample());
    EXPECT_EQ(input.GetBytesLeft(), 1u);
}

TEST(CBuildIdentity, EveryCutIsRefusedAndStoresNothing) {
    for (std::size_t size = 0; size < kSampleBytes.size(); ++size) {
        SCOPED_TRACE(size);
        CBinaryInputMemory input(std::span<const unsigned char>(kSampleBytes).first(size));
        CBuildIdentity identity = Sample();
        identity.product = "old";
        EXPECT_FALSE(identity.LoadContent(input));
        EXPECT_EQ(identity.product, "old");
    }
}

TEST(CBuildIdentity, OtherRecordFormatsAreRefused) {
    for (const unsigned int format : {0U, 2U, 255U}) {
        SCOPED_TRACE(format);
        std::vector<unsigned char> bytes = kSampleBytes;
        bytes[0] = static_cast<unsigned char>(format);
        CBinaryInputMemory input(bytes);
        CBuildIdentity identity;
        EXPECT_FALSE(identity.LoadContent(input));
        EXPECT_EQ(identity, CBuildIdentity());
    }
}

TEST(CBuildIdentity, OversizedTextLengthIsRefused) {
    for (const std::size_t at : {std::size_t{1}, kSampleBytes.size() - 3}) {
        SCOPED_TRACE(at);
        std::vector<unsigned char> bytes = kSampleBytes;
        bytes[at] = 0x7F;
        CBinaryInputMemory input(bytes);
        CBuildIdentity identity;
        EXPECT_FALSE(identity.LoadContent(input));
    }
}

}  // namespace
