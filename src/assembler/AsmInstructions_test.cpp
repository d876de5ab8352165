#include <gmock/gmock.h>

#include "assembler/AssemblerTestSupport.h"

namespace {

using assemblertest::Assemble;
using assemblertest::ErrorsOf;
using assemblertest::ToHex;

struct Row {
    const char* text;
    const char* bytes;
};

/// Assembles each text as the code of an image.
void ExpectCode(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(ToHex(Assemble(std::string(".code\n") + row.text).content.code), row.bytes);
    }
}

TEST(AssembleInstruction, WithoutOperands) {
    ExpectCode({{"PUSH", "0A"},
                {"POP", "0B"},
                {"RET", "0C"},
                {"  push ; comment", "0A"},
                {"(* before *) RET (* behind *)", "0C"}});
}

TEST(AssembleInstruction, LoadLiteralWithPrefix) {
    ExpectCode({{"LD BOOL#TRUE", "01 01 01"},
                {"LD SINT#-1", "01 02 FF"},
                {"LD USINT#200", "01 03 C8"},
                {"LD BYTE#16#7F", "01 04 7F"},
                {"LD INT#-2", "01 05 FE FF"},
                {"LD UINT#258", "01 06 02 01"},
                {"LD WORD#16#1234", "01 07 34 12"},
                {"LD DINT#5", "01 08 05 00 00 00"},
                {"LD UDINT#4294967295", "01 09 FF FF FF FF"},
                {"LD DWORD#16#FF", "01 0A FF 00 00 00"},
                {"LD LINT#-1", "01 0B FF FF FF FF FF FF FF FF"},
                {"LD ULINT#1", "01 0C 01 00 00 00 00 00 00 00"},
                {"LD LWORD#2#101", "01 0D 05 00 00 00 00 00 00 00"},
                {"LD REAL#1.5", "01 0E 00 00 C0 3F"},
                {"LD LREAL#-inf", "01 0F 00 00 00 00 00 00 F0 FF"},
                {"LD T#1s", "01 10 E8 03 00 00 00 00 00 00"},
                {"LD TIME#-1ms", "01 10 FF FF FF FF FF FF FF FF"},
                {"LD TOD#00:00:01", "01 11 E8 03 00 00"},
                {"LD D#1970-01-02", "01 12 01 00 00 00"},
                {"LD DT#1970-01-01-00:00:01", "01 13 E8 03 00 00 00 00 00 00"},
                {"LD DT#1970-01-01 00:00:01", "01 13 E8 03 00 00 00 00 00 00"},
                {"LD STRING#'a;b'", "01 14 03 00 61 3B 62"},
                {"LD STRING#'$E9(*'", "01 14 03 00 E9 28 2A"},
                {"LD WSTRING#\"a'\"", "01 15 02 00 61 00 27 00"},
                {"LD CHAR#'$''", "01 19 27"},
                {"LD WCHAR#\"$20AC\"", "01 1A AC 20"},
                {"LD TYPE#STRING[80]", "01 1B 14 50 00"},
                {"LD TYPE#DINT", "01 1B 08 00 00"}});
}

TEST(AssembleInstruction, LoadLiteralByItsForm) {
    ExpectCode({{"LD TRUE", "01 01 01"},
                {"LD false", "01 01 00"},
                {"LD 2147483647", "01 08 FF FF FF 7F"},
                {"LD 3000000000", "01 0B 00 5E D0 B2 00 00 00 00"},
                {"LD -5", "01 08 FB FF FF FF"},
                {"LD 16#FE", "01 0A FE 00 00 00"},
                {"LD 1_000", "01 08 E8 03 00 00"},
                {"LD 1.5", "01 0F 00 00 00 00 00 00 F8 3F"},
                {"LD 1E3", "01 0F 00 00 00 00 00 40 8F 40"},
                {"LD ''", "01 14 00 00"},
                {"LD \"\"", "01 15 00 00"},
                {"LD NULL", "01 16 00 00 00 00 00 00 00 00"}});
}

