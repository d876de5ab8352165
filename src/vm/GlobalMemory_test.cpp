#include "vm/GlobalMemory.h"

#include "platform/Time.h"
#include "vm/TestImage.h"

namespace {

using namespace vmtest;

class GetGlobalPointerAddress : public testing::Test {
 protected:
    GetGlobalPointerAddress() {
        globalData_.AllocateNewData(8);
        constants_.AllocateNewData(4);
        tags_.data.AllocateNewData(6);
    }
    CMemoryBlock globalData_;
    CMemoryBlock constants_;
    OneTag tags_;
};

TEST_F(GetGlobalPointerAddress, ResolvesOrSaysWhyNot) {
    struct Case {
        const char* why;
        PointerValue pointer;
        unsigned int size;
        std::vector<unsigned int> messages;
        std::string text;
    };
    using L = LocationKind;
    const Case cases[] = {
        {"null", {L::Null, 0, 4}, 0, {221}, "Null pointer de-reference."},
        {"global up to the end", {L::Global, 0, 4}, 4, {}, ""},
        {"global one byte beyond", {L::Global, 0, 4}, 5, {212}, "Access violation, address Global: 4."},
        {"nothing at the end", {L::Global, 0, 8}, 0, {}, ""},
        {"nothing beyond the end", {L::Global, 0, 9}, 0, {212}, "Access violation, address Global: 9."},
        {"a sum beyond 32 bits", {L::Global, 0, 0xFFFFFFFF}, 2, {212}, "Access violation, address Global: 4294967295."},
        {"constants up to the end", {L::GlobalConstant, 0, 0}, 4, {}, ""},
        {"constants beyond", {L::GlobalConstant, 0, 1}, 4, {212}, "Access violation, address GlobalConstant: 1."},
        {"a tag", {L::Tag, 2, 7}, 4, {}, ""},
        {"a tag's end", {L::Tag, 3, 7}, 4, {233}, "Directly located address 3:7, invalid."},
        {"another tag", {L::Tag, 1, 8}, 1, {233}, "Directly located address 1:8, invalid."},
        {"a block pointer", {L::MemBlockPtr, 1, 1}, 0, {234}, "Address type 6, invalid."},
        {"local data is not global", {L::Local, 0, 0}, 0, {234}, "Address type 2, invalid."},
        {"an unknown kind", {static_cast<L>(0xFFFF), 0, 0}, 0, {234}, "Address type 65535, invalid."},
    };
    const CVirtualMachineGlobalMem memory(&constants_, &globalData_, &tags_);
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        CErrorLog log;
        CMemoryRef out;
        const auto result = memory.GetGlobalPointerAddress(log, ErrorLocationNull::Get(), &row.pointer, row.size, out);
        EXPECT_EQ(result, row.messages.empty() ? InstructionResult::Continue : InstructionResult::Failed);
        EXPECT_EQ(MessageIds(log), row.messages);
        EXPECT_EQ(row.messages.empty() ? "" : log.GetEntries().front().text, row.text);
        EXPECT_EQ(out.IsDataWithinBlock(0, row.size), row.messages.empty());
    }
}

TEST_F(GetGlobalPointerAddress, NamesOffsetThenTagWithoutAProvider) {
    const CVirtualMachineGlobalMem memory(&constants_, &globalData_, nullptr);
    const PointerValue pointer{LocationKind::Tag, 2, 7};
    CErrorLog log;
    CMemoryRef out;
    EXPECT_EQ(memory.GetGlobalPointerAddress(log, ErrorLocationNull::Get(), &pointer, 1, out),
              InstructionResult::Failed);
    EXPECT_EQ(MessageIds(log), (std::vector<unsigned int>{232}));
    EXPECT_EQ(log.GetEntries().front().text, "No directly located variables.  Cannot de-reference tag address 2:7.");
}

