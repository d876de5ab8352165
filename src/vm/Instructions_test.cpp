// What each instruction does to stack and memory, and how it fails.
#include "vm/TestImage.h"

namespace {

using namespace vmtest;

constexpr auto kCompleted = RunResult::Completed;
constexpr auto kFailed = RunResult::Failed;
constexpr auto kInvalid = RunResult::Invalid;

TEST(ExecLoadImmediate, ReadsEveryType) {
    ExpectRuns({
        {"BOOL", Ld(kBool, {1}) + Ret(), kCompleted, "BOOL#TRUE", {}},
        {"BOOL of any byte but 0", Join({Ld(kBool, {0x80}), Convert(kByte), Ret()}), kCompleted, "BYTE#16#1", {}},
        {"SINT", Ld(kSInt, {0xFF}) + Ret(), kCompleted, "SINT#-1", {}},
        {"DINT", LdDint(-5) + Ret(), kCompleted, "DINT#-5", {}},
        {"LINT", Ld(kLInt, I64(-5)) + Ret(), kCompleted, "LINT#-5", {}},
        {"REAL", Ld(kReal, LittleEndian(1.5F)) + Ret(), kCompleted, "REAL#1.5", {}},
        {"LREAL", Ld(kLReal, LittleEndian(1.5)) + Ret(), kCompleted, "LREAL#1.5", {}},
        {"TIME", Ld(kTime, I64(1500)) + Ret(), kCompleted, "T#1s500ms", {}},
        {"STRING", LdString("abc") + Ret(), kCompleted, "STRING#'abc'", {}},
        {"the empty STRING", LdString("") + Ret(), kCompleted, "STRING#''", {}},
        {"WSTRING", Ld(kWString, {1, 0, 'a', 0}) + Ret(), kCompleted, "WSTRING#\"a\"", {}},
        {"TYPE", Ld(kTypeType, {kDInt, 0, 0}) + Ret(), kCompleted, "TYPE#DINT", {}},
        {"POINTER", Ld(kPointer, {1, 0, 0, 0, 7, 0, 0, 0}) + Ret(), kCompleted, "POINTER#Global: 7", {}},
        {"COMPOSITE has no data", Ld(kComposite, {}) + Ret(), kFailed, "Undefined", {211}, "Invalid immediate value."},
        {"COMPOSITE_STRING has no data", Ld(24, {}) + Ret(), kFailed, "Undefined", {211}},
        {"no type", Ld(28, {}) + Ret(), kFailed, "Undefined", {211}},
        {"no type at all", Ld(255, {}) + Ret(), kFailed, "Undefined", {211}},
    });
}

TEST(ExecLoadAddr, MakesPointers) {
    ExpectRuns({
        {"global", LdAddr(kGlobal, 7) + Ret(), kCompleted, "POINTER#Global: 7", {}},
        {"constants", LdAddr(kConstant, 7) + Ret(), kCompleted, "POINTER#GlobalConstant: 7", {}},
        {"local of frame 0", LdAddr(kLocal, 7) + Ret(), kCompleted, "POINTER#Local: Frame 0 Offset 7", {}},
        {"temporary of frame 0", LdAddr(kTemp, 7) + Ret(), kCompleted, "POINTER#Temp: Frame 0 Offset 7", {}},
        // 0 CALL 7, ArgCount 1; 6 RET; 7 LD ADDR; 13 RET
        {"local of frame 1",
         Join({Call(1, 7), Ret(), LdAddr(kLocal, 7), Ret()}),
         kCompleted,
         "POINTER#Local: Frame 1 Offset 7",
         {}},
        {"global of frame 1 has no frame",
         Join({Call(1, 7), Ret(), LdAddr(kGlobal, 7), Ret()}),
         kCompleted,
         "POINTER#Global: 7",
         {}},
        {"the kind is not checked", LdAddr(200, 7) + Ret(), kCompleted, "POINTER#Invalid location 200", {}},
    });
}

TEST(ExecLoadTagAddr, TakesOffsetThenTag) {
    ExpectRuns({{"tag", LdTagAddr(0x0102, 0x03040506) + Ret(), kCompleted, "POINTER#Tag: Id 50595078 Offset 258", {}}});
}

TEST(ExecPointerLoad, ReadsThroughThePointer) {
    const Bytes store = Join({LdDint(0x04030201), Push(), LdAddr(kGlobal, 12), PtrSt(kDInt, 4)});
    const auto load = [&](unsigned char kind, unsigned int offset, unsigned char type, unsigned int size) {
        return Join({store, LdAddr(kind, offset), PtrLd(type, size), Ret()});
    };
    ExpectRuns({
        {"a value", load(kGlobal, 12, kDInt, 4), kCompleted, "DINT#67305985", {}},
        {"part of it", load(kGlobal, 13, kInt, 2), kCompleted, "INT#770", {}},
        {"one byte too far",
         load(kGlobal, 13, kDInt, 4),
         kFailed,
         "POINTER#Global: 13",
         {212},
         "Access violation, address Global: 13."},
        {"the type's size is read whatever size is checked",
         load(kGlobal, 12, kDInt, 0),
         kCompleted,
         "DINT#67305985",
         {}},
        {"a read that passes the end stays inside what the block owns",
         load(kGlobal, 16, kByte, 0),
         kCompleted,
         "BYTE#16#EF",
         {}},
        {"null", load(kNull, 0, kDInt, 4), kFailed, "POINTER#Null", {221}, "Null pointer de-reference."},
        {"a tag that is not there",
         Join({LdTagAddr(0, 8), PtrLd(kBool, 1)}),
         kFailed,
         "POINTER#Tag: Id 8 Offset 0",
         {233}},
        {"a block pointer", load(kMemBlock, 0, kDInt, 4), kFailed, "POINTER#MemBlockPtr: Type 0 Id 0", {234}},
        {"temporary data that there is not",
         load(kTemp, 0, kDInt, 4),
         kFailed,
         "POINTER#Temp: Frame 0 Offset 0",
         {212},
         "Access violation, address Temp: Frame 0 Offset 0."},
        {"local data that there is not", load(kLocal, 0, kDInt, 0), kFailed, "POINTER#Local: Frame 0 Offset 0", {212}},
        {"nothing of empty temporary data", load(kTemp, 0, kDInt, 0), kFailed, "Undefined", {211}},
        {"no pointer",
         Join({LdDint(1), PtrLd(kDInt, 4)}),
         kFailed,
         "DINT#1",
         {217},
         "Pointer operation attempted on non pointer data type '8'."},
        {"undefined",
         PtrLd(kDInt, 4),
         kFailed,
         "Undefined",
         {217},
         "Pointer operation attempted on non pointer data type '0'."},
        {"a type that has no value",
         load(kGlobal, 0, kComposite, 4),
         kFailed,
         "Undefined",
         {211},
         "Invalid immediate value."},
        {"a string without room for its count", load(kGlobal, 15, kString, 1), kFailed, "Undefined", {211}},
        {"a string cut at the end of the block", load(kGlobal, 12, kString, 2), kCompleted, "STRING#'$03$04'", {}},
    });
}

TEST(ExecPointerLoad, ReadsConstantsAndTags) {
    Machine machine(Join({LdAddr(kConstant, 1), PtrLd(kByte, 1), Ret()}), 16, {1, 2, 3});
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Result(), "BYTE#16#2");
    Machine tags(Join({LdTagAddr(1, 7), PtrLd(kByte, 1), Ret()}));
    tags.tags.data.CopyData(2, Bytes({5, 6}).data());
    EXPECT_EQ(tags.Run(), kCompleted);
    EXPECT_EQ(tags.Result(), "BYTE#16#6");
}