TEST(AssembleInstruction, LoadPointerLiteral) {
    ExpectCode({{"LD POINTER#Null", "01 16 00 00 00 00 00 00 00 00"},
                {"LD POINTER#Global: 4", "01 16 01 00 00 00 04 00 00 00"},
                {"LD POINTER#Local: Frame 2 Offset 5", "01 16 02 00 02 00 05 00 00 00"},
                {"LD POINTER#Temp: Frame 1 Offset 6", "01 16 03 00 01 00 06 00 00 00"},
                {"LD POINTER#Tag: Id 7 Offset 2", "01 16 04 00 02 00 07 00 00 00"},
                {"LD POINTER#GlobalConstant: 8", "01 16 05 00 00 00 08 00 00 00"},
                {"LD POINTER#MemBlockPtr: Type 3 Id 9", "01 16 06 00 03 00 09 00 00 00"},
                {"LD POINTER#Invalid location 12", "01 16 0C 00 00 00 00 00 00 00"},
                {"LD POINTER#12: 9", "01 16 0C 00 00 00 09 00 00 00"}});
}

TEST(AssembleInstruction, LoadTypeWithoutLiteral) {
    ExpectCode({{"LD Undefined", "01 00"}, {"LD COMPOSITE", "01 17"}, {"LD ANY_INT", "01 2D"}});
}

TEST(AssembleInstruction, LoadAddress) {
    ExpectCode({{"LD ADDR Global: 4", "02 01 04 00 00 00"},
                {"LD ADDR global:16#100", "02 01 00 01 00 00"},
                {"LD ADDR Local: Frame 0 Offset 5", "02 02 05 00 00 00"},
                {"LD ADDR Temp: Frame 0 Offset 6", "02 03 06 00 00 00"},
                {"LD ADDR Tag: Id 7 Offset 0", "02 04 07 00 00 00"},
                {"LD ADDR GlobalConstant: 4294967295", "02 05 FF FF FF FF"},
                {"LD ADDR MemBlockPtr: Type 0 Id 9", "02 06 09 00 00 00"},
                {"LD ADDR Null", "02 00 00 00 00 00"},
                {"LD ADDR 0: 5", "02 00 05 00 00 00"},
                {"LD ADDR 255: 1", "02 FF 01 00 00 00"},
                {"LD TAG ADDR Tag: Id 7 Offset 2", "03 02 00 07 00 00 00"}});
}

TEST(AssembleInstruction, PointerAccess) {
    ExpectCode({{"PTR LD REAL (4)", "04 0E 04 00"},
                {"PTR LD REAL", "04 0E 04 00"},
                {"PTR LD TIME", "04 10 08 00"},
                {"PTR LD STRING (22)", "04 14 16 00"},
                {"PTR ST COMPOSITE (65535)", "05 17 FF FF"},
                {"PTR ST 99 (1)", "05 63 01 00"},
                {"PTR ST R_EDGE", "19 01"},
                {"PTR ST F_EDGE", "19 00"},
                {"PTR LD ARRAY INT[70000]", "09 05 70 11 01 00"}});
}

TEST(AssembleInstruction, StackStatusAndTypes) {
    ExpectCode({{"LD STACK[3]", "06 03"},
                {"ST STACK [ 255 ]", "07 FF"},
                {"LD STATUS 1", "08 01"},
                {"CONVERT INT", "0D 05"},
                {"CONVERT 200", "0D C8"},
                {"TRUNCATE ANY", "1B 36"},
                {"CONVERT TOD", "0D 11"}});
}

TEST(AssembleInstruction, Operators) {
    ExpectCode({{"NEGATE", "0E 01"},
                {"NOT", "0E 02"},
                {"UNARY 7", "0E 07"},
                {"ADD", "0F 01"},
                {"SUB", "0F 02"},
                {"MUL", "0F 03"},
                {"DIV", "0F 04"},
                {"MOD", "0F 05"},
                {"POW", "0F 06"},
                {"EQ", "0F 07"},
                {"NE", "0F 08"},
                {"GT", "0F 09"},
                {"GE", "0F 0A"},
                {"LT", "0F 0B"},
                {"LE", "0F 0C"},
                {"AND", "0F 0D"},
                {"OR", "0F 0E"},
                {"XOR", "0F 0F"},
                {"BINARY 99", "0F 63"}});
}

TEST(AssembleInstruction, Jumps) {
    ExpectCode({{"JMP +0", "10 00 00 00 00"},
                {"JMPZ -5 (0000)", "11 FB FF FF FF"},
                {"JMPNZ +12 (0011)", "12 0C 00 00 00"},
                {"JMPU -2147483648", "13 00 00 00 80"},
                {"JMP 0010", "10 0B 00 00 00"},
                {"JMP 16#0", "10 FB FF FF FF"},
                {"a: JMP a", "10 FB FF FF FF"},
                {"PUSH\na: POP\nJMP A", "0A 0B 10 FA FF FF FF"},
                {"JMP behind\nPUSH\nbehind:", "10 01 00 00 00 0A"}});
}

