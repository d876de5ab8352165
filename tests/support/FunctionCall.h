#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "functions/BuiltInFunctions.h"
#include "functions/FunctionContext.h"
#include "functions/FunctionTable.h"
#include "platform/DataFormat.h"
#include "platform/ErrorLog.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

// Calls of built-in functions written as text, for tables of cases: "LEFT('ABC', 2)" and "STRING#'AB'".

namespace function_test {

/// The text of a value with its type: "DINT#5", "STRING#'AB'", "Undefined".
inline std::string Declare(const CValue& value) {
    CTextOutputString output;
    value.GetDeclaration(output);
    return output.TakeText();
}

/// A value from a literal. Without a prefix 'a' is a STRING, "a" a WSTRING, TRUE a BOOL, 1.5 an LREAL, 5 a DINT;
/// Undefined is an undefined value. A text that is no literal fails the test.
inline CValue ParseLiteral(const std::string& text) {
    CValue value;
    if (text == "Undefined") return value;
    CErrorLog log;
    const ErrorLocation& location = ErrorLocationNull::Get();
    bool parsed = false;
    CValueType prefix;
    const char* rest = text.c_str();
    prefix.ParseTypePrefix(rest);
    if (prefix.IsDefined()) {
        parsed = value.SetFromText(log, location, text, ElementaryType::Undefined);
    } else if (text.front() == '\'') {
        parsed = value.StringToString(log, location, text.c_str());
    } else if (text.front() == '"') {
        parsed = value.StringToWString(log, location, text.c_str());
    } else if (text == "TRUE" || text == "FALSE") {
        parsed = value.StringToBool(log, location, text.c_str());
    } else if (text.find('#') == std::string::npos && text.find_first_of(".n") != std::string::npos) {
        parsed = value.StringToReal(log, location, text.c_str(), ElementaryType::LReal);
    } else {
        parsed = value.StringToInteger(log, location, text.c_str(), ElementaryType::Undefined);
    }
    EXPECT_TRUE(parsed) << "no literal: " << text;
    return value;
}

inline std::string_view TrimBlanks(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

/// Parts between commas that stand outside quotes; none for a blank text.
inline std::vector<std::string> SplitList(std::string_view text) {
    std::vector<std::string> parts;
    if (TrimBlanks(text).empty()) return parts;
    char quote = 0;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (quote != 0) {
            if (c == '$') {
                ++at;
            } else if (c == quote) {
                quote = 0;
            }
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == ',') {
            parts.emplace_back(TrimBlanks(text.substr(begin, at - begin)));
            begin = at + 1;
        }
    }
    parts.emplace_back(TrimBlanks(text.substr(begin)));
    return parts;
}

/// Group and id of one of the library's functions.
struct FunctionAddress {
    unsigned char group = 0;
    unsigned char id = 0;
};

/// An unknown name fails the test.
inline FunctionAddress FindByName(std::string_view name) {
    for (const FunctionGroup& group : GetFunctionGroups()) {
        for (const FunctionRow& row : group.rows) {
            if (name == row.name) return {group.number, row.id};
        }
    }
    ADD_FAILURE() << "no function " << name;
    return {};
}

inline const char* StatusWord(CallStatus status) {
    switch (status) {
        case CallStatus::Continue: return "Continue";
        case CallStatus::Failed: return "Failed";
        case CallStatus::Invalid: return "Invalid";
        default: return "unexpected status";
    }
}

/// A registry with its context, and the last call made through them.
class FunctionCaller {
 public:
    /// `exec` may be null.
    explicit FunctionCaller(CVirtualMachineExec* exec = nullptr) : context_(&settings_, exec, registry_) {}

    CallStatus Call(FunctionAddress address, std::vector<CValue> arguments) {
        arguments_ = std::move(arguments);
        log_.Clear();
        result_ = CValue();
        context_.SetCurrentFunction(0, false, address.group, address.id);
        status_ = registry_.Execute(log_, context_, static_cast<unsigned char>(arguments_.size()),
                                    arguments_.empty() ? nullptr : arguments_.data(), result_);
        return status_;
    }

    /// "LEFT('ABC', 2)", or "7.2('ABC', 2)" by group and id. Returns what Describe() says of it.
    std::string Call(std::string_view text) {
        const std::size_t open = text.find('(');
        const std::string_view name = text.substr(0, open);
        std::vector<CValue> arguments;
        for (const std::string& part : SplitList(text.substr(open + 1, text.rfind(')') - open - 1))) {
            arguments.push_back(ParseLiteral(part));
        }
        Call(FindAddress(name), std::move(arguments));
        return Describe();
    }

    /// The declaration of the result, or the status and the messages with their locations: "Failed 242 [Function MID]".
    [[nodiscard]] std::string Describe() const {
        std::string text = status_ == CallStatus::Continue ? Declare(result_) : StatusWord(status_);
        for (const CErrorLog::Entry& entry : log_.GetEntries()) {
            text += ' ' + std::to_string(entry.id) + " [" + entry.location + ']';
        }
        return text;
    }

    [[nodiscard]] CallStatus GetStatus() const { return status_; }
    [[nodiscard]] const CValue& GetResult() const { return result_; }
    [[nodiscard]] const std::vector<CValue>& GetArguments() const { return arguments_; }
    [[nodiscard]] const CErrorLog& GetLog() const { return log_; }
    /// Read by the functions at each call.
    [[nodiscard]] CDataFormatSettings& GetSettings() { return settings_; }
    [[nodiscard]] CBuiltInFunctions& GetRegistry() { return registry_; }
    [[nodiscard]] CBuiltInFunctionContext& GetContext() { return context_; }

 private:
    static FunctionAddress FindAddress(std::string_view name) {
        const std::size_t dot = name.find('.');
        if (dot == std::string_view::npos) return FindByName(name);
        return {static_cast<unsigned char>(std::stoi(std::string(name.substr(0, dot)))),
                static_cast<unsigned char>(std::stoi(std::string(name.substr(dot + 1))))};
    }

    CDataFormatSettings settings_;
    CBuiltInFunctions registry_;
    CBuiltInFunctionContext context_;
    CErrorLog log_;
    std::vector<CValue> arguments_;
    CValue result_;
    CallStatus status_ = CallStatus::Continue;
};

/// One row of a table of calls.
struct CallCase {
    const char* call;
    const char* expected;  ///< as FunctionCaller::Describe() says it
    const char* why = "";
};

inline void ExpectCalls(std::span<const CallCase> cases) {
    for (const CallCase& row : cases) {
        SCOPED_TRACE(std::string(row.call) + "  " + row.why);
        FunctionCaller caller;
        EXPECT_EQ(caller.Call(row.call), row.expected);
    }
}

}  // namespace function_test
