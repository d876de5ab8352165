#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "functions/BuiltInFunctions.h"
#include "functions/FunctionContext.h"
#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "platform/TextOutput.h"
#include "vm/BooleanEdge.h"
#include "vm/DirectlyLocatedVariables.h"
#include "vm/Disassembler.h"
#include "vm/MemoryBlock.h"
#include "vm/MemoryRef.h"
#include "vm/SFCControlBlocks.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

/// A group of the host's own: function 1 doubles its argument.
class HostFunctions final : public CVMFunc {
 public:
    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override {
        if (argumentCount != 1) {
            LogInvalidFunctionArgumentCount(log, context, 1);
            return CallStatus::Failed;
        }
        CValue copy = arguments[0];
        if (!arguments[0].Add(log, context, copy)) return CallStatus::Failed;
        result = arguments[0];
        return CallStatus::Continue;
    }
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override { return id == 1 ? "TWICE" : nullptr; }
};

/// A block of the host's own: counts its calls in byte 2 of its instance.
class HostBlocks final : public CVMFunctionBlock {
 public:
    CallStatus ExecuteFunctionBlock(CVirtualMachineExec& /*exec*/, CBuiltInFunctionContext& /*context*/,
                                    CMemoryRef& instance, unsigned int /*dataSize*/, unsigned char /*inputCount*/,
                                    CValue* /*inputs*/, CErrorLog& /*log*/) override {
        const int calls = instance.GetSINTAtOffset(2);
        instance.SetSINTAtOffset(2, static_cast<signed char>(calls + 1));
        return CallStatus::Continue;
    }
    [[nodiscard]] unsigned int GetDataSize(unsigned char id) const override { return id == 1 ? 3 : 0; }
    [[nodiscard]] const char* GetName(unsigned char /*id*/) const override { return "CALLS"; }
};

/// Memory of the host's own behind a tag: reads as 5, refuses to be written.
class HostMemory final : public CVMMemoryInterface {
 public:
    [[nodiscard]] bool IsDataWithinBlock(unsigned int offset, unsigned int size) const override {
        return offset == 0 && size <= 4;
    }
    bool GetValueAtOffset(unsigned int /*offset*/, ElementaryType type, unsigned int /*size*/,
                          CValue& out) const override {
        out.SetInteger(5, type);
        return true;
    }
    bool GetCompositeValueAtOffset(unsigned int /*offset*/, ElementaryType /*type*/, unsigned int /*count*/,
                                   CValue& /*out*/) const override {
        return false;
    }
    InstructionResult SetValueAtOffset(const CClientAccessContext& /*access*/, unsigned int /*offset*/,
                                       unsigned int /*size*/, const CValue& /*value*/,
                                       const ErrorLocation& /*location*/, CErrorLog& /*log*/) const override {
        return InstructionResult::Failed;
    }
    [[nodiscard]] unsigned int GetOffset() const override { return 0; }
    [[nodiscard]] unsigned char* GetVMData() const override { return nullptr; }
    bool CopyDataFrom(unsigned int /*offset*/, const CMemoryRef& /*source*/, unsigned int /*size*/) const override {
        return false;
    }
};

class HostTags final : public CDirectlyLocatedVariables {
 public:
    bool GetTagType(unsigned int /*tagId*/, DirectlyLocatedType& type) const override {
        type.SetTypeInfo(false, ElementaryType::WString, ElementaryType::Undefined, 20, false);
        return true;
    }
    bool ResolveTagAddress(const PointerValue* /*pointer*/, unsigned int size, CMemoryRef& out) const override {
        out = CMemoryRef(&memory_, 0);
        return memory_.IsDataWithinBlock(0, size);
    }

 private:
    HostMemory memory_;
};

constexpr unsigned char kCode[] = {
    3,  0,  0, 7, 0, 0, 0,     //  0 LD TAG ADDR Tag: Id 7 Offset 0
    4,  8,  4, 0,              //  7 PTR LD DINT (4)
    10, 10,                    // 11 PUSH, PUSH
    6,  0,                     // 13 LD STACK[0]
    20, 15, 1, 2,              // 15 TWICE ArgCount 2
    10, 1,  1, 1,              // 19 PUSH, LD BOOL#TRUE: EN
    10,                        // 23 PUSH: no ENO variable
    10, 2,  1, 0, 0, 0, 0,     // 24 PUSH, LD ADDR Global: 0, the instance
    24, 2,  1, 3, 3, 0, 0, 0,  // 31 CALLS ArgCount 3, DataSize 3
    11, 12,                    // 39 POP, RET
};

std::vector<unsigned char> MakeImage() {
    CBinaryOutputBuffer image;
    image << static_cast<unsigned short>(CVirtualMachine::kMagic) << static_cast<unsigned short>(5);
    image << 7U << false << false << false;
    image.WriteBytes(CMemoryBlock::kGuard, CMemoryBlock::kGuardSize);
    image << 4U;
    image.WriteBytes(CMemoryBlock::kGuard, CMemoryBlock::kGuardSize);
    image << static_cast<unsigned int>(sizeof(kCode));
    image.WriteBytes(kCode, sizeof(kCode));
    image << 1U << std::string("Main") << 0U << 0U << 1U << 5U << 0U << 0U;
    return image.GetData();
}