TEST(AssembleInstruction, Calls) {
    ExpectCode({{"CALL 0010, ArgCount 2", "15 02 10 00 00 00"},
                {"CALL sub, ArgCount 255\nsub: RET", "15 FF 06 00 00 00 0C"},
                {"CALL FACE, ArgCount 1", "15 01 CE FA 00 00"},
                {"FACE: CALL FACE, ArgCount 1", "15 01 00 00 00 00"},
                {"ADD ArgCount 3", "14 02 01 03"},
                {"add argcount 3, eno", "1A 02 01 03"},
                {"LEFT ArgCount 3", "14 07 02 03"},
                {"2.1 ArgCount 3", "14 02 01 03"},
                {"200.201 ArgCount 3, ENO", "1A C8 C9 03"},
                {"TON ArgCount 7, DataSize 29", "18 01 08 07 1D 00 00 00"},
                {"TON ArgCount 7", "18 01 08 07 1D 00 00 00"},
                {"CTU ArgCount 8, DataSize 70000", "18 01 05 08 70 11 01 00"},
                {"1.8 ArgCount 7, DataSize 29", "18 01 08 07 1D 00 00 00"},
                {"9.9 ArgCount 7, DataSize 0", "18 09 09 07 00 00 00 00"}});
}

TEST(AssembleInstruction, FrameDataAndSfc) {
    ExpectCode({{"INIT_TEMP_DATA Length 0", "16 00 00 00 00"},
                {"INIT_TEMP_DATA Length 3 := 01 02ff", "16 03 00 00 00 01 02 FF"},
                {"INIT_TEMP_DATA\n i : INT := 5\n s : STRING[2] := 'a'\n END_TEMP_DATA\n LD ADDR Temp: s",
                 "16 06 00 00 00 05 00 01 00 61 00 02 03 02 00 00 00"},
                {"INIT_TEMP_DATA\nEND_TEMP_DATA", "16 00 00 00 00"},
                {"INIT_LOCAL_DATA Length 29", "17 1D 00 00 00"},
                {"INIT_LOCAL_DATA TON\nLD ADDR Local: ET", "17 1D 00 00 00 02 02 0C 00 00 00"},
                {"SFC Type 1, DataSize 18", "1C 01 12 00"},
                {".byte 29, 16#FF", "1D FF"},
                {".hex 1D00 ff", "1D 00 FF"}});
}

TEST(AssembleListingLine, BytesAndTextAgree) {
    ExpectCode({{"0000 06 03                   : LD STACK[3]", "06 03"},
                {"0000 06 03 : LD STACK [ 3 ]", "06 03"},
                {"0000 0E 07                   : ???", "0E 07"},
                {"0000 16 02 00 00 00 01 02    : INIT_TEMP_DATA Length 2", "16 02 00 00 00 01 02"},
                {"0000 01 14 06 00 61 62 63 64 \n     65 66                   : LD STRING#'abcdef'",
                 "01 14 06 00 61 62 63 64 65 66"},
                {"0000 0D 21                   : CONVERT Unknown", "0D 21"},
                {"0000 01 0E 01 00 C0 7F       : LD REAL#nan", "01 0E 01 00 C0 7F"},
                {"0000 01 01 05                : LD BOOL#TRUE", "01 01 05"},
                {"0000 02 00 07 00 00 00       : LD ADDR Null", "02 00 07 00 00 00"},
                {"0000 18 01 63 04 00 00 00 00 : ??? ArgCount 4, DataSize 0", "18 01 63 04 00 00 00 00"},
                {"a: PUSH\n0001 10 FA FF FF FF          : JMP a", "0A 10 FA FF FF FF"},
                {"0000 10 00 00 00 00          : JMP b\nb: RET", "10 00 00 00 00 0C"}});
}

TEST(AssembleListingLine, ContradictionIsAnError) {
    EXPECT_EQ(ErrorsOf(".code\n0000 06 03 : LD STACK[4]"),
              "2:14 the bytes of this line are another instruction than its text\n");
    EXPECT_EQ(ErrorsOf(".code\n0000 06 03 0A : LD STACK[3]"),
              "2:17 the bytes of this line are another instruction than its text\n");
    EXPECT_EQ(ErrorsOf(".code\n0004 06 03 : LD STACK[3]"),
              "2:1 the line is for address 0004, but the code is at 0000\n");
    EXPECT_EQ(ErrorsOf(".code\n0000 10 01 00 00 00 : JMP b\nb: RET"),
              "2:27 the label is not where the bytes of this line say\n");
    EXPECT_EQ(ErrorsOf(".code\n0000 06 03 : LD STACK[x]"), "2:23 a stack index expected\n");
    EXPECT_EQ(ErrorsOf(".code\n0000 06 03 : "), "2:14 an instruction expected\n");
}

