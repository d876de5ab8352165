#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "compiler/Types.h"
#include "functions/FunctionTable.h"

/// Which types the built-in functions take, how their arguments are brought to them, and what they give. Names,
/// numbers, argument counts and parameter names stand in the library's own tables (FunctionRow).
namespace tn61131::st {

/// What one argument may be and what becomes of it.
enum class ParamRule : std::uint8_t {
    None,
    Number,      ///< integer, bit string or real, as it is
    Real,        ///< REAL as it is, any other number as LREAL
    SharedReal,  ///< with the other SharedReal arguments: all REAL, or all LREAL
    Bits,        ///< integer or bit string, as it is
    Integer,     ///< integer or bit string: a count, a position, an index
    Bool,
    Shared,         ///< any elementary value; all Shared arguments get one type
    Text,           ///< STRING or WSTRING
    TextOrChar,     ///< STRING, WSTRING, CHAR or WCHAR
    TextLikeFirst,  ///< converted to the text type of the first argument
    AnyAsText,      ///< of any elementary type, converted to the text type of the first argument
    CharLikeFirst,  ///< CHAR or a text of one unit for a STRING, WCHAR for a WSTRING
    DateOrDateAndTime,
    TimeOfDay,
    DateAndTime,
    AnyDate,  ///< DATE, TIME_OF_DAY, DATE_AND_TIME
    Any,      ///< any elementary value, as it is
    Exact,    ///< of the type that the function's name says: the result rule's `exact`
};

/// The type of what a function gives: exactly what the machine leaves on the stack.
enum class ResultRule : std::uint8_t {
    Void,
    First,       ///< that of the first argument
    Shared,      ///< that of the Shared arguments
    RealLike,    ///< REAL when the Real arguments are REAL, else LREAL
    Text,        ///< text like the first, not longer
    LongText,    ///< text like the first, as long as all texts together
    LikeFormat,  ///< text like the second
    Fixed,       ///< `type`
    Count,       ///< UINT; the context may make another integer of it
};

/// How a call is written down.
enum class CallForm : std::uint8_t {
    Row,        ///< a call of the library's function
    Operator,   ///< the operator of the same meaning; the function only where EN or ENO is connected
    Selection,  ///< SEL: a Select where nothing but the chosen value needs to be evaluated
    Split,      ///< outputs through pointers
    Move,       ///< the argument itself
};

struct BuiltInSignature {
    std::uint8_t group;
    std::uint8_t id;
    CallForm form;
    std::array<ParamRule, 4> parameters;  ///< of the arguments in turn; the last rule goes on
    ResultRule result;
    ElementaryType type = ElementaryType::Undefined;   ///< of Fixed
    ElementaryType exact = ElementaryType::Undefined;  ///< of Exact parameters
};

/// By group and id.
[[nodiscard]] std::span<const BuiltInSignature> GetBuiltInSignatures() noexcept;
/// Rows of the library that programs cannot call.
[[nodiscard]] bool IsExcludedBuiltIn(std::uint8_t group, std::uint8_t id) noexcept;

/// What the language itself does with a name that no row of the library stands for.
enum class SpecialFunction : std::uint8_t {
    None,
    Not,
    Time,
    SizeOf,
    Address,
    Reference,
    LowerBound,
    UpperBound,
    ConcatDateTod,
    IsValidRef,
    TimeOperator,  ///< ADD_TIME and its family: the operator stands in BuiltIn::op
};

/// A name that means something by itself.
struct BuiltIn {
    enum class Kind : std::uint8_t { Row, Conversion, Special };
    Kind kind = Kind::Row;
    std::string name;  ///< upper case
    // Row.
    const BuiltInSignature* signature = nullptr;
    const FunctionRow* row = nullptr;
    // Conversion: what X and Y of X_TO_Y are; source null for TO_Y and ANY_TO_Y, target null for TRUNC.
    const Type* source = nullptr;
    const Type* target = nullptr;
    bool truncate = false;
    /// Of a conversion from or to binary-coded decimal: the row that does it, and the type that it takes.
    bool isBcd = false;
    // Special.
    SpecialFunction special = SpecialFunction::None;
    std::uint8_t op = 0;  ///< ast::BinaryOp of TimeOperator and of rows that are operators
};

/// Finds built-ins by name.
class BuiltInTable {
 public:
    BuiltInTable(TypeTable& types, std::uint16_t stringLength);
    /// Null for a name that means nothing by itself. Stays valid as long as the table.
    [[nodiscard]] const BuiltIn* Find(NameId name);
    [[nodiscard]] std::vector<std::string_view> CollectNames() const;

 private:
    [[nodiscard]] bool Classify(std::string_view upper, BuiltIn& found);
    [[nodiscard]] bool ClassifyConversion(std::string_view upper, BuiltIn& found);
    [[nodiscard]] bool ClassifyBcd(std::string_view source, std::string_view target, BuiltIn& found);
    [[nodiscard]] const Type* FindType(std::string_view upper);

    TypeTable& types_;
    std::uint16_t stringLength_;
    std::unordered_map<NameId, std::unique_ptr<BuiltIn>> known_;  ///< null for names that mean nothing
};

}  // namespace tn61131::st
