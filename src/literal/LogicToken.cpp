#include "literal/LogicToken.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>

namespace {

using Type = LogicTokenType;

constexpr const char kEdgePage[] = "/iec-61131/common-elements/datatypes-bool-edge.html";
constexpr const char kArrayPage[] = "/iec-61131/common-elements/derived-data-types/array.html";
constexpr const char kTypesPage[] = "/iec-61131/common-elements/derived-data-types/index.html";
constexpr const char kPointerPage[] = "/iec-61131/common-elements/derived-data-types/pointer.html";
constexpr const char kReferencePage[] = "/iec-61131/common-elements/derived-data-types/reference.html";
constexpr const char kNullPage[] = "/iec-61131/common-elements/derived-data-types/reference.html#null";
constexpr const char kRefPage[] = "/iec-61131/common-elements/derived-data-types/reference.html#ref";
constexpr const char kStructPage[] = "/iec-61131/common-elements/derived-data-types/struct.html";
constexpr const char kBitwisePage[] = "/iec-61131/common-elements/functions-bitwise-boolean.html";
constexpr const char kFunctionBlockPage[] = "/iec-61131/common-elements/program-unit/function-block.html";
constexpr const char kFunctionPage[] = "/iec-61131/common-elements/program-unit/function.html";
constexpr const char kProgramPage[] = "/iec-61131/common-elements/program-unit/program.html";
constexpr const char kVariablesPage[] = "/iec-61131/common-elements/variable-declaration.html";
constexpr const char kCasePage[] = "/iec-61131/structured-text/st-case.html";
constexpr const char kExitPage[] = "/iec-61131/structured-text/st-exit.html";
constexpr const char kForPage[] = "/iec-61131/structured-text/st-for.html";
constexpr const char kIfPage[] = "/iec-61131/structured-text/st-if.html";
constexpr const char kRepeatPage[] = "/iec-61131/structured-text/st-repeat.html";
constexpr const char kReturnPage[] = "/iec-61131/structured-text/st-return.html";
constexpr const char kWhilePage[] = "/iec-61131/structured-text/st-while.html";

// Sorted as CParseToken::CompareIdentifier() orders.
constexpr LogicTokenInformation kKeywords[] = {
    {"ACTION", Type::Action, true, 1, 1, 0x04, nullptr},
    {"AND", Type::And, true, 1, 0, 0x10, kBitwisePage},
    {"ARRAY", Type::Array, true, 1, 0, 0x80, kArrayPage},
    {"AT", Type::At, true, 1, 0, 0x40, nullptr},
    {"BY", Type::By, true, 1, 0, 0x01, nullptr},
    {"CASE", Type::Case, true, 1, 1, 0x01, kCasePage},
    {"CONFIGURATION", Type::Configuration, true, 1, 1, 0x08, nullptr},
    {"CONSTANT", Type::Constant, true, 1, 0, 0x40, nullptr},
    {"DO", Type::Do, true, 1, 0, 0x01, nullptr},
    {"ELSE", Type::Else, true, 1, 0, 0x01, nullptr},
    {"ELSEIF", Type::Elseif, true, 1, 0, 0x01, kIfPage},
    {"EN", Type::En, true, 1, 0, 0x40, nullptr},
    {"END_ACTION", Type::EndAction, true, 1, -1, 0x04, nullptr},
    {"END_CASE", Type::EndCase, true, 1, -1, 0x01, kCasePage},
    {"END_CONFIGURATION", Type::EndConfiguration, true, 1, -1, 0x08, nullptr},
    {"END_FOR", Type::EndFor, true, 1, -1, 0x01, kForPage},
    {"END_FUNCTION", Type::EndFunction, true, 1, -1, 0x20, kFunctionPage},
    {"END_FUNCTION_BLOCK", Type::EndFunctionBlock, true, 1, -1, 0x20, kFunctionBlockPage},
    {"END_IF", Type::EndIf, true, 1, -1, 0x01, kIfPage},
    {"END_PROGRAM", Type::EndProgram, true, 1, -1, 0x28, kProgramPage},
    {"END_REPEAT", Type::EndRepeat, true, 1, -1, 0x01, kRepeatPage},
    {"END_RESOURCE", Type::EndResource, true, 1, -1, 0x08, nullptr},
    {"END_STEP", Type::EndStep, true, 1, -1, 0x04, nullptr},
    {"END_STRUCT", Type::EndStruct, true, 1, -1, 0x80, kStructPage},
    {"END_TRANSITION", Type::EndTransition, true, 1, -1, 0x04, nullptr},
    {"END_TYPE", Type::EndType, true, 1, -1, 0x80, kTypesPage},
    {"END_UNION", Type::EndUnion, true, 0, -1, 0x80, nullptr},
    {"END_VAR", Type::EndVar, true, 1, -1, 0x40, kVariablesPage},
    {"END_WHILE", Type::EndWhile, true, 1, -1, 0x01, kWhilePage},
    {"ENO", Type::Eno, true, 1, 0, 0x40, nullptr},
    {"EXIT", Type::Exit, true, 1, 0, 0x01, kExitPage},
    {"EXTENDS", Type::Extends, true, 0, 0, 0x80, nullptr},
    {"F_EDGE", Type::FEdge, true, 1, 0, 0x80, kEdgePage},
    {"FALSE", Type::False, true, 1, 0, 0x10, nullptr},
    {"FOR", Type::For, true, 1, 1, 0x01, kForPage},
    {"FROM", Type::From, true, 1, 0, 0x04, nullptr},
    {"FUNCTION", Type::Function, true, 1, 1, 0x20, kFunctionPage},
    {"FUNCTION_BLOCK", Type::FunctionBlock, true, 1, 1, 0x20, kFunctionBlockPage},
    {"IF", Type::If, true, 1, 1, 0x01, kIfPage},
    {"INITIAL_STEP", Type::InitialStep, true, 1, 1, 0x04, nullptr},
    {"MOD", Type::Mod, true, 1, 0, 0x10, nullptr},
    {"NON_RETAIN", Type::NonRetain, true, 1, 0, 0x40, nullptr},
    {"NOT", Type::Not, true, 1, 0, 0x10, nullptr},
    {"NULL", Type::Null, true, 0, 0, 0x10, kNullPage},
    {"OF", Type::Of, true, 1, 0, 0x80, nullptr},
    {"OR", Type::Or, true, 1, 0, 0x10, kBitwisePage},
    {"POINTER", Type::Pointer, false, 0, 0, 0x80, kPointerPage},
    {"PROGRAM", Type::Program, true, 1, 1, 0x20, kProgramPage},
    {"R_EDGE", Type::REdge, true, 1, 0, 0x80, kEdgePage},
    {"READ_ONLY", Type::ReadOnly, true, 1, 0, 0x08, nullptr},
    {"READ_WRITE", Type::ReadWrite, true, 1, 0, 0x08, nullptr},
    {"REF", Type::Ref, true, 1, 0, 0x10, kRefPage},
    {"REF_TO", Type::RefTo, true, 1, 0, 0x80, kReferencePage},
    {"REPEAT", Type::Repeat, true, 1, 1, 0x01, kRepeatPage},
    {"RESOURCE", Type::Resource, true, 1, 1, 0x08, nullptr},
    {"RETAIN", Type::Retain, true, 1, 0, 0x40, kVariablesPage},
    {"RETURN", Type::Return, true, 1, 0, 0x01, kReturnPage},
    {"SIZEOF", Type::Sizeof, true, 0, 0, 0x10, nullptr},
    {"STEP", Type::Step, true, 1, 1, 0x04, nullptr},
    {"STRUCT", Type::Struct, true, 1, 1, 0x80, kStructPage},
    {"TASK", Type::Task, true, 1, 1, 0x08, nullptr},
    {"THEN", Type::Then, true, 1, 0, 0x01, kIfPage},
    {"TO", Type::To, true, 1, 0, 0x84, nullptr},
    {"TRANSITION", Type::Transition, true, 1, 1, 0x04, nullptr},
    {"TRUE", Type::True, true, 1, 0, 0x10, nullptr},
    {"TYPE", Type::Type, true, 1, 1, 0x80, kTypesPage},
    {"UNION", Type::Union, true, 0, 1, 0x80, nullptr},
    {"UNTIL", Type::Until, true, 1, 1, 0x01, kRepeatPage},
    {"VAR", Type::Var, true, 1, 1, 0x40, kVariablesPage},
    {"VAR_ACCESS", Type::VarAccess, true, 1, 1, 0x40, kVariablesPage},
    {"VAR_CONFIG", Type::VarConfig, true, 1, 1, 0x40, kVariablesPage},
    {"VAR_EXTERNAL", Type::VarExternal, true, 1, 1, 0x40, kVariablesPage},
    {"VAR_GLOBAL", Type::VarGlobal, true, 1, 1, 0x40, kVariablesPage},
    {"VAR_IN_OUT", Type::VarInOut, true, 1, 1, 0x40, kVariablesPage},
    {"VAR_INPUT", Type::VarInput, true, 1, 1, 0x40, kVariablesPage},
    {"VAR_OUTPUT", Type::VarOutput, true, 1, 1, 0x40, kVariablesPage},
    {"VAR_TEMP", Type::VarTemp, true, 1, 1, 0x40, kVariablesPage},
    {"VOLATILE", Type::Volatile, false, 1, 0, 0x40, nullptr},
    {"WHILE", Type::While, true, 1, 1, 0x01, kWhilePage},
    {"WITH", Type::With, true, 1, 0, 0x08, nullptr},
    {"XOR", Type::Xor, true, 1, 0, 0x10, kBitwisePage},
};

constexpr int CompareKeywords(std::string_view left, std::string_view right) {
    // As CompareIdentifier() does, for words in capitals.
    constexpr auto fold = [](char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : static_cast<int>(c); };
    for (std::size_t at = 0; at < left.size() && at < right.size(); ++at) {
        if (left[at] != right[at]) return fold(left[at]) - fold(right[at]);
    }
    return static_cast<int>(left.size()) - static_cast<int>(right.size());
}
static_assert(std::is_sorted(std::begin(kKeywords), std::end(kKeywords),
                             [](const auto& left, const auto& right) {
                                 return CompareKeywords(left.keyword, right.keyword) < 0;
                             }),
              "keywords are found by binary search");

constexpr int kFirstKeyword = static_cast<int>(Type::Configuration);
constexpr int kLastKeyword = static_cast<int>(Type::RefTo);

// The keywords by type; null for the one number that is none.
constexpr auto kKeywordsByType = [] {
    std::array<const LogicTokenInformation*, kLastKeyword - kFirstKeyword + 1> byType{};
    for (const LogicTokenInformation& keyword : kKeywords)
        byType[static_cast<std::size_t>(static_cast<int>(keyword.type) - kFirstKeyword)] = &keyword;
    return byType;
}();

// Where the keywords that begin with each letter start; the last entry is behind the last keyword.
constexpr auto kStartsByLetter = [] {
    std::array<unsigned char, 'Z' - 'A' + 2> starts{};
    for (const LogicTokenInformation& keyword : kKeywords) {
        const auto letter = static_cast<std::size_t>(keyword.keyword[0]) - 'A';
        ++starts[letter + 1];
    }
    for (std::size_t letter = 1; letter < starts.size(); ++letter)
        starts[letter] = static_cast<unsigned char>(starts[letter] + starts[letter - 1]);
    return starts;
}();

// The keywords that a word can be, going by its first character. One that is no ASCII may have an ASCII letter for its
// lower-case form.
std::span<const LogicTokenInformation> Candidates(std::string_view word) noexcept {
    const std::span all(kKeywords);
    if (word.empty()) return {};
    const auto first = static_cast<unsigned char>(word.front());
    if (first >= 0x80) return all;
    const auto letter = static_cast<unsigned int>((first & ~0x20U) - 'A');
    if (letter > 'Z' - 'A') return {};
    return all.subspan(kStartsByLetter[letter], kStartsByLetter[letter + 1] - std::size_t{kStartsByLetter[letter]});
}

}  // namespace

