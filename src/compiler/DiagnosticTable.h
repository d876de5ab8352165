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

    // --- declarations ---
    DuplicateName = 201,

    // --- types and constants ---
    UnknownType = 301,

    // --- expressions ---
    UnknownName = 401,

    // --- calls ---
    WrongArgumentCount = 501,

    // --- statements ---
    NotAStatement = 601,

    // --- limits and code generation ---
    TooManySlots = 701,

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

    // --- declarations ---
    {DiagnosticCode::DuplicateName, Severity::Error, "'{0}' is declared twice"},

    // --- types and constants ---
    {DiagnosticCode::UnknownType, Severity::Error, "unknown type '{0}'"},

    // --- expressions ---
    {DiagnosticCode::UnknownName, Severity::Error, "unknown name '{0}'"},

    // --- calls ---
    {DiagnosticCode::WrongArgumentCount, Severity::Error, "'{0}' takes {1} arguments, not {2}"},

    // --- statements ---
    {DiagnosticCode::NotAStatement, Severity::Error, "this expression is no statement"},

    // --- limits and code generation ---
    {DiagnosticCode::TooManySlots, Severity::Error, "'{0}' needs more than {1} stack slots"},

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
