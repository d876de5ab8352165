#include "vm/VirtualMachine.h"

#include "vm/TestImage.h"

namespace {

using namespace vmtest;

/// A build identity record: format 1, "C", 1.2.3.4, a time, "r".
const Bytes kIdentity = Join({{1, 1, 'C'}, U16(1), U16(2), U16(3), U16(4), I64(5), {1, 'r'}});

ImageParts FullImage(unsigned int version) {
    return {.version = version,
            .globalData = {1, 2, 3},
            .constants = {4, 5},
            .code = {10, 11, 12},
            .programs = {{"Main", 1, 70}, {"Other", 2, 0}},
            .expressions = {{100, 1}, {200, 2}},
            .codeBlocks = {{300, 1}}};
}

struct Loaded {
    CVirtualMachine image;
    CErrorLog log;
    bool result = false;
    bool streamFailed = false;
};

void Load(const Bytes& bytes, Loaded& loaded) {
    CBinaryInputMemory input(bytes);
    loaded.result = loaded.image.LoadVMImage(loaded.log, input);
    loaded.streamFailed = input.HasFailed();
}

TEST(LoadVMImage, ReadsEveryVersion) {
    for (unsigned int version = 1; version <= 5; ++version) {
        SCOPED_TRACE(version);
        Loaded loaded;
        Load(MakeImage(FullImage(version)), loaded);
        ASSERT_TRUE(loaded.result);
        EXPECT_FALSE(loaded.streamFailed);
        const CVirtualMachine& image = loaded.image;
        EXPECT_EQ(image.GetVersion(), version);
        EXPECT_EQ(image.GetGlobalData().GetDataSize(), 3U);
        EXPECT_EQ(image.GetGlobalConstantData().GetDataSize(), version >= 2 ? 2U : 0U);
        EXPECT_EQ(Bytes(image.GetOpCodes(), image.GetOpCodes() + image.GetOpCodesLength()), (Bytes{10, 11, 12}));
        EXPECT_EQ(image.GetPrograms().size(), 2U);
        EXPECT_EQ(image.GetPrograms().at("main").secondWord, 70U);
        unsigned int offset = 0;
        EXPECT_TRUE(image.FindExpression(version >= 3 ? 200 : 1, offset));
        EXPECT_EQ(offset, 2U);
        EXPECT_EQ(image.FindStandaloneCodeBlock(300, offset), version >= 4);
    }
}

TEST(LoadVMImage, ReadsABuildIdentity) {
    ImageParts parts = FullImage(5);
    parts.magic = 0x4942;
    parts.identity = kIdentity;
    Loaded loaded;
    Load(MakeImage(parts), loaded);
    EXPECT_TRUE(loaded.result);
    EXPECT_EQ(loaded.image.GetOpCodesLength(), 3U);
}

TEST(LoadVMImage, RefusesDamage) {
    ImageParts badIdentity = FullImage(5);
    badIdentity.magic = 0x4942;
    badIdentity.identity = {2};
    const Bytes head = Join({{'V', 'I'}, U16(5)});
    struct Case {
        const char* why;
        Bytes image;
        unsigned int message;
        std::string text;
    };
    const Case cases[] = {
        {"nothing", {}, 254, "Invalid VM Image."},
        {"another magic number", {'V', 'J', 5, 0}, 254, "Invalid VM Image."},
        {"identity of another format", MakeImage(badIdentity), 235, "Invalid build identity."},
        {"identity cut short", Join({{'B', 'I'}, {1, 1}}), 235, "Invalid build identity."},
        {"version 0", {'V', 'I', 0, 0}, 236, "Invalid version '0'."},
        {"version 6", {'V', 'I', 6, 0}, 236, "Invalid version '6'."},
        {"a large version", {'V', 'I', 0xFF, 0xFF}, 236, "Invalid version '65535'."},
        {"an empty block", head + U32(0), 237, "Memory block 'GlobalData', invalid length '0'."},
        {"a block without room for the guard", head + U32(3), 237, "Memory block 'GlobalData', invalid length '3'."},
        {"a block cut short", head + U32(9) + Bytes(8), 238, "Memory block 'GlobalData', data truncated."},
        {"a block of 4 GiB", head + U32(0xFFFFFFFF), 238, "Memory block 'GlobalData', data truncated."},
        {"constants without room", head + Block({}) + U32(1), 237,
         "Memory block 'GlobalConstants', invalid length '1'."},
        {"constants cut short", head + Block({}) + U32(4), 238, "Memory block 'GlobalConstants', data truncated."},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        Loaded loaded;
        Load(row.image, loaded);
        EXPECT_FALSE(loaded.result);
        EXPECT_EQ(MessageIds(loaded.log), (std::vector<unsigned int>{row.message}));
        EXPECT_EQ(loaded.log.GetEntries().front().text, row.text);
        EXPECT_EQ(loaded.log.GetEntries().front().location, "");
    }
}

TEST(LoadVMImage, CutAnywhereIsNoticed) {
    for (unsigned int version = 1; version <= 5; ++version) {
        const Bytes whole = MakeImage(FullImage(version));
        for (std::size_t length = 0; length < whole.size(); ++length) {
            SCOPED_TRACE(testing::Message() << "version " << version << " cut to " << length);
            Loaded loaded;
            Load(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)), loaded);
            EXPECT_TRUE(!loaded.result || loaded.streamFailed);
            EXPECT_EQ(loaded.log.GetErrorCount(), loaded.result ? 0U : 1U);
        }
    }
}

