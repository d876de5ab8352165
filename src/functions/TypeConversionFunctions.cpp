#include "functions/TypeConversionFunctions.h"

#include "functions/FunctionTable.h"
#include "value/Value.h"

namespace {

template <ElementaryType kSource, int kDigits, ElementaryType kTarget>
CallStatus FromBCD(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/, CValue* arguments,
                   CValue& result) {
    result = arguments[0];
    return StatusOf(result.BCDToInt(log, context, kSource, kDigits, kTarget));
}

template <ElementaryType kSource, int kDigits, ElementaryType kTarget>
CallStatus ToBCD(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/, CValue* arguments,
                 CValue& result) {
    result = arguments[0];
    return StatusOf(result.IntToBCD(log, context, kSource, kDigits, kTarget));
}

using enum ElementaryType;
constexpr auto kSurplus = SurplusArguments::Ignored;

constexpr FunctionRow kRows[] = {
    {1, "BYTE_BCD_TO_SINT", 1, 1, kSurplus, "IN", "SINT: the number of 2 digits", FromBCD<Byte, 2, SInt>},
    {2, "WORD_BCD_TO_INT", 1, 1, kSurplus, "IN", "INT: the number of 4 digits", FromBCD<Word, 4, Int>},
    {3, "DWORD_BCD_TO_DINT", 1, 1, kSurplus, "IN", "DINT: the number of 8 digits", FromBCD<DWord, 8, DInt>},
    {4, "LWORD_BCD_TO_LINT", 1, 1, kSurplus, "IN", "LINT: the number of 16 digits", FromBCD<LWord, 16, LInt>},
    {5, "SINT_TO_BCD_BYTE", 1, 1, kSurplus, "IN", "BYTE: its 2 digits", ToBCD<SInt, 2, Byte>},
    {6, "INT_TO_BCD_WORD", 1, 1, kSurplus, "IN", "WORD: its 4 digits", ToBCD<Int, 4, Word>},
    {7, "DINT_TO_BCD_DWORD", 1, 1, kSurplus, "IN", "DWORD: its 8 digits", ToBCD<DInt, 8, DWord>},
    {8, "LINT_TO_BCD_LWORD", 1, 1, kSurplus, "IN", "LWORD: its 16 digits", ToBCD<LInt, 16, LWord>},
};
static_assert(HasConsecutiveIds(kRows));

}  // namespace

std::span<const FunctionRow> CVMFuncTypeConv::GetTable() noexcept {
    return kRows;
}

CallStatus CVMFuncTypeConv::ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context,
                                            unsigned char argumentCount, CValue* arguments, CValue& result) {
    return CallFunction(kRows, kGroupWord, log, context, argumentCount, arguments, result);
}

const char* CVMFuncTypeConv::GetFunctionName(unsigned char id) const {
    return FindFunctionName(kRows, id);
}