TEST(ExecPointerStore, WritesAndLeavesTheValue) {
    const auto store = [](const Bytes& value, const Bytes& pointer, unsigned char type, unsigned int size) {
        return Join({value, Push(), pointer, PtrSt(type, size), Ret()});
    };
    const Bytes global = LdAddr(kGlobal, 1);
    ExpectRuns({
        {"a value", store(LdInt(0x0201), global, kInt, 2), kCompleted, "INT#513", {}, "", {0, 1, 2, 0}},
        {"converted to the type, on the stack as well",
         store(LdInt(-1), global, kDInt, 4),
         kCompleted,
         "DINT#-1",
         {},
         "",
         {0, 0xFF, 0xFF, 0xFF, 0xFF, 0}},
        {"cut by the conversion", store(LdInt(0x0201), global, kSInt, 1), kCompleted, "SINT#1", {}, "", {0, 1, 0}},
        {"all bytes whatever the size",
         store(LdInt(0x0201), global, kInt, 1),
         kCompleted,
         "INT#513",
         {},
         "",
         {0, 1, 2, 0}},
        {"an unset pointer stores nothing",
         Join({LdInt(5), Push(), PtrSt(kInt, 2), Ret()}),
         kCompleted,
         "INT#5",
         {},
         "",
         {0, 0, 0}},
        {"one entry only",
         LdAddr(kGlobal, 0) + PtrSt(kInt, 2),
         kFailed,
         "POINTER#Global: 0",
         {209},
         "Data stack underflow."},
        {"one undefined entry only", PtrSt(kInt, 2), kFailed, "Undefined", {209}},
        {"a pointer that does not resolve stays",
         store(LdInt(5), LdAddr(kGlobal, 15), kInt, 2),
         kFailed,
         "POINTER#Global: 15",
         {212}},
        {"no pointer", store(LdInt(5), LdInt(6), kInt, 2), kFailed, "INT#6", {217}},
        {"a conversion that there is not, pointer gone", store(LdInt(5), global, kPointer, 8), kFailed, "INT#5", {215}},
        {"a string",
         store(LdString("ab"), global, kString, 8),
         kCompleted,
         "STRING#'ab'",
         {},
         "",
         {0, 2, 0, 'a', 'b', 0}},
        {"a string cut to the size",
         store(LdString("abc"), global, kString, 4),
         kCompleted,
         "STRING#'abc'",
         {},
         "",
         {0, 2, 0, 'a', 'b', 0}},
        {"a string into 1 byte fails without a message",
         store(LdString("a"), global, kString, 1),
         kFailed,
         "STRING#'a'",
         {},
         "",
         {0, 0, 0}},
        {"a pointer into 4 bytes fails without a message",
         store(LdAddr(kGlobal, 3), global, kPointer, 4),
         kFailed,
         "POINTER#Global: 3",
         {},
         "",
         {0, 0, 0}},
        {"a pointer",
         store(LdAddr(kGlobal, 3), global, kPointer, 8),
         kCompleted,
         "POINTER#Global: 3",
         {},
         "",
         {0, 1, 0, 0, 0, 3, 0, 0, 0, 0}},
    });
}

