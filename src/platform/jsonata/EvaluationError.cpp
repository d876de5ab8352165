#include "platform/jsonata/EvaluationError.h"

#include <algorithm>
#include <array>

#include "platform/jsonata/CodePoints.h"

namespace tn61131::jsonata {

namespace {

struct ErrorInfo {
    std::string_view code;
    std::string_view text;  ///< %1 and %2 are what is quoted
};

// S: the expression cannot be read. T: types do not fit. D: the values cannot be worked with. U: a limit was reached.
constexpr std::array kErrors{
    ErrorInfo{"S0101", "A string is not closed by a matching quote"},
    ErrorInfo{"S0102", "The number %1 is beyond the range of numbers"},
    ErrorInfo{"S0103", "\"\\%1\" is no escape sequence"},
    ErrorInfo{"S0104", "\"\\u\" must be followed by four hexadecimal digits"},
    ErrorInfo{"S0105", "A quoted name is not closed by a backquote"},
    ErrorInfo{"S0106", "A comment is not closed"},
    ErrorInfo{"S0201", "\"%1\" is not expected here"},
    ErrorInfo{"S0202", "\"%1\" is expected, not \"%2\""},
    ErrorInfo{"S0203", "\"%1\" is expected before the end of the expression"},
    ErrorInfo{"S0204", "\"%1\" is no operator"},
    ErrorInfo{"S0207", "The expression ends unexpectedly"},
    ErrorInfo{"S0208", "\"%1\" is no name for a parameter, which begins with $"},
    ErrorInfo{"S0209", "A predicate cannot follow a grouping"},
    ErrorInfo{"S0210", "An expression can be grouped only once"},
    ErrorInfo{"S0211", "\"%1\" cannot begin an operand"},
    ErrorInfo{"S0212", "Only a variable, which begins with $, can be bound by :="},
    ErrorInfo{"S0213", "The literal %1 cannot be a step of a path"},
    ErrorInfo{"S0214", "A variable, which begins with $, must follow \"%1\""},
    ErrorInfo{"S0215", "@ must stand before the predicates of a step"},
    ErrorInfo{"S0216", "@ must stand before the sorting of a step"},
    ErrorInfo{"S0217", "The parent that % stands for cannot be derived from what it follows"},
    ErrorInfo{"S0301", "A regular expression is empty"},
    ErrorInfo{"S0302", "A regular expression is not closed by /"},
    ErrorInfo{"S0303", "The regular expression %1 cannot be used: %2"},
    ErrorInfo{"S0401", "Only functions and arrays have type parameters in a signature, not \"%1\""},
    ErrorInfo{"S0402", "Types with parameters cannot be part of a choice: \"%1\""},
    ErrorInfo{"T0410", "Argument %1 of function \"%2\" does not fit its signature"},
    ErrorInfo{"T0411", "The context does not fit as argument %1 of function \"%2\""},
    ErrorInfo{"T0412", "Argument %1 of function \"%2"},
    ErrorInfo{"T1003", "A member's name must be a string, not %1"},
    ErrorInfo{"T1005", "\"%1\" is no function; \"$%1\" is one"},
    ErrorInfo{"T1006", "\"%1\" is called but is no function"},
    ErrorInfo{"T1007", "\"%1\" is no function to be partially applied; \"$%1\" is one"},
    ErrorInfo{"T1008", "\"%1\" is partially applied but is no function"},
    ErrorInfo{"T1010", "The function that matches must give an object with start, end, groups and next"},
    ErrorInfo{"T2001", "The left side of \"%1\" must be a number"},
    ErrorInfo{"T2002", "The right side of \"%1\" must be a number"},
    ErrorInfo{"T2003", "The left side of \"..\" must be an integer, not %1"},
    ErrorInfo{"T2004", "The right side of \"..\" must be an integer, not %1"},
    ErrorInfo{"T2006", "The right side of \"~>\" must be a function"},
    ErrorInfo{"T2007", "Numbers and strings cannot be sorted among each other"},
    ErrorInfo{"T2008", "What is sorted by must be a number or a string"},
    ErrorInfo{"T2009", "A number and a string cannot be compared: %1 and %2"},
    ErrorInfo{"T2010", "Both sides of \"%1\" must be numbers or strings"},
    ErrorInfo{"T2011", "What a transform inserts must be an object, not %1"},
    ErrorInfo{"T2012", "What a transform deletes must be a string or an array of strings, not %1"},
    ErrorInfo{"D1001", "The number %1 is beyond the range of numbers"},
    ErrorInfo{"D1002", "Only a number can be negated, not %1"},
    ErrorInfo{"D1004", "The regular expression %1 matches an empty string"},
    ErrorInfo{"D1009", "Several expressions of one object give the member \"%1\""},
    ErrorInfo{"D2014", "A range of %1 elements exceeds the limit of 10000000"},
    ErrorInfo{"D3001", "The number %1 cannot be written as a string"},
    ErrorInfo{"D3010", "The pattern of $replace cannot be an empty string"},
    ErrorInfo{"D3011", "The limit of $replace cannot be negative: %1"},
    ErrorInfo{"D3012", "What $replace inserts must be a string, not %1"},
    ErrorInfo{"D3020", "The limit of $split cannot be negative: %1"},
    ErrorInfo{"D3030", "\"%1\" cannot be read as a number"},
    ErrorInfo{"D3040", "The limit of $match cannot be negative: %1"},
    ErrorInfo{"D3050", "The function that $reduce calls must take at least two arguments"},
    ErrorInfo{"D3060", "The negative number %1 has no square root"},
    ErrorInfo{"D3061", "%1 to the power of %2 is no number"},
    ErrorInfo{"D3070", "$sort without a function sorts only numbers or only strings"},
    ErrorInfo{"D3080", "A number picture has more than one \";\""},
    ErrorInfo{"D3081", "A part of a number picture has more than one decimal separator"},
    ErrorInfo{"D3082", "A part of a number picture has more than one percent sign"},
    ErrorInfo{"D3083", "A part of a number picture has more than one per-mille sign"},
    ErrorInfo{"D3084", "A part of a number picture has both a percent and a per-mille sign"},
    ErrorInfo{"D3085", "A part of a number picture has no digit"},
    ErrorInfo{"D3086", "Other characters stand between the digits of a number picture"},
    ErrorInfo{"D3087", "A grouping separator stands beside the decimal separator of a number picture"},
    ErrorInfo{"D3088", "A grouping separator ends the integer part of a number picture"},
    ErrorInfo{"D3089", "Two grouping separators stand side by side in a number picture"},
    ErrorInfo{"D3090", "An optional digit follows a mandatory one in the integer part of a number picture"},
    ErrorInfo{"D3091", "A mandatory digit follows an optional one in the fraction of a number picture"},
    ErrorInfo{"D3092", "A number picture with an exponent has a percent or per-mille sign"},
    ErrorInfo{"D3093", "The exponent of a number picture has other characters than digits"},
    ErrorInfo{"D3100", "The base %1 is not between 2 and 36"},
    ErrorInfo{"D3110", "\"%1\" is no time in the ISO 8601 format"},
    ErrorInfo{"D3120", "The expression of $eval cannot be read: %1"},
    ErrorInfo{"D3121", "The expression of $eval failed: %1"},
    ErrorInfo{"D3130", "The picture \"%1\" is not supported"},
    ErrorInfo{"D3131", "The digits of a picture are of different groups"},
    ErrorInfo{"D3132", "\"%1\" is no component of a date and time picture"},
    ErrorInfo{"D3133", "The component \"%1\" of a date and time picture has no names"},
    ErrorInfo{"D3134", "A time zone picture has more than four digits"},
    ErrorInfo{"D3135", "A \"[\" in a date and time picture is not closed"},
    ErrorInfo{"D3136", "The components of a date and time picture leave a gap"},
    ErrorInfo{"D3137", "%1"},
    ErrorInfo{"D3138", "$single finds more than one value: again at %1"},
    ErrorInfo{"D3139", "$single finds no value"},
    ErrorInfo{"D3140", "\"%1\" cannot be taken by %2"},
    ErrorInfo{"D3141", "%1"},
    ErrorInfo{"U1001", "The evaluation exceeds its limit of %1"},
    ErrorInfo{"U1002", "The values of the evaluation exceed its limit of %1 bytes"},
    ErrorInfo{"U1003", "A text or the result exceeds the limit of %1 bytes"},
    ErrorInfo{"U1004", "The expression is nested deeper than %1 levels"},
};

/// Longer texts are cut in messages.
constexpr std::size_t kMaxQuoted = 200;

std::string Quoted(std::string_view text) {
    return ToValidUtf8(text.substr(0, CutUtf8(text, kMaxQuoted)));
}

}  // namespace

std::string ErrorText(std::string_view code, std::string_view value, std::string_view detail) {
    const auto* found = std::ranges::find(kErrors, code, &ErrorInfo::code);
    if (found == kErrors.end()) return std::string(code);
    std::string text;
    for (std::size_t at = 0; at < found->text.size(); ++at) {
        const std::string_view rest = found->text.substr(at);
        if (rest.starts_with("%1") || rest.starts_with("%2")) {
            text += Quoted(rest[1] == '1' ? value : detail);
            ++at;
        } else {
            text.push_back(rest.front());
        }
    }
    return text;
}

void Throw(std::string_view code, std::string_view value, std::string_view detail) {
    ThrowAt(kNoOffset, code, value, detail);
}

void ThrowAt(std::size_t offset, std::string_view code, std::string_view value, std::string_view detail) {
    throw EvaluationError{std::string(code), offset, ErrorText(code, value, detail)};
}

}  // namespace tn61131::jsonata