TEST(LoadVMImage, CountsBeyondTheStreamEndTheirTable) {
    const Bytes begin = Join({{'V', 'I'}, U16(5), Block({}), Block({})});
    const Bytes noCode = begin + U32(0);
    struct Case {
        const char* why;
        Bytes image;
        std::size_t codeLength;
        std::size_t programs;
        std::size_t expressions;
        std::size_t codeBlocks;
    };
    const Case cases[] = {
        {"code holds what is there", begin + U32(0xFFFFFFFF) + Bytes{10, 12}, 2, 0, 0, 0},
        {"programs", Join({noCode, U32(0xFFFFFFFF), {1, 'P'}, U32(1), U32(2), {1, 'Q'}, U32(3)}), 0, 1, 0, 0},
        {"a name beyond the end", Join({noCode, U32(1), {0xFF, 0x7F, 'P'}}), 0, 0, 0, 0},
        {"expressions", Join({noCode, U32(0), U32(0xFFFFFFFF), U32(1), U32(2), U32(3)}), 0, 0, 1, 0},
        {"code blocks", Join({noCode, U32(0), U32(0), U32(0xFFFFFFFF), U32(1), U32(2)}), 0, 0, 0, 1},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        Loaded loaded;
        Load(row.image, loaded);
        EXPECT_TRUE(loaded.result);
        EXPECT_TRUE(loaded.streamFailed);
        EXPECT_EQ(loaded.image.GetOpCodesLength(), row.codeLength);
        EXPECT_EQ(loaded.image.GetPrograms().size(), row.programs);
        EXPECT_EQ(loaded.image.GetExpressions().size(), row.expressions);
        EXPECT_EQ(loaded.image.GetStandaloneCodeBlocks().size(), row.codeBlocks);
    }
}

TEST(LoadVMImage, KeepsTheFirstOfTwoEntries) {
    ImageParts parts{
        .programs = {{"Main", 1}, {"MAIN", 2}}, .expressions = {{5, 1}, {5, 2}}, .codeBlocks = {{6, 1}, {6, 2}}};
    Loaded loaded;
    Load(MakeImage(parts), loaded);
    unsigned int offset = 0;
    EXPECT_TRUE(loaded.image.FindProgram("mAiN", offset));
    EXPECT_EQ(offset, 1U);
    EXPECT_TRUE(loaded.image.FindExpression(5, offset));
    EXPECT_EQ(offset, 1U);
    EXPECT_TRUE(loaded.image.FindStandaloneCodeBlock(6, offset));
    EXPECT_EQ(offset, 1U);
    EXPECT_EQ(loaded.log.GetErrorCount(), 0U);
}

TEST(LoadVMImage, GuardBytesComeFromTheImage) {
    Bytes image = MakeImage(FullImage(5));
    image[4 + 4 + 3] = 0;  // first guard byte of the global data
    Loaded loaded;
    Load(image, loaded);
    EXPECT_TRUE(loaded.result);
    EXPECT_FALSE(loaded.image.GetGlobalData().CheckGuardBytes());
}

TEST(LoadVMImage, StartsAfreshAndLeavesWhatWasReadBeforeAFault) {
    CVirtualMachine image;
    CErrorLog log;
    const Bytes good = MakeImage(FullImage(5));
    CBinaryInputMemory first(good);
    ASSERT_TRUE(image.LoadVMImage(log, first));
    const Bytes bad = Join({{'V', 'I'}, U16(5), Block({7}), U32(2)});
    CBinaryInputMemory second(bad);
    EXPECT_FALSE(image.LoadVMImage(log, second));
    EXPECT_EQ(image.GetGlobalData().GetDataSize(), 1U);
    EXPECT_EQ(image.GetOpCodesLength(), 0U);
    EXPECT_TRUE(image.GetPrograms().empty());
    EXPECT_TRUE(image.GetExpressions().empty());
    EXPECT_TRUE(image.GetStandaloneCodeBlocks().empty());
}

TEST(CVirtualMachine, IsEmptyWhenNewAndAfterClear) {
    Loaded loaded;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(loaded.image.GetOpCodesLength(), 0U);
        ASSERT_NE(loaded.image.GetOpCodes(), nullptr);
        EXPECT_EQ(loaded.image.GetOpCodes()[0], 0);
        EXPECT_EQ(loaded.image.GetGlobalData().GetAllocatedSize(), 0U);
        EXPECT_EQ(loaded.image.GetGlobalConstantData().GetAllocatedSize(), 0U);
        EXPECT_TRUE(loaded.image.GetPrograms().empty());
        Load(MakeImage(FullImage(5)), loaded);
        loaded.image.Clear();
    }
}

TEST(CVirtualMachine, FailedLookUpsLeaveTheOutput) {
    Loaded loaded;
    Load(MakeImage(FullImage(5)), loaded);
    unsigned int offset = 99;
    EXPECT_FALSE(loaded.image.FindProgram("Mai", offset));
    EXPECT_FALSE(loaded.image.FindProgram("Mainn", offset));
    EXPECT_FALSE(loaded.image.FindExpression(1, offset));
    EXPECT_FALSE(loaded.image.FindStandaloneCodeBlock(301, offset));
    EXPECT_EQ(offset, 99U);
}

TEST(CompareStringNoCase, OrdersByAsciiLowerCase) {
    const CVirtualMachine::CompareStringNoCase less;
    struct Case {
        std::string left;
        std::string right;
        bool isLess;
    };
    const Case cases[] = {{"a", "B", true},
                          {"B", "a", false},
                          {"a", "A", false},
                          {"", "a", true},
                          {"a", "", false},
                          {"a", "ab", true},
                          {"_", "a", true},
                          {"Z", "_", false},
                          {"\xC3\x84", "z", false},
                          {"z", "\xC3\x84", true},
                          {std::string("a\0b", 3), std::string("a\0c", 3), false}};
    for (const Case& row : cases)
        EXPECT_EQ(less(row.left, row.right), row.isLess) << row.left << " < " << row.right;
}

}  // namespace