TEST(ExecPointerStore, CopiesComposites) {
    const Bytes fill = Join({LdDint(0x04030201), Push(), LdAddr(kGlobal, 0), PtrSt(kDInt, 4)});
    const auto copy = [&](const Bytes& source, unsigned int target, unsigned int size) {
        return Join({fill, source, Push(), LdAddr(kGlobal, target), PtrSt(kComposite, size), Ret()});
    };
    ExpectRuns({
        {"from memory to memory",
         copy(LdAddr(kGlobal, 1), 4, 3),
         kCompleted,
         "POINTER#Global: 1",
         {},
         "",
         {1, 2, 3, 4, 2, 3, 4, 0}},
        {"overlapping", copy(LdAddr(kGlobal, 0), 1, 3), kCompleted, "POINTER#Global: 0", {}, "", {1, 1, 2, 3}},
        {"nothing", copy(LdAddr(kGlobal, 16), 16, 0), kCompleted, "POINTER#Global: 16", {}, "", {1, 2, 3, 4}},
        {"source ends before",
         copy(LdAddr(kGlobal, 14), 4, 3),
         kFailed,
         "POINTER#Global: 14",
         {212},
         "",
         {1, 2, 3, 4, 0}},
        {"target ends before", copy(LdAddr(kGlobal, 0), 14, 3), kFailed, "POINTER#Global: 14", {212}},
        {"source is no pointer", copy(LdDint(1), 4, 3), kFailed, "DINT#1", {217}},
        {"source is undefined", Join({Push(), LdAddr(kGlobal, 0), PtrSt(kComposite, 3)}), kFailed, "Undefined", {217}},
        {"an unset pointer copies nothing",
         Join({LdAddr(kGlobal, 0), Push(), PtrSt(kComposite, 3), Ret()}),
         kCompleted,
         "POINTER#Global: 0",
         {}},
    });
}

/// Gives out plain memory of the host instead of a block.
class PlainTag final : public CDirectlyLocatedVariables {
 public:
    bool GetTagType(unsigned int, DirectlyLocatedType&) const override { return false; }
    bool ResolveTagAddress(const PointerValue* pointer, unsigned int size, CMemoryRef& out) const override {
        out = CMemoryRef(&memory, pointer->frame);
        return out.IsDataWithinBlock(0, size);
    }
    PlainMemory memory{Bytes(4)};
};

TEST(ExecPointerStore, GoesThroughAProviderThatIsNoBlock) {
    const Bytes copyFromTag = Join({LdTagAddr(0, 1), Push(), LdAddr(kGlobal, 0), PtrSt(kComposite, 2), Ret()});
    Machine machine(Join({LdInt(0x0201), Push(), LdTagAddr(1, 1), PtrSt(kInt, 2), copyFromTag}));
    PlainTag tag;
    CVirtualMachineExec exec(machine.access, "", &machine.image, &machine.globalData, &tag);
    exec.StartNewProgram(0, 100, 0, nullptr);
    EXPECT_EQ(exec.ExecuteUntilCompleteOrSuspended(machine.log), kFailed);
    EXPECT_EQ(tag.memory.bytes, (Bytes{0, 1, 2, 0}));
    EXPECT_EQ(tag.memory.lastClient, "client");
    EXPECT_EQ(machine.Ids(), std::vector<unsigned int>{248});
    EXPECT_EQ(machine.MessageText(), "Location is not writable.");
}

