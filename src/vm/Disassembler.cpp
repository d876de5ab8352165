#include "vm/Disassembler.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include "functions/BuiltInFunctions.h"
#include "platform/TextOutput.h"
#include "value/Operators.h"
#include "value/PointerValue.h"
#include "value/Value.h"
#include "vm/Opcodes.h"

namespace {

constexpr std::size_t kBytesPerLine = 8;
constexpr std::size_t kMaxErrorText = 80;

/// The operands of an instruction as numbers, in code order.
using Operands = std::array<std::uint32_t, 4>;

Operands DecodeOperands(const OpcodeInfo& info, const unsigned char* bytes) noexcept {
    Operands operands{};
    const unsigned char* at = bytes + 1;
    for (std::size_t i = 0; i < operands.size(); ++i) {
        const unsigned int size = OperandSize(info.operands[i]);
        std::memcpy(&operands[i], at, size);
        at += size;
    }
    return operands;
}

template <typename... Args>
void Append(std::string& text, std::string_view format, const Args&... args) {
    text += FormatText(format, args...);
}

const char* TypeName(std::uint32_t type) {
    return CValueType(static_cast<ElementaryType>(type)).GetTypeName(false);
}

template <std::size_t kCount>
std::string_view OperatorName(const std::array<std::string_view, kCount>& names, std::uint32_t code) noexcept {
    return code != 0 && code < kCount ? names[code] : "???";
}

void AppendPointer(std::string& text, LocationKind location, std::uint16_t frame, std::uint32_t offset) {
    char buffer[PointerValue::kTextSize];
    text += PointerValue{location, frame, offset}.FormatPointerValue(buffer);
}

/// A type without raw data has no value to show and reads as undefined.
void AppendLiteral(std::string& text, const std::vector<unsigned char>& bytes) {
    CValue value;
    if (bytes.size() > 2) {
        value.SetFromDataBytes(static_cast<ElementaryType>(bytes[1]), &bytes[2],
                               static_cast<unsigned int>(bytes.size() - 2));
    }
    CTextOutputString output;
    value.GetDeclaration(output);
    text += output.GetText();
}

}  // namespace

CDisassembler::CDisassembler(const CBuiltInFunctions& functions, unsigned int startAddress, CTextOutput* output)
    : functions_(functions), output_(output), address_(startAddress) {}

CDisassembler::~CDisassembler() = default;

int CDisassembler::FirstByte(unsigned char byte) {
    bytes_.assign(1, byte);
    return Disassemble();
}

int CDisassembler::MoreBytes(const unsigned char* bytes, unsigned int count) {
    bytes_.insert(bytes_.end(), bytes, bytes + count);
    return Disassemble();
}

int CDisassembler::Disassemble() {
    if (!bytes_.empty() && !IsOpcode(bytes_[0])) {
        ReportDisassemblerError("Invalid OP Code %d", bytes_[0]);
        return -1;
    }
    const std::uint64_t length = InstructionLength(bytes_);
    if (length > bytes_.size()) return static_cast<int>(std::min<std::uint64_t>(length - bytes_.size(), INT_MAX));
    std::string text;
    if (!FormatInstruction(text)) return -1;
    PrintAddressAndData();
    text += '\n';
    output_->Write(text);
    address_ += static_cast<unsigned int>(bytes_.size());
    return 0;
}

bool CDisassembler::FormatInstruction(std::string& text) {
    const OpcodeInfo& info = kOpcodeTable[bytes_[0]];
    const auto [first, second, third, fourth] = DecodeOperands(info, bytes_.data());
    const auto group = static_cast<unsigned char>(first);
    const auto id = static_cast<unsigned char>(second);
    text = info.mnemonic;
    switch (info.code) {
        case Opcode::LoadImmediate:
            text += ' ';
            AppendLiteral(text, bytes_);
            break;
        case Opcode::LoadAddr:
            text += ' ';
            AppendPointer(text, static_cast<LocationKind>(first), 0, second);
            break;
        case Opcode::LoadTagAddr:
            text += ' ';
            AppendPointer(text, LocationKind::Tag, static_cast<std::uint16_t>(first), second);
            break;
        case Opcode::PointerLoad:
        case Opcode::PointerStore: Append(text, " %s (%hu)", TypeName(first), second); break;
        case Opcode::LoadStack:
        case Opcode::StoreStack: Append(text, "[%u]", first); break;
        case Opcode::LoadStatus: Append(text, " %u", first); break;
        case Opcode::PointerLoadArray: Append(text, " %s[%u]", TypeName(first), second); break;
        case Opcode::Convert:
        case Opcode::Truncate: Append(text, " %s", TypeName(first)); break;
        case Opcode::Unary: text += OperatorName(kUnaryOperatorNames, first); break;
        case Opcode::Binary: text += OperatorName(kBinaryOperatorNames, first); break;
        case Opcode::Jump:
        case Opcode::JumpZero:
        case Opcode::JumpNotZero:
        case Opcode::JumpUndefined:
            Append(text, " %+d (%04X)", static_cast<std::int32_t>(first), address_ + first + info.FixedLength());
            break;
        case Opcode::CallFunction:
        case Opcode::CallFunctionEno:
            if (!FormatFunction(functions_.GetFunctionName(group, id), "Invalid built in function (group %d, id %d)",
                                text)) {
                return false;
            }
            Append(text, " ArgCount %u", third);
            if (info.code == Opcode::CallFunctionEno) text += ", ENO";
            break;
        case Opcode::Call: Append(text, " %04X, ArgCount %u", second, first); break;
        case Opcode::InitTempData:
        case Opcode::InitLocalData: Append(text, " Length %u", first); break;
        case Opcode::CallFunctionBlock:
            if (!FormatFunction(functions_.GetFunctionBlockName(group, id),
                                "Invalid built in function block (group %d, id %d)", text)) {
                return false;
            }
            Append(text, " ArgCount %u, DataSize %u", third, fourth);
            break;
        case Opcode::PointerStoreEdge: text += first != 0 ? " R_EDGE" : " F_EDGE"; break;
        case Opcode::Sfc: Append(text, " Type %d, DataSize %u", first, second); break;
        case Opcode::Push:
        case Opcode::Pop:
        case Opcode::Return: break;
    }
    return true;
}

bool CDisassembler::FormatFunction(const char* name, const char* errorFormat, std::string& text) {
    if (name == nullptr) {
        ReportDisassemblerError(errorFormat, bytes_[1], bytes_[2]);
        return false;
    }
    text += name;
    return true;
}

void CDisassembler::PrintAddressAndData() {
    std::string line = FormatText("%04X ", address_);
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
        if (i != 0 && i % kBytesPerLine == 0) line += "\n     ";
        line += FormatText("%02X ", bytes_[i]);
    }
    const std::size_t onLastLine = (bytes_.size() - 1) % kBytesPerLine + 1;
    line.append(3 * (kBytesPerLine - onLastLine), ' ');
    line += " : ";
    output_->Write(line);
}

template <typename... Args>
void CDisassembler::ReportDisassemblerError(std::string_view format, const Args&... args) {
    char text[kMaxErrorText + 1];
    tn_sprintf(text, sizeof(text), format, args...);
    error_ = text;
}
