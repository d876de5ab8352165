#include "compiler/BuiltInSignatures.h"

#include <algorithm>
#include <memory>
#include <string>

#include "compiler/Ast.h"

namespace tn61131::st {

namespace {

using enum ParamRule;
using Form = CallForm;
using Give = ResultRule;
using EType = ElementaryType;

// clang-format off
constexpr BuiltInSignature kSignatures[] = {
    // Numeric.
    {1, 1, Form::Row, {Number}, Give::First},                // ABS
    {1, 2, Form::Row, {ParamRule::Real}, Give::RealLike},    // SQRT
    {1, 3, Form::Row, {ParamRule::Real}, Give::RealLike},    // LN
    {1, 4, Form::Row, {ParamRule::Real}, Give::RealLike},    // LOG
    {1, 5, Form::Row, {ParamRule::Real}, Give::RealLike},    // EXP
    {1, 6, Form::Row, {ParamRule::Real}, Give::RealLike},    // SIN
    {1, 7, Form::Row, {ParamRule::Real}, Give::RealLike},    // COS
    {1, 8, Form::Row, {ParamRule::Real}, Give::RealLike},    // TAN
    {1, 9, Form::Row, {ParamRule::Real}, Give::RealLike},    // ASIN
    {1, 10, Form::Row, {ParamRule::Real}, Give::RealLike},   // ACOS
    {1, 11, Form::Row, {ParamRule::Real}, Give::RealLike},   // ATAN
    {1, 12, Form::Row, {ParamRule::Real}, Give::RealLike},   // CEILING
    {1, 13, Form::Row, {ParamRule::Real}, Give::RealLike},   // FLOOR
    {1, 14, Form::Row, {Number}, Give::Fixed, EType::SInt},  // SIGN
    {1, 15, Form::Row, {SharedReal, SharedReal}, Give::RealLike},          // ATAN2
    {1, 16, Form::Row, {ParamRule::Real, Integer}, Give::RealLike},        // ROUND
    {1, 17, Form::Row, {ParamRule::Real, Integer}, Give::RealLike},        // ROUNDSD
    // Arithmetic.
    {2, 1, Form::Operator, {Any}, Give::Shared},  // ADD
    {2, 2, Form::Operator, {Any}, Give::Shared},  // SUB
    {2, 3, Form::Operator, {Any}, Give::Shared},  // MUL
    {2, 4, Form::Operator, {Any}, Give::Shared},  // DIV
    {2, 5, Form::Operator, {Any}, Give::Shared},  // MOD
    {2, 6, Form::Operator, {Any}, Give::Shared},  // EXPT
    {2, 7, Form::Move, {Any}, Give::First},       // MOVE
    // Shifts.
    {3, 1, Form::Row, {Bits, Integer}, Give::First},  // SHL
    {3, 2, Form::Row, {Bits, Integer}, Give::First},  // SHR
    {3, 3, Form::Row, {Bits, Integer}, Give::First},  // ROR
    {3, 4, Form::Row, {Bits, Integer}, Give::First},  // ROL
    // Bitwise and Boolean.
    {4, 1, Form::Operator, {Any}, Give::Shared},  // AND
    {4, 2, Form::Operator, {Any}, Give::Shared},  // OR
    {4, 3, Form::Operator, {Any}, Give::Shared},  // XOR
    // Selection.
    {5, 1, Form::Selection, {ParamRule::Bool, Shared}, Give::Shared},  // SEL
    {5, 2, Form::Row, {Shared}, Give::Shared},                         // MAX
    {5, 3, Form::Row, {Shared}, Give::Shared},                         // MIN
    {5, 4, Form::Row, {Shared}, Give::Shared},                         // LIMIT
    {5, 5, Form::Row, {Integer, Shared}, Give::Shared},                // MUX
    // Comparison.
    {6, 1, Form::Operator, {Shared}, Give::Fixed, EType::Bool},  // GT
    {6, 2, Form::Operator, {Shared}, Give::Fixed, EType::Bool},  // GE
    {6, 3, Form::Operator, {Shared}, Give::Fixed, EType::Bool},  // EQ
    {6, 4, Form::Operator, {Shared}, Give::Fixed, EType::Bool},  // LE
    {6, 5, Form::Operator, {Shared}, Give::Fixed, EType::Bool},  // LT
    {6, 6, Form::Operator, {Shared}, Give::Fixed, EType::Bool},  // NE
    // Strings.
    {7, 1, Form::Row, {ParamRule::Text}, Give::Count},                                      // LEN
    {7, 2, Form::Row, {ParamRule::Text, Integer}, Give::Text},                              // LEFT
    {7, 3, Form::Row, {ParamRule::Text, Integer}, Give::Text},                              // RIGHT
    {7, 4, Form::Row, {ParamRule::Text, Integer, Integer}, Give::Text},                     // MID
    {7, 5, Form::Row, {ParamRule::Text, AnyAsText}, Give::LongText},                        // CONCAT
    {7, 6, Form::Row, {ParamRule::Text, TextLikeFirst, Integer}, Give::LongText},           // INSERT
    {7, 7, Form::Row, {ParamRule::Text, Integer, Integer}, Give::Text},                     // DELETE
    {7, 8, Form::Row, {ParamRule::Text, TextLikeFirst, Integer, Integer}, Give::LongText},  // REPLACE
    {7, 9, Form::Row, {ParamRule::Text, TextLikeFirst}, Give::Count},                       // FIND
    {7, 10, Form::Row, {TextOrChar}, Give::First},                                          // UPPER
    {7, 11, Form::Row, {TextOrChar}, Give::First},                                          // LOWER
    {7, 12, Form::Row, {ParamRule::Text, Integer}, Give::Text},                             // TRIM
    {7, 13, Form::Row, {ParamRule::Text, Integer}, Give::Fixed, EType::DInt},               // CODE_POINT_AT
    {7, 16, Form::Row, {ParamRule::Text, CharLikeFirst, Integer}, Give::Text},              // GET_ELEMENT
    // Binary-coded decimals.
    {8, 1, Form::Row, {Exact}, Give::Fixed, EType::SInt, EType::Byte},
    {8, 2, Form::Row, {Exact}, Give::Fixed, EType::Int, EType::Word},
    {8, 3, Form::Row, {Exact}, Give::Fixed, EType::DInt, EType::DWord},
    {8, 4, Form::Row, {Exact}, Give::Fixed, EType::LInt, EType::LWord},
    {8, 5, Form::Row, {Exact}, Give::Fixed, EType::Byte, EType::SInt},
    {8, 6, Form::Row, {Exact}, Give::Fixed, EType::Word, EType::Int},
    {8, 7, Form::Row, {Exact}, Give::Fixed, EType::DWord, EType::DInt},
    {8, 8, Form::Row, {Exact}, Give::Fixed, EType::LWord, EType::LInt},
    // Texts of values.
    {9, 0, Form::Row, {Integer, ParamRule::Bool}, Give::Fixed, EType::String},  // QUALITY_TO_STRING
    {9, 1, Form::Row, {Integer}, Give::Fixed, EType::String},                   // LOG_REASON_TO_STRING
    {9, 2, Form::Row, {Any}, Give::Fixed, EType::String},                       // TO_SQL_LITERAL
    {9, 3, Form::Row, {AnyDate, ParamRule::Text}, Give::LikeFormat},            // FORMAT_DATE_TIME
    {9, 4, Form::Row, {Number, ParamRule::Text}, Give::LikeFormat},             // FORMAT_NUMBER
    // System.
    {11, 1, Form::Row, {None}, Give::Fixed, EType::DateAndTime},                    // SYS_GET_TIMESTAMP
    {11, 2, Form::Row, {None}, Give::Fixed, EType::Date},                           // SYS_GET_DATE
    {11, 3, Form::Row, {None}, Give::Fixed, EType::TimeOfDay},                      // SYS_GET_TOD
    {11, 4, Form::Row, {None}, Give::Fixed, EType::Word},                           // SYS_GET_RANDOM_WORD
    {11, 5, Form::Row, {ParamRule::DateAndTime}, Give::Fixed, EType::DateAndTime},  // SYS_DATE_TIME_TO_LOCAL
    {11, 6, Form::Row, {ParamRule::DateAndTime}, Give::Fixed, EType::DateAndTime},  // SYS_DATE_TIME_TO_UTC
    // Date and time.
    {14, 1, Form::Row, {Integer}, Give::Fixed, EType::Date},           // CONCAT_DATE
    {14, 2, Form::Row, {Integer}, Give::Fixed, EType::TimeOfDay},      // CONCAT_TOD
    {14, 3, Form::Row, {Integer}, Give::Fixed, EType::DateAndTime},    // CONCAT_DT
    {14, 4, Form::Split, {DateOrDateAndTime}, Give::Void},             // SPLIT_DATE
    {14, 5, Form::Split, {ParamRule::TimeOfDay}, Give::Void},          // SPLIT_TOD
    {14, 6, Form::Split, {DateOrDateAndTime}, Give::Void},             // SPLIT_DT
    {14, 7, Form::Row, {DateOrDateAndTime}, Give::Fixed, EType::Int},  // DAY_OF_WEEK
};
// clang-format on

/// Names that mean a row of another name.
struct Synonym {
    std::string_view name;
    std::string_view row;
};
constexpr Synonym kSynonyms[] = {
    {"CEIL", "CEILING"},     {"TO_UPPER", "UPPER"},   {"TO_LOWER", "LOWER"},
    {"UPPER_CASE", "UPPER"}, {"LOWER_CASE", "LOWER"}, {"CONCAT_DATE_TIME", "CONCAT_DT"},
};

struct OperatorName {
    std::string_view row;
    ast::BinaryOp op;
};
constexpr OperatorName kOperatorRows[] = {
    {"ADD", ast::BinaryOp::Add},      {"SUB", ast::BinaryOp::Subtract},    {"MUL", ast::BinaryOp::Multiply},
    {"DIV", ast::BinaryOp::Divide},   {"MOD", ast::BinaryOp::Modulo},      {"EXPT", ast::BinaryOp::Power},
    {"AND", ast::BinaryOp::And},      {"OR", ast::BinaryOp::Or},           {"XOR", ast::BinaryOp::Xor},
    {"GT", ast::BinaryOp::Greater},   {"GE", ast::BinaryOp::GreaterEqual}, {"EQ", ast::BinaryOp::Equal},
    {"LE", ast::BinaryOp::LessEqual}, {"LT", ast::BinaryOp::Less},         {"NE", ast::BinaryOp::NotEqual},
};

/// The functions of IEC 61131-3, 6.6.2.5.13 that are operators on times and dates.
constexpr OperatorName kTimeOperators[] = {
    {"ADD_TIME", ast::BinaryOp::Add},           {"ADD_LTIME", ast::BinaryOp::Add},
    {"ADD_TOD_TIME", ast::BinaryOp::Add},       {"ADD_LTOD_LTIME", ast::BinaryOp::Add},
    {"ADD_DT_TIME", ast::BinaryOp::Add},        {"ADD_LDT_LTIME", ast::BinaryOp::Add},
    {"SUB_TIME", ast::BinaryOp::Subtract},      {"SUB_LTIME", ast::BinaryOp::Subtract},
    {"SUB_DATE_DATE", ast::BinaryOp::Subtract}, {"SUB_LDATE_LDATE", ast::BinaryOp::Subtract},
    {"SUB_TOD_TIME", ast::BinaryOp::Subtract},  {"SUB_LTOD_LTIME", ast::BinaryOp::Subtract},
    {"SUB_TOD_TOD", ast::BinaryOp::Subtract},   {"SUB_LTOD_LTOD", ast::BinaryOp::Subtract},
    {"SUB_DT_TIME", ast::BinaryOp::Subtract},   {"SUB_LDT_LTIME", ast::BinaryOp::Subtract},
    {"SUB_DT_DT", ast::BinaryOp::Subtract},     {"SUB_LDT_LDT", ast::BinaryOp::Subtract},
    {"MUL_TIME", ast::BinaryOp::Multiply},      {"MUL_LTIME", ast::BinaryOp::Multiply},
    {"MULTIME", ast::BinaryOp::Multiply},       {"DIV_TIME", ast::BinaryOp::Divide},
    {"DIV_LTIME", ast::BinaryOp::Divide},       {"DIVTIME", ast::BinaryOp::Divide},
};

struct SpecialName {
    std::string_view name;
    SpecialFunction function;
};
constexpr SpecialName kSpecials[] = {
    {"NOT", SpecialFunction::Not},
    {"TIME", SpecialFunction::Time},
    {"SIZEOF", SpecialFunction::SizeOf},
    {"ADR", SpecialFunction::Address},
    {"REF", SpecialFunction::Reference},
    {"LOWER_BOUND", SpecialFunction::LowerBound},
    {"UPPER_BOUND", SpecialFunction::UpperBound},
    {"CONCAT_DATE_TOD", SpecialFunction::ConcatDateTod},
    {"CONCAT_DATE_LTOD", SpecialFunction::ConcatDateTod},
    {"__ISVALIDREF", SpecialFunction::IsValidRef},
};

/// Rows that stand in the library's tables as names only.
struct ExcludedRow {
    std::uint8_t group;
    std::uint8_t id;
};
constexpr ExcludedRow kExcluded[] = {
    {7, 14},  // CODE_POINT_CHAR_LEN
    {7, 15},  // CODE_POINT_WCHAR_LEN
};

[[nodiscard]] const BuiltInSignature* FindSignature(std::uint8_t group, std::uint8_t id) noexcept {
    const auto found = std::ranges::find_if(
        kSignatures, [&](const BuiltInSignature& row) { return row.group == group && row.id == id; });
    return found == std::end(kSignatures) ? nullptr : &*found;
}

/// The row and its signature; false for a name that is none.
[[nodiscard]] bool FindRow(std::string_view name, BuiltIn& found) noexcept {
    for (const FunctionGroup& group : GetFunctionGroups()) {
        for (const FunctionRow& row : group.rows) {
            if (row.name != name) continue;
            found.signature = FindSignature(group.number, row.id);
            found.row = &row;
            return found.signature != nullptr;
        }
    }
    return false;
}

}  // namespace

std::span<const BuiltInSignature> GetBuiltInSignatures() noexcept {
    return kSignatures;
}

bool IsExcludedBuiltIn(std::uint8_t group, std::uint8_t id) noexcept {
    return std::ranges::any_of(kExcluded, [&](const ExcludedRow& row) { return row.group == group && row.id == id; });
}

BuiltInTable::BuiltInTable(TypeTable& types, std::uint16_t stringLength) : types_(types), stringLength_(stringLength) {}

const Type* BuiltInTable::FindType(std::string_view upper) {
    if (upper == "STRING") return types_.String(ElementaryType::String, stringLength_);
    if (upper == "WSTRING") return types_.String(ElementaryType::WString, stringLength_);
    // FindElementaryByName() knows other spellings of the same types, but no empty one.
    return upper.empty() ? nullptr : types_.FindElementaryByName(upper);
}

bool BuiltInTable::ClassifyBcd(std::string_view source, std::string_view target, BuiltIn& found) {
    // X_BCD_TO_Y and Y_TO_BCD_X; BCD_TO_Y and Y_TO_BCD take a BYTE.
    const bool isFrom = source == "BCD" || source.ends_with("_BCD");
    const bool isTo = target == "BCD" || target.starts_with("BCD_");
    if (isFrom == isTo) return false;
    std::string_view bcd = "BYTE";
    if (isFrom && source != "BCD") bcd = source.substr(0, source.size() - 4);
    if (isTo && target != "BCD") bcd = target.substr(4);
    const Type* bcdType = FindType(bcd);
    const Type* number = FindType(isFrom ? target : source);
    if (bcdType == nullptr || number == nullptr || !IsBitString(bcdType)) return false;
    if (!IsInteger(number) && !IsBitString(number)) return false;
    for (const BuiltInSignature& row : kSignatures) {
        constexpr std::uint8_t kConversionGroup = 8;
        if (row.group != kConversionGroup || (isFrom ? row.exact : row.type) != bcdType->storage) continue;
        found.kind = BuiltIn::Kind::Conversion;
        found.isBcd = true;
        found.signature = &row;
        found.source = isFrom ? bcdType : number;
        found.target = isFrom ? number : bcdType;
        return true;
    }
    return false;
}

bool BuiltInTable::ClassifyConversion(std::string_view upper, BuiltIn& found) {
    found.kind = BuiltIn::Kind::Conversion;
    if (upper == "TRUNC") {
        found.truncate = true;
        return true;
    }
    if (upper.starts_with("TO_")) {
        found.target = FindType(upper.substr(3));
        return found.target != nullptr;
    }
    if (upper.starts_with("TRUNC_")) {
        found.truncate = true;
        found.target = FindType(upper.substr(6));
        return found.target != nullptr && (IsInteger(found.target) || IsBitString(found.target));
    }
    for (const std::string_view middle : {std::string_view("_TRUNC_"), std::string_view("_TO_")}) {
        const std::size_t at = upper.find(middle);
        if (at == std::string_view::npos) continue;
        const std::string_view source = upper.substr(0, at);
        const std::string_view target = upper.substr(at + middle.size());
        if (middle == "_TO_" && ClassifyBcd(source, target, found)) return true;
        found.truncate = middle == "_TRUNC_";
        found.target = FindType(target);
        found.source = source == "ANY" || source == "ANY_NUM" ? nullptr : FindType(source);
        return found.target != nullptr && (found.source != nullptr || source.starts_with("ANY"));
    }
    return false;
}

bool BuiltInTable::Classify(std::string_view upper, BuiltIn& found) {
    for (const SpecialName& special : kSpecials) {
        if (special.name != upper) continue;
        found.kind = BuiltIn::Kind::Special;
        found.special = special.function;
        return true;
    }
    for (const OperatorName& row : kTimeOperators) {
        if (row.row != upper) continue;
        found.kind = BuiltIn::Kind::Special;
        found.special = SpecialFunction::TimeOperator;
        found.op = static_cast<std::uint8_t>(row.op);
        return true;
    }
    std::string_view name = upper;
    for (const Synonym& synonym : kSynonyms) {
        if (synonym.name == upper) name = synonym.row;
    }
    if (FindRow(name, found)) {
        found.kind = BuiltIn::Kind::Row;
        for (const OperatorName& row : kOperatorRows) {
            if (row.row == name) found.op = static_cast<std::uint8_t>(row.op);
        }
        return true;
    }
    found = BuiltIn{};
    return ClassifyConversion(upper, found);
}

const BuiltIn* BuiltInTable::Find(NameId name) {
    const auto [place, isNew] = known_.try_emplace(name);
    if (!isNew) return place->second.get();
    std::string upper(types_.GetNames().GetFolded(name));
    for (char& c : upper)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    auto found = std::make_unique<BuiltIn>();
    if (!Classify(upper, *found)) return nullptr;
    found->name = std::move(upper);
    place->second = std::move(found);
    return place->second.get();
}

std::vector<std::string_view> BuiltInTable::CollectNames() const {
    std::vector<std::string_view> names;
    for (const FunctionGroup& group : GetFunctionGroups()) {
        for (const FunctionRow& row : group.rows)
            names.emplace_back(row.name);
    }
    for (const SpecialName& special : kSpecials)
        names.push_back(special.name);
    return names;
}

}  // namespace tn61131::st
