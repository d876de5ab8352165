#include "platform/JSONValue.h"
#include "platform/StringObject.h"
#include "platform/TextOutput.h"
#include "value/ValueLiteral.h"

void CValueLiteral::SetFromJSONValue(const JSONValue* json) {
    switch (json->GetKind()) {
        case JSONValue::Kind::Number: SetScalar(ElementaryType::LReal, json->GetNumber()); break;
        case JSONValue::Kind::Boolean:
            SetScalar(ElementaryType::Bool, static_cast<unsigned char>(json->GetBoolean()));
            break;
        case JSONValue::Kind::String: {
            const std::string& text = json->GetString();
            SetScalar(ElementaryType::WString, Utf16StringCopy(text.data(), static_cast<unsigned int>(text.size())));
            break;
        }
        default: {
            TextOutputToUtf16String output;
            json->Write(output);
            SetScalar(ElementaryType::WString, output.TakeString());
            break;
        }
    }
}