TEST(ExecLoadStack, CopiesAnEntryOfTheFrame) {
    ExpectRuns({
        {"the bottom", Join({LdDint(5), Push(), LdStack(0), Ret()}), kCompleted, "DINT#5", {}},
        {"the top itself", Join({LdString("abc"), LdStack(0), Ret()}), kCompleted, "STRING#'abc'", {}},
        {"a string is copied",
         Join({LdString("abc"), Push(), LdStack(0), Pop(), Ret()}),
         kCompleted,
         "STRING#'abc'",
         {}},
        {"one beyond the top",
         Join({Push(), LdStack(2)}),
         kFailed,
         "Undefined",
         {213},
         "Stack offset 2 is beyond the end of the current stack."},
        // 0 PUSH; 1 LD 6; 7 CALL 14, ArgCount 1; 13 RET; 14 PUSH; 15 LD STACK[0]; 17 ...
        {"relative to the frame",
         Join({Push(), LdDint(6), Call(1, 14), Ret(), Push(), LdStack(0), StStack(0), Ret()}),
         kCompleted,
         "DINT#6",
         {}},
        {"the message counts from the bottom",
         Join({Push(), LdDint(6), Call(1, 14), Ret(), LdStack(5)}),
         kFailed,
         "DINT#6",
         {213},
         "Stack offset 6 is beyond the end of the current stack."},
    });
}

TEST(ExecStoreStack, CopiesTheTopAndKeepsIt) {
    ExpectRuns({
        {"the bottom", Join({Push(), LdString("a"), StStack(0), Pop(), Ret()}), kCompleted, "STRING#'a'", {}},
        {"the top stays", Join({Push(), LdString("a"), StStack(0), Ret()}), kCompleted, "STRING#'a'", {}},
        {"the top itself", Join({LdString("a"), StStack(0), Ret()}), kCompleted, "STRING#'a'", {}},
        {"one beyond the top", Join({LdDint(1), StStack(1)}), kFailed, "DINT#1", {213}},
    });
}

TEST(ExecLoadVMstatus, ReadsTheMachine) {
    ExpectRuns({
        {"success before any call", LdStatus(1) + Ret(), kCompleted, "BOOL#TRUE", {}},
        {"success", Join({CallFunction(10, 0, 1), LdStatus(1), Ret()}), kCompleted, "BOOL#TRUE", {}},
        {"failure", Join({CallFunctionEno(10, 2, 1), LdStatus(1), Ret()}), kCompleted, "BOOL#FALSE", {}},
        {"stack size", Join({Push(), Push(), LdStatus(2), Ret()}), kCompleted, "UDINT#3", {}},
        {"code stack size", LdStatus(3) + Ret(), kCompleted, "UDINT#0", {}},
        {"code stack size in a call", Join({Call(1, 7), Ret(), LdStatus(3), Ret()}), kCompleted, "UDINT#1", {}},
        {"status 0", LdStatus(0), kInvalid, "Undefined", {256}, "Invalid OpCode with no descriptive error."},
        {"status 4", LdStatus(4), kInvalid, "Undefined", {256}},
    });
}

TEST(ExecLoadVMstatus, LastResultPersistsBetweenScans) {
    Machine machine(Join({CallFunctionEno(10, 2, 1), Ret(), LdStatus(1), Ret()}));
    machine.Run();
    EXPECT_EQ(machine.Run(5), kCompleted);
    EXPECT_EQ(machine.Result(), "BOOL#FALSE");
}

TEST(ExecPointerLoadArray, MakesComposites) {
    const Bytes store = Join({LdDint(0x04030201), Push(), LdAddr(kGlobal, 12), PtrSt(kDInt, 4)});
    const auto load = [&](unsigned int offset, unsigned char type, unsigned int count) {
        return Join({store, LdAddr(kGlobal, offset), PtrLdArray(type, count), Ret()});
    };
    ExpectRuns({
        {"elements", load(12, kInt, 2), kCompleted, "COMPOSITE#INT[ 513, 1027 ]", {}},
        {"those that are there", load(13, kInt, 0xFFFFFFFF), kCompleted, "COMPOSITE#INT[ 770 ]", {}},
        {"none at the end", load(16, kInt, 2), kCompleted, "COMPOSITE#INT[]", {}},
        {"beyond the end", load(17, kInt, 2), kFailed, "POINTER#Global: 17", {212}},
        {"no pointer", Join({LdDint(1), PtrLdArray(kInt, 2)}), kFailed, "DINT#1", {217}},
        {"empty temporary data",
         Join({LdAddr(kTemp, 0), PtrLdArray(kInt, 2), Ret()}),
         kCompleted,
         "COMPOSITE#INT[]",
         {}},
    });
}

TEST(ExecPop, LastEntryStaysAndUnderflowIsLogged) {
    ExpectRuns({
        {"undo a push", Join({LdDint(1), Push(), LdDint(2), Pop(), Ret()}), kCompleted, "DINT#1", {}},
        {"the bottom", LdDint(1) + Pop(), kInvalid, "DINT#1", {209}, "Data stack underflow."},
        {"a pushed entry is undefined", Join({LdDint(1), Push(), Ret()}), kCompleted, "Undefined", {}},
    });
}

