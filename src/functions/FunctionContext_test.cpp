#include "functions/FunctionContext.h"

#include <string>

#include <gtest/gtest.h>

#include "functions/BuiltInFunctions.h"

namespace {

enum class Kind : bool { Function = false, Block = true };

std::string Print(Kind kind, unsigned char group, unsigned char id, int argument) {
    CBuiltInFunctions registry;
    CBuiltInFunctionContext context(nullptr, nullptr, registry);
    context.SetCurrentFunction(7, kind == Kind::Block, group, id);
    context.SetArgumentIndex(argument);
    char buffer[64] = "untouched";
    const unsigned int length = context.PrintLocation(buffer, sizeof(buffer));
    const std::string text(buffer);
    EXPECT_EQ(length, text == "untouched" ? 0U : text.size());
    return text;
}

TEST(FunctionContextPrintLocation, NamesFunctionAndParameter) {
    struct Case {
        Kind kind;
        unsigned char group;
        unsigned char id;
        int argument;
        const char* expected;
    };
    const Case cases[] = {
        {Kind::Function, 7, 2, 2, "Function LEFT Parameter 2"},
        {Kind::Function, 7, 2, 0, "Function LEFT"},
        {Kind::Block, 1, 8, 0, "Function Block TON"},
        {Kind::Block, 1, 8, 2, "Function Block TON Parameter 2"},
        {Kind::Block, 1, 10, 0, "Function Block ???"},
        {Kind::Block, 1, 0, 1, "Function Block ??? Parameter 1"},
        {Kind::Function, 7, 99, 1, "untouched"},
        {Kind::Function, 10, 1, 1, "untouched"},
        {Kind::Function, 0, 1, 0, "untouched"},
        {Kind::Function, 255, 1, 0, "untouched"},
        {Kind::Block, 2, 1, 0, "untouched"},
        {Kind::Block, 0, 1, 0, "untouched"},
    };
    for (const Case& row : cases)
        EXPECT_EQ(Print(row.kind, row.group, row.id, row.argument), row.expected);
}

TEST(FunctionContextPrintLocation, StaysInsideTheBuffer) {
    CBuiltInFunctions registry;
    CBuiltInFunctionContext context(nullptr, nullptr, registry);
    context.SetCurrentFunction(0, false, 7, 2);
    char buffer[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
    EXPECT_EQ(context.PrintLocation(buffer, 5), 4U);
    EXPECT_STREQ(buffer, "Func");
    EXPECT_EQ(buffer[5], 'x');
    EXPECT_EQ(context.PrintLocation(buffer, 0), 0U);
}

TEST(FunctionContext, SetCurrentFunctionForgetsTheArgument) {
    CBuiltInFunctions registry;
    CBuiltInFunctionContext context(nullptr, nullptr, registry);
    EXPECT_EQ(context.GetFunctionGroup(), 0);
    EXPECT_EQ(context.GetFunctionId(), 0);
    EXPECT_EQ(context.GetCallPosition(), 0U);
    EXPECT_EQ(context.GetVMExec(), nullptr);
    EXPECT_EQ(context.GetDataFormatSettings(), nullptr);
    context.SetArgumentIndex(3);
    context.SetCurrentFunction(42, false, 2, 1);
    EXPECT_EQ(context.GetCallPosition(), 42U);
    char buffer[32];
    context.PrintLocation(buffer, sizeof(buffer));
    EXPECT_STREQ(buffer, "Function ADD");
}

}  // namespace
