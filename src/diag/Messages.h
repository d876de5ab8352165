#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/ErrorLog.h"
#include "platform/Export.h"
#include "platform/TNModule.h"

/// The library's messages by name. The numbers are part of the interface; the texts are in kMessages.
enum class Message : std::uint32_t {
    ReasonStartRecording = 101,
    ReasonStopRecording = 102,
    ReasonQualityChange = 103,
    ReasonValueChange = 104,
    ReasonTimeSample = 105,
    ReasonLoadedValue = 106,
    ReasonWriteCommand = 107,
    ReasonUnknown = 108,
    ReasonTagValue = 109,
    InvalidBool = 201,
    OutOfRange = 202,
    InvalidTimeUnit = 203,
    InvalidDate = 204,
    UnaryNotSupported = 205,
    OperatorNotSupported = 206,
    InvalidEscape = 207,
    CouldNotConvert = 208,
    StackUnderflow = 209,
    InvalidInstruction = 210,
    InvalidImmediate = 211,
    AccessViolation = 212,
    StackOffsetBeyondEnd = 213,
    ConversionNotSupported = 214,
    ConversionTargetNotSupported = 215,
    GlobalMemoryCorruption = 216,
    NotAPointer = 217,
    InvalidPointerFrame = 218,
    InvalidFunctionGroup = 219,
    StringOperationNotSupported = 220,
    NullPointer = 221,
    ZeroArgumentCount = 222,
    TooFewArguments = 223,
    InvalidInteger = 224,
    InvalidRadix = 225,
    DivisionByZero = 226,
    InternalLogicError = 227,
    NoSqlLiteral = 228,
    InstructionLimit = 229,
    InvalidSelector = 230,
    InvalidLineNumber = 231,
    NoDirectlyLocatedVariables = 232,
    InvalidTagAddress = 233,
    InvalidAddressType = 234,
    InvalidBuildIdentity = 235,
    InvalidVersion = 236,
    InvalidBlockLength = 237,
    BlockTruncated = 238,
    JumpOutsideCode = 239,
    InvalidUnaryOperation = 240,
    InvalidBinaryOperation = 241,
    ArgumentCount = 242,
    InvalidFunctionCode = 243,
    FunctionGroupNotSupported = 244,
    ComparisonNotSupported = 245,
    BlockDataSize = 246,
    InvalidDuration = 247,
    NotWritable = 248,
    ExpectedDoubleQuote = 249,
    ExpectedSingleQuote = 250,
    NotASingleCharacter = 251,
    InvalidLiteral = 252,
    LineOutOfRange = 253,
    InvalidImage = 254,
    MissingTimeUnit = 255,
    InvalidOpcodeSilent = 256,
    InvalidDateValue = 257,
    InvalidDateTimeValue = 258,
    TypeNotSupported = 259,
    InvalidFormat = 260,
};