bool CLogicToken::IsMagnitudeLiteral() const noexcept {
    switch (GetLogicType()) {
        case Type::Integer:
        case Type::Real:
        case Type::Time: return true;
        default: return false;
    }
}

bool CLogicToken::IsLiteral() const noexcept {
    switch (GetLogicType()) {
        case Type::True:
        case Type::False:
        case Type::Null:
        case Type::Boolean:
        case Type::String:
        case Type::WString:
        case Type::Date:
        case Type::DateAndTime:
        case Type::TimeOfDay:
        case Type::Char:
        case Type::WChar: return true;
        default: return IsMagnitudeLiteral();
    }
}

void CLogicToken::TranslateKeywordToken() noexcept {
    SetKeyword(IsType(kIdentifier) ? FindKeyword(GetText()) : nullptr);
}

const char* CLogicToken::GetTokenName(int type) noexcept {
    switch (static_cast<Type>(type)) {
        case Type::Comment: return "Comment";
        case Type::CppComment: return "CppComment";
        case Type::Pragma: return "Pragma";
        case Type::String: return "String";
        case Type::WString: return "WString";
        case Type::Integer: return "Integer";
        case Type::Real: return "Real";
        case Type::Time: return "Time Literal";
        case Type::Date: return "Date Literal";
        case Type::DateAndTime: return "Date and time literatl";  // spelled so: hosts may know it
        case Type::TimeOfDay: return "Time of day literal";
        case Type::Boolean: return "Boolean Literal";
        case Type::Char: return "CHAR Literal";
        case Type::WChar: return "WCHAR Literal";
        default: break;
    }
    if (const char* const name = CParseToken::GetTokenName(type)) return name;
    if (type < kFirstKeyword || type > kLastKeyword) return nullptr;
    const int index = type - kFirstKeyword;
    const LogicTokenInformation* const keyword = kKeywordsByType[static_cast<std::size_t>(index)];
    return keyword != nullptr ? keyword->keyword.data() : nullptr;
}

int CLogicToken::GetTokenCount() noexcept {
    return static_cast<int>(std::size(kKeywords));
}

const LogicTokenInformation& CLogicToken::GetTokenInformation(int index) noexcept {
    return kKeywords[index];
}

const LogicTokenInformation* CLogicToken::FindKeyword(std::string_view word) noexcept {
    const std::span<const LogicTokenInformation> candidates = Candidates(word);
    const auto found = std::lower_bound(candidates.begin(), candidates.end(), word,
                                        [](const LogicTokenInformation& entry, std::string_view text) {
                                            return CompareIdentifier(entry.keyword, text) < 0;
                                        });
    return found != candidates.end() && EqualIdentifier(found->keyword, word) ? &*found : nullptr;
}
