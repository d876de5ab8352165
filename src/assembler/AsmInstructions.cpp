#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <utility>

#include "assembler/AsmCode.h"
#include "platform/FormatText.h"
#include "value/Operators.h"
#include "value/TypeTable.h"

namespace {

constexpr std::int64_t kHighest8 = 255;
constexpr std::int64_t kHighest16 = 65535;
constexpr std::int64_t kHighest32 = std::numeric_limits<std::uint32_t>::max();

const OpcodeInfo& InfoOf(Opcode code) noexcept {
    return kOpcodeTable[static_cast<std::size_t>(code)];
}

/// The code of an operator; 0 for none.
template <std::size_t kCount>
std::uint32_t FindOperator(const std::array<std::string_view, kCount>& names, std::string_view name) noexcept {
    for (std::uint32_t code = 1; code < kCount; ++code) {
        if (IsSameName(names[code], name)) return code;
    }
    return 0;
}

/// A type that LD can name but that has no literal: its instruction ends behind the type.
bool IsTypeWithoutLiteral(int code) noexcept {
    const auto type = static_cast<ElementaryType>(code);
    return code >= 0 && GetTypeInfo(type).size == 0 && type != ElementaryType::String &&
           type != ElementaryType::WString;
}

}  // namespace

std::vector<CAsmCode::Row> CAsmCode::MakeRows() {
    constexpr std::array<std::pair<Opcode, Handler>, 22> kHandlers = {{
        {Opcode::LoadImmediate, &CAsmCode::ReadLoad},
        {Opcode::LoadAddr, &CAsmCode::ReadLoadAddr},
        {Opcode::LoadTagAddr, &CAsmCode::ReadLoadTagAddr},
        {Opcode::PointerLoad, &CAsmCode::ReadPointerAccess},
        {Opcode::PointerStore, &CAsmCode::ReadPointerAccess},
        {Opcode::LoadStack, &CAsmCode::ReadStackIndex},
        {Opcode::StoreStack, &CAsmCode::ReadStackIndex},
        {Opcode::LoadStatus, &CAsmCode::ReadStatus},
        {Opcode::PointerLoadArray, &CAsmCode::ReadPointerLoadArray},
        {Opcode::Push, &CAsmCode::ReadNothing},
        {Opcode::Pop, &CAsmCode::ReadNothing},
        {Opcode::Return, &CAsmCode::ReadNothing},
        {Opcode::Convert, &CAsmCode::ReadType},
        {Opcode::Truncate, &CAsmCode::ReadType},
        {Opcode::Jump, &CAsmCode::ReadJump},
        {Opcode::JumpZero, &CAsmCode::ReadJump},
        {Opcode::JumpNotZero, &CAsmCode::ReadJump},
        {Opcode::JumpUndefined, &CAsmCode::ReadJump},
        {Opcode::Call, &CAsmCode::ReadUserCall},
        {Opcode::InitTempData, &CAsmCode::ReadInitTempData},
        {Opcode::InitLocalData, &CAsmCode::ReadInitLocalData},
        {Opcode::Sfc, &CAsmCode::ReadSfc},
    }};
    std::vector<Row> rows;
    rows.reserve(kHandlers.size());
    for (const auto& [code, handler] : kHandlers)
        rows.push_back({&InfoOf(code), handler});
    std::stable_sort(rows.begin(), rows.end(), [](const Row& left, const Row& right) {
        return left.info->mnemonic.size() > right.info->mnemonic.size();
    });
    return rows;
}

/// Names that two groups share stand for the lower group; the other one is called by its numbers.
CAsmCode::BuiltInNames CAsmCode::CollectNames(const NameOf& nameOf, unsigned int groups) {
    constexpr std::string_view kUnknown = "???";
    BuiltInNames names;
    for (unsigned int group = 1; group <= groups; ++group) {
        for (unsigned int id = 0; id <= kHighest8; ++id) {
            const BuiltIn builtIn{static_cast<unsigned char>(group), static_cast<unsigned char>(id)};
            const char* name = nameOf(builtIn);
            if (name != nullptr && name != kUnknown) names.emplace(FoldName(name), builtIn);
        }
    }
    return names;
}

const CAsmCode::BuiltIn* CAsmCode::FindFunction(std::string_view name) {
    static const BuiltInNames kNames = CollectNames(
        [functions = CBuiltInFunctions()](BuiltIn of) { return functions.GetFunctionName(of.group, of.id); },
        CBuiltInFunctions::kFunctionGroups);
    const auto found = kNames.find(FoldName(name));
    return found == kNames.end() ? nullptr : &found->second;
}

