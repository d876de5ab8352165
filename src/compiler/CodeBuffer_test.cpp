#include "compiler/CodeBuffer.h"

#include <string>

#include <gtest/gtest.h>

namespace tn61131::st {
namespace {

std::string Hex(const CodeBuffer& code) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const unsigned char byte : code.GetBytes()) {
        if (!text.empty()) text += ' ';
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

TEST(CodeBuffer, InstructionsArePackedLittleEndian) {
    CodeBuffer code;
    code.Push();
    code.LoadInteger(ElementaryType::Int, -2);
    code.LoadAddr(LocationKind::Global, 0x01020304);
    code.LoadTagAddr(0x0506, 7);
    code.PointerStore(ElementaryType::Int, 2);
    code.Return();
    EXPECT_EQ(Hex(code), "0A 01 05 FE FF 02 01 04 03 02 01 03 06 05 07 00 00 00 05 05 02 00 0C");
}

TEST(CodeBuffer, ImmediateHoldsTextWithItsLength) {
    CodeBuffer code;
    code.LoadImmediate(CValue("ab", ElementaryType::String));
    EXPECT_EQ(Hex(code), "01 14 02 00 61 62");
}

TEST(CodeBuffer, DepthFollowsTheStack) {
    CodeBuffer code;
    EXPECT_EQ(code.GetDepth(), 1U);
    code.Push();
    code.Push();
    EXPECT_EQ(code.GetTopIndex(), 2U);
    code.Binary(BinaryOperator::Add);
    EXPECT_EQ(code.GetDepth(), 2U);
    code.Push();
    code.Push();
    code.CallBuiltIn(false, 5, 4, 3);
    EXPECT_EQ(code.GetDepth(), 2U);
    code.Pop();
    EXPECT_EQ(code.GetDepth(), 1U);
    EXPECT_EQ(code.GetMaxDepth(), 4U);
}

TEST(CodeBuffer, JumpsCountFromBehindTheirOperand) {
    CodeBuffer code;
    const Label start = code.NewLabel();
    const Label end = code.NewLabel();
    code.Bind(start);
    code.JumpZero(end);
    code.Jump(start);
    code.Bind(end);
    code.Return();
    code.ResolveJumps(false);
    EXPECT_EQ(Hex(code), "11 05 00 00 00 10 F6 FF FF FF 0C");
}

TEST(CodeBuffer, WhatNoPathReachesIsLeftOut) {
    CodeBuffer code;
    const Label unused = code.NewLabel();
    const Label used = code.NewLabel();
    code.JumpNotZero(used);
    code.Return();
    code.LoadStack(1);
    code.Bind(unused);
    code.Push();
    EXPECT_FALSE(code.IsReachable());
    code.Bind(used);
    EXPECT_TRUE(code.IsReachable());
    EXPECT_EQ(code.GetDepth(), 1U);
    code.Pop();
    code.ResolveJumps(false);
    EXPECT_EQ(Hex(code), "12 01 00 00 00 0C 0B");
}

struct ThreadCase {
    const char* why;
    Opcode first;
    Opcode second;
    const char* expected;  ///< distance of the first jump's operand, lowest byte
};

// first A; RET; A: second B; LD STACK; B: LD STACK; RET
TEST(CodeBuffer, JumpsToJumpsLeadToTheirEnd) {
    const ThreadCase cases[] = {
        {"a jump follows every jump", Opcode::Jump, Opcode::Jump, "10 08 00 00 00"},
        {"a test that holds again", Opcode::JumpZero, Opcode::JumpZero, "11 08 00 00 00"},
        {"a test that cannot hold any more", Opcode::JumpZero, Opcode::JumpNotZero, "11 06 00 00 00"},
        {"a test follows a jump", Opcode::JumpNotZero, Opcode::Jump, "12 08 00 00 00"},
        {"a jump does not know the value", Opcode::Jump, Opcode::JumpZero, "10 01 00 00 00"},
    };
    for (const ThreadCase& row : cases) {
        SCOPED_TRACE(row.why);
        CodeBuffer code;
        const auto emit = [&](Opcode opcode, Label label) {
            if (opcode == Opcode::Jump) code.Jump(label);
            if (opcode == Opcode::JumpZero) code.JumpZero(label);
            if (opcode == Opcode::JumpNotZero) code.JumpNotZero(label);
        };
        const Label a = code.NewLabel();
        const Label b = code.NewLabel();
        const Label alive = code.NewLabel();
        code.BindLoop(alive);
        emit(row.first, a);
        code.BindLoop(code.NewLabel());
        code.Return();
        code.Bind(a);
        emit(row.second, b);
        code.BindLoop(code.NewLabel());
        code.LoadStack(0);
        code.SetDepth(1);
        code.Bind(b);
        code.LoadStack(0);
        code.Return();
        code.ResolveJumps(true);
        EXPECT_EQ(Hex(code).substr(0, 14), std::string(row.expected).substr(0, 14));
    }
}

TEST(CodeBuffer, JumpsToReturnsReturnAndJumpsToTheNextInstructionGo) {
    CodeBuffer code;
    const Label next = code.NewLabel();
    const Label end = code.NewLabel();
    const Label start = code.NewLabel();
    code.Bind(start);
    code.JumpZero(next);
    code.Bind(next);
    code.SetPosition(7);
    code.Push();
    code.Call(1, static_cast<RoutineId>(3));
    code.Pop();
    code.JumpNotZero(start);
    code.LoadStack(1);
    code.Jump(end);
    code.BindLoop(code.NewLabel());
    code.SetPosition(9);
    code.LoadStack(2);
    code.JumpZero(start);
    code.Bind(end);
    code.Return();
    code.ResolveJumps(true);
    EXPECT_EQ(Hex(code),
              "0A 15 01 00 00 00 00 0B "  // PUSH, CALL, POP
              "12 F3 FF FF FF "           // JMPNZ start
              "06 01 0C "                 // LD STACK[1], RET
              "06 02 11 E9 FF FF FF 0C"   // LD STACK[2], JMPZ start, RET
    );
    ASSERT_EQ(code.GetCallSites().size(), 1U);
    EXPECT_EQ(code.GetCallSites()[0].at, 3U);
    ASSERT_EQ(code.GetPositions().size(), 2U);
    EXPECT_EQ(code.GetPositions()[0].codeOffset, 0U);
    EXPECT_EQ(code.GetPositions()[1].codeOffset, 16U);
}

TEST(CodeBuffer, WhatTheTopHoldsIsNotLoadedAgain) {
    CodeBuffer code;
    code.SetForwarding(true);
    code.StoreStack(1);
    code.LoadStack(1);
    code.LoadStack(2);
    code.LoadStack(2);
    code.Push();
    code.LoadStack(2);
    code.Bind(code.NewLabel());
    code.LoadStack(2);
    EXPECT_EQ(Hex(code), "07 01 06 02 0A 06 02 06 02");
    const CodeBuffer::StoredValue value{LocationKind::Global, 4, ElementaryType::Int};
    code.NoteTop(value);
    EXPECT_TRUE(code.TopHolds(value));
    EXPECT_FALSE(code.TopHolds({LocationKind::Global, 4, ElementaryType::UInt}));
    EXPECT_FALSE(code.TopHolds({LocationKind::Local, 4, ElementaryType::Int}));
    code.Pop();
    EXPECT_FALSE(code.TopHolds(value));
}

TEST(CodeBuffer, JumpsInACircleEnd) {
    CodeBuffer code;
    const Label start = code.NewLabel();
    code.Bind(start);
    code.Jump(start);
    code.ResolveJumps(true);
    EXPECT_EQ(Hex(code), "10 FB FF FF FF");
}

TEST(CodeBuffer, CallsAreLeftToTheLinker) {
    CodeBuffer code;
    code.Push();
    code.Call(2, static_cast<RoutineId>(5));
    EXPECT_EQ(Hex(code), "0A 15 02 00 00 00 00");
    ASSERT_EQ(code.GetCallSites().size(), 1U);
    EXPECT_EQ(code.GetCallSites()[0].at, 3U);
    EXPECT_EQ(code.GetCallSites()[0].routine, static_cast<RoutineId>(5));
}

TEST(CodeBuffer, PositionsAreKeptWhereTheyChange) {
    CodeBuffer code;
    code.SetPosition(10);
    code.SetPosition(20);
    code.Push();
    code.SetPosition(20);
    code.SetPosition(0);
    code.Pop();
    code.SetPosition(30);
    code.Return();
    ASSERT_EQ(code.GetPositions().size(), 2U);
    EXPECT_EQ(code.GetPositions()[0].codeOffset, 0U);
    EXPECT_EQ(code.GetPositions()[0].source, 20U);
    EXPECT_EQ(code.GetPositions()[1].codeOffset, 2U);
    EXPECT_EQ(code.GetPositions()[1].source, 30U);
}

}  // namespace
}  // namespace tn61131::st
