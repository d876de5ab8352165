#include "vm/MemoryBlock.h"

#include "vm/TestImage.h"

namespace {

using namespace vmtest;

CMemoryBlock MakeBlock(const Bytes& data) {
    CMemoryBlock block;
    block.CopyData(static_cast<unsigned int>(data.size()), data.data());
    return block;
}

Bytes Content(const CMemoryBlock& block) {
    return Bytes(block.GetVMData(), block.GetVMData() + block.GetAllocatedSize());
}

const ErrorLocation& Nowhere() {
    return ErrorLocationNull::Get();
}

TEST(CMemoryBlock, IsEmptyAndPassesTheGuardCheckWhenNew) {
    const CMemoryBlock block;
    EXPECT_EQ(block.GetDataSize(), 0U);
    EXPECT_EQ(block.GetAllocatedSize(), 0U);
    EXPECT_EQ(block.GetVMData(), nullptr);
    EXPECT_TRUE(block.CheckGuardBytes());
    EXPECT_TRUE(block.IsDataWithinBlock(0, 0));
    EXPECT_FALSE(block.IsDataWithinBlock(0, 1));
}

TEST(CopyData, SetsTheGuardBehindTheData) {
    const CMemoryBlock block = MakeBlock({1, 2, 3});
    EXPECT_EQ(block.GetDataSize(), 3U);
    EXPECT_EQ(block.GetAllocatedSize(), 7U);
    EXPECT_EQ(Content(block), (Bytes{1, 2, 3, 0xEF, 0xBE, 0x0D, 0x60}));
    EXPECT_TRUE(block.CheckGuardBytes());
}

TEST(CopyData, OfNothingEmptiesTheBlock) {
    CMemoryBlock block = MakeBlock({1});
    block.CopyData(0, nullptr);
    EXPECT_EQ(block.GetAllocatedSize(), 0U);
    EXPECT_TRUE(block.CheckGuardBytes());
}

TEST(CMemoryBlock, CopiesTakeGuardBytesAsTheyAre) {
    CMemoryBlock block = MakeBlock({1, 2});
    block.GetVMData()[2] = 0;
    const CMemoryBlock copy(block);
    EXPECT_FALSE(copy.CheckGuardBytes());
    CMemoryBlock assigned = MakeBlock({9, 9, 9});
    assigned = block;
    EXPECT_EQ(Content(assigned), Content(block));
    assigned = CMemoryBlock();
    EXPECT_EQ(assigned.GetAllocatedSize(), 0U);
}

TEST(CMemoryBlock, MovesLeaveAnEmptyBlock) {
    CMemoryBlock block = MakeBlock({1, 2});
    CMemoryBlock taken(std::move(block));
    EXPECT_EQ(taken.GetDataSize(), 2U);
    CMemoryBlock assigned = MakeBlock({7});
    assigned = std::move(taken);
    EXPECT_EQ(Content(assigned), (Bytes{1, 2, 0xEF, 0xBE, 0x0D, 0x60}));
}

TEST(AllocateNewData, KeepsTheContentForTheSameSize) {
    CMemoryBlock block = MakeBlock({1, 2, 3});
    block.AllocateNewData(3);
    EXPECT_EQ(block.GetVMData()[0], 1);
    block.AllocateNewData(2);
    EXPECT_EQ(Content(block), (Bytes{0, 0, 0xEF, 0xBE, 0x0D, 0x60}));
    block.AllocateNewData(0);
    EXPECT_EQ(block.GetAllocatedSize(), 0U);
}

TEST(LoadData, TakesDataAndGuardFromTheStream) {
    struct Case {
        const char* why;
        unsigned int total;
        Bytes stream;
        bool succeeds;
        unsigned int dataSize;
        bool guardIntact;
        bool streamFails;
    };
    const Case cases[] = {
        {"nothing is fine", 0, {}, true, 0, true, false},
        {"guard only", 4, {0xEF, 0xBE, 0x0D, 0x60}, true, 0, true, false},
        {"the guard is not checked here", 5, {1, 2, 3, 4, 5}, true, 1, false, false},
        {"less than a guard", 3, {1, 2, 3}, false, 0, true, false},
        {"one byte short", 6, {1, 2, 3, 4, 5}, false, 0, true, true},
        {"a length that no host has", 0xFFFFFFFF, {1, 2, 3, 4, 5}, false, 0, true, true},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        CBinaryInputMemory input(row.stream);
        CMemoryBlock block = MakeBlock({8});
        EXPECT_EQ(block.LoadData(row.total, input), row.succeeds);
        EXPECT_EQ(block.GetDataSize(), row.dataSize);
        EXPECT_EQ(block.CheckGuardBytes(), row.guardIntact);
        EXPECT_EQ(input.HasFailed(), row.streamFails);
    }
}

TEST(SetGuardBytes, RepairsTheGuard) {
    CMemoryBlock block = MakeBlock({1});
    for (unsigned int i = 1; i < 5; ++i) {
        block.GetVMData()[i] ^= 1;
        EXPECT_FALSE(block.CheckGuardBytes()) << i;
        block.SetGuardBytes();
        EXPECT_TRUE(block.CheckGuardBytes());
    }
}

TEST(EmptyForReuse, LeavesAnEmptyBlockThatTakesNewData) {
    CMemoryBlock block = MakeBlock({1, 2, 3, 4});
    for (const unsigned int size : {4U, 2U, 9U, 2000U, 1U}) {
        block.EmptyForReuse();
        EXPECT_EQ(block.GetDataSize(), 0U);
        EXPECT_EQ(block.GetVMData(), nullptr);
        EXPECT_FALSE(block.IsDataWithinBlock(0, 1));
        EXPECT_TRUE(block.CheckGuardBytes());
        block.AllocateNewData(size);
        EXPECT_EQ(Content(block), Bytes(size) + (Bytes{0xEF, 0xBE, 0x0D, 0x60})) << size;
    }
    CMemoryBlock emptied = MakeBlock({1});
    emptied.EmptyForReuse();
    const CMemoryBlock copy(emptied);
    EXPECT_EQ(copy.GetAllocatedSize(), 0U);
    const CMemoryBlock moved(std::move(emptied));
    EXPECT_EQ(moved.GetAllocatedSize(), 0U);
}

TEST(IsDataWithinBlock, ComparesWithTheDataSize) {
    const CMemoryBlock block = MakeBlock(Bytes(10));
    struct Case {
        unsigned int offset;
        unsigned int size;
        bool within;
    };
    for (const Case& row : {Case{0, 10, true},
                            {0, 11, false},
                            {10, 0, true},
                            {9, 1, true},
                            {9, 2, false},
                            {11, 0, false},
                            {0xFFFFFFFF, 1, false},
                            {1, 0xFFFFFFFF, false},
                            {0xFFFFFFFE, 4, false}}) {
        EXPECT_EQ(block.IsDataWithinBlock(row.offset, row.size), row.within) << row.offset << "+" << row.size;
    }
}

TEST(GetValueAtOffset, FixedSizesReadAllTheirBytesAndStringsEndWithTheBlock) {
    const CMemoryBlock block = MakeBlock({5, 0, 'a', 'b', 'c'});
    struct Case {
        const char* why;
        unsigned int offset;
        ElementaryType type;
        unsigned int size;
        std::string value;
    };
    const Case cases[] = {
        {"a number", 0, ElementaryType::UInt, 2, "UINT#5"},
        {"a number wider than its size reads on", 0, ElementaryType::UDInt, 1, "UDINT#1650524165"},
        {"a BOOL is true for any byte but 0", 2, ElementaryType::Bool, 1, "BOOL#TRUE"},
        {"a string longer than the block", 0, ElementaryType::String, 5, "STRING#'abc'"},
        {"the stated size does not cut a string", 0, ElementaryType::String, 2, "STRING#'abc'"},
        {"whole units of a wide string", 0, ElementaryType::WString, 5, "WSTRING#\"\u6261\""},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        CValue value;
        EXPECT_TRUE(block.GetValueAtOffset(row.offset, row.type, row.size, value));
        EXPECT_EQ(Declaration(value), row.value);
    }
}

TEST(GetValueAtOffset, FailsWhereThereIsNoData) {
    const CMemoryBlock block = MakeBlock({1, 2});
    struct Case {
        const char* why;
        CMemoryBlock block;
        unsigned int offset;
        ElementaryType type;
    };
    const Case cases[] = {
        {"an empty block", {}, 0, ElementaryType::Bool},
        {"beyond the end", block, 3, ElementaryType::Bool},
        {"no room for the count of a string", block, 1, ElementaryType::String},
        {"a type without raw data", block, 0, ElementaryType::Composite},
        {"a code that is no type", block, 0, static_cast<ElementaryType>(99)},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        CValue value(5);
        EXPECT_FALSE(row.block.GetValueAtOffset(row.offset, row.type, 1, value));
        EXPECT_TRUE(value.IsUndefined());
    }
}

TEST(GetCompositeValueAtOffset, HoldsTheWholeElementsInsideTheBlock) {
    const CMemoryBlock block = MakeBlock({1, 2, 3, 4, 5});
    struct Case {
        const char* why;
        unsigned int offset;
        ElementaryType type;
        unsigned int count;
        std::string value;
    };
    const Case cases[] = {
        {"all asked for", 0, ElementaryType::USInt, 2, "COMPOSITE#USINT[ 1, 2 ]"},
        {"no part of an element", 0, ElementaryType::UInt, 9, "COMPOSITE#UINT[ 513, 1027 ]"},
        {"a count beyond everything", 4, ElementaryType::USInt, 0xFFFFFFFF, "COMPOSITE#USINT[ 5 ]"},
        {"at the end", 5, ElementaryType::USInt, 1, "COMPOSITE#USINT[]"},
        {"beyond the end", 6, ElementaryType::USInt, 1, "COMPOSITE#USINT[]"},
        {"nothing asked for", 0, ElementaryType::USInt, 0, "COMPOSITE#USINT[]"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        CValue value;
        EXPECT_TRUE(block.GetCompositeValueAtOffset(row.offset, row.type, row.count, value));
        EXPECT_EQ(Declaration(value), row.value);
    }
    CValue empty;
    EXPECT_TRUE(CMemoryBlock().GetCompositeValueAtOffset(0, ElementaryType::Int, 3, empty));
    EXPECT_EQ(Declaration(empty), "COMPOSITE#INT[]");
}

TEST(SetValueAtOffset, WritesOrRefuses) {
    struct Case {
        const char* why;
        unsigned int offset;
        unsigned int size;
        CValue value;
        InstructionResult result;
        Bytes content;
    };
    CValue pointer;
    pointer.SetAddress(1, 0, 2);
    const Case cases[] = {
        {"a number", 1, 2, CValue(static_cast<short>(0x0201)), InstructionResult::Continue, {0, 1, 2, 0}},
        {"a number wider than its size writes all", 3, 1, CValue(-1), InstructionResult::Continue, {0, 0, 0, 0xFF}},
        {"a string cut to its size",
         0,
         3,
         CValue("ab", ElementaryType::String),
         InstructionResult::Continue,
         {1, 0, 'a', 0}},
        {"a string cut to the block",
         1,
         99,
         CValue("ab", ElementaryType::String),
         InstructionResult::Continue,
         {0, 1, 0, 'a'}},
        {"no room for a string's count",
         3,
         9,
         CValue("a", ElementaryType::String),
         InstructionResult::Failed,
         {0, 0, 0, 0}},
        {"a pointer into fewer than 8 bytes", 0, 4, pointer, InstructionResult::Failed, {0, 0, 0, 0}},
        {"beyond the end", 5, 1, CValue(true), InstructionResult::Failed, {0, 0, 0, 0}},
    };
    const CClientAccessContext access;
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        CMemoryBlock block = MakeBlock({0, 0, 0, 0});
        CErrorLog log;
        EXPECT_EQ(block.SetValueAtOffset(access, row.offset, row.size, row.value, Nowhere(), log), row.result);
        EXPECT_EQ(Bytes(block.GetVMData(), block.GetVMData() + 4), row.content);
        EXPECT_EQ(log.GetErrorCount(), 0U);
    }
    CErrorLog log;
    EXPECT_EQ(CMemoryBlock().SetValueAtOffset(access, 0, 0, CValue(true), Nowhere(), log), InstructionResult::Failed);
}

TEST(SetValueAtOffset, ShowsInTheGuardWhenItPassesTheEnd) {
    CMemoryBlock block = MakeBlock({0, 0});
    CErrorLog log;
    EXPECT_EQ(block.SetValueAtOffset(CClientAccessContext(), 2, 0, CValue(7LL, ElementaryType::LInt), Nowhere(), log),
              InstructionResult::Continue);
    EXPECT_FALSE(block.CheckGuardBytes());
}

TEST(CMemoryBlock, CopyDataFromWalksToTheBlockAtTheEnd) {
    const CMemoryBlock source = MakeBlock({1, 2, 3, 4, 5, 6});
    const CMemoryRef inner(source, 1);
    const CMemoryRef outer(&inner, 2);
    CMemoryBlock target = MakeBlock({0, 0, 0});
    EXPECT_TRUE(target.CopyDataFrom(1, outer, 2));
    EXPECT_EQ(Bytes(target.GetVMData(), target.GetVMData() + 3), (Bytes{0, 4, 5}));
}

TEST(CMemoryBlock, CopyDataFromRefusesWhatIsNoBlockOrNotInside) {
    const CMemoryBlock source = MakeBlock({1, 2, 3});
    const PlainMemory plain({1, 2, 3});
    const CMemoryRef toPlain(&plain, 0);
    const CMemoryRef toNothing;
    const CMemoryRef toSource(source, 0);
    struct Case {
        const char* why;
        CMemoryRef source;
        unsigned int offset;
        unsigned int size;
    };
    const Case cases[] = {
        {"a provider that is no block", toPlain, 0, 1},
        {"such a provider behind a reference", CMemoryRef(&toPlain, 0), 0, 1},
        {"an unset reference", toNothing, 0, 1},
        {"an unset reference behind a reference", CMemoryRef(&toNothing, 0), 0, 1},
        {"the source ends before", CMemoryRef(source, 1), 0, 3},
        {"offsets that only meet modulo 32 bits", CMemoryRef(&toSource, 0xFFFFFFFF), 0, 1},
        {"the target ends before", toSource, 2, 2},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        CMemoryBlock target = MakeBlock({9, 9, 9});
        EXPECT_FALSE(target.CopyDataFrom(row.offset, row.source, row.size));
        EXPECT_EQ(Bytes(target.GetVMData(), target.GetVMData() + 3), (Bytes{9, 9, 9}));
    }
}

TEST(CMemoryBlock, CopyDataFromItselfBehavesAsMemmove) {
    CMemoryBlock block = MakeBlock({1, 2, 3, 4, 5});
    EXPECT_TRUE(block.CopyDataFrom(1, CMemoryRef(block, 0), 4));
    EXPECT_EQ(Bytes(block.GetVMData(), block.GetVMData() + 5), (Bytes{1, 1, 2, 3, 4}));
    block.CopyDataFrom(0, 2, &block, 3);
    EXPECT_EQ(Bytes(block.GetVMData(), block.GetVMData() + 5), (Bytes{2, 3, 4, 3, 4}));
    const CMemoryBlock empty;
    EXPECT_TRUE(empty.CopyDataFrom(0, CMemoryRef(empty, 0), 0));
}

TEST(PrintData, ShowsDataAndGuard) {
    COutputLogString output;
    MakeBlock({0xAB}).PrintData("Name", output);
    EXPECT_THAT(output.GetText(), testing::HasSubstr("Name"));
    EXPECT_THAT(output.GetText(), testing::ContainsRegex("[aA][bB] [eE][fF] [bB][eE] 0[dD] 60"));
}

}  // namespace
