#include "functions/StringFunctions.h"

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "diag/Messages.h"
#include "functions/FunctionTable.h"
#include "platform/CharTable.h"
#include "platform/StringObject.h"
#include "platform/Transcode.h"
#include "value/Value.h"

using tn61131::Fail;

namespace {

/// What the STRING form of a function works with.
struct Utf8Text {
    using Object = Utf8String;
    using Unit = unsigned char;
    static constexpr ElementaryType kType = ElementaryType::String;
    static constexpr ElementaryType kCharType = ElementaryType::Char;
    static constexpr unsigned int kMaxUnitsOfCodePoint = 4;
    static constexpr auto Left = Utf8StringLeft;
    static constexpr auto Right = Utf8StringRight;
    static constexpr auto Mid = Utf8StringMid;
    static constexpr auto Insert = Utf8StringInsert;
    static constexpr auto Delete = Utf8StringDelete;
    static constexpr auto Replace = Utf8StringReplace;
    static constexpr auto Find = Utf8StringFind;
    static constexpr auto GetElement = Utf8StringGetElement;
    static constexpr auto Concat = Utf8StringConcat;
    static constexpr auto Len = Utf8StringLen;
    static constexpr auto Decode = tn_decode_utf8;
    static constexpr auto Encode = tn_encode_utf8;
    static Object* Make(std::span<const Unit> units) {
        return units.empty() ? Utf8StringAlloc(0)
                             : Utf8StringCopy(units.data(), static_cast<unsigned int>(units.size()));
    }
    static const Object* Get(const CValue& value) noexcept { return value.GetUtf8String(); }
    static void Set(CValue& value, Object* text) noexcept { value.SetString(text); }
};

/// What the WSTRING form of a function works with.
struct Utf16Text {
    using Object = Utf16String;
    using Unit = unsigned short;
    static constexpr ElementaryType kType = ElementaryType::WString;
    static constexpr ElementaryType kCharType = ElementaryType::WChar;
    static constexpr unsigned int kMaxUnitsOfCodePoint = 2;
    static constexpr auto Left = Utf16StringLeft;
    static constexpr auto Right = Utf16StringRight;
    static constexpr auto Mid = Utf16StringMid;
    static constexpr auto Insert = Utf16StringInsert;
    static constexpr auto Delete = Utf16StringDelete;
    static constexpr auto Replace = Utf16StringReplace;
    static constexpr auto Find = Utf16StringFind;
    static constexpr auto GetElement = Utf16StringGetElement;
    static constexpr auto Concat = Utf16StringConcat;
    static constexpr auto Len = Utf16StringLen;
    static constexpr auto Decode = tn_decode_utf16;
    static constexpr auto Encode = tn_encode_utf16;
    static Object* Make(std::span<const Unit> units) {
        return units.empty() ? Utf16StringAlloc(0)
                             : Utf16StringCopy(units.data(), static_cast<unsigned int>(units.size()));
    }
    static const Object* Get(const CValue& value) noexcept { return value.GetUtf16String(); }
    static void Set(CValue& value, Object* text) noexcept { value.SetWString(text); }
};

/// One call with a first argument of the type of `Text`. Parameters are numbered from 1.
template <typename Text>
struct TextCall {
    using Object = typename Text::Object;
    using Unit = typename Text::Unit;

    CErrorLog& log;
    CBuiltInFunctionContext& context;
    unsigned char argumentCount;
    CValue* arguments;
    CValue& result;

    [[nodiscard]] const Object* GetText(unsigned int parameter) const noexcept {
        return Text::Get(arguments[parameter - 1]);
    }
    [[nodiscard]] std::span<const Unit> GetInput() const noexcept { return GetUnits(GetText(1)); }