TEST(ExecConvert, ConvertsTheTop) {
    ExpectRuns({
        {"CONVERT", LdDint(300) + Convert(kSInt) + Ret(), kCompleted, "SINT#44", {}},
        {"CONVERT rounds", Join({Ld(kReal, LittleEndian(1.75F)), Convert(kInt), Ret()}), kCompleted, "INT#2", {}},
        {"TRUNCATE does not", Join({Ld(kReal, LittleEndian(1.75F)), Truncate(kInt), Ret()}), kCompleted, "INT#1", {}},
        {"no conversion", LdAddr(kGlobal, 0) + Convert(kInt), kFailed, "POINTER#Global: 0", {214}},
        {"undefined", Truncate(kInt), kFailed, "Undefined", {214}},
    });
}

TEST(ExecUnary, AppliesTheOperator) {
    ExpectRuns({
        {"NEGATE", LdDint(5) + Unary(1) + Ret(), kCompleted, "DINT#-5", {}},
        {"NOT", LdBool(true) + Unary(2) + Ret(), kCompleted, "BOOL#FALSE", {}},
        {"no operator", LdDint(5) + Unary(3), kFailed, "DINT#5", {240}},
    });
}

TEST(ExecBinary, LeavesTheResultInTheLeftEntry) {
    const auto apply = [](int left, int right, unsigned char operation) {
        return Join({LdDint(left), Push(), LdDint(right), Binary(operation), Ret()});
    };
    ExpectRuns({
        {"ADD", apply(7, 3, 1), kCompleted, "DINT#10", {}},
        {"SUB", apply(7, 3, 2), kCompleted, "DINT#4", {}},
        {"MUL", apply(7, 3, 3), kCompleted, "DINT#21", {}},
        {"DIV", apply(7, 3, 4), kCompleted, "DINT#2", {}},
        {"MOD", apply(7, 3, 5), kCompleted, "DINT#1", {}},
        {"EQ", apply(7, 3, 7), kCompleted, "BOOL#FALSE", {}},
        {"NE", apply(7, 3, 8), kCompleted, "BOOL#TRUE", {}},
        {"GT", apply(7, 3, 9), kCompleted, "BOOL#TRUE", {}},
        {"GE", apply(7, 7, 10), kCompleted, "BOOL#TRUE", {}},
        {"LT", apply(7, 3, 11), kCompleted, "BOOL#FALSE", {}},
        {"LE", apply(7, 7, 12), kCompleted, "BOOL#TRUE", {}},
        {"a wrap is silent", apply(2147483647, 1, 1), kCompleted, "DINT#-2147483648", {}},
        {"one entry only", LdDint(1) + Binary(1), kFailed, "DINT#1", {209}},
        {"on failure nothing is popped", apply(7, 0, 4), kFailed, "DINT#0", {226}},
        {"no operator", apply(7, 3, 16), kFailed, "DINT#3", {241}},
    });
}

TEST(ExecJMP, TargetsCountFromBehindTheOperand) {
    ExpectRuns({
        {"0 is the next instruction", Jmp(0) + Ret(), kCompleted, "Undefined", {}},
        {"forward", Join({Jmp(1), Ret(), LdDint(1), Ret()}), kCompleted, "DINT#1", {}},
        {"back", Join({Jmp(7), LdDint(2), Ret(), Jmp(-12)}), kCompleted, "DINT#2", {}},
        {"the start", Join({Jmpu(7), LdDint(2), Ret(), LdDint(1), Jmp(-23)}), kCompleted, "DINT#2", {}},
        {"before the start", Jmp(-6), kFailed, "Undefined", {239}, "JMP offset '-6', outside valid range."},
        {"the last byte", Join({Jmp(1), Pop(), Ret()}), kCompleted, "Undefined", {}},
        {"the end", Jmp(1) + Ret(), kFailed, "Undefined", {239}, "JMP offset '1', outside valid range."},
        {"far forward", Jmp(2147483647), kFailed, "Undefined", {239}},
        {"far back",
         Jmp(std::numeric_limits<int>::min()),
         kFailed,
         "Undefined",
         {239},
         "JMP offset '-2147483648', outside valid range."},
    });
}

