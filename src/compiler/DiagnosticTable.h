#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace tn61131::st {

enum class Severity : std::uint8_t { Error, Warning, Hint };

/// The numbers users see as ST0123; a number never changes its meaning. 01xx text and grammar, 02xx declarations,
/// 03xx types and constants, 04xx expressions, 05xx calls, 06xx statements, 07xx limits and code generation, 08xx
/// projects and files.
enum class DiagnosticCode : std::uint16_t {
    // --- text and grammar ---
    UnexpectedToken = 101,
    UnterminatedComment = 102,
    UnterminatedString = 103,
    NestingTooDeep = 104,
    UnterminatedPragma = 105,
    StrayCharacter = 106,
    MalformedNumber = 107,
    MissingSemicolon = 108,
    MissingEnd = 109,
    StrayEnd = 110,
    EqualForAssignment = 111,
    KeywordAsName = 112,
    OtherSpelling = 113,
    DeclarationExpected = 114,

    // --- declarations ---
    DuplicateName = 201,
    SelfReference = 202,
    DependsTooDeep = 203,
    UnknownGlobal = 204,
    ExternalDiffers = 205,
    UnknownAddress = 206,
    BadAddress = 207,
    AddressTypeDiffers = 208,
    AddressOverlaps = 209,
    AddressTooHigh = 210,
    AddressNotMapped = 211,
    NoFixedPlace = 212,
    AliasTooLarge = 213,
    SectionNotAllowed = 214,
    UnknownBase = 215,
    ConstantWithoutValue = 216,
    HidesOther = 217,
    AmbiguousName = 218,
    UnknownProgram = 219,
    UnknownTask = 220,
    UnknownTaskProperty = 221,
    UnknownNamespace = 222,
    NotSupported = 223,
    MemoryTooLarge = 224,
    InitialIgnored = 226,
    UnusedSection = 227,
    ConfigDiffers = 228,

    // --- types and constants ---
    UnknownType = 301,
    NotAType = 302,
    TypeTooLarge = 303,
    TypeTooDeep = 304,
    EmptyBounds = 305,
    BoundTooLarge = 306,
    BadStringLength = 307,
    NotAnIntegerType = 308,
    DuplicateEnumValue = 310,
    TooManyElements = 311,
    MemberTwice = 313,
    BadInitialValue = 314,
    BadRepeatCount = 316,
    OpenArray = 317,
    PointerDiffers = 318,
    InitialNotWritable = 319,
    ValueOutOfRange = 340,
    NotConstant = 341,
    DivisionByZero = 342,
    ConstantOverflow = 343,
    InvalidLiteral = 344,
    OutsideSubrange = 345,
    StringCut = 346,
    TimeRounded = 347,
    IntegerQuotient = 348,

    // --- expressions ---
    UnknownName = 401,
    NotAValue = 402,
    NoSuchMember = 403,
    NotIndexable = 404,
    WrongIndexCount = 405,
    IndexOutOfBounds = 406,
    IndexType = 407,
    NotAPointer = 408,
    BinaryOperands = 409,
    UnaryOperand = 410,
    NoCommonType = 411,
    NoConversion = 412,
    ExplicitConversion = 413,
    Narrowing = 414,
    NoSuchBit = 415,
    NotAssignable = 416,
    VariableExpected = 417,
    RealEquality = 418,
    ConstantComparison = 419,
    PointerOrder = 420,
    PointerDifference = 421,
    NoAddress = 422,
    InternalVariable = 423,
    InaccessibleVariable = 424,
    PointerIsNoNumber = 425,
    NoInstance = 426,
    EnumerationMix = 427,
    NoValue = 428,
    WrongTextKind = 429,
    AggregateOperand = 430,
    TypeMismatch = 431,

    // --- calls ---
    WrongArgumentCount = 501,
    UnknownParameter = 502,
    DuplicateArgument = 503,
    MissingArgument = 504,
    PositionalAfterNamed = 505,
    WrongArrow = 506,
    InOutNeedsVariable = 507,
    InOutType = 508,
    NotCallable = 509,
    BlockInFunction = 510,
    Recursion = 511,
    InOutNotGiven = 512,
    ArgumentType = 513,
    BlockCallValue = 514,
    EnableNotSupported = 515,
    MethodNeedsInstance = 516,
    TypeNeedsInstance = 517,
    OutputIgnoredNegation = 518,
    EmptyArgument = 519,