TEST(AssembleInstruction, ErrorsNameTheirPlace) {
    const std::pair<const char*, const char*> rows[] = {
        {"FOO", "2:1 unknown instruction 'FOO'\n"},
        {"FOO ArgCount 1", "2:1 unknown function or function block 'FOO'\n"},
        {"PUSH 1", "2:6 nothing more expected here: '1'\n"},
        {"LD", "2:3 a literal expected\n"},
        {"LD DINT#x", "2:4 'DINT#x' is not a valid integer.\n"},
        {"LD DINT#12abc", "2:4 'DINT#12abc' is not a valid literal\n"},
        {"LD INT#40000", "2:4 Value '40000' is outside the range of type 'INT'.\n"},
        {"LD LWORD#16#1_0000_0000_0000_0000", "2:4 'LWORD#16#1_0000_0000_0000_0000' is not a valid literal\n"},
        {"LD TOD#12:00x", "2:4 'TOD#12:00x' is not a valid literal\n"},
        {"LD 'abc", "2:4 ''abc' is not a valid literal\n"},
        {"LD '$Z'", "2:4 Invalid string escape sequence '$Z'.\n"},
        {"LD TYPE#STRING[80]x", "2:4 'STRING[80]x' is not a valid literal\n"},
        {"LD ADDR 5", "2:10 ':' expected\n"},
        {"LD ADDR foo", "2:9 an address expected: Null, Global, Local, Temp, Tag, GlobalConstant or MemBlockPtr\n"},
        {"LD ADDR Global: nix", "2:17 there is no variable 'nix'\n"},
        {"LD ADDR Temp: Frame 1 Offset 0", "2:15 the instruction has no room for this number\n"},
        {"LD ADDR 256: 0", "2:9 the location kind must be from 0 to 255\n"},
        {"LD TAG ADDR Global: 4", "2:21 the address of a tag expected\n"},
        {"LD STACK[256]", "2:10 a stack index must be from 0 to 255\n"},
        {"LD STACK[-1]", "2:10 a stack index must be from 0 to 255\n"},
        {"PTR LD STRING", "2:14 '(' expected\n"},
        {"PTR LD NIX (4)", "2:8 unknown type 'NIX'\n"},
        {"PTR LD INT (65536)", "2:13 a size in bytes must be from 0 to 65535\n"},
        {"CONVERT", "2:8 a type expected\n"},
        {"JMP +5 (0004)", "2:9 the offset leads to 000A\n"},
        {"JMP nowhere", "2:5 there is no label 'nowhere'\n"},
        {"JMP 12", "2:5 a label, or an offset in four or more hexadecimal digits, expected\n"},
        {"JMP +2147483648", "2:5 a jump offset must be from -2147483648 to 2147483647\n"},
        {"CALL sub", "2:9 ',' expected\n"},
        {"CALL 123456789, ArgCount 1", "2:6 the offset has more than eight digits\n"},
        {"ADD ArgCount 256", "2:14 the number must be from 0 to 255\n"},
        {"ADD ArgCount 3, DataSize 4", "2:5 this is a function: it has no data size\n"},
        {"TON ArgCount 7, ENO", "2:17 'DataSize' expected\n"},
        {"INIT_TEMP_DATA Length 4", "2:16 the length is 4, but there are 0 byte(s) of data\n"},
        {"INIT_TEMP_DATA Length 1 := 0", "2:28 pairs of hexadecimal digits expected\n"},
        {"INIT_TEMP_DATA\ni : INT", "2:15 END_TEMP_DATA is missing\n"},
        {"INIT_LOCAL_DATA INT", "2:17 'Length' or a structure expected\n"},
        {"a: PUSH\na: POP", "3:1 label 'a' is defined already\n"},
        {".byte 256", "2:7 a byte must be from 0 to 255\n"},
        {"UNARY 256", "2:7 an operator code must be from 0 to 255\n"},
        {"LD 'äö' ö", "2:4 ''äö' ö' is not a valid literal\n"},
        {"PUSH (* ä *) ö", "2:14 nothing more expected here: 'ö'\n"},
    };
    for (const auto& [text, errors] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(ErrorsOf(std::string(".code\n") + text), errors);
    }
}

}  // namespace