TEST(ExecJMP, ConditionsLookAtTheTopAndLeaveIt) {
    // JMPx to the second RET behind another literal.
    const auto jump = [](const Bytes& value, const Bytes& instruction) {
        return Join({value, instruction, LdString("stayed"), Ret(), Ret()});
    };
    const int distance = 11;  // LD STRING#'stayed' and RET
    ExpectRuns({
        {"JMPZ of 0", jump(LdDint(0), Jmpz(distance)), kCompleted, "DINT#0", {}},
        {"JMPZ of 1", jump(LdDint(1), Jmpz(distance)), kCompleted, "STRING#'stayed'", {}},
        {"JMPZ of FALSE", jump(LdBool(false), Jmpz(distance)), kCompleted, "BOOL#FALSE", {}},
        {"JMPZ of undefined", jump({}, Jmpz(distance)), kCompleted, "Undefined", {}},
        {"JMPZ of the empty string", jump(LdString(""), Jmpz(distance)), kCompleted, "STRING#''", {}},
        {"JMPNZ of 0", jump(LdDint(0), Jmpnz(distance)), kCompleted, "STRING#'stayed'", {}},
        {"JMPNZ of TRUE", jump(LdBool(true), Jmpnz(distance)), kCompleted, "BOOL#TRUE", {}},
        {"JMPU of undefined", jump({}, Jmpu(distance)), kCompleted, "Undefined", {}},
        {"JMPU of 0", jump(LdDint(0), Jmpu(distance)), kCompleted, "STRING#'stayed'", {}},
        {"the range counts when it jumps", jump(LdDint(0), Jmpz(1000)), kFailed, "DINT#0", {239}},
        {"and only then", jump(LdDint(1), Jmpz(1000)), kCompleted, "STRING#'stayed'", {}},
    });
}

TEST(ExecCallBuiltInFunc, HandsOverEntriesAndLeavesTheResult) {
    ExpectRuns({
        {"three entries, two arguments",
         Join({Push(), Push(), Push(), CallFunction(10, 0, 3), LdStack(1), Ret()}),
         kCompleted,
         "UDINT#2",
         {}},
        {"the rest is gone",
         Join({Push(), Push(), Push(), CallFunction(10, 0, 3), LdStatus(2), Ret()}),
         kCompleted,
         "UDINT#2",
         {}},
        {"all entries", Join({Push(), CallFunction(10, 0, 2), Ret()}), kCompleted, "UDINT#1", {}},
        {"a real function", Join({Push(), LdDint(-7), CallFunction(1, 1, 2), Ret()}), kCompleted, "DINT#7", {}},
        {"no entries",
         CallFunction(10, 0, 0),
         kFailed,
         "Undefined",
         {222},
         "Zero arguments count in function call is not valid."},
        {"one too many",
         Push() + CallFunction(10, 0, 3),
         kFailed,
         "Undefined",
         {223},
         "Function call instruction requested 3 arguments, but there are only 2 available on the stack."},
        {"the failure of a function", CallFunction(10, 200, 1), kFailed, "UDINT#0", {226}},
        {"a failure shrinks the stack too",
         Join({LdDint(1), Push(), Push(), CallFunction(10, 200, 2)}),
         kFailed,
         "UDINT#1",
         {226}},
        {"ENO: the program goes on",
         Join({Push(), CallFunctionEno(10, 200, 2), Push(), LdStatus(1), Ret()}),
         kCompleted,
         "BOOL#FALSE",
         {226}},
        {"ENO: success", Join({Push(), CallFunctionEno(10, 0, 2), LdStatus(1), Ret()}), kCompleted, "BOOL#TRUE", {}},
        {"ENO does not hide an invalid call", CallFunctionEno(10, 3, 1), kInvalid, "UDINT#0", {256}},
        {"ENO does not hide a completion", CallFunctionEno(10, 1, 1), kCompleted, "UDINT#0", {}},
        {"ENO: no entries", CallFunctionEno(10, 0, 0), kFailed, "Undefined", {222}},
        {"ENO: one too many", CallFunctionEno(10, 0, 2), kFailed, "Undefined", {223}},
        {"no group 0", CallFunction(0, 1, 1), kFailed, "Undefined", {219}},
        {"an empty group", CallFunction(16, 1, 1), kFailed, "Undefined", {244}},
    });
}

TEST(ExecCallBuiltInFunc, ArgumentsAreNullWhenThereAreNone) {
    Machine machine(Join({CallFunction(10, 0, 1), Ret()}));
    CValue dummy;
    machine.functions.lastArguments = &dummy;
    machine.Run();
    EXPECT_EQ(machine.functions.lastArguments, nullptr);
    Machine one(Join({Push(), CallFunction(10, 0, 2), Ret()}));
    one.Run();
    EXPECT_NE(one.functions.lastArguments, nullptr);
}

/// EN, pointer to ENO (global byte 8), `inputs` inputs, instance pointer (global `instance`), the call.
Bytes CallBlockWith(const Bytes& en, unsigned int inputs, unsigned char id, unsigned int instance = 0,
                    unsigned int size = 4) {
    Bytes code = Join({en, Push(), LdAddr(kGlobal, 8)});
    for (unsigned int i = 0; i < inputs; ++i)
        code = code + Push() + LdBool(true);
    return Join(
        {code, Push(), LdAddr(kGlobal, instance), CallBlock(2, id, static_cast<unsigned char>(3 + inputs), size)});
}

