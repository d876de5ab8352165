#include "functions/BuiltInFunctions.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "functions/FunctionContext.h"
#include "functions/FunctionTable.h"
#include "platform/ErrorLog.h"
#include "support/TestMachine.h"
#include "value/Value.h"
#include "vm/MemoryRef.h"

namespace {

/// A host's own group with one function, number 3, which depends on more than its arguments.
class HostFunctions final : public CVMFunc {
 public:
    [[nodiscard]] bool IsInvariant(unsigned char id) const override { return id != 3; }
    CallStatus ExecuteFunction(CErrorLog& /*log*/, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override {
        result = CValue(static_cast<unsigned int>(argumentCount));
        called = true;
        id = context.GetFunctionId();
        if (argumentCount != 0) arguments[0] = CValue(7);
        return CallStatus::Suspend;
    }
    [[nodiscard]] const char* GetFunctionName(unsigned char functionId) const override {
        return functionId == 3 ? "THIRD" : nullptr;
    }
    bool called = false;
    unsigned char id = 0;
};

/// A host's own block of 8 bytes. Never reached with another size.
class HostBlocks final : public CVMFunctionBlock {
 public:
    CallStatus ExecuteFunctionBlock(CVirtualMachineExec& /*exec*/, CBuiltInFunctionContext& /*context*/,
                                    CMemoryRef& /*instance*/, unsigned int dataSize, unsigned char inputCount,
                                    CValue* /*inputs*/, CErrorLog& /*log*/) override {
        called = true;
        size = dataSize;
        count = inputCount;
        return CallStatus::Failed;
    }
    [[nodiscard]] unsigned int GetDataSize(unsigned char /*id*/) const override { return 8; }
    [[nodiscard]] const char* GetName(unsigned char id) const override { return id == 1 ? "HOST_BLOCK" : nullptr; }
    bool called = false;
    unsigned int size = 0;
    unsigned char count = 0;
};

class Registry : public testing::Test {
 protected:
    CallStatus Execute(unsigned char group, unsigned char id) {
        context.SetCurrentFunction(0, false, group, id);
        return registry.Execute(log, context, 1, &argument, result);
    }
    CallStatus ExecuteBlock(unsigned char group, unsigned char id, unsigned int dataSize) {
        context.SetCurrentFunction(0, true, group, id);
        CMemoryRef instance;
        return registry.ExecuteFunctionBlock(machine.GetExec(), context, instance, dataSize, 1, &argument, log);
    }
    std::string LastMessage() { return log.GetEntries().empty() ? "none" : log.GetEntries().back().text; }
    function_test::TestMachine machine;
    CBuiltInFunctions registry;
    CBuiltInFunctionContext context{nullptr, nullptr, registry};
    CErrorLog log;
    CValue argument{5};
    CValue result;
};

TEST_F(Registry, GroupsOutsideTheTableFail) {
    for (const unsigned int group : {0U, 17U, 255U}) {
        EXPECT_EQ(Execute(static_cast<unsigned char>(group), 1), CallStatus::Failed) << group;
        EXPECT_EQ(LastMessage(), "Invalid function group '" + std::to_string(group) + "'.");
    }
    EXPECT_EQ(log.GetErrorCount(), 3U);
}

TEST_F(Registry, EmptySlotsFail) {
    for (const unsigned int group : {10U, 12U, 13U, 15U, 16U}) {
        EXPECT_EQ(Execute(static_cast<unsigned char>(group), 1), CallStatus::Failed) << group;
        EXPECT_EQ(LastMessage(), "Function group '" + std::to_string(group) + "' not supported.");
    }
}

TEST_F(Registry, BlockGroupsOutsideTheTableAreInvalid) {
    for (const unsigned int group : {0U, 5U, 255U}) {
        EXPECT_EQ(ExecuteBlock(static_cast<unsigned char>(group), 1, 5), CallStatus::Invalid) << group;
        EXPECT_EQ(LastMessage(), "Invalid function group '" + std::to_string(group) + "'.");
    }
    for (const unsigned int group : {2U, 3U, 4U}) {
        EXPECT_EQ(ExecuteBlock(static_cast<unsigned char>(group), 1, 5), CallStatus::Invalid) << group;
        EXPECT_EQ(LastMessage(), "Function group '" + std::to_string(group) + "' not supported.");
    }
}

TEST_F(Registry, RegistrationOutsideTheTablesIsIgnored) {
    HostFunctions functions;
    HostBlocks blocks;
    for (const unsigned int group : {0U, 17U, 255U}) {
        registry.RegisterFunctionGroup(static_cast<unsigned char>(group), &functions);
        Execute(static_cast<unsigned char>(group), 3);
    }
    for (const unsigned int group : {0U, 5U, 255U}) {
        registry.RegisterFunctionBlockGroup(static_cast<unsigned char>(group), &blocks);
        ExecuteBlock(static_cast<unsigned char>(group), 1, 8);
    }
    EXPECT_FALSE(functions.called);
    EXPECT_FALSE(blocks.called);
}

TEST_F(Registry, RegisteredGroupsAreCalledAndNullEmptiesTheSlot) {
    HostFunctions functions;
    registry.RegisterFunctionGroup(16, &functions);
    EXPECT_EQ(Execute(16, 3), CallStatus::Suspend) << "the status is passed through";
    EXPECT_EQ(functions.id, 3);
    EXPECT_EQ(argument.GetPayload<int>(), 7) << "arguments may be changed";
    EXPECT_STREQ(registry.GetFunctionName(16, 3), "THIRD");
    EXPECT_EQ(registry.GetFunctionName(16, 4), nullptr);
    registry.RegisterFunctionGroup(16, nullptr);
    EXPECT_EQ(Execute(16, 3), CallStatus::Failed);
    EXPECT_EQ(registry.GetFunctionName(16, 3), nullptr);
}

TEST_F(Registry, BlocksRunOnlyWithTheirDataSize) {
    HostBlocks blocks;
    registry.RegisterFunctionBlockGroup(4, &blocks);
    EXPECT_EQ(ExecuteBlock(4, 1, 7), CallStatus::Invalid);
    EXPECT_EQ(LastMessage(), "Function block expects data size 8, but the provided size is 7.");
    EXPECT_FALSE(blocks.called);
    EXPECT_EQ(ExecuteBlock(4, 1, 8), CallStatus::Failed) << "the status is passed through";
    EXPECT_TRUE(blocks.called);
    EXPECT_EQ(blocks.size, 8U);
    EXPECT_EQ(blocks.count, 1);
    EXPECT_EQ(registry.GetFunctionBlockDataSize(4, 1), 8U);
    EXPECT_EQ(registry.GetFunctionBlockDataSize(3, 1), 0U);
    EXPECT_STREQ(registry.GetFunctionBlockName(4, 1), "HOST_BLOCK");
    EXPECT_EQ(registry.GetFunctionBlockName(3, 1), nullptr);
    EXPECT_EQ(registry.GetFunctionBlockName(0, 1), nullptr);
    EXPECT_EQ(registry.GetFunctionBlockName(5, 1), nullptr);
}

TEST_F(Registry, UnknownBlockWithItsSizeZeroIsInvalidWithoutAMessage) {
    EXPECT_EQ(ExecuteBlock(1, 10, 0), CallStatus::Invalid);
    EXPECT_EQ(ExecuteBlock(1, 0, 0), CallStatus::Invalid);
    EXPECT_EQ(log.GetErrorCount(), 0U);
}

TEST_F(Registry, InvarianceIsTheGroupsAndFalseWithoutGroup) {
    HostFunctions functions;
    registry.RegisterFunctionGroup(15, &functions);
    struct Case {
        unsigned char group;
        unsigned char id;
        bool expected;
    };
    const Case cases[] = {{0, 1, false}, {10, 1, false}, {17, 1, false}, {255, 1, false}, {15, 3, false},
                          {15, 4, true}, {1, 1, true},   {2, 1, true},   {3, 1, true},    {4, 1, true},
                          {5, 1, true},  {6, 1, true},   {7, 1, true},   {7, 99, true}};
    for (const Case& row : cases) {
        context.SetCurrentFunction(0, false, row.group, row.id);
        EXPECT_EQ(registry.IsInvariant(context), row.expected) << int{row.group} << '.' << int{row.id};
    }
}

TEST_F(Registry, CopiesShareTheGroupsAndRegisterSeparately) {
    CBuiltInFunctions copy = registry;
    registry.RegisterFunctionGroup(1, nullptr);
    EXPECT_EQ(registry.GetFunctionName(1, 1), nullptr);
    EXPECT_STREQ(copy.GetFunctionName(1, 1), "ABS");
}

TEST(FunctionTable, GroupsAreInOrderAndNamesAreUnique) {
    std::set<std::string> names;
    unsigned char previous = 0;
    for (const FunctionGroup& group : GetFunctionGroups()) {
        EXPECT_GT(group.number, previous);
        previous = group.number;
        EXPECT_TRUE(HasConsecutiveIds(group.rows)) << group.word;
        for (const FunctionRow& row : group.rows) {
            EXPECT_TRUE(names.insert(row.name).second) << row.name;
            EXPECT_LE(row.minCount, row.maxCount) << row.name;
            EXPECT_STREQ(group.functions->GetFunctionName(row.id), row.name);
        }
        const auto next = static_cast<unsigned char>(group.rows.back().id + 1);
        EXPECT_EQ(group.functions->GetFunctionName(next), nullptr) << group.word;
        EXPECT_EQ(group.functions->GetFunctionName(255), nullptr) << group.word;
    }
}

/// The numbers that bytecode carries: none may change, and a new row must be added here.
TEST(FunctionTable, NumbersOfTheBytecodeContract) {
    struct Pin {
        unsigned char group;
        std::vector<std::string> names;  ///< from the group's first id on
        unsigned char firstId = 1;
    };
    const Pin pins[] = {
        {1,
         {"ABS", "SQRT", "LN", "LOG", "EXP", "SIN", "COS", "TAN", "ASIN", "ACOS", "ATAN", "CEILING", "FLOOR", "SIGN",
          "ATAN2", "ROUND", "ROUNDSD"}},
        {2, {"ADD", "SUB", "MUL", "DIV", "MOD", "EXPT", "MOVE"}},
        {3, {"SHL", "SHR", "ROR", "ROL"}},
        {4, {"AND", "OR", "XOR"}},
        {5, {"SEL", "MAX", "MIN", "LIMIT", "MUX"}},
        {6, {"GT", "GE", "EQ", "LE", "LT", "NE"}},
        {7,
         {"LEN", "LEFT", "RIGHT", "MID", "CONCAT", "INSERT", "DELETE", "REPLACE", "FIND", "UPPER", "LOWER", "TRIM",
          "CODE_POINT_AT", "CODE_POINT_CHAR_LEN", "CODE_POINT_WCHAR_LEN", "GET_ELEMENT"}},
        {8,
         {"BYTE_BCD_TO_SINT", "WORD_BCD_TO_INT", "DWORD_BCD_TO_DINT", "LWORD_BCD_TO_LINT", "SINT_TO_BCD_BYTE",
          "INT_TO_BCD_WORD", "DINT_TO_BCD_DWORD", "LINT_TO_BCD_LWORD"}},
        {9, {"QUALITY_TO_STRING", "LOG_REASON_TO_STRING", "TO_SQL_LITERAL", "FORMAT_DATE_TIME", "FORMAT_NUMBER"}, 0},
        {11,
         {"SYS_GET_TIMESTAMP", "SYS_GET_DATE", "SYS_GET_TOD", "SYS_GET_RANDOM_WORD", "SYS_DATE_TIME_TO_LOCAL",
          "SYS_DATE_TIME_TO_UTC"}},
        {14, {"CONCAT_DATE", "CONCAT_TOD", "CONCAT_DT", "SPLIT_DATE", "SPLIT_TOD", "SPLIT_DT", "DAY_OF_WEEK"}},
    };
    for (const FunctionGroup& group : GetFunctionGroups()) {
        const auto pin = std::find_if(std::begin(pins), std::end(pins),
                                      [&](const Pin& candidate) { return candidate.group == group.number; });
        ASSERT_NE(pin, std::end(pins)) << "group " << int{group.number};
        EXPECT_EQ(group.rows.front().id, pin->firstId);
        std::vector<std::string> names;
        for (const FunctionRow& row : group.rows)
            names.emplace_back(row.name);
        EXPECT_EQ(names, pin->names);
    }
}

}  // namespace
