#include "diag/Messages.h"
#include "literal/LogicToken.h"
#include "value/ValueLiteral.h"

bool CValueLiteral::InitialiseFromToken(CErrorLog& log, const CLogicToken& token, ElementaryType wanted) {
    const ErrorLocation& location = token.Location();
    const char* const text = token.GetText().c_str();
    switch (token.GetLogicType()) {
        case LogicTokenType::String:
        case LogicTokenType::Char: return StringToString(log, location, text);
        case LogicTokenType::WString:
        case LogicTokenType::WChar: return StringToWString(log, location, text);
        case LogicTokenType::Integer:
            if (wanted == ElementaryType::Real || wanted == ElementaryType::LReal) {
                return StringToReal(log, location, text, wanted);
            }
            return StringToInteger(log, location, text, wanted);
        case LogicTokenType::Real: return StringToReal(log, location, text, wanted);
        case LogicTokenType::Time: return StringToTime(log, location, text);
        case LogicTokenType::Date: return StringToDate(log, location, text);
        case LogicTokenType::DateAndTime: return StringToDateAndTime(log, location, text);
        case LogicTokenType::TimeOfDay: return StringToTimeOfDay(log, location, text);
        case LogicTokenType::Boolean: return StringToBool(log, location, text);
        case LogicTokenType::True: SetScalar(ElementaryType::Bool, true); return true;
        case LogicTokenType::False: SetScalar(ElementaryType::Bool, false); return true;
        case LogicTokenType::Null: SetScalar(ElementaryType::Pointer, PointerValue{}); return true;
        default: return tn61131::Fail<Message::InvalidLiteral>(log, location, token.GetText());
    }
}