TEST(ExecCallBuiltInFunctionBlock, WritesEnAndRunsTheBlock) {
    const Bytes status = LdStatus(1) + Ret();
    ExpectRuns({
        {"EN true",
         CallBlockWith(LdBool(true), 2, 0) + Ret(),
         kCompleted,
         "BOOL#TRUE",
         {},
         "",
         {1, 1, 1, 2, 0, 0, 0, 0, 1, 0}},
        {"no inputs", CallBlockWith(LdBool(true), 0, 0) + Ret(), kCompleted, "BOOL#TRUE", {}, "", {1, 1, 1, 0, 0}},
        {"EN is converted", CallBlockWith(LdDint(5), 0, 0) + Ret(), kCompleted, "BOOL#TRUE", {}, "", {1, 1, 1, 0, 0}},
        {"the stack shrinks to EN",
         Join({CallBlockWith(LdBool(true), 2, 0), LdStatus(2), Ret()}),
         kCompleted,
         "UDINT#1",
         {}},
        {"a failing block lets the program go on",
         CallBlockWith(LdBool(true), 0, 2) + status,
         kCompleted,
         "BOOL#FALSE",
         {}},
        {"so does one that suspends", CallBlockWith(LdBool(true), 0, 6) + Ret(), kCompleted, "BOOL#TRUE", {}},
        {"an invalid call ends the run",
         CallBlockWith(LdBool(true), 0, 3) + Ret(),
         kInvalid,
         "POINTER#Global: 0",
         {256},
         "",
         {1, 1, 1, 0}},
        {"another data size",
         CallBlockWith(LdBool(true), 0, 0, 0, 5) + Ret(),
         kInvalid,
         "POINTER#Global: 0",
         {246},
         "",
         {1, 1, 0, 0}},
        {"no such group",
         Join({LdBool(true), Push(), Push(), Push(), LdAddr(kGlobal, 0), CallBlock(4, 0, 4, 4)}),
         kInvalid,
         "POINTER#Global: 0",
         {244}},
        {"no entries", CallBlock(2, 0, 0, 4), kInvalid, "Undefined", {222}},
        {"one too many", CallBlock(2, 0, 2, 4), kInvalid, "Undefined", {223}},
        {"instance outside",
         CallBlockWith(LdBool(true), 0, 0, 13) + Ret(),
         kFailed,
         "POINTER#Global: 13",
         {212},
         "",
         {0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"instance is no pointer",
         Join({LdBool(true), Push(), Push(), LdDint(1), CallBlock(2, 0, 3, 4)}),
         kFailed,
         "DINT#1",
         {217}},
        {"EN is no BOOL",
         CallBlockWith(Bytes(), 0, 0) + Ret(),
         kInvalid,
         "POINTER#Global: 0",
         {214},
         "",
         {0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"no ENO variable",
         Join({LdBool(true), Push(), Push(), LdAddr(kGlobal, 0), CallBlock(2, 0, 3, 4), Ret()}),
         kCompleted,
         "BOOL#TRUE",
         {},
         "",
         {1, 1, 1, 0, 0}},
        {"ENO is no pointer",
         Join({LdBool(true), Push(), LdDint(1), Push(), LdAddr(kGlobal, 0), CallBlock(2, 0, 3, 4), Ret()}),
         kInvalid,
         "POINTER#Global: 0",
         {227},
         "Internal logic error: Pointer value expected.",
         {1, 1, 0, 0}},
        {"ENO outside",
         Join({LdBool(true), Push(), LdAddr(kGlobal, 16), Push(), LdAddr(kGlobal, 0), CallBlock(2, 0, 3, 4), Ret()}),
         kInvalid,
         "POINTER#Global: 0",
         {212},
         "",
         {1, 1, 0, 0}},
    });
}

TEST(ExecCallBuiltInFunctionBlock, SkipsTheBlockWithoutEn) {
    Machine machine(Join({LdDint(0x01010101), Push(), LdAddr(kGlobal, 0), PtrSt(kDInt, 4),
                          CallBlockWith(LdBool(false), 1, 0), Push(), LdStatus(2), Ret()}));
    machine.globalData.GetVMData()[8] = 1;
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Result(), "UDINT#2");
    EXPECT_EQ(machine.blocks.calls, 0U);
    EXPECT_EQ(machine.Global(), (Bytes{0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(ExecCallBuiltInFunctionBlock, FewerEntriesThanItNeedsStaySafe) {
    ExpectRuns({
        {"the instance pointer is no EN",
         LdAddr(kGlobal, 0) + CallBlock(2, 0, 1, 4),
         kInvalid,
         "POINTER#Global: 0",
         {214}},
        {"the instance pointer stands for ENO",
         Join({LdBool(true), Push(), LdAddr(kGlobal, 0), CallBlock(2, 0, 2, 4), Ret()}),
         kCompleted,
         "BOOL#TRUE",
         {},
         "",
         {1, 1, 1, 0, 0}},
    });
}

TEST(ExecCallBuiltInFunctionBlock, InstancesOfLessThanTwoBytesStaySafe) {
    ExpectRuns({
        {"empty temporary data",
         Join({LdBool(false), Push(), Push(), LdAddr(kTemp, 0), CallBlock(2, 0, 3, 0), Ret()}),
         kCompleted,
         "BOOL#FALSE",
         {}},
        {"the last byte: the guard shows it",
         Join({LdBool(false), Push(), Push(), LdAddr(kGlobal, 15), CallBlock(2, 0, 3, 1), Ret()}),
         kFailed,
         "BOOL#FALSE",
         {216}},
    });
}

TEST(ExecPointerStoreEdge, RunsTheRecord) {
    const auto edge = [](const Bytes& value, unsigned char kind) {
        return Join({value, Push(), LdAddr(kGlobal, 1), PtrStEdge(kind), Ret()});
    };
    ExpectRuns({
        {"rising", edge(LdBool(true), 1), kCompleted, "BOOL#TRUE", {}, "", {0, 1, 1, 1, 0}},
        {"any edge byte but 0 is rising", edge(LdBool(true), 0x80), kCompleted, "BOOL#TRUE", {}, "", {0, 1, 1, 1, 0}},
        {"falling", edge(LdBool(false), 0), kCompleted, "BOOL#FALSE", {}, "", {0, 1, 0, 1, 0}},
        {"converted", edge(LdDint(5), 1), kCompleted, "BOOL#TRUE", {}, "", {0, 1, 1, 1, 0}},
        {"no conversion", edge({}, 1), kFailed, "Undefined", {214}, "", {0, 0, 0, 0}},
        {"one entry only: invalid here", LdAddr(kGlobal, 1) + PtrStEdge(1), kInvalid, "POINTER#Global: 1", {209}},
        {"an unset pointer stores nothing",
         Join({LdBool(true), Push(), PtrStEdge(1), Ret()}),
         kCompleted,
         "BOOL#TRUE",
         {},
         "",
         {0, 0, 0, 0}},
        {"outside",
         Join({LdBool(true), Push(), LdAddr(kGlobal, 14), PtrStEdge(1)}),
         kFailed,
         "POINTER#Global: 14",
         {212}},
        {"no record to copy",
         Join({LdAddr(kGlobal, 14), Push(), LdAddr(kGlobal, 1), PtrStEdge(1), Ret()}),
         kFailed,
         "POINTER#Global: 14",
         {212}},
    });
}

TEST(ExecPointerStoreEdge, CopiesTheRecordThatAPointerNames) {
    Machine machine(Join({LdAddr(kGlobal, 4), Push(), LdAddr(kGlobal, 0), PtrStEdge(1), Ret()}));
    std::memcpy(machine.globalData.GetVMData() + 4, "\x07\x08\x09", 3);
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Result(), "POINTER#Global: 4");
    EXPECT_EQ(machine.Global()[0], 7);
    EXPECT_EQ(machine.Global()[2], 9);
    EXPECT_EQ(machine.Global()[3], 0);
}

TEST(ExecPointerStoreEdge, FallingEdgeFiresOncePerFall) {
    const Bytes high = Join({LdBool(true), Push(), LdAddr(kGlobal, 0), PtrStEdge(0), Ret()});
    const Bytes low = Join({LdBool(false), Push(), LdAddr(kGlobal, 0), PtrStEdge(0), Ret()});
    Machine machine(high + low);
    const auto scan = [&](bool input) {
        EXPECT_EQ(machine.Run(input ? 0 : static_cast<unsigned int>(high.size())), kCompleted);
        const Bytes global = machine.Global();
        return Bytes(global.begin(), global.begin() + 3);
    };
    EXPECT_EQ(scan(true), (Bytes{0, 1, 0}));
    EXPECT_EQ(scan(false), (Bytes{1, 0, 1}));
    EXPECT_EQ(scan(false), (Bytes{0, 0, 1}));
}

TEST(ExecuteSFC, NeedsAPointerToABlockOfItsSize) {
    ExpectRuns({
        {"no pointer", LdDint(1) + Sfc(1, 18), kFailed, "DINT#1", {217}},
        {"outside", LdAddr(kGlobal, 0) + Sfc(1, 18), kFailed, "POINTER#Global: 0", {212}},
        {"another size fails without a message", LdAddr(kGlobal, 0) + Sfc(1, 16), kFailed, "POINTER#Global: 0", {}},
        {"no such type", LdAddr(kGlobal, 0) + Sfc(3, 0), kFailed, "POINTER#Global: 0", {}},
        {"type 0", LdAddr(kGlobal, 0) + Sfc(0, 0), kFailed, "POINTER#Global: 0", {}},
    });
}

}  // namespace
