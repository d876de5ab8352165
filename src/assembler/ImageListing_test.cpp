#include "assembler/ImageListing.h"

#include <random>

#include <gmock/gmock.h>

#include "assembler/AssemblerTestSupport.h"
#include "platform/TextOutput.h"
#include "value/TypeTable.h"
#include "vm/Disassembler.h"
#include "vm/Opcodes.h"

namespace {

using assemblertest::Assemble;
using assemblertest::Bytes;
using assemblertest::ToHex;
using testing::HasSubstr;
using testing::Not;

std::string List(const ImageContent& image, const CSymbolMap* symbols = nullptr) {
    CTextOutputString output;
    CImageListing(image, symbols).Write(output);
    return output.TakeText();
}

/// Random instructions of every opcode; operands of every value unless a field says otherwise.
class CRandomCode {
 public:
    explicit CRandomCode(unsigned int seed) : random_(seed) {}

    unsigned int Number(unsigned int count) { return static_cast<unsigned int>(random_() % count); }
    void AppendByte(Bytes& code) { code.push_back(static_cast<unsigned char>(random_())); }
    void AppendBytes(Bytes& code, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            AppendByte(code);
    }

    void AppendInstruction(Opcode opcode, Bytes& code) {
        const OpcodeInfo& info = kOpcodeTable[static_cast<std::size_t>(opcode)];
        const std::size_t start = code.size();
        code.push_back(static_cast<unsigned char>(opcode));
        AppendBytes(code, info.FixedLength() - 1);
        switch (opcode) {
            case Opcode::LoadImmediate: AppendLiteral(code); break;
            case Opcode::InitTempData: AppendTempData(code, start); break;
            case Opcode::CallFunction:
            case Opcode::CallFunctionEno:
            case Opcode::CallFunctionBlock: SetKnownCall(code, start); break;
            default: break;
        }
    }

 private:
    /// The type stands already.
    void AppendLiteral(Bytes& code) {
        if (Number(8) != 0) code.back() = static_cast<unsigned char>(Number(29));
        const auto type = static_cast<ElementaryType>(code.back());
        if (type == ElementaryType::String || type == ElementaryType::WString) {
            const unsigned int count = Number(40);
            code.push_back(static_cast<unsigned char>(count));
            code.push_back(0);
            AppendText(code, count * (type == ElementaryType::WString ? 2 : 1));
        } else {
            AppendBytes(code, GetTypeInfo(type).size);
        }
    }
    /// Half of the bytes are what matters in quoted texts.
    void AppendText(Bytes& code, std::size_t count) {
        static constexpr std::string_view kSpecial = "'\"$;(*) \t\r\n:=,[]";
        for (std::size_t i = 0; i < count; ++i) {
            AppendByte(code);
            if (Number(2) == 0) code.back() = static_cast<unsigned char>(kSpecial[Number(kSpecial.size())]);
        }
    }
    void AppendTempData(Bytes& code, std::size_t start) {
        const unsigned int count = Number(30);
        code[start + 1] = static_cast<unsigned char>(count);
        code[start + 2] = code[start + 3] = code[start + 4] = 0;
        AppendBytes(code, count);
    }
    /// Most calls are of functions that exist.
    void SetKnownCall(Bytes& code, std::size_t start) {
        code[start + 1] = 1;
        code[start + 2] = static_cast<unsigned char>(1 + Number(9));
    }

