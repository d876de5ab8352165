#include "assembler/Assembler.h"

#include <fstream>
#include <iterator>

#include <gmock/gmock.h>

#include "assembler/AssemblerTestSupport.h"
#include "value/Operators.h"
#include "vm/Opcodes.h"

namespace {

using assemblertest::Assemble;
using assemblertest::Bytes;
using assemblertest::ErrorsOf;
using assemblertest::ToHex;

TEST(AssembleImage, EveryPartStandsWhereTheFormatHasIt) {
    const AssembledImage image = Assemble(R"(
.version 5
.build 'P' 1.2.3.256 -1 'r'
.global
    .hex AA BB
.constant
    .byte 7
.program Main start 9
.program 'it$'s 2' start
.expression 3 start
.codeblock 4 16#FFFF
.code
start: RET
)");
    EXPECT_EQ(ToHex(image.bytes),
              "42 49 01 01 50 01 00 02 00 03 00 00 01 FF FF FF FF FF FF FF FF 01 72 "  // magic and build identity
              "05 00 "                                                                 // version
              "06 00 00 00 AA BB EF BE 0D 60 "                                         // global data and guard
              "05 00 00 00 07 EF BE 0D 60 "                                            // constants and guard
              "01 00 00 00 0C "                                                        // code
              "02 00 00 00 04 4D 61 69 6E 00 00 00 00 09 00 00 00 "                    // programs
              "06 69 74 27 73 20 32 00 00 00 00 00 00 00 00 "                          //
              "01 00 00 00 03 00 00 00 00 00 00 00 "                                   // expressions
              "01 00 00 00 04 00 00 00 FF FF 00 00");                                  // code blocks
}

TEST(AssembleImage, EmptyTextGivesAnEmptyImageOfTheNewestVersion) {
    EXPECT_EQ(ToHex(Assemble("").bytes),
              "56 49 05 00 04 00 00 00 EF BE 0D 60 04 00 00 00 EF BE 0D 60 "
              "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00");
}

TEST(AssembleImage, OldVersionsHaveTheirParts) {
    const std::string guard = "EF BE 0D 60 ";
    const std::string code = "01 00 00 00 0C 00 00 00 00 ";  // RET, no programs
    const std::pair<const char*, std::string> rows[] = {
        {".version 1\n.obsolete -2\n.expression 0 0000\n",
         "56 49 01 00 04 00 00 00 " + guard + "FE FF FF FF " + code + "01 00 00 00 00 00 00 00"},
        {".version 2\n",
         "56 49 02 00 04 00 00 00 " + guard + "04 00 00 00 " + guard + "00 00 00 00 " + code + "00 00 00 00"},
        {".version 3\n.expression 8 0000\n", "56 49 03 00 04 00 00 00 " + guard + "04 00 00 00 " + guard +
                                                 "00 00 00 00 " + code + "01 00 00 00 08 00 00 00 00 00 00 00"},
        {".version 4\n", "56 49 04 00 04 00 00 00 " + guard + "04 00 00 00 " + guard + "00 00 00 00 " + code +
                             "00 00 00 00 00 00 00 00"},
    };
    for (const auto& [text, bytes] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(ToHex(Assemble(std::string(text) + ".code\nRET").bytes), bytes);
    }
}

TEST(AssembleData, InitialValuesHaveTheirBytes) {
    const std::pair<const char*, const char*> rows[] = {
        {"a : INT", "00 00"},
        {"a : INT := -2", "FE FF"},
        {"a : INT := INT#16#10", "10 00"},
        {"a : BOOL := 1", "01"},
        {"a : REAL := 2", "00 00 00 40"},
        {"a : TIME := T#1ms", "01 00 00 00 00 00 00 00"},
        {"a : STRING[3] := 'ab'", "02 00 61 62 00"},
        {"a : STRING(1)", "00 00 00"},
        {"a : STRING[0]", "00 00"},
        {"a : WSTRING[2] := \"x\"", "01 00 78 00 00 00"},
        {"a : CHAR := CHAR#'z'", "7A"},
        {"a : TYPE := STRING[80]", "14 50 00"},
        {"a : POINTER := NULL", "00 00 00 00 00 00 00 00"},
        {"a : POINTER := Global: 5", "01 00 00 00 05 00 00 00"},
        {"a : POINTER := Global: b\nb : BYTE", "01 00 00 00 08 00 00 00 00"},
        {"a : ARRAY[0..3] OF INT := 1, 2", "01 00 02 00 00 00 00 00"},
        {"a : ARRAY[0..3] OF BYTE := [3(7), 1]", "07 07 07 01"},
        {"a : ARRAY[0..3] OF BYTE := 1,\n\n  2,\n3 , 4", "01 02 03 04"},
        {"a : ARRAY[0..1, 0..1] OF BYTE := 1, 2, 3, 4", "01 02 03 04"},
        {"a : ARRAY[0..1] OF ARRAY[0..1] OF BYTE := [[1, 2], [3]]", "01 02 03 00"},
        {"a : ARRAY[-1..0] OF STRING[1] := 'a', 'b'", "01 00 61 01 00 62"},
        {"a : BYTES[3] := 1, 2, 3", "01 02 03"},
        {"a : ARRAY[0..1] OF R_TRIG := 2((CLK := TRUE))", "00 00 01 00 00 00 00 01 00 00"},
        {"a : CTU := (PV := 5, Q := TRUE)", "00 00 00 00 00 00 05 00 01 00 00"},
        {"a AT 2 : BYTE := 9\nb : BYTE := 8", "00 00 09 08"},
        {"a : DINT := 16#01020304\nb AT 1 : BYTE := 9", "04 09 02 01"},
        {".hex 0102 03\n.byte 4, 16#5\n.space 2\na : BYTE := 6", "01 02 03 04 05 00 00 06"},
    };
    for (const auto& [text, bytes] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(ToHex(Assemble(std::string(".global\n") + text).content.globalData.data), bytes);
    }
}

TEST(AssembleData, SectionsGoOnAndReserve) {
    const AssembledImage image = Assemble(".global 6\na : BYTE := 1\n.constant\nc : BYTE := 2\n.global\nb : BYTE := 3");
    EXPECT_EQ(ToHex(image.content.globalData.data), "01 03 00 00 00 00");
    EXPECT_EQ(ToHex(image.content.constants.data), "02");
}

TEST(AssembleImage, TableEntriesDoNotEndASection) {
    const AssembledImage image = Assemble(
        ".global\na : BYTE := 1\n.expression 1 x\nb : BYTE := 2\n.struct S\nm : INT\n.version 5\nn : INT\n"
        ".constant\nc : S\n.code\nPUSH\n.program Main x\nx: POP");
    EXPECT_EQ(ToHex(image.content.globalData.data), "01 02");
    EXPECT_EQ(ToHex(image.content.constants.data), "00 00 00 00");
    EXPECT_EQ(ToHex(image.content.code), "0A 0B");
}

TEST(AssembleData, GuardCanBeDamaged) {
    const AssembledImage image = Assemble(".global\n.guard 01020304\n.constant\n.guard 05 06 07 08");
    EXPECT_EQ(image.content.globalData.guard, (ImageContent::Guard{1, 2, 3, 4}));
    EXPECT_EQ(image.content.constants.guard, (ImageContent::Guard{5, 6, 7, 8}));
}

TEST(AssembleData, StructuresLieBehindOneAnotherOrWhereTheySay) {
    const AssembledImage image = Assemble(R"(
.struct Inner
    a : BYTE
    b : INT
.struct Outer 12
    x : Inner
    y AT 8 : BYTE
    z : BYTE
.global
    v : Outer := (x := (a := 1, b := 2), z := 3)
)");
    EXPECT_EQ(ToHex(image.content.globalData.data), "01 02 00 00 00 00 00 00 00 03 00 00");
    SymbolReference reference;
    std::string error;
    ASSERT_TRUE(image.symbols.Find("v.x.b", reference, error)) << error;
    EXPECT_EQ(reference.offset, 1U);
}

TEST(AssembleNames, AddressesByName) {
    const AssembledImage image = Assemble(R"(
.code
    LD ADDR Global: Main.list[2]
    LD ADDR GlobalConstant: limit
    LD TAG ADDR Tag: valve
    LD POINTER#Global: list
.global
    .space 4
    Main.list : ARRAY[1..3] OF DINT
.constant
    .space 1
    limit : DINT
.tag
    valve AT 7.2 : BOOL
)");
    EXPECT_EQ(ToHex(image.content.code),
              "02 01 08 00 00 00 02 05 01 00 00 00 03 02 00 07 00 00 00 01 16 01 00 00 00 04 00 00 00");
}

TEST(AssembleNames, NameOfAnotherLocationIsRefused) {
    EXPECT_EQ(ErrorsOf(".global\na : INT\n.code\nLD ADDR GlobalConstant: a"), "4:25 'a' is in another location\n");
}

TEST(AssembleSymbols, LabelsEntriesAndPositions) {
    const AssembledImage image =
        Assemble(".program Main a\n.expression 3 b\n.code\na: CALL b, ArgCount 1\n  RET\nb: RET\nc:");
    std::string labels;
    for (const SymbolLabel& label : image.symbols.GetLabels())
        labels += FormatText("%d %s %u\n", label.kind, label.name, label.codeOffset);
    EXPECT_EQ(labels, "2 Main 0\n3 3 7\n0 a 0\n1 b 7\n0 c 8\n");
    ASSERT_EQ(image.symbols.GetPositions().size(), 3U);
    EXPECT_EQ(image.symbols.GetFiles(), std::vector<std::string>{"test.tnasm"});
    EXPECT_EQ(image.symbols.FindPosition(0)->line, 4U);
    EXPECT_EQ(image.symbols.FindPosition(0)->column, 4U);
    EXPECT_EQ(image.symbols.FindPosition(6)->line, 5U);
    EXPECT_EQ(image.symbols.FindPosition(7)->line, 6U);
}

TEST(AssembleError, NamesLineAndColumn) {
    const std::pair<const char*, const char*> rows[] = {
        {"x : INT", "1:1 a directive expected: .global, .constant, .tag, .struct, .code or a table entry\n"},
        {".nix", "1:1 a directive expected: .global, .constant, .tag, .struct, .code or a table entry\n"},
        {".version 6", "1:10 the version must be from 1 to 5\n"},
        {".version 0", "1:10 the version must be from 1 to 5\n"},
        {".version", "1:9 the version expected\n"},
        {".build x", "1:8 the name of the product in single quotes expected\n"},
        {".build 'x' 1.2.3", "1:17 '.' expected\n"},
        {".build 'x' 1.2.3.65536", "1:18 a version number must be from 0 to 65535\n"},
        {".obsolete 1", "1:11 version 5 has no obsolete word\n"},
        {".version 1\n.constant\na : INT", "2:10 constants need version 2\n"},
        {".version 3\n.codeblock 1 0000", "2:12 code blocks need version 4\n"},
        {".version 2\n.expression 1 0000", "2:13 before version 3 this expression has the id 0\n"},
        {".program Main nowhere", "1:15 there is no label 'nowhere'\n"},
        {".program", "1:9 the name of the program expected\n"},
        {".expression -1 0000", "1:13 an id must be from 0 to 4294967295\n"},
        {".global\na", "2:2 ':' expected\n"},
        {".global\na : NIX", "2:5 unknown type 'NIX'\n"},
        {".global\na : COMPOSITE", "2:5 unknown type 'COMPOSITE'\n"},
        {".global\na : STRING[65536]", "2:12 a string length must be from 0 to 65535\n"},
        {".global\na : ARRAY[3..2] OF INT", "2:11 the upper bound is below the lower bound\n"},
        {".global\na : ARRAY[0..2147483647] OF LINT", "2:5 the type is too large\n"},
        {".global\na : ARRAY[0..99999999] OF BYTE", "2:31 the data is larger than 67108864 bytes\n"},
        {".global\na : INT := 'x'", "2:12 ''x'' is not a valid integer.\n"},
        {".global\na : INT := DINT#5", "2:12 the literal is a DINT, a INT is expected\n"},
        {".global\na : STRING[2] := 'abc'", "2:18 the string is longer than 2\n"},
        {".global\na : ARRAY[0..1] OF INT := 1, 2, 3", "2:33 the array has 2 element(s) only\n"},
        {".global\na : ARRAY[0..1] OF INT := 3(1)", "2:27 only 2 element(s) are left in the array\n"},
        {".global\na : ARRAY[0..1] OF POINTER := 2(Global: a)", "2:31 the address of a variable cannot be repeated\n"},
        {".global\na : TON := (XX := 1)", "2:13 TON has no member 'XX'\n"},
        {".global\na : TON := 1", "2:12 '(' expected\n"},
        {".global\na : INT\nA : DINT", "3:1 'A' is declared already\n"},
        {".global\n.guard 01", "2:8 the guard has four bytes\n"},
        {".global\n.hex 0", "2:6 pairs of hexadecimal digits expected\n"},
        {".global\n.hex 01 5x", "2:9 pairs of hexadecimal digits expected\n"},
        {".global x", "1:9 a size in bytes expected\n"},
        {".tag\na : INT", "2:1 a tag needs its id: name AT id : type\n"},
        {".tag\na AT 1.65536 : INT", "2:8 an offset within the tag must be from 0 to 65535\n"},
        {".struct S", "1:9 the structure has no members\n"},
        {".struct INT\na : INT", "1:9 'INT' is a type already\n"},
        {".struct S\na : INT\n.struct S\na : INT", "3:9 'S' is a type already\n"},
        {".struct S\na : S", "2:5 unknown type 'S'\n"},
        {".struct S\na : INT\na : INT", "3:1 'a' is declared already\n"},
        {"(* open", "1:1 the comment is not closed\n"},
        {".code\n PUSH (*", "2:7 the comment is not closed\n"},
    };
    for (const auto& [text, errors] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(ErrorsOf(text), errors);
    }
}

TEST(AssembleError, AllAreReportedInTheOrderOfTheLines) {
    EXPECT_EQ(ErrorsOf(".code\nFOO\nJMP x\n.global\na : NIX\n.code\nBAR\n"),
              "2:1 unknown instruction 'FOO'\n3:5 there is no label 'x'\n5:5 unknown type 'NIX'\n"
              "7:1 unknown instruction 'BAR'\n");
}

TEST(AssembleError, NoMoreThanTheLimit) {
    std::string text = ".code\n";
    for (int i = 0; i < 150; ++i)
        text += "FOO\n";
    CAssembler assembler;
    AssembledImage image;
    EXPECT_FALSE(assembler.Assemble("a", text, image));
    EXPECT_EQ(assembler.GetDiagnostics().size(), CSourceCursor::kMaxDiagnostics);
    EXPECT_THAT(FormatDiagnostics("a", assembler.GetDiagnostics()),
                testing::EndsWith("a: further errors are not shown\n"));
}

TEST(AssembleError, TextIsForPeopleAndTools) {
    EXPECT_EQ(FormatDiagnostics("a.tnasm", {{3, 7, "wrong"}}), "a.tnasm:3:7: error: wrong\n");
}

TEST(AssembleLimits, AtTheLimitWorksAndOneOverFails) {
    const AssemblerLimits limits{.maxDataSize = 8, .maxCodeSize = 3};
    EXPECT_EQ(ErrorsOf(".global\na : LINT", limits), "");
    EXPECT_EQ(ErrorsOf(".global 8", limits), "");
    EXPECT_EQ(ErrorsOf(".global 9", limits), "1:10 the data is larger than 8 bytes\n");
    EXPECT_EQ(ErrorsOf(".global\na : LINT\nb : BYTE", limits), "3:9 the data is larger than 8 bytes\n");
    EXPECT_EQ(ErrorsOf(".global\n.space 4294967295", limits), "2:18 the data is larger than 8 bytes\n");
    EXPECT_EQ(ErrorsOf(".code\nPUSH\nPUSH\nPUSH", limits), "");
    EXPECT_EQ(ErrorsOf(".code\nPUSH\nPUSH\nNOT", limits), "4:4 the code is larger than 3 bytes\n");
    EXPECT_EQ(ErrorsOf(".code\nINIT_TEMP_DATA\n a : DINT\nEND_TEMP_DATA", limits),
              "3:10 the data is larger than 3 bytes\n4:14 the code is larger than 3 bytes\n");
}

std::string ReadManual() {
    std::ifstream file("docs/assembler.md");
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(AssemblerManual, ExampleAssembles) {
    const std::string manual = ReadManual();
    const std::string fence = "```tnasm\n";
    const std::size_t start = manual.find(fence);
    ASSERT_NE(start, std::string::npos);
    const std::size_t end = manual.find("```\n", start + fence.size());
    const AssembledImage image = Assemble(manual.substr(start + fence.size(), end - start - fence.size()));
    // 0.25, then the string: the bytes that the declaration stands for.
    EXPECT_EQ(ToHex(image.content.globalData.data).substr(0, 32), "00 00 80 3E 05 00 6E 6F 72 74 68");
    EXPECT_EQ(image.content.programs.size(), 1U);
}

TEST(AssemblerManual, NamesEveryMnemonicAndOperator) {
    const std::string manual = ReadManual();
    for (const OpcodeInfo& info : kOpcodeTable)
        EXPECT_THAT(manual, testing::HasSubstr(std::string(info.mnemonic)));
    for (const std::string_view name : kBinaryOperatorNames)
        EXPECT_THAT(manual, testing::HasSubstr(std::string(name)));
    for (const std::string_view name : kUnaryOperatorNames)
        EXPECT_THAT(manual, testing::HasSubstr(std::string(name)));
}

TEST(AssembleText, InvalidUtf8IsAnError) {
    EXPECT_EQ(ErrorsOf(".global\na : STRING[4] := '\xE4'"), "2:19 the text is not valid UTF-8\n");
    EXPECT_EQ(ErrorsOf("; \xC3\xA4 \xEF\xBF\xBD good"), "");
    EXPECT_EQ(ErrorsOf("; \xC3\xA4 \xEF\xBF"), "1:5 the text is not valid UTF-8\n");
}

TEST(AssembleText, LineEndsAndByteOrderMark) {
    EXPECT_EQ(ToHex(Assemble("\xEF\xBB\xBF.code\r\nPUSH\r\n\r\nPOP").content.code), "0A 0B");
}

TEST(AssembleText, CommentsMayGoOverLines) {
    EXPECT_EQ(ToHex(Assemble(".code\nPUSH (* a\nRET ; b\n*) POP\n;(*\nRET").content.code), "0A 0B 0C");
}

}  // namespace
