#pragma once

#include <string>

#include "value/Operators.h"
#include "value/ValueTesting.h"

// The vocabulary of the operators' tests.

namespace value_testing {

using Op = BinaryOperator;

class OperatorTest : public ValueTest {
 protected:
    bool Apply(CValue& left, Op code, CValue& right) {
        return left.BinaryOperation(log_, here_, static_cast<unsigned char>(code), right);
    }
    static std::string Describe(const CValue& left, Op code, const CValue& right) {
        return ::testing::PrintToString(left) + " " +
               std::string(kBinaryOperatorNames[static_cast<std::size_t>(code)]) + " " +
               ::testing::PrintToString(right);
    }
    void ExpectResult(const CValue& left, Op code, const CValue& right, const CValue& expected) {
        SCOPED_TRACE(Describe(left, code, right));
        CValue result(left);
        CValue operand(right);
        EXPECT_TRUE(Apply(result, code, operand));
        EXPECT_THAT(result, IsValue(expected));
        ExpectNoMessage();
    }
    void ExpectFailure(const CValue& left, Op code, const CValue& right, Message id, std::string_view text) {
        SCOPED_TRACE(Describe(left, code, right));
        CValue result(left);
        CValue operand(right);
        EXPECT_FALSE(Apply(result, code, operand));
        ExpectMessage(id, text);
    }
};

/// Width and sign of the integers and bit strings.
struct IntegerShape {
    ElementaryType type;
    unsigned int width;
    bool isSigned;
};
inline constexpr IntegerShape kIntegerShapes[] = {
    {T::SInt, 8, true},    {T::USInt, 8, false}, {T::Byte, 8, false},   {T::Int, 16, true},
    {T::UInt, 16, false},  {T::Word, 16, false}, {T::DInt, 32, true},   {T::UDInt, 32, false},
    {T::DWord, 32, false}, {T::LInt, 64, true},  {T::ULInt, 64, false}, {T::LWord, 64, false},
};

}  // namespace value_testing
