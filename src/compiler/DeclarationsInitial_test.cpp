#include <gtest/gtest.h>

#include "compiler/DeclarationTesting.h"

namespace tn61131::st::testing {
namespace {

constexpr std::string_view kTypes = R"(
TYPE
  Point : STRUCT x : INT := 7; y : INT; END_STRUCT;
  Named : STRUCT s : STRING[3] := 'ab'; p : Point := (y := 2); END_STRUCT;
  Moved : STRUCT x : INT; y : INT := 3; END_STRUCT := (x := 9);
  Five : INT := 5;
  Low : SINT(-4..4);
  Colour : (red := 1, green, blue);
  Row : ARRAY[0..2] OF BYTE := [1, 2];
END_TYPE
VAR_GLOBAL CONSTANT N : INT := 2; ORIGIN : Point := (x := 1, y := 1); TABLE : ARRAY[0..2] OF BYTE := [7, 8, 9]; END_VAR
VAR_GLOBAL g : ARRAY[0..3] OF INT; h : Point; first : INT := second; second : INT := 11; moved : Moved; END_VAR
)";

struct BytesCase {
    std::string_view declaration;  ///< of a global variable x
    std::string_view bytes;
};

TEST(DeclarationInitial, BytesAreThoseOfTheValue) {
    const BytesCase cases[] = {
        // Defaults of the types.
        {"INT", "0000"},
        {"Five", "0500"},
        {"Low", "FC"},
        {"Colour", "0100"},
        {"Row", "010200"},
        {"Point", "07000000"},
        {"Named",
         "0200616200"
         "07000200"},
        {"Moved", "09000300"},
        {"ARRAY[0..1] OF Five", "05000500"},
        {"ARRAY[0..1] OF Row", "010200010200"},
        {"STRING[2]", "00000000"},
        // Scalars.
        {"BOOL := TRUE", "01"},
        {"INT := -2", "FEFF"},
        {"DWORD := 16#FFFF_FFFC", "FCFFFFFF"},
        {"REAL := 1", "0000803F"},
        {"LREAL := 0.5", "000000000000E03F"},
        {"TIME := T#1s", "E803000000000000"},
        {"STRING[4] := 'abc'", "030061626300"},
        {"STRING[4] := ''", "000000000000"},
        {"STRING[4] := '$E4$00x'", "0300E4007800"},
        {"WSTRING[2] := \"a$00E4\"", "02006100E400"},
        {"Low := 3", "03"},
        {"Colour := green", "0200"},
        {"Colour := Colour#blue", "0300"},
        {"Five := 6", "0600"},
        {"INT := N * 3 + 1", "0700"},
        {"CHAR := CHAR#'x'", "78"},
        // Arrays.
        {"ARRAY[0..3] OF BYTE := [1, 2, 3, 4]", "01020304"},
        {"ARRAY[0..3] OF BYTE := 1, 2, 3, 4", "01020304"},
        {"ARRAY[0..3] OF BYTE := [1]", "01000000"},
        {"ARRAY[0..3] OF BYTE := []", "00000000"},
        {"ARRAY[0..3] OF BYTE := 9", "09000000"},
        {"ARRAY[0..3] OF BYTE := [2(1), 3]", "01010300"},
        {"ARRAY[0..3] OF BYTE := 3(5), 6", "05050506"},
        {"ARRAY[0..3] OF BYTE := [N(4), 1]", "04040100"},
        {"ARRAY[0..3] OF BYTE := [2(1, 2)]", "01020102"},
        {"ARRAY[0..3] OF BYTE := [N(1, 2)]", "01020102"},
        {"ARRAY[0..3] OF BYTE := [1, 2(), 4]", "01000004"},
        {"ARRAY[0..3] OF BYTE := [0(9), 4]", "04000000"},
        {"ARRAY[0..3] OF BYTE := [2(2(3))]", "03030303"},
        {"ARRAY[-1..0, 0..2] OF BYTE := [1, 2, 3, 4]", "010203040000"},
        {"ARRAY[-1..0, 0..2] OF BYTE := [[1], [4, 5]]", "010000040500"},
        {"ARRAY[0..1, 0..1, 0..1] OF BYTE := [[[1], [2]], 1([[3, 4]])]", "0100020003040000"},
        {"ARRAY[0..1] OF ARRAY[0..1] OF BYTE := [[1, 2], [3]]", "01020300"},
        {"ARRAY[0..1] OF ARRAY[0..1] OF BYTE := [1, 2, 3]", "01020300"},
        {"ARRAY[0..2] OF ARRAY[0..1] OF BYTE := [2([1, 2])]", "010201020000"},
        {"ARRAY[0..1] OF Row := [[5], TABLE]", "050000070809"},
        {"ARRAY[0..1] OF Point := [(x := 1), (y := 2)]", "0100000007000200"},
        {"ARRAY[0..1] OF Point := [2((x := 3, y := 4))]", "0300040003000400"},
        {"ARRAY[0..1] OF Five := [1]", "01000500"},
        {"ARRAY[0..1] OF STRING[2] := ['a', 'bc']", "0100610002006263"},
        {"ARRAY[0..2] OF Colour := [blue, 1(green)]", "030002000100"},
        // Structures, by name and mixed.
        {"Point := (y := 5)", "07000500"},
        {"Point := ()", "07000000"},
        {"Named := (p := (x := 1), s := 'xyz')",
         "030078797A"
         "01000000"},
        {"Point := ORIGIN", "01000100"},
        {"STRUCT a : ARRAY[0..2] OF BYTE := [3(1)]; b : Point; END_STRUCT := (b := (y := 9), a := [2])",
         "020000"
         "07000900"},
        {"UNION a : DWORD; b : BYTE := 5; END_UNION", "00000000"},
        {"UNION a : DWORD := 16#01020304; b : BYTE; END_UNION", "04030201"},
        {"UNION a : DWORD; b : BYTE; END_UNION := (b := 7)", "07000000"},
        {"ARRAY[0..2] OF BYTE := TABLE", "070809"},
        {"INT := first", "0B00"},
        {"INT := first * N", "1600"},
        {"REAL := second", "00003041"},
        {"STRUCT a : INT := first; END_STRUCT", "0B00"},
        {"Moved := moved", "09000300"},
        // Pointers: g lies at 0, h behind it.
        {"POINTER TO INT := 0", "0000000000000000"},
        {"POINTER TO INT := NULL", "0000000000000000"},
        {"POINTER TO INT := ADR(g[2])", "0100000004000000"},
        {"REF_TO INT := REF(h.y)", "010000000A000000"},
        {"POINTER TO ARRAY[0..3] OF INT := ADR(g)", "0100000000000000"},
        {"REFERENCE TO Point := h", "0100000008000000"},
        {"ARRAY[0..1] OF POINTER TO INT := [ADR(g[1]), NULL]", "01000000020000000000000000000000"},
    };
    for (const BytesCase& each : cases) {
        Resolved project(std::string(kTypes) + "VAR_GLOBAL x : " + std::string(each.declaration) + "; END_VAR");
        EXPECT_EQ(project.Messages(), "") << each.declaration;
        EXPECT_EQ(project.BytesOf("x"), each.bytes) << each.declaration;
    }
}

TEST(DeclarationInitial, InstancesTakeTheValuesOfTheirVariables) {
    Resolved project(R"(
FUNCTION_BLOCK Motor
VAR_INPUT speed : INT := 3; go : BOOL R_EDGE; END_VAR
VAR_OUTPUT up : BOOL := TRUE; END_VAR
VAR_IN_OUT io : INT; END_VAR
VAR t : TON := (PT := T#2ms); n : BYTE := 9; END_VAR
END_FUNCTION_BLOCK
VAR_GLOBAL i : INT; m : Motor; s : Motor := (speed := 4, t := (PT := T#3ms)); c : CTU(PV := 10); END_VAR
VAR_GLOBAL r : Motor := (io := i); END_VAR
)");
    EXPECT_EQ(project.Messages(), "");
    EXPECT_EQ(project.LayoutOf("Motor"), "EN@0 ENO@1 speed@2 go@4 up@7 io@8 n@16 t@17 46");
    const std::string ton2 =
        "0000"
        "00"
        "0200000000000000"
        "000000000000000000000000000000000000";
    const std::string ton3 =
        "0000"
        "00"
        "0300000000000000"
        "000000000000000000000000000000000000";
    EXPECT_EQ(project.BytesOf("m"),
              "0100"
              "0300"
              "000000"
              "01"
              "0000000000000000"
              "09" +
                  ton2);
    EXPECT_EQ(project.BytesOf("s"),
              "0100"
              "0400"
              "000000"
              "01"
              "0000000000000000"
              "09" +
                  ton3);
    EXPECT_EQ(project.BytesOf("r"),
              "0100"
              "0300"
              "000000"
              "01"
              "0100000000000000"
              "09" +
                  ton2);
    EXPECT_EQ(project.BytesOf("c"),
              "0000"
              "000000"
              "00"
              "0A00"
              "00"
              "0000");
}

TEST(DeclarationInitial, ConstantsHaveValuesOrAPlaceOfTheirOwn) {
    Resolved project(R"(
FUNCTION F : INT
VAR CONSTANT LIMIT : INT := 8 * 4; NAMES : ARRAY[0..1] OF STRING[1] := ['a', 'b']; END_VAR
VAR_INPUT CONSTANT k : INT := 3; END_VAR
END_FUNCTION
VAR_GLOBAL CONSTANT TEXT : STRING[5] := 'hello'; OTHER : ARRAY[0..1] OF STRING[1] := ['a', 'b']; END_VAR
VAR_GLOBAL CONSTANT NOTHING : INT; END_VAR
)");
    EXPECT_EQ(project.Errors(), (std::vector<Reported>{{7, 21, DiagnosticCode::ConstantWithoutValue}}));
    ASSERT_TRUE(project.Find("F.LIMIT")->constantValue.has_value());
    EXPECT_EQ(GetIntegerBits(*project.Find("F.LIMIT")->constantValue), 32);
    EXPECT_EQ(project.Find("F.LIMIT")->storage.kind, StorageKind::None);
    EXPECT_EQ(project.Find("F.k")->storage.kind, StorageKind::Unassigned);
    EXPECT_FALSE(project.Find("F.k")->constantValue.has_value());
    EXPECT_TRUE(project.Find("TEXT")->constantValue.has_value());
    EXPECT_EQ(project.Find("F.NAMES")->storage.kind, StorageKind::Constant);
    // The same bytes are kept once.
    EXPECT_EQ(project.Find("OTHER")->storage.offset, project.Find("F.NAMES")->storage.offset);
    EXPECT_EQ(project.ConstantData(), "010061010062");
    EXPECT_TRUE(project.GlobalData().empty());
}

struct ErrorCase {
    std::string_view declaration;  ///< behind "x : "
    std::uint32_t column;          ///< of the declaration's text, from 1
    DiagnosticCode code;
};

TEST(DeclarationInitial, ErrorsStandAtTheValue) {
    using enum DiagnosticCode;
    const ErrorCase cases[] = {
        {"INT := nope", 8, UnknownName},
        {"INT := [1]", 8, BadInitialValue},
        {"INT := 1, 2", 8, BadInitialValue},
        {"INT := (a := 1)", 8, BadInitialValue},
        {"Low := 5", 8, OutsideSubrange},
        {"SINT := 200", 9, ValueOutOfRange},
        {"ARRAY[0..1] OF BYTE := [1, 2, 3]", 31, TooManyElements},
        {"ARRAY[0..1] OF BYTE := [3(1)]", 25, TooManyElements},
        {"ARRAY[0..1] OF BYTE := [N(1), 2]", 31, TooManyElements},
        {"ARRAY[0..1] OF BYTE := [4000000000(1)]", 25, BadRepeatCount},
        {"ARRAY[0..1, 0..1] OF BYTE := [[1, 2, 3]]", 38, TooManyElements},
        {"ARRAY[0..1, 0..1] OF BYTE := [[1], [2], [3]]", 41, TooManyElements},
        {"ARRAY[0..1] OF BYTE := [[1]]", 25, BadInitialValue},
        {"ARRAY[0..1] OF BYTE := (a := 1)", 24, BadInitialValue},
        {"Point := (z := 1)", 11, NoSuchMember},
        {"Point := (x := 1, X := 2)", 19, MemberTwice},
        {"Point := 5", 10, BadInitialValue},
        {"Point := g", 10, BadInitialValue},
        {"TON := (PX := T#1s)", 9, NoSuchMember},
        {"TON := (PT := TRUE)", 15, ExplicitConversion},
        {"POINTER TO INT := 5", 19, BadInitialValue},
        {"POINTER TO INT := ADR(h)", 23, PointerDiffers},
        {"POINTER TO INT := ADR(g[4])", 25, IndexOutOfBounds},
        {"POINTER TO INT := ADR(g[0, 1])", 23, WrongIndexCount},
        {"POINTER TO INT := ADR(N)", 23, NoFixedPlace},
        {"POINTER TO INT := ADR(5)", 23, NoFixedPlace},
        {"POINTER TO INT := ADR(h.z)", 25, NoSuchMember},
    };
    for (const ErrorCase& each : cases) {
        // The declaration stands on the first line, so that its columns are those of the case.
        Resolved project("VAR_GLOBAL x : " + std::string(each.declaration) + "; END_VAR" + std::string(kTypes));
        EXPECT_EQ(project.Errors(), (std::vector<Reported>{{1, each.column + 15, each.code}}))
            << each.declaration << '\n'
            << project.Messages();
    }
}

TEST(DeclarationInitial, RingsAreReportedOnce) {
    using enum DiagnosticCode;
    const std::pair<std::string_view, std::vector<Reported>> cases[] = {
        {"VAR_GLOBAL CONSTANT a : INT := b; b : INT := a; END_VAR", {{1, 21, SelfReference}}},
        {"VAR_GLOBAL CONSTANT a : INT := a; END_VAR", {{1, 21, SelfReference}}},
        {"VAR_GLOBAL a : INT := b; b : INT := a; END_VAR", {{1, 12, SelfReference}}},
        {"VAR_GLOBAL CONSTANT n : INT := SIZEOF(a); END_VAR VAR_GLOBAL a : ARRAY[0..n] OF INT; END_VAR",
         {{1, 21, SelfReference}}},
    };
    for (const auto& [text, reported] : cases) {
        Resolved project(text);
        ASSERT_FALSE(project.Errors().empty()) << text;
        EXPECT_EQ(project.Errors().front(), reported.front()) << text << '\n' << project.Messages();
    }
}

TEST(DeclarationInitial, WhatStartsWithEachCallNeedsConstants) {
    using enum DiagnosticCode;
    Resolved project(
        "VAR_GLOBAL g : INT := 5; a : ARRAY[0..1] OF INT; END_VAR\n"
        "FUNCTION F : INT VAR x : INT := g; y : ARRAY[0..1] OF INT := a; END_VAR END_FUNCTION\n"
        "PROGRAM P VAR_TEMP x : INT := g; END_VAR VAR y : INT := g; END_VAR END_PROGRAM\n"
        "VAR_GLOBAL CONSTANT c : INT := g; END_VAR");
    EXPECT_EQ(
        project.Errors(),
        (std::vector<Reported>{{2, 33, NotConstant}, {2, 62, NotConstant}, {3, 31, NotConstant}, {4, 32, NotConstant}}))
        << project.Messages();
    EXPECT_EQ(project.BytesOf("P.y"), "0500");
}

TEST(DeclarationInitial, HugeRepeatsAreWrittenAtOnce) {
    Resolved project(R"(
VAR_GLOBAL x : ARRAY[1..10000000] OF INT := [9999998(258), 1]; y : ARRAY[0..999] OF ARRAY[0..999] OF BYTE := [1000([1000(7)])];
END_VAR)");
    EXPECT_EQ(project.Messages(), "");
    const std::vector<unsigned char>& data = project.GetProject().globalData;
    ASSERT_EQ(data.size(), 21000000U);
    EXPECT_EQ(Resolved::ToHex(std::span(data).subspan(19999994, 8)), "0201010000000707");
}

}  // namespace
}  // namespace tn61131::st::testing
