#include "vm/MemoryRef.h"

#include "vm/TestImage.h"

namespace {

using namespace vmtest;

class CMemoryRefTest : public testing::Test {
 protected:
    CMemoryRefTest() { block_.AllocateNewData(32); }
    [[nodiscard]] Bytes At(unsigned int offset, unsigned int size) const {
        return Bytes(block_.GetVMData() + offset, block_.GetVMData() + offset + size);
    }
    CMemoryBlock block_;
};

TEST_F(CMemoryRefTest, UnsetReferencesReachNothing) {
    const CMemoryRef unset;
    CErrorLog log;
    CValue value(5);
    EXPECT_EQ(unset.GetTargetMem(), nullptr);
    EXPECT_FALSE(unset.IsDataWithinBlock(0, 0));
    EXPECT_FALSE(unset.GetValueAtOffset(0, ElementaryType::Bool, 1, value));
    EXPECT_TRUE(value.IsUndefined());
    EXPECT_FALSE(unset.GetCompositeValueAtOffset(0, ElementaryType::Bool, 1, value));
    EXPECT_EQ(unset.SetValueAtOffset(CClientAccessContext(), 0, 1, value, ErrorLocationNull::Get(), log),
              InstructionResult::Failed);
    EXPECT_FALSE(unset.CopyDataFrom(0, CMemoryRef(block_, 0), 1));
    EXPECT_EQ(unset.GetVMData(), nullptr);
    EXPECT_EQ(unset.GetOffset(), 0U);
    EXPECT_EQ(unset.GetLINTAtOffset(0), 0);
    EXPECT_FALSE(unset.SetEdgeAtOffset(0, true, true));
}

TEST_F(CMemoryRefTest, OffsetsAddUp) {
    block_.GetVMData()[12] = 42;
    const CMemoryRef at8(block_, 8);
    const CMemoryRef at12(at8, 4);
    EXPECT_EQ(at12.GetTargetMem(), &block_);
    EXPECT_EQ(at12.GetTargetMemOffset(), 12U);
    EXPECT_EQ(at12.GetOffset(), 12U);
    EXPECT_EQ(at12.GetSINTAtOffset(0), 42);
    CMemoryRef moved(at12, 0);
    moved.AdjustOffset(-2);
    EXPECT_EQ(moved.GetSINTAtOffset(2), 42);
    const CMemoryRef nested(&at8, 3);
    EXPECT_EQ(nested.GetOffset(), 11U);
    EXPECT_EQ(nested.GetVMData(), block_.GetVMData());
    EXPECT_EQ(nested.GetSINTAtOffset(1), 42);
    EXPECT_TRUE(nested.IsDataWithinBlock(0, 21));
    EXPECT_FALSE(nested.IsDataWithinBlock(0, 22));
}

TEST_F(CMemoryRefTest, KnowsABlockByEveryConstructor) {
    const CVMMemoryInterface* asInterface = &block_;
    EXPECT_EQ(CMemoryRef(asInterface, 0).GetTargetBlock(), &block_);
    const CMemoryRef inner(block_, 0);
    EXPECT_EQ(CMemoryRef(&inner, 0).GetTargetBlock(), nullptr);
    EXPECT_EQ(CMemoryRef(static_cast<const CVMMemoryInterface*>(nullptr), 0).GetTargetMem(), nullptr);
}

TEST_F(CMemoryRefTest, SumsBeyond32BitsAreOutOfRange) {
    const CMemoryRef at8(block_, 8);
    CValue value;
    CErrorLog log;
    for (const CMemoryRef& wrapped : {CMemoryRef(at8, 0xFFFFFFFF), CMemoryRef(at8, 0xFFFFFFF8)}) {
        EXPECT_FALSE(wrapped.IsDataWithinBlock(0, 0));
        EXPECT_FALSE(wrapped.IsDataWithinBlock(0, 1));
        EXPECT_FALSE(wrapped.GetValueAtOffset(0, ElementaryType::Bool, 1, value));
    }
    EXPECT_FALSE(at8.IsDataWithinBlock(0xFFFFFFFF, 1));
    EXPECT_FALSE(at8.GetValueAtOffset(0xFFFFFFFC, ElementaryType::Bool, 1, value));
    EXPECT_EQ(at8.SetValueAtOffset(CClientAccessContext(), 0xFFFFFFFC, 1, CValue(true), ErrorLocationNull::Get(), log),
              InstructionResult::Failed);
    EXPECT_FALSE(at8.CopyDataFrom(0xFFFFFFFC, at8, 1));
}

TEST_F(CMemoryRefTest, ForwardsValues) {
    const CMemoryRef ref(block_, 4);
    CErrorLog log;
    EXPECT_EQ(ref.SetValueAtOffset(CClientAccessContext(), 1, 4, CValue(0x04030201), ErrorLocationNull::Get(), log),
              InstructionResult::Continue);
    EXPECT_EQ(At(5, 4), (Bytes{1, 2, 3, 4}));
    CValue value;
    EXPECT_TRUE(ref.GetValueAtOffset(1, ElementaryType::Int, 2, value));
    EXPECT_EQ(Declaration(value), "INT#513");
    EXPECT_TRUE(ref.GetCompositeValueAtOffset(1, ElementaryType::USInt, 2, value));
    EXPECT_EQ(Declaration(value), "COMPOSITE#USINT[ 1, 2 ]");
    EXPECT_TRUE(ref.CopyDataFrom(0, CMemoryRef(block_, 6), 2));
    EXPECT_EQ(At(4, 2), (Bytes{2, 3}));
}

TEST_F(CMemoryRefTest, ScalarsLieLittleEndianAtAnyByte) {
    const CMemoryRef ref(block_, 1);
    ref.SetBOOLAtOffset(0, true);
    EXPECT_TRUE(ref.GetBOOLAtOffset(0));
    block_.GetVMData()[1] = 0x80;
    EXPECT_TRUE(ref.GetBOOLAtOffset(0));
    ref.SetSINTAtOffset(0, -2);
    EXPECT_EQ(ref.GetSINTAtOffset(0), -2);
    ref.SetINTAtOffset(0, -2);
    EXPECT_EQ(At(1, 2), (Bytes{0xFE, 0xFF}));
    EXPECT_EQ(ref.GetINTAtOffset(0), -2);
    ref.SetDINTAtOffset(0, 0x01020304);
    EXPECT_EQ(At(1, 4), (Bytes{4, 3, 2, 1}));
    EXPECT_EQ(ref.GetDINTAtOffset(0), 0x01020304);
    ref.SetLINTAtOffset(0, std::numeric_limits<long long>::min());
    EXPECT_EQ(ref.GetLINTAtOffset(0), std::numeric_limits<long long>::min());
    ref.SetREALAtOffset(0, 1.0F);
    EXPECT_EQ(At(1, 4), (Bytes{0, 0, 0x80, 0x3F}));
    ref.SetLREALAtOffset(0, -1.5);
    EXPECT_EQ(ref.GetLREALAtOffset(0), -1.5);
}

TEST_F(CMemoryRefTest, PointersAreEightBytes) {
    const Bytes bytes = {3, 0, 2, 1, 0x78, 0x56, 0x34, 0x12};
    std::memcpy(block_.GetVMData() + 3, bytes.data(), bytes.size());
    PointerValue pointer;
    CMemoryRef(block_, 1).GetPointerAddressAtOffset(2, pointer);
    EXPECT_EQ(pointer, (PointerValue{LocationKind::Temp, 0x0102, 0x12345678}));
}

TEST_F(CMemoryRefTest, StringsStoreTheSmallerOfMaximumAndLength) {
    const CMemoryRef ref(block_, 0);
    ref.SetSTRINGAtOffset(1, 3, 5, Text("abcde").data());
    EXPECT_EQ(At(1, 6), (Bytes{3, 0, 'a', 'b', 'c', 0}));
    ref.SetSTRINGAtOffset(1, 3, 1, Text("z").data());
    EXPECT_EQ(At(1, 4), (Bytes{1, 0, 'z', 'b'}));
    ref.SetSTRINGAtOffset(1, 3, nullptr);
    EXPECT_EQ(At(1, 2), (Bytes{0, 0}));
    const CValue text("xyz", ElementaryType::String);
    ref.SetSTRINGAtOffset(1, 9, text.GetUtf8String());
    EXPECT_EQ(At(1, 5), (Bytes{3, 0, 'x', 'y', 'z'}));
}

TEST_F(CMemoryRefTest, WideStringsCountUnits) {
    const CMemoryRef ref(block_, 0);
    const unsigned short units[] = {0x0102, 0x0304, 0x0506};
    ref.SetWSTRINGAtOffset(1, 2, 3, units);
    EXPECT_EQ(At(1, 7), (Bytes{2, 0, 2, 1, 4, 3, 0}));
    unsigned short buffer[4] = {9, 9, 9, 9};
    EXPECT_EQ(ref.GetWSTRINGAtOffset(1, buffer, 4), 2);
    EXPECT_THAT(buffer, testing::ElementsAre(0x0102, 0x0304, 9, 9));
    EXPECT_EQ(ref.GetWSTRINGAtOffset(1, buffer, 1), 1);
    const CValue text("x", ElementaryType::WString);
    ref.SetWSTRINGAtOffset(1, 9, text.GetUtf16String());
    EXPECT_EQ(At(1, 4), (Bytes{1, 0, 'x', 0}));
    ref.SetWSTRINGAtOffset(1, 9, nullptr);
    EXPECT_EQ(ref.GetWSTRINGAtOffset(1, buffer, 4), 0);
}

TEST_F(CMemoryRefTest, AccessorsNeverLeaveTheAllocation) {
    const CMemoryRef atEnd(block_, 32);
    atEnd.SetSINTAtOffset(0, 1);  // into the guard
    EXPECT_FALSE(block_.CheckGuardBytes());
    block_.SetGuardBytes();
    for (const unsigned int offset : {45U, 52U, 1000U, 0xFFFFFFFFU}) {
        atEnd.SetLINTAtOffset(offset, -1);
        EXPECT_EQ(atEnd.GetLINTAtOffset(offset), 0) << offset;
        EXPECT_FALSE(atEnd.SetEdgeAtOffset(offset, true, true)) << offset;
        atEnd.SetSTRINGAtOffset(offset, 100, 3, Text("abc").data());
    }
    const Bytes longText(1000, 'x');
    atEnd.SetSTRINGAtOffset(0, 1000, 1000, longText.data());
    EXPECT_TRUE(block_.CheckGuardBytes());
    block_.GetVMData()[0] = 0xFF;
    block_.GetVMData()[1] = 0xFF;
    std::vector<unsigned short> buffer(0xFFFF);
    EXPECT_EQ(CMemoryRef(block_, 0).GetWSTRINGAtOffset(0, buffer.data(), 0xFFFF), 0);
}

TEST_F(CMemoryRefTest, AccessorsAskAProviderThatIsNoBlock) {
    const PlainMemory plain(Bytes(4));
    const CMemoryRef ref(&plain, 1);
    ref.SetINTAtOffset(1, 0x0102);
    EXPECT_EQ(plain.bytes, (Bytes{0, 0, 2, 1}));
    ref.SetINTAtOffset(2, -1);
    EXPECT_EQ(plain.bytes, (Bytes{0, 0, 2, 1}));
    EXPECT_EQ(ref.GetDINTAtOffset(0), 0);
}

TEST_F(CMemoryRefTest, EdgeRecords) {
    struct Case {
        const char* why;
        bool rising;
        bool input;
        Bytes before;
        Bytes after;
    };
    const Case cases[] = {
        {"rising edge", true, true, {0, 0, 0}, {1, 1, 1}},
        {"high stays quiet", true, true, {1, 1, 1}, {0, 1, 1}},
        {"low re-arms", true, false, {0, 1, 1}, {0, 0, 0}},
        {"any byte but 0 is memory", true, true, {0, 0, 0x40}, {0, 1, 1}},
        {"falling: high first", false, true, {0, 0, 0}, {0, 1, 0}},
        {"falling edge, memory is the inverted input", false, false, {0, 1, 0}, {1, 0, 1}},
        {"falling: low stays quiet", false, false, {1, 0, 1}, {0, 0, 1}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        std::memcpy(block_.GetVMData() + 5, row.before.data(), 3);
        EXPECT_TRUE(CMemoryRef(block_, 4).SetEdgeAtOffset(1, row.rising, row.input));
        EXPECT_EQ(At(5, 3), row.after);
    }
}

}  // namespace