const CAsmCode::BuiltIn* CAsmCode::FindBlock(std::string_view name) {
    static const BuiltInNames kNames = CollectNames(
        [functions = CBuiltInFunctions()](BuiltIn of) { return functions.GetFunctionBlockName(of.group, of.id); },
        CBuiltInFunctions::kBlockGroups);
    const auto found = kNames.find(FoldName(name));
    return found == kNames.end() ? nullptr : &found->second;
}

bool CAsmCode::ReadInstruction() {
    positions_.push_back({static_cast<std::uint32_t>(bytes_.size()), cursor_.Here()});
    for (const Row& row : rows_) {
        if (cursor_.TakeWords(row.info->mnemonic)) return (this->*row.handler)(*row.info) && cursor_.ExpectLineEnd();
    }
    return ReadNamedInstruction() && cursor_.ExpectLineEnd();
}

bool CAsmCode::ReadNamedInstruction() {
    const char next = cursor_.Peek();
    if (next >= '0' && next <= '9') return ReadNumberedCall();
    const SourcePlace start = cursor_.Here();
    std::string name;
    if (!cursor_.ReadIdentifier("an instruction", name)) return false;
    CSourceCursor ahead = cursor_;
    if (!ahead.TakeWord("ArgCount")) return ReadOperator(start, name);
    const BuiltIn* function = FindFunction(name);
    const BuiltIn* block = FindBlock(name);
    if (function != nullptr || block != nullptr) return ReadBuiltInCall(function, block);
    return cursor_.Fail(start, FormatText("unknown function or function block '%s'", name));
}

/// An operator by its name, or `UNARY code`, `BINARY code` for those without one.
bool CAsmCode::ReadOperator(SourcePlace place, std::string_view name) {
    std::uint32_t unary = FindOperator(kUnaryOperatorNames, name);
    std::uint32_t binary = FindOperator(kBinaryOperatorNames, name);
    const bool isUnary = unary != 0 || IsSameName(name, "UNARY");
    if (!isUnary && binary == 0 && !IsSameName(name, "BINARY"))
        return cursor_.Fail(place, FormatText("unknown instruction '%s'", name));
    std::uint32_t& code = isUnary ? unary : binary;
    if (code == 0 && !cursor_.ReadUnsigned("an operator code", kHighest8, code)) return false;
    return Emit(InfoOf(isUnary ? Opcode::Unary : Opcode::Binary), {code});
}

/// `group.id ArgCount n`: which of functions and blocks it is, what follows says.
bool CAsmCode::ReadNumberedCall() {
    BuiltIn builtIn;
    if (!cursor_.ReadUnsigned("a group", kHighest8, builtIn.group) || !cursor_.Expect(".") ||
        !cursor_.ReadUnsigned("an id", kHighest8, builtIn.id))
        return false;
    return ReadBuiltInCall(&builtIn, &builtIn);
}

bool CAsmCode::ReadBuiltInCall(const BuiltIn* function, const BuiltIn* block) {
    const SourcePlace start = cursor_.Here();
    std::uint32_t argumentCount = 0;
    if (!ReadNamedNumber("ArgCount", kHighest8, argumentCount)) return false;
    Opcode code = function != nullptr ? Opcode::CallFunction : Opcode::CallFunctionBlock;
    std::uint32_t dataSize = 0;
    if (cursor_.Take(",")) {
        const bool eno = function != nullptr && cursor_.TakeWord("ENO");
        code = eno ? Opcode::CallFunctionEno : Opcode::CallFunctionBlock;
        if (!eno && !ReadNamedNumber("DataSize", kHighest32, dataSize)) return false;
    } else if (code == Opcode::CallFunctionBlock) {
        dataSize = builtIns_.GetFunctionBlockDataSize(block->group, block->id);
    }
    if (code != Opcode::CallFunctionBlock) return Emit(InfoOf(code), {function->group, function->id, argumentCount});
    if (block == nullptr) return cursor_.Fail(start, "this is a function: it has no data size");
    return Emit(InfoOf(code), {block->group, block->id, argumentCount, dataSize});
}

bool CAsmCode::ReadNothing(const OpcodeInfo& info) {
    return Emit(info, {});
}