    std::mt19937 random_;
};

/// What the machine's own disassembler prints for code that is made of whole instructions.
std::string Disassemble(const Bytes& code) {
    const CBuiltInFunctions functions;
    CTextOutputString output;
    CDisassembler disassembler(functions, 0, &output);
    for (std::size_t at = 0; at < code.size();) {
        int wanted = disassembler.FirstByte(code[at++]);
        while (wanted > 0) {
            const auto count = static_cast<unsigned int>(wanted);
            EXPECT_LE(count, code.size() - at);
            wanted = disassembler.MoreBytes(&code[at], count);
            at += count;
        }
        EXPECT_EQ(wanted, 0) << disassembler.GetDisassemblerError();
    }
    return output.TakeText();
}

/// The text of one instruction, columns left out.
std::string TextOf(const Bytes& code) {
    std::string text = Disassemble(code);
    const std::size_t linesBefore = (code.size() - 1) / 8;
    for (std::size_t i = 0; i < linesBefore; ++i)
        text.erase(0, text.find('\n') + 1);
    text.erase(0, text.find(" : ") + 3);
    text.pop_back();
    return text;
}

TEST(DisassembledCode, AssemblesToTheSameBytesForEveryOpcode) {
    for (unsigned int seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        CRandomCode random(seed);
        Bytes code;
        for (int round = 0; round < 3; ++round) {
            for (std::uint8_t opcode = 1; opcode < kOpcodeTable.size(); ++opcode)
                random.AppendInstruction(static_cast<Opcode>(opcode), code);
        }
        const std::string text = Disassemble(code);
        ASSERT_EQ(ToHex(Assemble(".code\n" + text).content.code), ToHex(code)) << text;
    }
}

/// The text part of the lines alone, where it is all that the instruction is.
TEST(DisassembledCode, AssemblesWithoutTheByteColumns) {
    const std::string source =
        ".code\nLD DINT#5\nLD T#1h30m\nLD DT#2024-01-31-13:05:09.250\nLD REAL#1.0E-07\n"
        "LD LREAL#-0.0\nLD STRING#'it$'s $L;'\nLD WSTRING#\"a$000C\"\nLD LWORD#16#FF\n"
        "LD ADDR Temp: Frame 0 Offset 4\nLD TAG ADDR Tag: Id 1 Offset 2\nPTR LD ARRAY INT[5]\n"
        "PTR ST R_EDGE\nJMP -5 (0000)\nCALL 0010, ArgCount 2\nTON ArgCount 7, DataSize 29\n"
        "MAX ArgCount 3, ENO\nSFC Type 2, DataSize 180\nNEGATE\nXOR\nINIT_LOCAL_DATA Length 5\n";
    const Bytes code = Assemble(source.substr(0, source.find("JMP")) + source.substr(source.find("CALL"))).content.code;
    std::string text = Disassemble(code);
    std::string stripped;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        const std::size_t colon = text.find(" : ", at);
        if (colon < end) stripped += text.substr(colon + 3, end - colon - 2);
        at = end + 1;
    }
    EXPECT_THAT(stripped, Not(HasSubstr(" : ")));
    EXPECT_EQ(ToHex(Assemble(".code\n" + stripped).content.code), ToHex(code)) << stripped;
}

/// Texts that do not say everything: names that are shared, data that is not shown, dates that no literal has.
bool IsLossy(const std::string& text) {
    for (const char* part : {"???", "Unknown", "INIT_TEMP_DATA", "LD D#", "LD DT#"}) {
        if (text.find(part) != std::string::npos) return true;
    }
    return false;
}

TEST(DisassembledText, AloneMeansTheSameInstruction) {
    CRandomCode random(7);
    for (int round = 0; round < 300; ++round) {
        for (std::uint8_t opcode = 1; opcode < kOpcodeTable.size(); ++opcode) {
            Bytes code;
            random.AppendInstruction(static_cast<Opcode>(opcode), code);
            const std::string text = TextOf(code);
            if (!IsLossy(text)) {
                ASSERT_EQ(TextOf(Assemble(".code\n" + text).content.code), text);
            }
        }
    }
}

TEST(DisassembledText, TimesOfDayAreExactToTheMillisecond) {
    std::string source = ".code\n";
    Bytes expected;
    for (unsigned int milliseconds = 0; milliseconds < 60000; milliseconds += 7) {
        source += FormatText("LD TOD#00:00:%06.3f\n", milliseconds / 1000.0);
        expected.insert(expected.end(), {1, 17, static_cast<unsigned char>(milliseconds),
                                         static_cast<unsigned char>(milliseconds >> 8U), 0, 0});
    }
    EXPECT_EQ(Assemble(source).content.code, expected);
}

