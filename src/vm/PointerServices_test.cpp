#include "vm/TestImage.h"

namespace {

using namespace vmtest;

using Ids = std::vector<unsigned int>;

/// The services write to the global data of a machine that runs nothing.
class PointerServices : public testing::Test {
 protected:
    static CValue Global(unsigned int offset) {
        CValue pointer;
        pointer.SetAddress(kGlobal, 0, offset);
        return pointer;
    }
    [[nodiscard]] Bytes At(unsigned int offset, unsigned int size) const {
        const Bytes global = machine_.Global();
        return Bytes(global.begin() + offset, global.begin() + offset + size);
    }
    CVirtualMachineExec& exec() { return *machine_.exec; }
    CErrorLog& log() { return machine_.log; }
    Machine machine_{Ret()};
};

TEST_F(PointerServices, WriteTheirType) {
    EXPECT_TRUE(exec().SetBoolValueViaPointer(log(), Global(0), true));
    EXPECT_EQ(At(0, 2), (Bytes{1, 0}));
    EXPECT_TRUE(exec().SetTimeValueViaPointer(log(), Global(1), 0x0807060504030201));
    EXPECT_EQ(At(1, 9), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 0}));
    EXPECT_TRUE(exec().SetIntegerValueViaPointer(log(), Global(10), -2));
    EXPECT_EQ(At(10, 3), (Bytes{0xFE, 0xFF, 0}));
    EXPECT_TRUE(exec().SetUDINTValueViaPointer(log(), Global(12), 0x04030201));
    EXPECT_EQ(At(12, 4), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(log().GetErrorCount(), 0U);
}

TEST_F(PointerServices, CheckTheirSize) {
    EXPECT_TRUE(exec().SetBoolValueViaPointer(log(), Global(15), true));
    EXPECT_FALSE(exec().SetBoolValueViaPointer(log(), Global(16), true));
    EXPECT_TRUE(exec().SetTimeValueViaPointer(log(), Global(8), 1));
    EXPECT_FALSE(exec().SetTimeValueViaPointer(log(), Global(9), 1));
    EXPECT_TRUE(exec().SetIntegerValueViaPointer(log(), Global(14), 1));
    EXPECT_FALSE(exec().SetIntegerValueViaPointer(log(), Global(15), 1));
    EXPECT_TRUE(machine_.globalData.CheckGuardBytes());
    EXPECT_EQ(machine_.Ids(), (Ids{212, 212, 212}));
    EXPECT_EQ(log().GetEntries().front().location, "");
}

TEST_F(PointerServices, UdintChecksTwoBytesAndWritesFour) {
    EXPECT_FALSE(exec().SetUDINTValueViaPointer(log(), Global(15), 1));
    EXPECT_TRUE(exec().SetUDINTValueViaPointer(log(), Global(14), 0xFFFFFFFF));
    EXPECT_FALSE(machine_.globalData.CheckGuardBytes());
}

TEST_F(PointerServices, SkipWhatIsNotConnected) {
    const CValue undefined;
    EXPECT_TRUE(exec().SetBoolValueViaPointer(log(), undefined, true));
    EXPECT_TRUE(exec().SetTimeValueViaPointer(log(), undefined, 1));
    EXPECT_TRUE(exec().SetIntegerValueViaPointer(log(), undefined, 1));
    EXPECT_TRUE(exec().SetUDINTValueViaPointer(log(), undefined, 1));
    EXPECT_TRUE(exec().SetVMWStringViaPointer(log(), undefined, nullptr));
    EXPECT_TRUE(exec().SetVMWStringViaPointer(log(), undefined, 0, nullptr));
    EXPECT_TRUE(exec().SetVMWStringViaPointer(log(), undefined, CValue(5)));
    EXPECT_EQ(machine_.Global(), Bytes(16));
    EXPECT_EQ(log().GetErrorCount(), 0U);
}

