#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "assembler/Assembler.h"
#include "platform/FormatText.h"

// Vocabulary of the assembler's tests.

namespace assemblertest {

using Bytes = std::vector<unsigned char>;

/// "0A 01 FF".
inline std::string ToHex(const Bytes& bytes) {
    std::string text;
    for (const unsigned char byte : bytes)
        text += FormatText(text.empty() ? "%02X" : " %02X", byte);
    return text;
}

/// Assembles a text that must be good.
inline AssembledImage Assemble(std::string_view text) {
    CAssembler assembler;
    AssembledImage image;
    EXPECT_TRUE(assembler.Assemble("test.tnasm", text, image))
        << FormatDiagnostics("test.tnasm", assembler.GetDiagnostics()) << text;
    return image;
}

/// The errors of a text, a line each; empty for a good one.
inline std::string ErrorsOf(std::string_view text, AssemblerLimits limits = {}) {
    CAssembler assembler(limits);
    AssembledImage image;
    const bool good = assembler.Assemble("test.tnasm", text, image);
    EXPECT_EQ(good, assembler.GetDiagnostics().empty());
    EXPECT_TRUE(good || image.bytes.empty()) << "nothing comes out where there are errors";
    std::string errors;
    for (const SourceDiagnostic& diagnostic : assembler.GetDiagnostics())
        errors += FormatText("%u:%u %s\n", diagnostic.line, diagnostic.column, diagnostic.text);
    return errors;
}

}  // namespace assemblertest