class HostMachineTest : public testing::Test {
 protected:
    void SetUp() override {
        const std::vector<unsigned char> image = MakeImage();
        CBinaryInputMemory input(image);
        ASSERT_TRUE(machine_.LoadVMImage(log_, input));
        ASSERT_FALSE(input.HasFailed());
        globalData_ = machine_.GetGlobalData();
        exec_.emplace(access_, "host", &machine_, &globalData_, &tags_);
        exec_->GetBuiltInFunctions().RegisterFunctionGroup(15, &functions_);
        exec_->GetBuiltInFunctions().RegisterFunctionBlockGroup(2, &blocks_);
    }

    CErrorLog log_;
    CVirtualMachine machine_;
    CMemoryBlock globalData_;
    const CClientAccessContext access_{};
    HostTags tags_;
    HostFunctions functions_;
    HostBlocks blocks_;
    std::optional<CVirtualMachineExec> exec_;
};

TEST_F(HostMachineTest, RunsWithFunctionsBlocksAndTagsOfTheHost) {
    unsigned int codeOffset = 0;
    ASSERT_TRUE(machine_.FindProgram("MAIN", codeOffset));
    exec_->StartNewProgram(codeOffset, CVirtualMachineExec::kDefaultInstructionLimit, 0, nullptr);
    ASSERT_EQ(exec_->ExecuteUntilCompleteOrSuspended(log_), RunResult::Completed);
    CTextOutputString value;
    exec_->GetResultValue().GetDeclaration(value);
    EXPECT_EQ(value.GetText(), "DINT#10");
    EXPECT_EQ(globalData_.GetVMData()[0], 1);  // EN
    EXPECT_EQ(globalData_.GetVMData()[2], 1);  // one call
}

TEST_F(HostMachineTest, StepsAndListsItsCode) {
    exec_->StartNewProgram(0, 100, 0, nullptr);
    EXPECT_EQ(exec_->ExecuteInstruction(log_), InstructionResult::Continue);
    EXPECT_EQ(exec_->GetCurrentPC(), 7U);
    PointerValue pointer;
    CMemoryRef reference;
    EXPECT_EQ(exec_->GetPointerAddress(log_, &pointer, 1, reference), InstructionResult::Failed);
    CTextOutputString listing;
    EXPECT_TRUE(exec_->DisassembleCode(15, listing));
    EXPECT_NE(listing.GetText().find("TWICE ArgCount 2"), std::string::npos);
    CTextOutputString line;
    CDisassembler disassembler(exec_->GetBuiltInFunctions(), 0, &line);
    EXPECT_EQ(disassembler.FirstByte(12), 0);
    EXPECT_EQ(disassembler.FirstByte(99), -1);
    EXPECT_FALSE(disassembler.GetDisassemblerError().empty());
}

TEST_F(HostMachineTest, ControlBlocksEdgesAndTagTypes) {
    CMemoryBlock block;
    block.AllocateNewData(18);
    CMemoryRef reference(block, 0);
    reference.SetBOOLAtOffset(0, true);
    EXPECT_EQ(VMSFCControlBlocks::ExecuteControlBlock(*exec_, 1, 18, reference, log_), InstructionResult::Continue);
    EXPECT_TRUE(reference.GetBOOLAtOffset(1));
    EXPECT_EQ(VMSFCControlBlocks::m_ControlBlockLookup[1].dataSize, 180U);
    EXPECT_TRUE(reference.SetEdgeAtOffset(0, true, true));
    DirectlyLocatedType type;
    ASSERT_TRUE(tags_.GetTagType(7, type));
    EXPECT_EQ(type.length, 8U);
    type.SetGenericReadOnlyString(ElementaryType::String);
    EXPECT_EQ(type.length, DirectlyLocatedType::kGenericStringLength);
}

TEST_F(HostMachineTest, TheRegistryOfItsOwn) {
    CBuiltInFunctions registry;
    CBuiltInFunctionContext context(nullptr, nullptr, registry);
    context.SetCurrentFunction(0, false, 1, 1);
    char location[40];
    EXPECT_GT(context.PrintLocation(location, sizeof(location)), 0U);
    EXPECT_EQ(registry.GetFunctionBlockDataSize(1, 8), 29U);
    EXPECT_STREQ(registry.GetFunctionBlockName(1, 8), "TON");
    (void)registry.IsInvariant(context);
}

TEST_F(HostMachineTest, GlobalMemoryOfItsOwn) {
    CMemoryBlock data;
    data.AllocateNewData(4);
    CVirtualMachineGlobalMem memory(&data, &data, nullptr);
    const long long timestamp = 5;
    memory.SetCurrentTimestamp(&timestamp);
    EXPECT_EQ(memory.GetCurrentTimestampMS(), 5);
    const PointerValue pointer{LocationKind::Global, 0, 4};
    CMemoryRef reference;
    EXPECT_EQ(memory.GetGlobalPointerAddress(log_, ErrorLocationNull::Get(), &pointer, 1, reference),
              InstructionResult::Failed);
    EXPECT_EQ(log_.GetEntries().back().id, 212U);
}

}  // namespace
