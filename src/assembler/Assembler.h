#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "assembler/Image.h"
#include "assembler/SourceCursor.h"
#include "assembler/SymbolMap.h"

/// What a source may ask for.
struct AssemblerLimits {
    std::uint32_t maxDataSize = 64U << 20U;  ///< bytes of each data block
    std::uint32_t maxCodeSize = 64U << 20U;  ///< bytes
};

struct AssembledImage {
    ImageContent content;
    std::vector<unsigned char> bytes;  ///< the image file
    CSymbolMap symbols;
};

/// Turns the text form of an image (docs/assembler.md) into the image and its symbol map. One object may assemble any
/// number of texts, one after the other.
class CAssembler {
 public:
    explicit CAssembler(AssemblerLimits limits = {}) noexcept : limits_(limits) {}

    /// Assembles a text. False, `out` untouched, when it has errors: the diagnostics then have them all, in the order
    /// of the lines, up to CSourceCursor::kMaxDiagnostics. `fileName` is what the symbol map calls the source.
    [[nodiscard]] bool Assemble(std::string_view fileName, std::string_view text, AssembledImage& out);
    [[nodiscard]] const std::vector<SourceDiagnostic>& GetDiagnostics() const noexcept { return diagnostics_; }

 private:
    AssemblerLimits limits_;
    std::vector<SourceDiagnostic> diagnostics_;
};

/// The diagnostics as lines `file:line:column: error: text`.
[[nodiscard]] std::string FormatDiagnostics(std::string_view fileName,
                                            const std::vector<SourceDiagnostic>& diagnostics);
