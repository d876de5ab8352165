#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "functions/BuiltInFunctions.h"
#include "functions/FunctionContext.h"
#include "platform/ErrorLog.h"
#include "platform/Export.h"
#include "value/ElementaryType.h"

// What is known of the built-in functions and function blocks stands in tables: one row and one body for each. Calls,
// names, listings, documentation and compilers read the same rows.

/// Works on `argumentCount` arguments, which it may change, and sets `result`. The count has been checked against the
/// row.
using FunctionBody = CallStatus (*)(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                                    CValue* arguments, CValue& result);

/// What becomes of a call with more arguments than the function takes. One with fewer is refused always.
enum class SurplusArguments : std::uint8_t { Refused, Ignored };

struct FunctionRow {
    static constexpr unsigned char kAnyCount = 0xFF;

    unsigned char id;        ///< one more than in the row before
    const char* name;        ///< upper case
    unsigned char minCount;  ///< argument values that a call needs
    unsigned char maxCount;  ///< and takes at most; kAnyCount for no limit
    SurplusArguments surplus;
    const char* parameters;         ///< the names, separated by ", "; a final "..." repeats the parameter before it
    const char* result;             ///< type and meaning
    FunctionBody body;              ///< null for a name without a function behind it
    unsigned char statedCount = 0;  ///< what message 242 asks for where that is not minCount; 0 for minCount
};

/// Rows are found by index, so the ids of a table must be consecutive.
[[nodiscard]] constexpr bool HasConsecutiveIds(std::span<const FunctionRow> rows) noexcept {
    for (std::size_t i = 1; i < rows.size(); ++i) {
        if (rows[i].id != rows[i - 1].id + 1) return false;
    }
    return !rows.empty();
}

/// Null for an id that the table does not have.
[[nodiscard]] constexpr const FunctionRow* FindFunction(std::span<const FunctionRow> rows, unsigned char id) noexcept {
    const std::size_t index = static_cast<std::size_t>(id) - rows[0].id;
    return index < rows.size() ? &rows[index] : nullptr;
}

/// The name of a row; null for an id that the table does not have.
[[nodiscard]] constexpr const char* FindFunctionName(std::span<const FunctionRow> rows, unsigned char id) noexcept {
    const FunctionRow* row = FindFunction(rows, id);
    return row == nullptr ? nullptr : row->name;
}

/// False after message 242 when the call has too few arguments for the row, or too many.
[[nodiscard]] TN61131_API bool CheckArgumentCount(CErrorLog& log, const ErrorLocation& location, const FunctionRow& row,
                                                  unsigned char argumentCount);

/// Checks the count, then runs the body.
[[nodiscard]] TN61131_API CallStatus CallFunction(const FunctionRow& row, CErrorLog& log,
                                                  CBuiltInFunctionContext& context, unsigned char argumentCount,
                                                  CValue* arguments, CValue& result);

/// Calls the function of a group that `context` names. An id that the table does not have logs message 243 with the
/// group's word and gives Invalid.
[[nodiscard]] TN61131_API CallStatus CallFunction(std::span<const FunctionRow> rows, const char* groupWord,
                                                  CErrorLog& log, CBuiltInFunctionContext& context,
                                                  unsigned char argumentCount, CValue* arguments, CValue& result);

/// The status of an operation that has logged why it failed.
[[nodiscard]] constexpr CallStatus StatusOf(bool succeeded) noexcept {
    return succeeded ? CallStatus::Continue : CallStatus::Failed;
}

/// One group of the library's own functions.
struct FunctionGroup {
    unsigned char number;  ///< as bytecode has it
    const char* word;      ///< as messages name the group
    std::span<const FunctionRow> rows;
    CVMFunc* functions;
};

/// The library's own function groups in the order of their numbers.
[[nodiscard]] TN61131_API std::span<const FunctionGroup> GetFunctionGroups() noexcept;

// --- function blocks ---

/// What a byte range of a block's instance data is for.
enum class BlockFieldRole : std::uint8_t {
    Control,  ///< EN and ENO, kept by the call instruction
    Input,    ///< an argument of the call, in the order of the fields
    Output,   ///< written to the instance and through a pointer; the pointers follow the inputs
    State,    ///< kept from call to call
};

struct BlockField {
    const char* name;
    ElementaryType type;
    unsigned char offset;  ///< bytes from the start of the instance data
    BlockFieldRole role;
};

struct BlockCall;

/// Runs a block with all its inputs and outputs. False after one message.
using BlockBody = bool (*)(BlockCall& call);

struct BlockRow {
    unsigned char id;  ///< index + 1
    const char* name;
    unsigned char dataSize;              ///< bytes of instance data, fields packed without gaps
    unsigned char inputCount;            ///< inputs and output pointers
    std::span<const BlockField> fields;  ///< by offset
    BlockBody body;
};

/// One group of the library's own function blocks.
struct BlockGroup {
    unsigned char number;
    std::span<const BlockRow> rows;
    CVMFunctionBlock* blocks;
};

/// The library's own function block groups in the order of their numbers.
[[nodiscard]] TN61131_API std::span<const BlockGroup> GetBlockGroups() noexcept;