    /// Makes a further argument text of the form of the first. Leaves the parameter that errors name as it is.
    [[nodiscard]] bool ConvertToText(unsigned int parameter) {
        return arguments[parameter - 1].ChangeType(log, context, Text::kType);
    }
    /// Lengths, positions and modes; errors name the parameter.
    [[nodiscard]] bool ReadNumber(int parameter, int& out) {
        context.SetArgumentIndex(parameter);
        return arguments[parameter - 1].GetLengthValue(log, context, out);
    }
    /// Takes ownership.
    CallStatus Return(Object* text) {
        Text::Set(result, text);
        return CallStatus::Continue;
    }
    CallStatus ReturnNumber(long long number, ElementaryType type) {
        result.SetInteger(number, type);
        return CallStatus::Continue;
    }
};

template <typename Text>
CallStatus Len(TextCall<Text> call) {
    return call.ReturnNumber(Text::Len(call.GetText(1)), ElementaryType::UInt);
}

template <typename Text>
CallStatus Left(TextCall<Text> call) {
    int length = 0;
    if (!call.ReadNumber(2, length)) return CallStatus::Failed;
    return call.Return(Text::Left(call.GetText(1), length));
}

template <typename Text>
CallStatus Right(TextCall<Text> call) {
    int length = 0;
    if (!call.ReadNumber(2, length)) return CallStatus::Failed;
    return call.Return(Text::Right(call.GetText(1), length));
}

template <typename Text>
CallStatus Mid(TextCall<Text> call) {
    int length = 0;
    int position = 0;
    if (!call.ReadNumber(2, length) || !call.ReadNumber(3, position)) return CallStatus::Failed;
    return call.Return(Text::Mid(call.GetText(1), length, position));
}

template <typename Text>
CallStatus Concat(TextCall<Text> call) {
    CValue text(std::move(call.arguments[0]));
    for (unsigned int parameter = 2; parameter <= call.argumentCount; ++parameter) {
        if (!call.ConvertToText(parameter)) return CallStatus::Failed;
        Text::Set(text, Text::Concat(Text::Get(text), call.GetText(parameter)));
    }
    call.result = std::move(text);
    return CallStatus::Continue;
}

template <typename Text>
CallStatus Insert(TextCall<Text> call) {
    call.context.SetArgumentIndex(2);
    int position = 0;
    if (!call.ConvertToText(2) || !call.ReadNumber(3, position)) return CallStatus::Failed;
    return call.Return(Text::Insert(call.GetText(1), call.GetText(2), position));
}

template <typename Text>
CallStatus Delete(TextCall<Text> call) {
    int length = 0;
    int position = 0;
    if (!call.ReadNumber(2, length) || !call.ReadNumber(3, position)) return CallStatus::Failed;
    return call.Return(Text::Delete(call.GetText(1), length, position));
}

template <typename Text>
CallStatus Replace(TextCall<Text> call) {
    int length = 0;
    int position = 0;
    if (!call.ConvertToText(2) || !call.ReadNumber(3, length) || !call.ReadNumber(4, position)) {
        return CallStatus::Failed;
    }
    return call.Return(Text::Replace(call.GetText(1), call.GetText(2), length, position));
}

template <typename Text>
CallStatus Find(TextCall<Text> call) {
    if (!call.ConvertToText(2)) return CallStatus::Failed;
    return call.ReturnNumber(Text::Find(call.GetText(1), call.GetText(2)) + 1, ElementaryType::UInt);
}

struct UpperCase {
    static char32_t OfAscii(char32_t c) noexcept { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; }
    static char32_t Of(char32_t codePoint) noexcept { return UnicodeCharTable::ToUpper(codePoint); }
};

struct LowerCase {
    static char32_t OfAscii(char32_t c) noexcept { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; }
    static char32_t Of(char32_t codePoint) noexcept { return UnicodeCharTable::ToLower(codePoint); }
};

/// A copy of the text with every code point mapped. The mapped text can be longer: the case of a character may take
/// more bytes, and what is no character becomes U+FFFD.
template <typename Case, typename Text>
CallStatus MapCodePoints(TextCall<Text> call) {
    using Unit = typename Text::Unit;
    const std::span<const Unit> in = call.GetInput();
    std::vector<Unit> out;
    out.reserve(in.size() + Text::kMaxUnitsOfCodePoint);
    std::size_t at = 0;
    while (at < in.size()) {
        if (in[at] < 0x80) {
            out.push_back(static_cast<Unit>(Case::OfAscii(in[at++])));
            continue;
        }
        char32_t codePoint = 0;
        at += Text::Decode(&in[at], static_cast<unsigned int>(in.size() - at), codePoint);
        Unit encoded[Text::kMaxUnitsOfCodePoint];
        const unsigned int count = Text::Encode(Case::Of(codePoint), encoded);
        out.insert(out.end(), encoded, encoded + count);
    }
    return call.Return(Text::Make(out));
}

template <typename Text>
CallStatus Upper(TextCall<Text> call) {
    return MapCodePoints<UpperCase>(call);
}

template <typename Text>
CallStatus Lower(TextCall<Text> call) {
    return MapCodePoints<LowerCase>(call);
}

/// Bits of TRIM's MODE.
constexpr int kTrimLeading = 1;
constexpr int kTrimTrailing = 2;

template <typename Text>
CallStatus Trim(TextCall<Text> call) {
    int mode = 0;
    if (!call.ReadNumber(2, mode)) return CallStatus::Failed;
    std::span<const typename Text::Unit> rest = call.GetInput();
    while ((mode & kTrimLeading) != 0 && !rest.empty() && CTNChar::IsSpace(rest.front()))
        rest = rest.subspan(1);
    while ((mode & kTrimTrailing) != 0 && !rest.empty() && CTNChar::IsSpace(rest.back())) {
        rest = rest.first(rest.size() - 1);
    }
    return call.Return(Text::Make(rest));
}

template <typename Text>
CallStatus CodePointAt(TextCall<Text> call) {
    int position = 0;
    if (!call.ReadNumber(2, position)) return CallStatus::Failed;
    const std::span<const typename Text::Unit> in = call.GetInput();
    if (position < 1 || static_cast<std::size_t>(position) > in.size()) {
        return call.ReturnNumber(-1, ElementaryType::DInt);
    }
    const std::span<const typename Text::Unit> rest = in.subspan(static_cast<std::size_t>(position) - 1);
    char32_t codePoint = 0;
    Text::Decode(rest.data(), static_cast<unsigned int>(rest.size()), codePoint);
    return call.ReturnNumber(codePoint, ElementaryType::DInt);
}

template <typename Text>
CallStatus GetElement(TextCall<Text> call) {
    call.context.SetArgumentIndex(2);
    if (!call.arguments[1].ChangeType(call.log, call.context, Text::kCharType)) return CallStatus::Failed;
    const auto separator = call.arguments[1].template GetPayload<typename Text::Unit>();
    call.context.SetArgumentIndex(3);
    if (!call.arguments[2].ChangeTypeToDINT(call.log, call.context)) return CallStatus::Failed;
    const int index = call.arguments[2].template GetPayload<int>();
    return call.Return(Text::GetElement(call.GetText(1), separator, index));
}

template <CallStatus (*kUtf8)(TextCall<Utf8Text>), CallStatus (*kUtf16)(TextCall<Utf16Text>)>
CallStatus ByType(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount, CValue* arguments,
                  CValue& result) {
    if (arguments[0].GetType() == ElementaryType::String) {
        return kUtf8({log, context, argumentCount, arguments, result});
    }
    return kUtf16({log, context, argumentCount, arguments, result});
}

constexpr unsigned char kAny = FunctionRow::kAnyCount;
constexpr auto kRefused = SurplusArguments::Refused;
constexpr auto kSurplus = SurplusArguments::Ignored;

constexpr unsigned char kUpperId = 10;
constexpr unsigned char kLowerId = 11;

constexpr FunctionRow kRows[] = {
    {1, "LEN", 1, 1, kSurplus, "IN", "UINT: the number of units", ByType<Len<Utf8Text>, Len<Utf16Text>>},
    {2, "LEFT", 2, 2, kRefused, "IN, L", "the first L units", ByType<Left<Utf8Text>, Left<Utf16Text>>},
    {3, "RIGHT", 2, 2, kRefused, "IN, L", "the last L units", ByType<Right<Utf8Text>, Right<Utf16Text>>},
    {4, "MID", 3, 3, kRefused, "IN, L, P", "L units from position P on", ByType<Mid<Utf8Text>, Mid<Utf16Text>>},
    {5, "CONCAT", 1, kAny, kSurplus, "IN1, IN2, ...", "the texts one behind the other",
     ByType<Concat<Utf8Text>, Concat<Utf16Text>>},
    {6, "INSERT", 3, 3, kRefused, "IN1, IN2, P", "IN1 with IN2 behind position P",
     ByType<Insert<Utf8Text>, Insert<Utf16Text>>},
    {7, "DELETE", 3, 3, kRefused, "IN, L, P", "IN without L units from position P on",
     ByType<Delete<Utf8Text>, Delete<Utf16Text>>},
    {8, "REPLACE", 4, 4, kRefused, "IN1, IN2, L, P", "IN1 with IN2 in place of L units from position P on",
     ByType<Replace<Utf8Text>, Replace<Utf16Text>>},
    {9, "FIND", 2, 2, kSurplus, "IN1, IN2", "UINT: position of IN2 in IN1, 0 for none",
     ByType<Find<Utf8Text>, Find<Utf16Text>>},
    {kUpperId, "UPPER", 1, 1, kSurplus, "IN", "IN in capitals", ByType<Upper<Utf8Text>, Upper<Utf16Text>>},
    {kLowerId, "LOWER", 1, 1, kSurplus, "IN", "IN in small letters", ByType<Lower<Utf8Text>, Lower<Utf16Text>>},
    {12, "TRIM", 2, 2, kRefused, "IN, MODE", "IN without leading (MODE bit 0) and trailing (bit 1) white space",
     ByType<Trim<Utf8Text>, Trim<Utf16Text>>},
    {13, "CODE_POINT_AT", 2, 2, kRefused, "IN, POS", "DINT: the code point that begins at unit POS, -1 for none",
     ByType<CodePointAt<Utf8Text>, CodePointAt<Utf16Text>>},
    {14, "CODE_POINT_CHAR_LEN", 0, kAny, kSurplus, "", "reserved, cannot be called", nullptr},
    {15, "CODE_POINT_WCHAR_LEN", 0, kAny, kSurplus, "", "reserved, cannot be called", nullptr},
    {16, "GET_ELEMENT", 3, 3, kRefused, "IN, SEPARATOR, INDEX", "element INDEX, counted from 1, of a list",
     ByType<GetElement<Utf8Text>, GetElement<Utf16Text>>},
};
static_assert(HasConsecutiveIds(kRows));

CallStatus ExecuteText(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount, CValue* arguments,
                       CValue& result) {
    const FunctionRow* row = FindFunction(kRows, context.GetFunctionId());
    if (row == nullptr || row->body == nullptr) {
        CVMFunc::LogInvalidFunctionCode(log, context, CVMFuncString::kGroupWord, context.GetFunctionId());
        return CallStatus::Invalid;
    }
    return CallFunction(*row, log, context, argumentCount, arguments, result);
}

/// UPPER and LOWER of a single unit; there is nothing else for CHAR and WCHAR. Of a CHAR only the letters of ASCII have
/// a case.
template <typename Unit, char32_t (*kUpper)(char32_t) noexcept, char32_t (*kLower)(char32_t) noexcept>
CallStatus ExecuteCharacter(CErrorLog& log, CBuiltInFunctionContext& context, const CValue& argument, CValue& result) {
    const unsigned char id = context.GetFunctionId();
    if (id != kUpperId && id != kLowerId) {
        CVMFunc::LogInvalidFunctionCode(log, context, "Char", id);
        return CallStatus::Invalid;
    }
    const char32_t unit = argument.GetPayload<Unit>();
    result.SetInteger(id == kUpperId ? kUpper(unit) : kLower(unit), argument.GetType());
    return CallStatus::Continue;
}

}  // namespace

std::span<const FunctionRow> CVMFuncString::GetTable() noexcept {
    return kRows;
}

CallStatus CVMFuncString::ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                                          CValue* arguments, CValue& result) {
    if (argumentCount == 0) {
        LogInvalidFunctionArgumentCount(log, context, 1);
        return CallStatus::Failed;
    }
    switch (arguments[0].GetType()) {
        case ElementaryType::String:
        case ElementaryType::WString: return ExecuteText(log, context, argumentCount, arguments, result);
        case ElementaryType::Char:
            return ExecuteCharacter<unsigned char, UpperCase::OfAscii, LowerCase::OfAscii>(log, context, arguments[0],
                                                                                           result);
        case ElementaryType::WChar:
            return ExecuteCharacter<unsigned short, UpperCase::Of, LowerCase::Of>(log, context, arguments[0], result);
        default:
            return StatusOf(Fail<Message::StringOperationNotSupported>(log, context, arguments[0].GetTypeName(false)));
    }
}

const char* CVMFuncString::GetFunctionName(unsigned char id) const {
    return FindFunctionName(kRows, id);
}
