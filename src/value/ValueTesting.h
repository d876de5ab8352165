#pragma once

#include <cmath>
#include <cstring>
#include <ostream>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diag/Messages.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

// The vocabulary of the value model's tests.

inline void PrintTo(const CValue& value, std::ostream* out) {
    CTextOutputString text;
    value.GetDeclaration(text);
    *out << text.GetText() << " (" << value.GetTypeName(false) << ")";
}

inline void PrintTo(ElementaryType type, std::ostream* out) {
    *out << CValueType(type).GetTypeName(false);
}

namespace value_testing {

using T = ElementaryType;

/// A value of a type that owns nothing, from the low bits of a number.
inline CValue Of(ElementaryType type, long long bits) {
    return CValue(bits, type);
}

inline CValue Str(std::string_view bytes) {
    CValue value;
    value.SetFromVMString(reinterpret_cast<const unsigned char*>(bytes.data()),
                          static_cast<unsigned int>(bytes.size()));
    return value;
}

inline CValue WStr(std::u16string_view units) {
    CValue value;
    const std::basic_string<unsigned short> copy(units.begin(), units.end());
    value.SetFromVMWString(copy.data(), static_cast<unsigned int>(copy.size()));
    return value;
}

inline CValue Ptr(LocationKind kind, unsigned short frame, unsigned int offset) {
    CValue value;
    value.SetAddress(static_cast<unsigned short>(kind), frame, offset);
    return value;
}

/// Type and payload, bit by bit in the type's width; a NaN is any NaN.
inline bool AreSame(const CValue& left, const CValue& right) {
    if (left.GetType() != right.GetType()) return false;
    switch (left.GetType()) {
        case T::String:
        case T::WString: return left.IsEqual(right);
        case T::Real:
            if (std::isnan(right.GetPayload<float>())) return std::isnan(left.GetPayload<float>());
            break;
        case T::LReal:
            if (std::isnan(right.GetPayload<double>())) return std::isnan(left.GetPayload<double>());
            break;
        default: break;
    }
    return std::memcmp(left.GetValue(), right.GetValue(), left.GetSize()) == 0;
}

MATCHER_P(IsValue, expected, (negation ? "is not " : "is ") + ::testing::PrintToString(CValue(expected))) {
    return AreSame(arg, expected);
}

/// Ids of the messages of a log.
inline std::vector<std::uint32_t> Ids(const CErrorLog& log) {
    std::vector<std::uint32_t> ids;
    for (const CErrorLog::Entry& entry : log.GetEntries())
        ids.push_back(entry.id);
    return ids;
}

class ValueTest : public ::testing::Test {
 protected:
    /// Exactly one message was logged since the last look, with this id and text.
    void ExpectMessage(Message id, std::string_view text) {
        EXPECT_THAT(Ids(log_), ::testing::ElementsAre(static_cast<std::uint32_t>(id)));
        if (!log_.GetEntries().empty()) {
            EXPECT_EQ(log_.GetEntries().front().text, text);
        }
        log_.Clear();
    }
    void ExpectNoMessage() {
        EXPECT_THAT(Ids(log_), ::testing::IsEmpty());
        log_.Clear();
    }
    /// The first value becomes the second, type and all, without a message.
    void ExpectConversion(const CValue& from, const CValue& to) {
        SCOPED_TRACE(::testing::PrintToString(from) + " to " + to.GetTypeName(false));
        CValue value(from);
        EXPECT_TRUE(value.ChangeType(log_, here_, to.GetType()));
        EXPECT_THAT(value, IsValue(to));
        ExpectNoMessage();
    }

    CErrorLog log_;
    const ErrorLocation& here_ = ErrorLocationNull::Get();
};

}  // namespace value_testing
