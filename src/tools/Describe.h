#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include "assembler/SymbolMap.h"
#include "tools/LoadedImage.h"
#include "vm/Opcodes.h"

class CErrorLog;
class CVirtualMachine;
class CVirtualMachineExec;

namespace tn61131 {

/// Writes "tn61131: IMAGE: error ID: LOCATION: TEXT" with what of it there is.
void WriteMessage(std::ostream& messages, const std::string& image, const ImageError& error);

/// The same for each error of a run that failed; a run may fail without one, which is said then.
void WriteRunMessages(std::ostream& messages, const std::string& image, const CErrorLog& log);

/// The text with control characters made visible, so that data of a program cannot drive a terminal.
[[nodiscard]] std::string PrintableText(std::string_view text);

/// One instruction as the disassembler lists it, without the line end; what stands there instead when it is none.
[[nodiscard]] std::string DescribeInstruction(const CVirtualMachine& machine, const CVirtualMachineExec& exec,
                                              unsigned int codeOffset);

/// The code and the source line that an instruction belongs to, as far as the map knows them.
struct CodePlace {
    std::string owner;  ///< "function Scale"; empty where unknown
    std::string file;   ///< empty where unknown
    std::uint32_t line = 0;
    std::uint32_t column = 0;  ///< 0 where unknown
};
/// Bytes of a call instruction: a return offset less these is the call.
inline constexpr unsigned int kCallLength = kOpcodeTable[static_cast<std::size_t>(Opcode::Call)].FixedLength();
[[nodiscard]] CodePlace FindPlace(const CSymbolMap& map, unsigned int codeOffset);

/// "in function Scale, tank.tnasm:12": the code and the source line that an instruction belongs to, as far as known.
[[nodiscard]] std::string DescribePlace(const CSymbolMap& map, unsigned int codeOffset);

}  // namespace tn61131
