#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"

class CBuiltInFunctions;
class CTextOutput;

/// Lists bytecode, one instruction at a time, fed byte-wise by a driver that knows no lengths. Borrows the registry and
/// the output.
class TN61131_API CDisassembler {
 public:
    CDisassembler(const CBuiltInFunctions& functions, unsigned int startAddress, CTextOutput* output);
    ~CDisassembler();

    /// Begins an instruction, respectively adds bytes to it. A positive result is the count of further bytes needed; 0
    /// says that the instruction was complete and has been printed; -1 that the bytes form none.
    int FirstByte(unsigned char byte);
    int MoreBytes(const unsigned char* bytes, unsigned int count);
    [[nodiscard]] const std::string& GetDisassemblerError() const noexcept { return error_; }
    /// Code offset of the instruction being decoded, or of the next one.
    [[nodiscard]] unsigned int GetAddress() const noexcept { return address_; }

 private:
    int Disassemble();
    /// Appends the instruction's text; false, with the error text set, when it has none.
    [[nodiscard]] bool FormatInstruction(std::string& text);
    [[nodiscard]] bool FormatFunction(const char* name, const char* errorFormat, std::string& text);
    void PrintAddressAndData();
    template <typename... Args>
    void ReportDisassemblerError(std::string_view format, const Args&... args);

    const CBuiltInFunctions& functions_;
    CTextOutput* output_;
    unsigned int address_;
    std::vector<unsigned char> bytes_;
    std::string error_;
};
