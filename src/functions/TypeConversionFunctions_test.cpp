#include "functions/TypeConversionFunctions.h"

#include <gtest/gtest.h>

#include "support/FunctionCall.h"

namespace {

using function_test::CallCase;
using function_test::ExpectCalls;
using function_test::FunctionCaller;

TEST(TypeConversionFunctions, BCDToNumbers) {
    const CallCase cases[] = {
        {"BYTE_BCD_TO_SINT(BYTE#16#42)", "SINT#42"},
        {"BYTE_BCD_TO_SINT(BYTE#16#99)", "SINT#99"},
        {"BYTE_BCD_TO_SINT(BYTE#0)", "SINT#0"},
        {"BYTE_BCD_TO_SINT(BYTE#16#0F)", "SINT#15", "nibbles above 9 count with their value"},
        {"BYTE_BCD_TO_SINT(BYTE#16#FF)", "SINT#-91", "165 in 8 bits"},
        {"BYTE_BCD_TO_SINT(WORD#16#1234)", "SINT#34", "converted to BYTE first"},
        {"BYTE_BCD_TO_SINT('66')", "SINT#42", "a text is converted: 66 is 16#42"},
        {"BYTE_BCD_TO_SINT(BYTE#16#42, 1, 2)", "SINT#42", "further arguments are not looked at"},
        {"WORD_BCD_TO_INT(WORD#16#1234)", "INT#1234"},
        {"WORD_BCD_TO_INT(WORD#16#9999)", "INT#9999"},
        {"DWORD_BCD_TO_DINT(DWORD#16#12345678)", "DINT#12345678"},
        {"LWORD_BCD_TO_LINT(LWORD#16#1234567890123456)", "LINT#1234567890123456"},
        {"LWORD_BCD_TO_LINT(LWORD#16#9999999999999999)", "LINT#9999999999999999"},
    };
    ExpectCalls(cases);
}

TEST(TypeConversionFunctions, NumbersToBCD) {
    const CallCase cases[] = {
        {"SINT_TO_BCD_BYTE(SINT#42)", "BYTE#16#42"},
        {"SINT_TO_BCD_BYTE(SINT#0)", "BYTE#16#0"},
        {"SINT_TO_BCD_BYTE(SINT#127)", "BYTE#16#C7", "the first digit is 12"},
        {"INT_TO_BCD_WORD(INT#1234)", "WORD#16#1234"},
        {"INT_TO_BCD_WORD(INT#12345)", "WORD#16#C345"},
        {"SINT_TO_BCD_BYTE(SINT#-5)", "BYTE#16#B", "-5 in 4 bits"},
        {"SINT_TO_BCD_BYTE(298)", "BYTE#16#42", "converted to SINT first"},
        {"DINT_TO_BCD_DWORD(DINT#12345678)", "DWORD#16#12345678"},
        {"LINT_TO_BCD_LWORD(LINT#1234567890123456)", "LWORD#16#1234567890123456"},
    };
    ExpectCalls(cases);
}

TEST(TypeConversionFunctions, WrongCallsAreReported) {
    const CallCase cases[] = {
        {"BYTE_BCD_TO_SINT('x')", "Failed 224 [Function BYTE_BCD_TO_SINT]", "no parameter is named"},
        {"SINT_TO_BCD_BYTE('x')", "Failed 224 [Function SINT_TO_BCD_BYTE]"},
        {"SINT_TO_BCD_BYTE()", "Failed 242 [Function SINT_TO_BCD_BYTE]"},
        {"8.0(1)", "Invalid 243 []"},
        {"8.9(1)", "Invalid 243 []"},
    };
    ExpectCalls(cases);
    FunctionCaller caller;
    caller.Call("8.9(1)");
    EXPECT_EQ(caller.GetLog().GetEntries()[0].text, "Invalid Conversion function code '9'.");
}

TEST(TypeConversionFunctions, ThereAndBackGivesTheNumber) {
    FunctionCaller caller;
    for (int number = 0; number <= 9999; number += 7) {
        caller.Call("INT_TO_BCD_WORD(INT#" + std::to_string(number) + ')');
        const std::string bcd = function_test::Declare(caller.GetResult());
        EXPECT_EQ(bcd, "WORD#16#" + std::to_string(number)) << "decimal digits read as hexadecimal ones";
        EXPECT_EQ(caller.Call("WORD_BCD_TO_INT(" + bcd + ')'), "INT#" + std::to_string(number));
    }
}

}  // namespace