bool CAsmCode::ReadLoad(const OpcodeInfo& info) {
    const int code = FindTypeCode(cursor_.PeekRest());
    if (IsTypeWithoutLiteral(code)) {
        (void)cursor_.TakeLiteral(false);
        return Emit(info, {static_cast<std::uint32_t>(code)});
    }
    AsmLiteral literal;
    if (!ReadLiteral(cursor_, false, ElementaryType::Undefined, literal)) return false;
    if (!literal.pointer.path.empty()) {
        if (!ResolvePointer(cursor_, GetNames(), literal.pointer)) return false;
        std::memcpy(literal.bytes.data(), &literal.pointer.value, sizeof(PointerValue));
    }
    return Emit(info, {static_cast<std::uint32_t>(literal.type)}, literal.bytes);
}

bool CAsmCode::ReadLoadAddr(const OpcodeInfo& info) {
    AsmPointer pointer;
    if (!ReadPointer(cursor_, false, pointer) || !ResolvePointer(cursor_, GetNames(), pointer)) return false;
    if (pointer.value.frame != 0) return cursor_.Fail(pointer.place, "the instruction has no room for this number");
    const auto kind = static_cast<std::uint32_t>(pointer.value.location);
    if (kind > kHighest8) return cursor_.Fail(pointer.place, "the location kind must be from 0 to 255");
    return Emit(info, {kind, pointer.value.offset});
}

bool CAsmCode::ReadLoadTagAddr(const OpcodeInfo& info) {
    AsmPointer pointer;
    if (!ReadPointer(cursor_, false, pointer) || !ResolvePointer(cursor_, GetNames(), pointer)) return false;
    if (pointer.value.location != LocationKind::Tag)
        return cursor_.Fail(pointer.place, "the address of a tag expected");
    return Emit(info, {pointer.value.frame, pointer.value.offset});
}

/// `type (size)`; the size may be left out where the type has one. PTR ST also takes R_EDGE and F_EDGE.
bool CAsmCode::ReadPointerAccess(const OpcodeInfo& info) {
    if (info.code == Opcode::PointerStore) {
        if (cursor_.TakeWord("R_EDGE")) return Emit(InfoOf(Opcode::PointerStoreEdge), {1});
        if (cursor_.TakeWord("F_EDGE")) return Emit(InfoOf(Opcode::PointerStoreEdge), {0});
    }
    std::uint32_t type = 0;
    if (!ReadTypeCode(type)) return false;
    std::uint32_t size = GetTypeInfo(static_cast<ElementaryType>(type)).size;
    const bool given = cursor_.Take("(");
    if (!given && size == 0) return cursor_.Expect("(");
    if (given && (!cursor_.ReadUnsigned("a size in bytes", kHighest16, size) || !cursor_.Expect(")"))) return false;
    return Emit(info, {type, size});
}

bool CAsmCode::ReadPointerLoadArray(const OpcodeInfo& info) {
    std::uint32_t type = 0;
    std::uint32_t count = 0;
    const bool read = ReadTypeCode(type) && cursor_.Expect("[") &&
                      cursor_.ReadUnsigned("an element count", kHighest32, count) && cursor_.Expect("]");
    return read && Emit(info, {type, count});
}

bool CAsmCode::ReadStackIndex(const OpcodeInfo& info) {
    std::uint32_t index = 0;
    return cursor_.Expect("[") && cursor_.ReadUnsigned("a stack index", kHighest8, index) && cursor_.Expect("]") &&
           Emit(info, {index});
}

bool CAsmCode::ReadStatus(const OpcodeInfo& info) {
    std::uint32_t code = 0;
    return cursor_.ReadUnsigned("a status code", kHighest8, code) && Emit(info, {code});
}

bool CAsmCode::ReadType(const OpcodeInfo& info) {
    std::uint32_t type = 0;
    return ReadTypeCode(type) && Emit(info, {type});
}

/// A label, the address of the target, or the signed offset from behind the instruction, with the address it leads to
/// in parentheses or without.
bool CAsmCode::ReadJump(const OpcodeInfo& info) {
    const std::size_t start = bytes_.size();
    const auto behind = static_cast<std::uint32_t>(start + info.FixedLength());
    const char next = cursor_.Peek();
    if (next != '+' && next != '-') {
        Target target;
        if (!ReadTarget(target) || !Emit(info, {})) return false;
        UseTarget(std::move(target), start + 1, behind);
        return true;
    }
    std::int64_t offset = 0;
    if (!cursor_.ReadInteger("a jump offset", INT32_MIN, INT32_MAX, offset)) return false;
    const auto operand = static_cast<std::uint32_t>(offset);
    if (cursor_.Take("(")) {
        Target target;
        if (!ReadTarget(target) || !cursor_.Expect(")")) return false;
        if (!target.hasOffset || target.offset != behind + operand)
            return cursor_.Fail(target.place, FormatText("the offset leads to %04X", behind + operand));
    }
    return Emit(info, {operand});
}

