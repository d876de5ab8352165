#include "diag/Messages.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/DataFormat.h"

namespace {

struct PinnedMessage {
    Message message;
    std::uint32_t id;
    const char* text;
};

// Numbers and texts as hosts know them, doubled blanks included.
const std::vector<PinnedMessage> kPinnedMessages = {
    {Message::ReasonStartRecording, 101, "Start recording"},
    {Message::ReasonStopRecording, 102, "Stop recording"},
    {Message::ReasonQualityChange, 103, "Quality change"},
    {Message::ReasonValueChange, 104, "Value change"},
    {Message::ReasonTimeSample, 105, "Time sample"},
    {Message::ReasonLoadedValue, 106, "Loaded value"},
    {Message::ReasonWriteCommand, 107, "Write command"},
    {Message::ReasonUnknown, 108, "Unknown value %d"},
    {Message::ReasonTagValue, 109, "Tag value"},
    {Message::InvalidBool, 201, "'%s' is not a valid boolean value."},
    {Message::OutOfRange, 202, "Value '%s' is outside the range of type '%s'."},
    {Message::InvalidTimeUnit, 203, "'%s' is not a valid time unit."},
    {Message::InvalidDate, 204, "Invalid date."},
    {Message::UnaryNotSupported, 205, "Unary operator '%s' is not supported on type '%s'."},
    {Message::OperatorNotSupported, 206, "Operator '%s' is not supported with type '%s'."},
    {Message::InvalidEscape, 207, "Invalid string escape sequence '%s'."},
    {Message::CouldNotConvert, 208, "Could not convert '%s' to '%s'."},
    {Message::StackUnderflow, 209, "Data stack underflow."},
    {Message::InvalidInstruction, 210, "Invalid instruction '%d'."},
    {Message::InvalidImmediate, 211, "Invalid immediate value."},
    {Message::AccessViolation, 212, "Access violation, address %s."},
    {Message::StackOffsetBeyondEnd, 213, "Stack offset %u is beyond the end of the current stack."},
    {Message::ConversionNotSupported, 214, "Conversion from type '%s' to '%s' is not supported."},
    {Message::ConversionTargetNotSupported, 215, "Conversion to data type '%s' not supported."},
    {Message::GlobalMemoryCorruption, 216, "Global memory corruption."},
    {Message::NotAPointer, 217, "Pointer operation attempted on non pointer data type '%u'."},
    {Message::InvalidPointerFrame, 218, "Invalid pointer stack frame '%u'."},
    {Message::InvalidFunctionGroup, 219, "Invalid function group '%u'."},
    {Message::StringOperationNotSupported, 220, "String operation not supported on type '%s'."},
    {Message::NullPointer, 221, "Null pointer de-reference."},
    {Message::ZeroArgumentCount, 222, "Zero arguments count in function call is not valid."},
    {Message::TooFewArguments, 223,
     "Function call instruction requested %u arguments, but there are only %u available on the stack."},
    {Message::InvalidInteger, 224, "'%s' is not a valid integer."},
    {Message::InvalidRadix, 225, "Integer radix '%d' is not supported. Acceptable values are: 2, 8, 10 and 16."},
    {Message::DivisionByZero, 226, "Division by zero."},
    {Message::InternalLogicError, 227, "Internal logic error: %s."},
    {Message::NoSqlLiteral, 228, "Type '%s', cannot convert to an SQL Literal."},
    {Message::InstructionLimit, 229, "Instruction limit reached.  Program is limited to %u instructions."},
    {Message::InvalidSelector, 230, "Selector '%s', invalid."},
    {Message::InvalidLineNumber, 231, "Line number '%s', invalid. An integer value was expected here."},
    {Message::NoDirectlyLocatedVariables, 232,
     "No directly located variables.  Cannot de-reference tag address %hu:%u."},
    {Message::InvalidTagAddress, 233, "Directly located address %hu:%u, invalid."},
    {Message::InvalidAddressType, 234, "Address type %hu, invalid."},
    {Message::InvalidBuildIdentity, 235, "Invalid build identity."},
    {Message::InvalidVersion, 236, "Invalid version '%hu'."},
    {Message::InvalidBlockLength, 237, "Memory block '%s', invalid length '%u'."},
    {Message::BlockTruncated, 238, "Memory block '%s', data truncated."},
    {Message::JumpOutsideCode, 239, "JMP offset '%d', outside valid range."},
    {Message::InvalidUnaryOperation, 240, "Invalid unary operation '%d'."},
    {Message::InvalidBinaryOperation, 241, "Invalid binary operation '%d'."},
    {Message::ArgumentCount, 242, "Function requires %d argument(s)."},
    {Message::InvalidFunctionCode, 243, "Invalid %s function code '%d'."},
    {Message::FunctionGroupNotSupported, 244, "Function group '%u' not supported."},
    {Message::ComparisonNotSupported, 245, "Comparison of types '%s' is not supported."},
    {Message::BlockDataSize, 246, "Function block expects data size %d, but the provided size is %d."},
    {Message::InvalidDuration, 247, "'%s' is not a valid time duration."},
    {Message::NotWritable, 248, "Location is not writable."},
    {Message::ExpectedDoubleQuote, 249, "Expected double quote (\") after type prefix '%s'."},
    {Message::ExpectedSingleQuote, 250, "Expected single quote (') after type prefix '%s'."},
    {Message::NotASingleCharacter, 251, "Character sequence '%s' cannot be represented by a single '%s'."},
    {Message::InvalidLiteral, 252, "'%s' is not a valid literal."},
    {Message::LineOutOfRange, 253, "Line number '%d', out of text document range."},
    {Message::InvalidImage, 254, "Invalid VM Image."},
    {Message::MissingTimeUnit, 255, "Missing time units after '%s'. Specify 'd', 'h', 'm', 's', 'ms'."},
    {Message::InvalidOpcodeSilent, 256, "Invalid OpCode with no descriptive error."},
    {Message::InvalidDateValue, 257, "Invalid date value '%02d-%02d-%02d'."},
    {Message::InvalidDateTimeValue, 258, "Invalid date and time value '%02d-%02d-%02d %02d:%02d:%02d.%03d'."},
    {Message::TypeNotSupported, 259, "Type '%s' not supported."},
    {Message::InvalidFormat, 260, "Invalid format string '%s'."},
};

TEST(MessageTable, NumbersAndTextsArePinned) {
    ASSERT_EQ(kMessages.size(), kPinnedMessages.size()) << "a message without a pin";
    for (std::size_t i = 0; i < kPinnedMessages.size(); ++i) {
        const PinnedMessage& pinned = kPinnedMessages[i];
        SCOPED_TRACE(pinned.id);
        EXPECT_EQ(kMessages[i].id, pinned.id);
        EXPECT_STREQ(kMessages[i].text, pinned.text);
        EXPECT_EQ(static_cast<std::uint32_t>(pinned.message), pinned.id);
        EXPECT_STREQ(GetVMModule().FindText(pinned.id), pinned.text);
    }
}

TEST(MessageTable, OtherNumbersHaveNoText) {
    for (const std::uint32_t id : {0U, 100U, 110U, 200U, 261U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(id);
        EXPECT_EQ(GetVMModule().FindText(id), nullptr);
    }
}

TEST(MessageTable, EveryPlaceholderTakesItsArgument) {
    for (const ResourceEntry& entry : kMessages) {
        SCOPED_TRACE(entry.text);
        const std::string_view text(entry.text);
        const auto placeholders = static_cast<std::size_t>(std::count(text.begin(), text.end(), '%'));
        const std::vector<FormatArg> args(placeholders, FormatArg(1));
        std::string filled;
        AppendFormatted(filled, text, args);
        EXPECT_EQ(filled.find('%'), std::string::npos) << filled;
    }
}

// Number and kind of the arguments are checked when the program is compiled.
using tn61131::ArgumentsMatch;
static_assert(ArgumentsMatch<Message::InvalidDate>());
static_assert(!ArgumentsMatch<Message::InvalidDate, int>(), "one too many");
static_assert(ArgumentsMatch<Message::OutOfRange, const char*, std::string>());
static_assert(ArgumentsMatch<Message::OutOfRange, std::string_view, char*>());
static_assert(!ArgumentsMatch<Message::OutOfRange, const char*>(), "one too few");
static_assert(!ArgumentsMatch<Message::OutOfRange, const char*, int>(), "a number for a text");
static_assert(ArgumentsMatch<Message::InvalidInstruction, unsigned char>());
static_assert(ArgumentsMatch<Message::InvalidInstruction, Message>(), "an enumerator is a number");
static_assert(!ArgumentsMatch<Message::InvalidInstruction, const char*>(), "a text for a number");
static_assert(ArgumentsMatch<Message::NoDirectlyLocatedVariables, unsigned short, unsigned int>());
static_assert(!ArgumentsMatch<Message::NoDirectlyLocatedVariables, unsigned short>());
static_assert(ArgumentsMatch<Message::InvalidFunctionCode, const char*, unsigned char>());
static_assert(!ArgumentsMatch<Message::InvalidFunctionCode, unsigned char, const char*>(), "the wrong order");
static_assert(ArgumentsMatch<Message::InvalidDateTimeValue, int, int, int, int, int, int, int>());
static_assert(!ArgumentsMatch<Message::InvalidDateTimeValue, int, int, int, int, int, int>());
static_assert(tn61131::PlaceholderKind("%%%s%d", 0) == 's', "a percent sign is no placeholder");
static_assert(tn61131::PlaceholderKind("%%%s%d", 1) == 'i');
static_assert(tn61131::PlaceholderKind("%%%s%d", 2) == 0);

TEST(Fail, LogsOneMessageAndReturnsFalse) {
    CErrorLog log;
    EXPECT_FALSE(tn61131::Fail<Message::OutOfRange>(log, ErrorLocationNull::Get(), std::string("300"), "SINT"));
    ASSERT_EQ(log.GetEntries().size(), 1u);
    const CErrorLog::Entry& entry = log.GetEntries().front();
    EXPECT_EQ(entry.module, &GetVMModule());
    EXPECT_EQ(entry.id, 202u);
    EXPECT_EQ(entry.severity, CErrorLog::Severity::Error);
    EXPECT_EQ(entry.location, "");
    EXPECT_EQ(entry.text, "Value '300' is outside the range of type 'SINT'.");
}

TEST(Fail, FillsEveryFormOfPlaceholder) {
    CErrorLog log;
    const ErrorLocation& nowhere = ErrorLocationNull::Get();
    tn61131::Fail<Message::NoDirectlyLocatedVariables>(log, nowhere, std::uint16_t{65535}, 4294967295U);
    tn61131::Fail<Message::InvalidDateValue>(log, nowhere, 2024, 2, 30);
    tn61131::Fail<Message::InvalidDateTimeValue>(log, nowhere, 2024, 1, 2, 3, 4, 5, 6);
    tn61131::Fail<Message::JumpOutsideCode>(log, nowhere, -5);
    tn61131::Fail<Message::InstructionLimit>(log, nowhere, 100000U);
    tn61131::Fail<Message::InvalidFunctionCode>(log, nowhere, "string", std::uint8_t{255});
    std::vector<std::string> texts;
    for (const CErrorLog::Entry& entry : log.GetEntries())
        texts.push_back(entry.text);
    EXPECT_EQ(texts, (std::vector<std::string>{
                         "No directly located variables.  Cannot de-reference tag address 65535:4294967295.",
                         "Invalid date value '2024-02-30'.",
                         "Invalid date and time value '2024-01-02 03:04:05.006'.",
                         "JMP offset '-5', outside valid range.",
                         "Instruction limit reached.  Program is limited to 100000 instructions.",
                         "Invalid string function code '255'.",
                     }));
}

TEST(VMModule, HasItsName) {
    EXPECT_EQ(GetVMModule().GetName(), "TN61131VM");
}

TEST(VMModule, LabelsAreFoundForEveryLocale) {
    for (const char* const tag : {"en-US", "EN-us", "de-DE", ""}) {
        SCOPED_TRACE(tag);
        std::array<char, 64> buffer{};
        EXPECT_EQ(GetVMModule().LoadResourceString(CTNLocale(tag), 101, buffer.data(), buffer.size()), 15u);
        EXPECT_STREQ(buffer.data(), "Start recording");
        EXPECT_EQ(GetVMModule().FormatResourceString(CTNLocale(tag), buffer.data(), buffer.size(), 108, 7), 15u);
        EXPECT_STREQ(buffer.data(), "Unknown value 7");
    }
}

TEST(VMModule, TextsAreCutToTheBuffer) {
    std::array<char, 6> buffer{};
    EXPECT_EQ(GetVMModule().LoadResourceString(CTNLocale(), 101, buffer.data(), buffer.size()), 5u);
    EXPECT_STREQ(buffer.data(), "Start");
    EXPECT_EQ(GetVMModule().FormatResourceString(CTNLocale(), buffer.data(), buffer.size(), 108, 7), 5u);
    EXPECT_STREQ(buffer.data(), "Unkno");
}

TEST(VMModule, UnknownNumberGivesAnEmptyText) {
    std::array<char, 6> buffer = {'x', 'x', 'x', 'x', 'x', 'x'};
    EXPECT_EQ(GetVMModule().LoadResourceString(CTNLocale(), 100, buffer.data(), buffer.size()), 0u);
    EXPECT_STREQ(buffer.data(), "");
    buffer[0] = 'x';
    EXPECT_EQ(GetVMModule().FormatResourceString(CTNLocale(), buffer.data(), buffer.size(), 100, 1), 0u);
    EXPECT_STREQ(buffer.data(), "");
}

}  // namespace