    // --- statements ---
    ConditionType = 602,
    CaseSelector = 603,
    DuplicateLabel = 604,
    EmptyRange = 605,
    ForCounter = 606,
    ForStepZero = 607,
    ForFullRange = 608,
    ForUnsignedEnd = 609,
    CounterWritten = 610,
    OutsideLoop = 611,
    Unreachable = 612,
    UnusedVariable = 613,
    ResultNotAssigned = 614,
    MissingEnumLabel = 615,
    NoEffect = 616,
    AttemptUnsupported = 617,

    // --- limits and code generation ---
    TooManySlots = 701,
    ImageTooLarge = 702,

    // --- projects and files ---
    ProjectTooLarge = 801,
};

struct DiagnosticRow {
    DiagnosticCode code;
    Severity severity;      ///< where the reporting place does not choose
    std::string_view text;  ///< {0}, {1}, ... stand for arguments
};

/// By code, ascending.
inline constexpr auto kDiagnosticTable = std::to_array<DiagnosticRow>({
    // --- text and grammar ---
    {DiagnosticCode::UnexpectedToken, Severity::Error, "{0} expected, found {1}"},
    {DiagnosticCode::UnterminatedComment, Severity::Error, "comment is not terminated"},
    {DiagnosticCode::UnterminatedString, Severity::Error, "string is not terminated"},
    {DiagnosticCode::NestingTooDeep, Severity::Error, "nested more than {0} levels deep"},
    {DiagnosticCode::UnterminatedPragma, Severity::Error, "pragma is not terminated"},
    {DiagnosticCode::StrayCharacter, Severity::Error, "the character {0} has no meaning here"},
    {DiagnosticCode::MalformedNumber, Severity::Error, "'{0}' is no number"},
    {DiagnosticCode::MissingSemicolon, Severity::Error, "';' expected after {0}, found {1}"},
    {DiagnosticCode::MissingEnd, Severity::Error, "{0} expected, found {1}"},
    {DiagnosticCode::StrayEnd, Severity::Error, "{0} closes nothing that is open here"},
    {DiagnosticCode::EqualForAssignment, Severity::Error, "'=' compares; write ':=' to assign"},
    {DiagnosticCode::KeywordAsName, Severity::Error, "{0} is a keyword and cannot be the name of {1}"},
    {DiagnosticCode::OtherSpelling, Severity::Hint, "{0}"},
    {DiagnosticCode::DeclarationExpected, Severity::Error,
     "TYPE, VAR_GLOBAL, FUNCTION, FUNCTION_BLOCK, PROGRAM or another declaration expected, found {0}"},

    // --- declarations ---
    {DiagnosticCode::DuplicateName, Severity::Error, "'{0}' is declared twice"},
    {DiagnosticCode::SelfReference, Severity::Error, "'{0}' is defined by itself"},
    {DiagnosticCode::DependsTooDeep, Severity::Error, "'{0}' depends on too many declarations behind it"},
    {DiagnosticCode::UnknownGlobal, Severity::Error, "there is no global variable '{0}'"},
    {DiagnosticCode::ExternalDiffers, Severity::Error, "'{0}' is declared as {1}, but the global variable is {2}"},
    {DiagnosticCode::UnknownAddress, Severity::Error, "no variable has the address '{0}'"},
    {DiagnosticCode::BadAddress, Severity::Error, "'{0}' is no address"},
    {DiagnosticCode::AddressTypeDiffers, Severity::Error, "{0} cannot lie at '{1}', which is {2}"},
    {DiagnosticCode::AddressOverlaps, Severity::Warning, "'%{0}' has a byte of its own and is no bit of '%{1}'"},
    {DiagnosticCode::AddressTooHigh, Severity::Error, "'%{0}' lies beyond the {1} bytes of an area"},
    {DiagnosticCode::AddressNotMapped, Severity::Warning, "'{0}' has no address: it gets ordinary memory"},
    {DiagnosticCode::NoFixedPlace, Severity::Error, "'{0}' has no fixed place"},
    {DiagnosticCode::AliasTooLarge, Severity::Error, "'{0}' is larger than what it lies on"},
    {DiagnosticCode::SectionNotAllowed, Severity::Error, "{0} is not allowed in a {1}"},
    {DiagnosticCode::UnknownBase, Severity::Error, "there is no {0} '{1}' to extend"},
    {DiagnosticCode::ConstantWithoutValue, Severity::Warning,
     "constant '{0}' has no value, the default of its type is taken"},
    {DiagnosticCode::HidesOther, Severity::Hint, "'{0}' hides another declaration of this name"},
    {DiagnosticCode::AmbiguousName, Severity::Error, "'{0}' is a value of several enumerations"},
    {DiagnosticCode::UnknownProgram, Severity::Error, "there is no program '{0}'"},
    {DiagnosticCode::UnknownTask, Severity::Error, "there is no task '{0}'"},
    {DiagnosticCode::UnknownTaskProperty, Severity::Error, "'{0}' is no property of a task"},
    {DiagnosticCode::UnknownNamespace, Severity::Error, "there is no namespace '{0}'"},
    {DiagnosticCode::NotSupported, Severity::Error, "{0} is not supported"},
    {DiagnosticCode::MemoryTooLarge, Severity::Error, "the variables of the project need more than {0} bytes"},
    {DiagnosticCode::InitialIgnored, Severity::Warning, "the initial value of '{0}' has no effect at '{1}'"},
    {DiagnosticCode::UnusedSection, Severity::Warning, "{0} has no effect"},
    {DiagnosticCode::ConfigDiffers, Severity::Error, "'{0}' is configured as {1}, but it is {2}"},

    // --- types and constants ---
    {DiagnosticCode::UnknownType, Severity::Error, "unknown type '{0}'"},
    {DiagnosticCode::NotAType, Severity::Error, "'{0}' is no type"},
    {DiagnosticCode::TypeTooLarge, Severity::Error, "{0} needs more than {1} bytes"},
    {DiagnosticCode::TypeTooDeep, Severity::Error, "types are nested more than {0} levels deep"},
    {DiagnosticCode::EmptyBounds, Severity::Error, "lower bound {0} is above upper bound {1}"},
    {DiagnosticCode::BoundTooLarge, Severity::Error, "bound {0} does not fit in DINT"},
    {DiagnosticCode::BadStringLength, Severity::Error, "length {0} is not in the range 1..{1}"},
    {DiagnosticCode::NotAnIntegerType, Severity::Error, "{0} is no integer type"},
    {DiagnosticCode::DuplicateEnumValue, Severity::Warning, "'{0}' has the same value as '{1}'"},
    {DiagnosticCode::TooManyElements, Severity::Error, "more than {0} values for {1}"},
    {DiagnosticCode::MemberTwice, Severity::Error, "'{0}' gets a value twice"},
    {DiagnosticCode::BadInitialValue, Severity::Error, "this is no initial value for {0}"},
    {DiagnosticCode::BadRepeatCount, Severity::Error, "repeat count {0} is negative or too large"},
    {DiagnosticCode::OpenArray, Severity::Error, "ARRAY[*] is only allowed for parameters"},
    {DiagnosticCode::PointerDiffers, Severity::Error, "{0} cannot point to {1}"},
    {DiagnosticCode::InitialNotWritable, Severity::Error, "'{0}' cannot be given an initial value here"},
    {DiagnosticCode::ValueOutOfRange, Severity::Error, "{0} is outside the range of {1}"},
    {DiagnosticCode::NotConstant, Severity::Error, "this is no constant expression"},
    {DiagnosticCode::DivisionByZero, Severity::Error, "division by zero"},
    {DiagnosticCode::ConstantOverflow, Severity::Warning, "{0} overflows: the result is {1}"},
    {DiagnosticCode::InvalidLiteral, Severity::Error, "{0}"},
    {DiagnosticCode::OutsideSubrange, Severity::Error, "{0} is outside {1}..{2}"},
    {DiagnosticCode::StringCut, Severity::Warning, "the text has {0} units, {1} are kept"},
    {DiagnosticCode::TimeRounded, Severity::Warning, "times count milliseconds: the fraction is lost"},
    {DiagnosticCode::IntegerQuotient, Severity::Warning, "a quotient of integers has no fraction: the result is {0}"},

    // --- expressions ---
    {DiagnosticCode::UnknownName, Severity::Error, "unknown name '{0}'"},
    {DiagnosticCode::NotAValue, Severity::Error, "'{0}' is {1}, not a value"},
    {DiagnosticCode::NoSuchMember, Severity::Error, "{0} has no member '{1}'"},
    {DiagnosticCode::NotIndexable, Severity::Error, "{0} has no elements"},
    {DiagnosticCode::WrongIndexCount, Severity::Error, "the array has {0} dimensions, not {1}"},
    {DiagnosticCode::IndexOutOfBounds, Severity::Error, "index {0} is outside {1}..{2}"},
    {DiagnosticCode::IndexType, Severity::Error, "an index must be an integer, not {0}"},
    {DiagnosticCode::NotAPointer, Severity::Error, "{0} is no pointer"},
    {DiagnosticCode::BinaryOperands, Severity::Error, "{0} does not work with {1} and {2}"},
    {DiagnosticCode::UnaryOperand, Severity::Error, "{0} does not work with {1}"},
    {DiagnosticCode::NoCommonType, Severity::Error, "no integer type holds both {0} and {1}"},
    {DiagnosticCode::NoConversion, Severity::Error, "{0} does not convert to {1}"},
    {DiagnosticCode::ExplicitConversion, Severity::Error, "{0} does not convert to {1} by itself: write {2}"},
    {DiagnosticCode::Narrowing, Severity::Error, "{0} does not fit into {1} without loss: write {2}"},
    {DiagnosticCode::NoSuchBit, Severity::Error, "{0} has no {1} {2}"},
    {DiagnosticCode::NotAssignable, Severity::Error, "'{0}' cannot be written: it is {1}"},
    {DiagnosticCode::VariableExpected, Severity::Error, "a variable is expected here"},
    {DiagnosticCode::RealEquality, Severity::Warning, "{0} of {1} numbers depends on the last bit of rounding"},
    {DiagnosticCode::ConstantComparison, Severity::Warning, "this comparison is always {0}"},
    {DiagnosticCode::PointerOrder, Severity::Error, "pointers can only be compared with = and <>"},
    {DiagnosticCode::PointerDifference, Severity::Error, "the distance of two pointers cannot be computed"},
    {DiagnosticCode::NoAddress, Severity::Error, "{0} has no address"},
    {DiagnosticCode::InternalVariable, Severity::Warning, "'{0}' is an internal variable of {1}"},
    {DiagnosticCode::InaccessibleVariable, Severity::Error, "'{0}' of {1} cannot be used from outside: it is {2}"},
    {DiagnosticCode::PointerIsNoNumber, Severity::Error,
     "a pointer is no number: keep it in a variable of type POINTER TO"},
    {DiagnosticCode::NoInstance, Severity::Error, "{0} has no meaning outside of a function block"},
    {DiagnosticCode::EnumerationMix, Severity::Error, "{0} and {1} are different enumerations"},
    {DiagnosticCode::NoValue, Severity::Error, "'{0}' gives no value"},
    {DiagnosticCode::WrongTextKind, Severity::Error, "{0} and {1} do not mix: convert with {2}"},
    {DiagnosticCode::AggregateOperand, Severity::Error, "{0} has no value as a whole"},
    {DiagnosticCode::TypeMismatch, Severity::Error, "{0} is expected, not {1}"},

    // --- calls ---
    {DiagnosticCode::WrongArgumentCount, Severity::Error, "'{0}' takes {1} arguments, not {2}"},
    {DiagnosticCode::UnknownParameter, Severity::Error, "'{0}' has no parameter '{1}'"},
    {DiagnosticCode::DuplicateArgument, Severity::Error, "'{0}' is given twice"},
    {DiagnosticCode::MissingArgument, Severity::Error, "'{0}' of '{1}' is not given"},
    {DiagnosticCode::PositionalAfterNamed, Severity::Error, "arguments without a name cannot follow named ones"},
    {DiagnosticCode::WrongArrow, Severity::Error, "'{0}' is {1}: write {2}"},
    {DiagnosticCode::InOutNeedsVariable, Severity::Error, "'{0}' is a VAR_IN_OUT: it needs a variable"},
    {DiagnosticCode::InOutType, Severity::Error,
     "'{0}' is a VAR_IN_OUT of type {1}: a variable of type {2} does not go with it"},
    {DiagnosticCode::NotCallable, Severity::Error, "{0} cannot be called"},
    {DiagnosticCode::BlockInFunction, Severity::Error, "a function keeps no state: pass '{0}' as VAR_IN_OUT"},
    {DiagnosticCode::Recursion, Severity::Error, "'{0}' calls itself: {1}"},
    {DiagnosticCode::InOutNotGiven, Severity::Warning, "VAR_IN_OUT '{0}' keeps the variable of the last call"},
    {DiagnosticCode::ArgumentType, Severity::Error, "'{0}' does not take {1} for {2}"},
    {DiagnosticCode::BlockCallValue, Severity::Error,
     "the call of a function block gives no value: read its outputs afterwards"},
    {DiagnosticCode::EnableNotSupported, Severity::Error, "'{0}' has no EN and ENO"},
    {DiagnosticCode::MethodNeedsInstance, Severity::Error, "'{0}' belongs to {1}: call it of an instance"},
    {DiagnosticCode::TypeNeedsInstance, Severity::Error,
     "'{0}' is a function block: declare an instance of it and call that"},
    {DiagnosticCode::OutputIgnoredNegation, Severity::Error, "NOT needs an output of type BOOL, not {0}"},
    {DiagnosticCode::EmptyArgument, Severity::Error, "'{0}' needs a value"},

    // --- statements ---
    {DiagnosticCode::ConditionType, Severity::Error, "a condition must be BOOL, not {0}"},
    {DiagnosticCode::CaseSelector, Severity::Error, "CASE needs an integer or an enumeration, not {0}"},
    {DiagnosticCode::DuplicateLabel, Severity::Error, "label {0} stands in another branch too"},
    {DiagnosticCode::EmptyRange, Severity::Error, "the range {0}..{1} is empty"},
    {DiagnosticCode::ForCounter, Severity::Error, "the counter of FOR must be a variable of an integer type, not {0}"},
    {DiagnosticCode::ForStepZero, Severity::Error, "the step of FOR is 0"},
    {DiagnosticCode::ForFullRange, Severity::Warning, "the end of the loop is the {0} value of {1}"},
    {DiagnosticCode::ForUnsignedEnd, Severity::Warning,
     "this end wraps to a large number when it would be negative: {0} is unsigned"},
    {DiagnosticCode::CounterWritten, Severity::Warning, "'{0}' counts a FOR loop and is changed in it"},
    {DiagnosticCode::OutsideLoop, Severity::Error, "{0} stands outside of a loop"},
    {DiagnosticCode::Unreachable, Severity::Hint, "this is never reached"},
    {DiagnosticCode::UnusedVariable, Severity::Hint, "'{0}' is never used"},
    {DiagnosticCode::ResultNotAssigned, Severity::Warning, "'{0}' is never given a result"},
    {DiagnosticCode::MissingEnumLabel, Severity::Hint, "CASE without ELSE has no label for '{0}'"},
    {DiagnosticCode::NoEffect, Severity::Error, "this expression has no effect: it is no statement"},
    {DiagnosticCode::AttemptUnsupported, Severity::Error, "{0} is not supported for {1}"},

    // --- limits and code generation ---
    {DiagnosticCode::TooManySlots, Severity::Error, "'{0}' needs more than {1} stack slots"},
    {DiagnosticCode::ImageTooLarge, Severity::Error, "code or global data are larger than {0} bytes"},

    // --- projects and files ---
    {DiagnosticCode::ProjectTooLarge, Severity::Error, "the sources are larger than {0} bytes"},
});

/// The row of a code; every code has one.
[[nodiscard]] constexpr const DiagnosticRow& GetDiagnosticRow(DiagnosticCode code) noexcept {
    for (const DiagnosticRow& row : kDiagnosticTable) {
        if (row.code == code) return row;
    }
    return kDiagnosticTable[0];
}

consteval bool DiagnosticTableIsSorted() {
    for (std::size_t i = 1; i < kDiagnosticTable.size(); ++i) {
        if (kDiagnosticTable[i - 1].code >= kDiagnosticTable[i].code) return false;
    }
    return true;
}
static_assert(DiagnosticTableIsSorted());

}  // namespace tn61131::st
