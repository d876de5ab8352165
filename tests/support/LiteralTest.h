#pragma once

#include <string>

#include "platform/ErrorLog.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

/// Vocabulary of the tests of literals.
namespace literal_test {

inline std::string AsText(const CValueLiteral& value) {
    CTextOutputString output;
    value.GetAsText(nullptr, output);
    return output.TakeText();
}

inline std::string AsLiteral(const CValueLiteral& value) {
    CTextOutputString output;
    value.GetAsLiteral(output);
    return output.TakeText();
}

inline std::string AsDeclaration(const CValueLiteral& value) {
    CTextOutputString output;
    value.GetDeclaration(output);
    return output.TakeText();
}

/// The messages of a log as "202: Value ..."; empty for none, separated by " / " if a fault logs more than one.
inline std::string Messages(const CErrorLog& log) {
    std::string text;
    for (const CErrorLog::Entry& entry : log.GetEntries()) {
        if (!text.empty()) text += " / ";
        text += std::to_string(entry.id) + ": " + entry.text;
    }
    return text;
}

/// What a parser makes of a text: the value's declaration, or the message; "failed" and "succeeded with" only where
/// result and message contradict each other.
template <typename Parser>
std::string Outcome(CValue& value, Parser parse) {
    CErrorLog log;
    const bool ok = parse(log);
    const std::string messages = Messages(log);
    if (ok) return messages.empty() ? AsDeclaration(value) : "succeeded with " + messages;
    return messages.empty() ? "failed" : messages;
}

inline std::string ParseOutcome(const std::string& text, ElementaryType wanted) {
    CValue value;
    return Outcome(value,
                   [&](CErrorLog& log) { return value.SetFromText(log, ErrorLocationNull::Get(), text, wanted); });
}

using ParserMember = bool (CValueLiteral::*)(CErrorLog&, const ErrorLocation&, const char*);

/// One parser alone; the value held something that it owns before.
inline std::string ParseOutcome(ParserMember parser, const char* text) {
    CValue value(std::string("before"));
    return Outcome(value, [&](CErrorLog& log) { return (value.*parser)(log, ErrorLocationNull::Get(), text); });
}

}  // namespace literal_test
