#include "vm/Disassembler.h"

#include "vm/TestImage.h"

namespace {

using namespace vmtest;

std::string List(const Bytes& code, unsigned int offset = 0) {
    Machine machine(code);
    CTextOutputString output;
    (void)machine.exec->DisassembleCode(offset, output);
    return output.GetText();
}

/// The text of a single instruction behind its byte columns.
std::string TextOf(const Bytes& instruction) {
    const std::string listing = List(instruction);
    const std::size_t at = listing.find(" : ");
    return at == std::string::npos ? listing : listing.substr(at + 3);
}

TEST(DisassembleCode, PrintsEveryInstruction) {
    struct Case {
        Bytes code;
        std::string text;
    };
    const Case cases[] = {
        {LdDint(-5), "LD DINT#-5\n"},
        {LdBool(true), "LD BOOL#TRUE\n"},
        {LdString("ab"), "LD STRING#'ab'\n"},
        {Ld(kWString, {1, 0, 'a', 0}), "LD WSTRING#\"a\"\n"},
        {Ld(kUndefined, {}), "LD Undefined\n"},
        {Ld(kComposite, {}), "LD Undefined\n"},
        {Ld(200, {}), "LD Undefined\n"},
        {LdAddr(kGlobal, 7), "LD ADDR Global: 7\n"},
        {LdAddr(kLocal, 7), "LD ADDR Local: Frame 0 Offset 7\n"},
        {LdAddr(kTemp, 7), "LD ADDR Temp: Frame 0 Offset 7\n"},
        {LdAddr(kConstant, 7), "LD ADDR GlobalConstant: 7\n"},
        {LdAddr(kNull, 7), "LD ADDR Null\n"},
        {LdAddr(kMemBlock, 7), "LD ADDR MemBlockPtr: Type 0 Id 7\n"},
        {LdAddr(99, 7), "LD ADDR Invalid location 99\n"},
        {LdTagAddr(2, 0x01020304), "LD TAG ADDR Tag: Id 16909060 Offset 2\n"},
        {PtrLd(kDInt, 65535), "PTR LD DINT (65535)\n"},
        {PtrLd(99, 1), "PTR LD Unknown (1)\n"},
        {PtrSt(kTime, 8), "PTR ST TIME (8)\n"},
        {LdStack(3), "LD STACK[3]\n"},
        {StStack(255), "ST STACK[255]\n"},
        {LdStatus(9), "LD STATUS 9\n"},
        {PtrLdArray(kInt, 0xFFFFFFFF), "PTR LD ARRAY INT[4294967295]\n"},
        {Push(), "PUSH\n"},
        {Pop(), "POP\n"},
        {Ret(), "RET\n"},
        {Convert(kInt), "CONVERT INT\n"},
        {Truncate(kLReal), "TRUNCATE LREAL\n"},
        {Unary(1), "NEGATE\n"},
        {Unary(2), "NOT\n"},
        {Unary(0), "???\n"},
        {Unary(7), "???\n"},
        {Binary(0), "???\n"},
        {Binary(1), "ADD\n"},
        {Binary(2), "SUB\n"},
        {Binary(3), "MUL\n"},
        {Binary(4), "DIV\n"},
        {Binary(5), "MOD\n"},
        {Binary(6), "POW\n"},
        {Binary(7), "EQ\n"},
        {Binary(8), "NE\n"},
        {Binary(9), "GT\n"},
        {Binary(10), "GE\n"},
        {Binary(11), "LT\n"},
        {Binary(12), "LE\n"},
        {Binary(13), "AND\n"},
        {Binary(14), "OR\n"},
        {Binary(15), "XOR\n"},
        {Binary(16), "???\n"},
        {Jmp(0), "JMP +0 (0005)\n"},
        {Jmpz(10), "JMPZ +10 (000F)\n"},
        {Jmpnz(-5), "JMPNZ -5 (0000)\n"},
        {Jmpu(-6), "JMPU -6 (FFFFFFFF)\n"},
        {CallFunction(10, 1, 2), "TEST ArgCount 2\n"},
        {CallFunctionEno(10, 1, 2), "TEST ArgCount 2, ENO\n"},
        {CallFunction(1, 1, 2), "ABS ArgCount 2\n"},
        {Call(2, 0x1234), "CALL 1234, ArgCount 2\n"},
        {Call(1, 5), "CALL 0005, ArgCount 1\n"},
        {InitTempData({1, 2}), "INIT_TEMP_DATA Length 2\n"},
        {InitTempData({}), "INIT_TEMP_DATA Length 0\n"},
        {InitLocalData(0xFFFFFFFF), "INIT_LOCAL_DATA Length 4294967295\n"},
        {CallBlock(2, 1, 3, 4), "BLOCK ArgCount 3, DataSize 4\n"},
        {CallBlock(1, 8, 7, 29), "TON ArgCount 7, DataSize 29\n"},
        {CallBlock(1, 200, 7, 29), "??? ArgCount 7, DataSize 29\n"},
        {PtrStEdge(1), "PTR ST R_EDGE\n"},
        {PtrStEdge(0), "PTR ST F_EDGE\n"},
        {PtrStEdge(255), "PTR ST R_EDGE\n"},
        {Sfc(2, 180), "SFC Type 2, DataSize 180\n"},
    };
    for (const Case& row : cases)
        EXPECT_EQ(TextOf(row.code), row.text) << "opcode " << +row.code[0];
}

TEST(DisassembleCode, LaysOutAddressAndBytes) {
    EXPECT_EQ(List({6, 3}), "0000 06 03                    : LD STACK[3]\n");
    EXPECT_EQ(List(Bytes(16, 10) + Jmp(-5), 16), "0010 10 FB FF FF FF           : JMP -5 (0010)\n");
    EXPECT_EQ(List(CallBlock(2, 1, 3, 4)), "0000 18 02 01 03 04 00 00 00  : BLOCK ArgCount 3, DataSize 4\n");
    EXPECT_EQ(List(LdString("abcdefghijkl")),
              "0000 01 14 0C 00 61 62 63 64 \n"
              "     65 66 67 68 69 6A 6B 6C  : LD STRING#'abcdefghijkl'\n");
    EXPECT_EQ(List(LdString("abcde")),
              "0000 01 14 05 00 61 62 63 64 \n"
              "     65                       : LD STRING#'abcde'\n");
    EXPECT_EQ(List(Join({Push(), LdDint(1), Ret()})),
              "0000 0A                       : PUSH\n"
              "0001 01 08 01 00 00 00        : LD DINT#1\n"
              "0007 0C                       : RET\n");
}

TEST(DisassembleCode, StopsWhereBytesAreNoInstruction) {
    struct Case {
        const char* why;
        Bytes code;
        std::string text;
    };
    const Case cases[] = {
        {"an opcode that is none", {29, 1, 2}, "*** Disassembler failure: Invalid OP Code 29\n3 bytes remaining\n"},
        {"opcode 0", {0}, "*** Disassembler failure: Invalid OP Code 0\n1 bytes remaining\n"},
        {"what comes before is listed",
         {10, 255},
         "0000 0A                       : PUSH\n*** Disassembler failure: Invalid OP Code 255\n1 bytes remaining\n"},
        {"a function that is none", Join({CallFunction(10, 99, 1), Ret()}),
         "*** Disassembler failure: Invalid built in function (group 10, id 99)\n5 bytes remaining\n"},
        {"a function group that is none", CallFunctionEno(255, 1, 1),
         "*** Disassembler failure: Invalid built in function (group 255, id 1)\n4 bytes remaining\n"},
        {"a block that is none", CallBlock(2, 99, 1, 0),
         "*** Disassembler failure: Invalid built in function block (group 2, id 99)\n8 bytes remaining\n"},
        {"a block group that is none", CallBlock(0, 1, 1, 0),
         "*** Disassembler failure: Invalid built in function block (group 0, id 1)\n8 bytes remaining\n"},
        {"cut short", {16, 1, 2}, "*** Disassembler failure: Instruction is cut short\n3 bytes remaining\n"},
        {"a string cut short",
         {1, 20, 0xFF, 0xFF, 'a'},
         "*** Disassembler failure: Instruction is cut short\n5 bytes remaining\n"},
        {"4 GiB of data",
         {22, 0xFF, 0xFF, 0xFF, 0xFF, 1},
         "*** Disassembler failure: Instruction is cut short\n6 bytes remaining\n"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        Machine machine(row.code);
        CTextOutputString output;
        EXPECT_FALSE(machine.exec->DisassembleCode(0, output));
        EXPECT_EQ(output.GetText(), row.text);
    }
}

TEST(DisassembleCode, ListsNothingFromTheEndOn) {
    Machine machine(Ret());
    CTextOutputString output;
    EXPECT_TRUE(machine.exec->DisassembleCode(1, output));
    EXPECT_TRUE(machine.exec->DisassembleCode(0xFFFFFFFF, output));
    EXPECT_EQ(output.GetText(), "");
}

TEST(CDisassembler, AsksForTheBytesThatItNeeds) {
    const CBuiltInFunctions functions;
    CTextOutputString output;
    CDisassembler disassembler(functions, 0x10, &output);
    EXPECT_EQ(disassembler.FirstByte(1), 1) << "LD: the type";
    const Bytes string = {20, 3, 0, 'a', 'b', 'c'};
    EXPECT_EQ(disassembler.MoreBytes(string.data(), 1), 2) << "STRING: the count";
    EXPECT_EQ(disassembler.MoreBytes(string.data() + 1, 2), 3) << "the characters";
    EXPECT_EQ(disassembler.GetAddress(), 0x10U);
    EXPECT_EQ(disassembler.MoreBytes(string.data() + 3, 1), 2) << "the rest of them";
    EXPECT_EQ(output.GetText(), "");
    EXPECT_EQ(disassembler.MoreBytes(string.data() + 4, 2), 0);
    EXPECT_EQ(disassembler.GetAddress(), 0x17U);
    EXPECT_EQ(output.GetText(), "0010 01 14 03 00 61 62 63     : LD STRING#'abc'\n");
    EXPECT_EQ(disassembler.FirstByte(12), 0);
    EXPECT_EQ(disassembler.GetAddress(), 0x18U);
    EXPECT_EQ(disassembler.FirstByte(99), -1);
    EXPECT_EQ(disassembler.GetDisassemblerError(), "Invalid OP Code 99");
    EXPECT_EQ(disassembler.GetAddress(), 0x18U);
}

TEST(CDisassembler, NeverAsksForMoreThanAnIntHolds) {
    const CBuiltInFunctions functions;
    CTextOutputString output;
    CDisassembler disassembler(functions, 0, &output);
    EXPECT_EQ(disassembler.FirstByte(22), 4);
    EXPECT_EQ(disassembler.MoreBytes(Bytes(4, 0xFF).data(), 4), std::numeric_limits<int>::max());
}

}  // namespace