TEST_F(PointerServices, RefuseWhatIsNoPointer) {
    const CValue number(5);
    EXPECT_FALSE(exec().SetBoolValueViaPointer(log(), number, true));
    EXPECT_FALSE(exec().SetTimeValueViaPointer(log(), number, 1));
    EXPECT_FALSE(exec().SetIntegerValueViaPointer(log(), number, 1));
    EXPECT_FALSE(exec().SetUDINTValueViaPointer(log(), number, 1));
    EXPECT_FALSE(exec().SetVMWStringViaPointer(log(), number, nullptr));
    EXPECT_FALSE(exec().SetVMWStringViaPointer(log(), number, 0, nullptr));
    EXPECT_EQ(machine_.Ids(), Ids(6, 227));
    EXPECT_EQ(machine_.MessageText(), "Internal logic error: Pointer value expected.");
    log().Clear();
    EXPECT_FALSE(exec().SetVMWStringViaPointer(log(), number, CValue("a", ElementaryType::WString)));
    EXPECT_FALSE(exec().SetVMWStringViaPointer(log(), Global(0), CValue("a", ElementaryType::String)));
    EXPECT_FALSE(exec().SetVMWStringViaPointer(log(), Global(0), CValue()));
    EXPECT_EQ(log().GetErrorCount(), 0U);
}

TEST_F(PointerServices, StoreWideStrings) {
    const CValue text("ab", ElementaryType::WString);
    const Bytes stored = {2, 0, 'a', 0, 'b', 0};
    EXPECT_TRUE(exec().SetVMWStringViaPointer(log(), Global(0), text));
    EXPECT_EQ(At(0, 6), stored);
    EXPECT_TRUE(exec().SetVMWStringViaPointer(log(), Global(10), text.GetUtf16String()));
    EXPECT_EQ(At(10, 6), stored) << "exactly up to the end";
    EXPECT_FALSE(exec().SetVMWStringViaPointer(log(), Global(11), text.GetUtf16String()));
    EXPECT_EQ(machine_.Ids(), Ids{212});
    const unsigned short units[] = {'x'};
    EXPECT_TRUE(exec().SetVMWStringViaPointer(log(), Global(0), 1, units));
    EXPECT_EQ(At(0, 4), (Bytes{1, 0, 'x', 0}));
    EXPECT_TRUE(exec().SetVMWStringViaPointer(log(), Global(0), nullptr));
    EXPECT_EQ(At(0, 4), (Bytes{0, 0, 'x', 0}));
}

TEST_F(PointerServices, ResolveFromTheStackTop) {
    CMemoryRef out;
    exec().GetStackTop() = Global(12);
    EXPECT_EQ(exec().GetPointerAddressFromStackTop(log(), 4, out), InstructionResult::Continue);
    EXPECT_EQ(out.GetTargetMem(), &machine_.globalData);
    EXPECT_EQ(out.GetOffset(), 12U);
    EXPECT_EQ(exec().GetPointerAddressFromStackTop(log(), 5, out), InstructionResult::Failed);
    exec().GetStackTop() = CValue("a", ElementaryType::String);
    EXPECT_EQ(exec().GetPointerAddressFromStackTop(log(), 0, out), InstructionResult::Failed);
    EXPECT_EQ(machine_.Ids(), (Ids{212, 217}));
    EXPECT_EQ(log().GetEntries().back().text, "Pointer operation attempted on non pointer data type '20'.");
}

TEST_F(PointerServices, RefuseFramesThatThereAreNot) {
    for (const LocationKind kind : {LocationKind::Local, LocationKind::Temp}) {
        const PointerValue pointer{kind, 1, 0};
        CMemoryRef out;
        log().Clear();
        EXPECT_EQ(exec().GetPointerAddress(log(), &pointer, 0, out), InstructionResult::Failed);
        EXPECT_EQ(machine_.Ids(), Ids{218});
    }
}

}  // namespace