ImageContent MakeRandomImage(unsigned int seed) {
    CRandomCode random(seed);
    ImageContent image;
    image.version = static_cast<std::uint16_t>(1 + random.Number(5));
    if (random.Number(2) == 0) image.build = CBuildIdentity{"p$'\n\xFF", 1, 2, 3, 65535, -5, "r;(*"};
    random.AppendBytes(image.globalData.data, random.Number(70));
    if (image.HasConstants()) random.AppendBytes(image.constants.data, random.Number(20));
    if (random.Number(4) == 0) image.globalData.guard[2] = 0;
    if (image.HasObsoleteWord()) image.obsoleteWord = static_cast<std::int32_t>(random.Number(3)) - 1;
    for (unsigned int i = random.Number(60); i > 0; --i)
        random.AppendInstruction(static_cast<Opcode>(1 + random.Number(28)), image.code);
    // Bytes that are no code, in the middle and at the end.
    for (unsigned int i = random.Number(3); i > 0; --i)
        random.AppendBytes(image.code, random.Number(20));
    const auto offset = [&] { return random.Number(static_cast<unsigned int>(image.code.size() + 2)); };
    for (unsigned int i = random.Number(4); i > 0; --i)
        image.programs.push_back({i % 2 == 0 ? "Main" : "It's a; (*name*)", offset(), random.Number(3)});
    for (unsigned int i = 0; i < random.Number(4); ++i)
        image.expressions.push_back({image.HasExpressionIds() ? random.Number(3) : i, offset()});
    for (unsigned int i = random.Number(4); image.HasCodeBlocks() && i > 0; --i)
        image.codeBlocks.push_back({random.Number(3), offset()});
    return image;
}

TEST(ListedImage, AssemblesToTheSameImage) {
    for (unsigned int seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        const ImageContent image = MakeRandomImage(seed);
        const std::string text = List(image);
        const AssembledImage assembled = Assemble(text);
        ASSERT_EQ(ToHex(assembled.bytes), ToHex(CImageWriter::Write(image))) << text;
        ImageContent read;
        std::string error;
        ASSERT_TRUE(ReadImage(assembled.bytes, read, error)) << error;
        ASSERT_EQ(read, image);
    }
}

TEST(ListedImage, NamesThatAreNotValidUtf8AreQuoted) {
    ImageContent image;
    image.version = 5;
    image.code = {12};
    image.programs.push_back({"Ma\xEEn", 0, 0});
    const std::string text = List(image);
    EXPECT_NE(text.find(".program 'Ma$EEn' "), std::string::npos) << text;
    EXPECT_EQ(Assemble(text).content, image);
}

TEST(ListedImage, ShowsHeaderBlocksTablesAndCode) {
    const AssembledImage image = Assemble(R"(
.build 'P' 1.2.3.4 5 'r'
.global
    level : REAL := 0.5
    grid : ARRAY[0..1, 1..2] OF INT
.constant
    .guard 01 02 03 04
.program Main start 9
.expression 3 start
.code
start: LD ADDR Global: grid[1,2]
    JMP start
    CALL start, ArgCount 1
    .byte 29
)");
    EXPECT_EQ(List(image.content, &image.symbols), R"(.version 5
.build 'P' 1.2.3.4 5 'r'

.global 12  ; bytes, guard intact
    .hex 00 00 00 3F 00 00 00 00 00 00 00 00              ; 0000 ...?........
    level AT 0 : REAL  ; REAL#0.5
    grid AT 4 : ARRAY[0..1,1..2] OF INT  ; COMPOSITE#INT[ 0, 0, 0, 0 ]

.constant 0  ; bytes, guard damaged
    .guard 01 02 03 04

.program Main start 9
.expression 3 start

.code  ; 18 bytes
start:  ; program Main, expression 3
0000 02 01 0A 00 00 00        : LD ADDR Global: 10  ; grid[1,2]
0006 10 F5 FF FF FF           : JMP -11 (0000)  ; start
000B 15 01 00 00 00 00        : CALL 0000, ArgCount 1  ; start
    ; Invalid OP Code 29
    .hex 1D                                               ; 0011 .
)");
}