bool CAsmCode::ReadUserCall(const OpcodeInfo& info) {
    const std::size_t start = bytes_.size();
    Target target;
    std::uint32_t argumentCount = 0;
    if (!ReadTarget(target) || !cursor_.Expect(",") || !ReadNamedNumber("ArgCount", kHighest8, argumentCount) ||
        !Emit(info, {argumentCount}))
        return false;
    UseTarget(std::move(target), start + 2, 0);
    return true;
}

/// `Length n := hexadecimal digits`, or a block of declarations that END_TEMP_DATA closes.
bool CAsmCode::ReadInitTempData(const OpcodeInfo& info) {
    if (cursor_.AtLineEnd()) return ReadTempBlock(info);
    const SourcePlace place = cursor_.Here();
    std::uint32_t length = 0;
    std::vector<unsigned char> data;
    if (!ReadNamedNumber("Length", kHighest32, length)) return false;
    if (cursor_.Take(":=") && !ReadHexBytes(cursor_, data)) return false;
    if (data.size() != length)
        return cursor_.Fail(place,
                            FormatText("the length is %u, but there are %u byte(s) of data", length, data.size()));
    tempNames_.Clear();
    return Emit(info, {length}, data);
}

bool CAsmCode::ReadTempBlock(const OpcodeInfo& info) {
    const SourcePlace start = cursor_.Here();
    tempNames_.Clear();
    CAsmData data(LocationKind::Temp, maxSize_);
    bool good = true;
    while (cursor_.NextLine()) {
        if (cursor_.TakeWord("END_TEMP_DATA")) {
            data.ResolvePointers(cursor_, GetNames());
            return Emit(info, {static_cast<std::uint32_t>(data.GetBytes().size())}, data.GetBytes()) && good;
        }
        if (!cursor_.AtLineEnd()) good = data.ReadLine(cursor_, structs_, tempNames_) && good;
    }
    return cursor_.Fail(start, "END_TEMP_DATA is missing");
}

/// `Length n`, or a structure whose size it is and whose members `Local:` then names.
bool CAsmCode::ReadInitLocalData(const OpcodeInfo& info) {
    localNames_.Clear();
    std::uint32_t length = 0;
    CSourceCursor ahead = cursor_;
    if (ahead.TakeWord("Length")) return ReadNamedNumber("Length", kHighest32, length) && Emit(info, {length});
    SymbolType type;
    const SourcePlace place = cursor_.Here();
    if (!::ReadType(cursor_, structs_, type)) return false;
    if (!type.IsStruct()) return cursor_.Fail(place, "'Length' or a structure expected");
    for (const SymbolMember& member : type.structure->members)
        localNames_.AddVariable({"", member.name, LocationKind::Local, member.offset, 0, member.type});
    return Emit(info, {type.structure->size});
}

bool CAsmCode::ReadSfc(const OpcodeInfo& info) {
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    return ReadNamedNumber("Type", kHighest8, type) && cursor_.Expect(",") &&
           ReadNamedNumber("DataSize", kHighest16, size) && Emit(info, {type, size});
}

bool CAsmCode::ReadTypeCode(std::uint32_t& code) {
    const char next = cursor_.Peek();
    if (next >= '0' && next <= '9') return cursor_.ReadUnsigned("a type code", kHighest8, code);
    const SourcePlace place = cursor_.Here();
    std::string name;
    if (!cursor_.ReadIdentifier("a type", name)) return false;
    const int found = FindTypeCode(name);
    if (found < 0) return cursor_.Fail(place, FormatText("unknown type '%s'", name));
    code = static_cast<std::uint32_t>(found);
    return true;
}

bool CAsmCode::ReadNamedNumber(std::string_view word, std::int64_t highest, std::uint32_t& out) {
    if (!cursor_.TakeWord(word)) return cursor_.Fail(FormatText("'%s' expected", word));
    return cursor_.ReadUnsigned("the number", highest, out);
}