inline constexpr std::array kMessages = {
    ResourceEntry{101, "Start recording"},
    ResourceEntry{102, "Stop recording"},
    ResourceEntry{103, "Quality change"},
    ResourceEntry{104, "Value change"},
    ResourceEntry{105, "Time sample"},
    ResourceEntry{106, "Loaded value"},
    ResourceEntry{107, "Write command"},
    ResourceEntry{108, "Unknown value %d"},
    ResourceEntry{109, "Tag value"},
    ResourceEntry{201, "'%s' is not a valid boolean value."},
    ResourceEntry{202, "Value '%s' is outside the range of type '%s'."},
    ResourceEntry{203, "'%s' is not a valid time unit."},
    ResourceEntry{204, "Invalid date."},
    ResourceEntry{205, "Unary operator '%s' is not supported on type '%s'."},
    ResourceEntry{206, "Operator '%s' is not supported with type '%s'."},
    ResourceEntry{207, "Invalid string escape sequence '%s'."},
    ResourceEntry{208, "Could not convert '%s' to '%s'."},
    ResourceEntry{209, "Data stack underflow."},
    ResourceEntry{210, "Invalid instruction '%d'."},
    ResourceEntry{211, "Invalid immediate value."},
    ResourceEntry{212, "Access violation, address %s."},
    ResourceEntry{213, "Stack offset %u is beyond the end of the current stack."},
    ResourceEntry{214, "Conversion from type '%s' to '%s' is not supported."},
    ResourceEntry{215, "Conversion to data type '%s' not supported."},
    ResourceEntry{216, "Global memory corruption."},
    ResourceEntry{217, "Pointer operation attempted on non pointer data type '%u'."},
    ResourceEntry{218, "Invalid pointer stack frame '%u'."},
    ResourceEntry{219, "Invalid function group '%u'."},
    ResourceEntry{220, "String operation not supported on type '%s'."},
    ResourceEntry{221, "Null pointer de-reference."},
    ResourceEntry{222, "Zero arguments count in function call is not valid."},
    ResourceEntry{223,
                  "Function call instruction requested %u arguments, but there are only %u available on the stack."},
    ResourceEntry{224, "'%s' is not a valid integer."},
    ResourceEntry{225, "Integer radix '%d' is not supported. Acceptable values are: 2, 8, 10 and 16."},
    ResourceEntry{226, "Division by zero."},
    ResourceEntry{227, "Internal logic error: %s."},
    ResourceEntry{228, "Type '%s', cannot convert to an SQL Literal."},
    ResourceEntry{229, "Instruction limit reached.  Program is limited to %u instructions."},
    ResourceEntry{230, "Selector '%s', invalid."},
    ResourceEntry{231, "Line number '%s', invalid. An integer value was expected here."},
    ResourceEntry{232, "No directly located variables.  Cannot de-reference tag address %hu:%u."},
    ResourceEntry{233, "Directly located address %hu:%u, invalid."},
    ResourceEntry{234, "Address type %hu, invalid."},
    ResourceEntry{235, "Invalid build identity."},
    ResourceEntry{236, "Invalid version '%hu'."},
    ResourceEntry{237, "Memory block '%s', invalid length '%u'."},
    ResourceEntry{238, "Memory block '%s', data truncated."},
    ResourceEntry{239, "JMP offset '%d', outside valid range."},
    ResourceEntry{240, "Invalid unary operation '%d'."},
    ResourceEntry{241, "Invalid binary operation '%d'."},
    ResourceEntry{242, "Function requires %d argument(s)."},
    ResourceEntry{243, "Invalid %s function code '%d'."},
    ResourceEntry{244, "Function group '%u' not supported."},
    ResourceEntry{245, "Comparison of types '%s' is not supported."},
    ResourceEntry{246, "Function block expects data size %d, but the provided size is %d."},
    ResourceEntry{247, "'%s' is not a valid time duration."},
    ResourceEntry{248, "Location is not writable."},
    ResourceEntry{249, "Expected double quote (\") after type prefix '%s'."},
    ResourceEntry{250, "Expected single quote (') after type prefix '%s'."},
    ResourceEntry{251, "Character sequence '%s' cannot be represented by a single '%s'."},
    ResourceEntry{252, "'%s' is not a valid literal."},
    ResourceEntry{253, "Line number '%d', out of text document range."},
    ResourceEntry{254, "Invalid VM Image."},
    ResourceEntry{255, "Missing time units after '%s'. Specify 'd', 'h', 'm', 's', 'ms'."},
    ResourceEntry{256, "Invalid OpCode with no descriptive error."},
    ResourceEntry{257, "Invalid date value '%02d-%02d-%02d'."},
    ResourceEntry{258, "Invalid date and time value '%02d-%02d-%02d %02d:%02d:%02d.%03d'."},
    ResourceEntry{259, "Type '%s' not supported."},
    ResourceEntry{260, "Invalid format string '%s'."},
};

/// The module under which every message of this library is logged.
TN61131_API const CTNModule& GetVMModule() noexcept;

namespace tn61131 {

/// The text of a message, found when the program is compiled.
consteval std::string_view MessageText(Message message) {
    for (const ResourceEntry& entry : kMessages) {
        if (entry.id == static_cast<std::uint32_t>(message)) return entry.text;
    }
    throw "message without a text";
}

/// What the placeholder number `index` of a text wants: 's' a text, 'i' an integer, 0 when there is no such
/// placeholder.
consteval char PlaceholderKind(std::string_view text, unsigned int index) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') continue;
        ++at;
        while (at < text.size() && ((text[at] >= '0' && text[at] <= '9') || text[at] == 'h' || text[at] == 'l'))
            ++at;
        if (text[at] == '%') continue;
        if (index-- == 0) return text[at] == 's' ? 's' : 'i';
    }
    return 0;
}

template <typename T>
consteval char ArgumentKind() {
    return std::is_integral_v<T> || std::is_enum_v<T> ? 'i' : 's';
}

template <Message kMessage, typename... Args>
consteval bool ArgumentsMatch() {
    constexpr std::string_view kText = MessageText(kMessage);
    unsigned int index = 0;
    return ((PlaceholderKind(kText, index++) == ArgumentKind<Args>()) && ...) && PlaceholderKind(kText, index) == 0;
}

/// Logs one of the library's errors and returns false, so that a failing operation reads `return Fail<...>(...)`.
/// Number and kind of the arguments are checked against the text at compile time.
template <Message kMessage, typename... Args>
bool Fail(CErrorLog& log, const ErrorLocation& location, const Args&... args) {
    static_assert(ArgumentsMatch<kMessage, std::decay_t<Args>...>(), "arguments do not fit the message's placeholders");
    log.LogError(location, GetVMModule(), static_cast<std::uint32_t>(kMessage), args...);
    return false;
}

}  // namespace tn61131