TEST_F(GetGlobalPointerAddress, DropsWhatTheOutputHeldBefore) {
    class Careless final : public CDirectlyLocatedVariables {
        bool GetTagType(unsigned int, DirectlyLocatedType&) const override { return false; }
        bool ResolveTagAddress(const PointerValue*, unsigned int, CMemoryRef&) const override { return true; }
    } careless;
    const CVirtualMachineGlobalMem memory(&constants_, &globalData_, &careless);
    const PointerValue pointer{LocationKind::Tag, 0, 1};
    CErrorLog log;
    CMemoryRef out(globalData_, 0);
    EXPECT_EQ(memory.GetGlobalPointerAddress(log, ErrorLocationNull::Get(), &pointer, 1, out),
              InstructionResult::Continue);
    EXPECT_EQ(out.GetTargetMem(), nullptr);
}

TEST(SetCurrentTimestamp, StoresTheGivenTimeOrTakesTheClock) {
    CVirtualMachineGlobalMem memory(nullptr, nullptr, nullptr);
    EXPECT_EQ(memory.GetCurrentTimestampMS(), 0);
    const long long given = -5;
    memory.SetCurrentTimestamp(&given);
    EXPECT_EQ(memory.GetCurrentTimestampMS(), -5);
    CTNTimestamp before;
    before.SetUTC();
    memory.SetCurrentTimestamp(nullptr);
    EXPECT_GE(memory.GetCurrentTimestampMS(), before.GetVMTimeMS());
    EXPECT_LT(memory.GetCurrentTimestampMS(), before.GetVMTimeMS() + 60000);
}

TEST(DirectlyLocatedType, DescribesTypes) {
    struct Case {
        const char* why;
        ElementaryType type;
        ElementaryType pointedTo;
        unsigned int size;
        bool readOnly;
        DirectlyLocatedType expected;
    };
    using T = ElementaryType;
    const Case cases[] = {
        {"a scalar", T::DInt, T::Undefined, 4, false, {true, T::DInt, T::Undefined, 1, false}},
        {"a string without its count", T::String, T::Undefined, 20, true, {true, T::String, T::Undefined, 18, true}},
        {"a wide string", T::WString, T::Undefined, 20, false, {true, T::WString, T::Undefined, 8, false}},
        {"halving drops the odd byte", T::WString, T::Undefined, 21, false, {true, T::WString, T::Undefined, 8, false}},
        {"a pointer to a string is the string",
         T::Pointer,
         T::String,
         8,
         false,
         {true, T::String, T::Undefined, 254, true}},
        {"a pointer to a wide string", T::Pointer, T::WString, 8, false, {true, T::WString, T::Undefined, 254, true}},
        {"a pointer to anything else", T::Pointer, T::Int, 8, false, {true, T::Pointer, T::Int, 1, false}},
        {"only pointers look at the other type", T::Int, T::String, 2, false, {true, T::Int, T::String, 1, false}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        DirectlyLocatedType type;
        type.SetTypeInfo(true, row.type, row.pointedTo, row.size, row.readOnly);
        EXPECT_EQ(type.flag, row.expected.flag);
        EXPECT_EQ(type.type, row.expected.type);
        EXPECT_EQ(type.pointedToType, row.expected.pointedToType);
        EXPECT_EQ(type.length, row.expected.length);
        EXPECT_EQ(type.readOnly, row.expected.readOnly);
    }
}

TEST(DirectlyLocatedType, HasDefaultsAndAGenericString) {
    DirectlyLocatedType type;
    EXPECT_FALSE(type.flag);
    EXPECT_EQ(type.type, ElementaryType::Undefined);
    EXPECT_EQ(type.length, 1U);
    EXPECT_TRUE(type.readOnly);
    type = {true, ElementaryType::Int, ElementaryType::Int, 3, false};
    type.SetGenericReadOnlyString(ElementaryType::WString);
    EXPECT_FALSE(type.flag);
    EXPECT_EQ(type.type, ElementaryType::WString);
    EXPECT_EQ(type.pointedToType, ElementaryType::Undefined);
    EXPECT_EQ(type.length, 254U);
    EXPECT_TRUE(type.readOnly);
}

}  // namespace