TEST(ListedImage, WithoutMapLabelsAreMadeFromOffsets) {
    const AssembledImage image = Assemble(".program Main a\n.code\nPUSH\na: JMP b\nPUSH\nb: RET");
    const std::string text = List(image.content);
    EXPECT_THAT(text, HasSubstr(".program Main L_0001 0\n"));
    EXPECT_THAT(text, HasSubstr("\nL_0001:  ; program Main\n"));
    EXPECT_THAT(text, HasSubstr(": JMP +1 (0007)  ; L_0007\n"));
    EXPECT_THAT(text, HasSubstr("\nL_0007:\n"));
}

TEST(ListedImage, EntryInsideAnInstructionIsANumber) {
    const AssembledImage image = Assemble(".program Main 16#1\n.program Far 16#FFFFFFFF\n.code\nLD STACK[3]");
    const std::string text = List(image.content);
    EXPECT_THAT(text, HasSubstr(".program Main 16#1 0\n.program Far 16#FFFFFFFF 0\n"));
    EXPECT_EQ(ToHex(Assemble(text).bytes), ToHex(image.bytes));
}

TEST(ListedImage, CodeBehindBytesThatAreNoneGoesOnAtTheNextEntry) {
    const AssembledImage image = Assemble(".expression 1 a\n.code\n.byte 0, 10\na: PUSH\nRET");
    EXPECT_THAT(List(image.content), HasSubstr("    .hex 00 0A                                            ; 0000 ..\n"
                                               "L_0002:  ; expression 1\n0002 0A "));
}

TEST(ListedImage, WithItsMapGivesTheNamesAgain) {
    const AssembledImage image = Assemble(R"(
.struct Inner
    z : BYTE
.struct Point 8
    x : INT
    y : ARRAY[1..2] OF Inner
.global
    a : BYTE
    Main.p : Point := (x := 5)
    Main.t : TON
    s : STRING[4] := 'x'
.constant
    c : LREAL := 1.5
.tag
    valve AT 7.2 : BOOL
.program Main go
.code
go: CALL sub, ArgCount 1
    RET
sub: LD ADDR Global: Main.p.y[2].z
    RET
)");
    const std::string text = List(image.content, &image.symbols);
    EXPECT_THAT(text, HasSubstr("; Main.p.y[2].z\n"));
    const AssembledImage again = Assemble(text);
    EXPECT_EQ(ToHex(again.bytes), ToHex(image.bytes));
    const std::string names = image.symbols.Save();
    const std::string namesAgain = again.symbols.Save();
    EXPECT_EQ(namesAgain.substr(0, namesAgain.find("\"positions\"")), names.substr(0, names.find("\"positions\"")));
}

TEST(CodeListing, IsTheCodeAlone) {
    const AssembledImage image = Assemble(".program Main a\n.code\na: RET");
    CTextOutputString output;
    CImageListing(image.content, nullptr).WriteCode(output);
    EXPECT_EQ(output.GetText(), "\n.code  ; 1 bytes\nL_0000:  ; program Main\n0000 0C                       : RET\n");
}

TEST(ReadImage, WhatAHostMustRefuseIsRefused) {
    const AssembledImage image = Assemble(".global\na : INT\n.program Main a\n.code\na: RET");
    for (std::size_t length = 0; length < image.bytes.size(); ++length) {
        SCOPED_TRACE(length);
        ImageContent content;
        std::string error;
        EXPECT_FALSE(ReadImage(std::span(image.bytes).first(length), content, error));
        EXPECT_FALSE(error.empty());
    }
}

TEST(ReadImage, BytesBehindTheImageAreIgnored) {
    Bytes bytes = Assemble(".code\nRET").bytes;
    bytes.push_back(1);
    ImageContent content;
    std::string error;
    EXPECT_TRUE(ReadImage(bytes, content, error)) << error;
    EXPECT_EQ(ToHex(content.code), "0C");
}

}  // namespace
