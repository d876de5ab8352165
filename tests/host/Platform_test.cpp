#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "diag/Messages.h"
#include "platform/BinaryStream.h"
#include "platform/BuildIdentity.h"
#include "platform/CharTable.h"
#include "platform/ClientAccess.h"
#include "platform/DataFormat.h"
#include "platform/ErrorLog.h"
#include "platform/File.h"
#include "platform/FormatText.h"
#include "platform/JSONValue.h"
#include "platform/Random.h"
#include "platform/Round.h"
#include "platform/StringObject.h"
#include "platform/TNModule.h"
#include "platform/TextInput.h"
#include "platform/TextOutput.h"
#include "platform/Time.h"
#include "platform/Transcode.h"

// The interfaces that a host may implement itself, each implemented here, and the classes that it uses as they are.

namespace {

class HostOutput final : public CBinaryOutput {
 public:
    void WriteBytes(const void* data, std::size_t size) override { bytes.append(static_cast<const char*>(data), size); }
    std::string bytes;
};

class HostInput final : public CBinaryInput {
 public:
    explicit HostInput(std::string content) : bytes(std::move(content)) {}
    [[nodiscard]] std::size_t GetBytesLeft() const override { return bytes.size() - position; }
    std::string bytes;
    std::size_t position = 0;

 protected:
    std::size_t ReadSome(void* data, std::size_t size) override {
        const std::size_t count = bytes.copy(static_cast<char*>(data), size, position);
        position += count;
        return count;
    }
};

TEST(HostStreams, OwnStreamsCarryEveryEncoding) {
    HostOutput output;
    output << true << short{-2} << 5U << 1.5 << std::string("abc");
    output.Write7BitEncodedInt(300);
    output.WriteUTFCharacter(0x20AC);
    HostInput input(output.bytes);
    bool flag = false;
    short number = 0;
    unsigned int word = 0;
    double real = 0;
    std::string text;
    input >> flag >> number >> word >> real >> text;
    EXPECT_TRUE(flag);
    EXPECT_EQ(number, -2);
    EXPECT_EQ(word, 5U);
    EXPECT_EQ(real, 1.5);
    EXPECT_EQ(text, "abc");
    EXPECT_EQ(input.Read7BitEncodedInt(), 300U);
    EXPECT_EQ(input.ReadUTF8Character(), 0x20ACU);
    EXPECT_FALSE(input.HasFailed());
    input >> flag;
    EXPECT_TRUE(input.HasFailed());
}

TEST(HostStreams, BuildIdentityTravelsThroughMemory) {
    CBuildIdentity saved;
    saved.product = "compiler";
    saved.major = 2;
    CBinaryOutputBuffer output;
    saved.SaveContent(output);
    CBinaryInputMemory input(output.GetData());
    CBuildIdentity loaded;
    EXPECT_TRUE(loaded.LoadContent(input));
    EXPECT_EQ(loaded, saved);
}

class HostTextOutput final : public CTextOutput {
 public:
    void Write(std::string_view part) override { text += part; }
    std::string text;
};

class HostTextInput final : public CTextInput {
 protected:
    std::optional<char32_t> Decode() override { return next_ < U'd' ? std::optional(next_++) : std::nullopt; }

 private:
    char32_t next_ = U'a';
};

TEST(HostText, OwnOutputTakesEveryForm) {
    HostTextOutput output;
    output.Print("%d %s|", -5, "x");
    output.WriteCodePoint(0x20AC);
    output.WriteChar('|');
    output.PrintDouble(0.1);
    output.WriteChar('|');
    output.PrintFloat(0.1F);
    output.WriteChar('|');
    output.PrintDate(nullptr, 0);
    output.WriteChar('|');
    output.PrintDateAndTime(nullptr, kTicksPerDay, '-');
    output.WriteChar('|');
    output.Print61131String(reinterpret_cast<const unsigned char*>("a'b"), 3);
    output.PrintCodePoint00ToFF(9, false);
    EXPECT_EQ(output.text, "-5 x|\xE2\x82\xAC|0.1|0.1|1970-01-01|1970-01-02-00:00:00.000|'a$'b'$T");
}

TEST(HostText, InputsGiveLines) {
    std::string line;
    HostTextInput own;
    EXPECT_TRUE(own.ReadLine(line));
    EXPECT_EQ(line, "abc");
    TextInputTNString text("one\ntwo");
    EXPECT_TRUE(text.ReadLine(line) && text.ReadLine(line));
    EXPECT_EQ(line, "two");
    const unsigned char bytes[] = {'x'};
    TextInputFromRawData raw(bytes, 1);
    EXPECT_EQ(raw.ReadCodePoint(), U'x');
    CTextInputUtf8 utf8(bytes, 1);
    EXPECT_EQ(utf8.ReadCodePoint(), U'x');
    const unsigned short units[] = {0x20AC};
    TextInputU16String wide(units, 1);
    EXPECT_EQ(wide.ReadCodePoint(), U'\u20AC');
}

TEST(HostText, OutputsGiveStringObjects) {
    CTextOutputString plain;
    plain.Write("a");
    EXPECT_EQ(plain.TakeText(), "a");
    TextOutputToUtf8String narrow;
    narrow.Write("ab");
    Utf8String* const narrowText = narrow.TakeString();
    EXPECT_EQ(Utf8StringLen(narrowText), 2U);
    Utf8StringFree(narrowText);
    TextOutputToUtf16String wide;
    wide.Write("\xE2\x82\xAC");
    Utf16String* const wideText = wide.TakeString();
    EXPECT_EQ(Utf16StringLen(wideText), 1U);
    Utf16StringFree(wideText);
}

class HostLocation final : public ErrorLocation {
 public:
    unsigned int PrintLocation(char* buffer, unsigned int size) const override {
        return CopyBounded(buffer, size, "here");
    }
};

class HostLines final : public COutputLog {
 public:
    void WriteLine(std::string_view line) override { lines.emplace_back(line); }
    std::vector<std::string> lines;
};

class HostLog final : public CErrorLog {
 protected:
    void Record(const ErrorLocation& /*location*/, const CTNModule& /*module*/, Severity /*severity*/, std::uint32_t id,
                FormatArgs /*args*/) override {
        lastId = id;
    }

 public:
    std::uint32_t lastId = 0;
};

TEST(HostLogs, OwnLogsAndLocationsAreUsed) {
    HostLines lines;
    CErrorLog log(&lines);
    EXPECT_FALSE(tn61131::Fail<Message::DivisionByZero>(log, HostLocation()));
    ASSERT_EQ(lines.lines.size(), 1U);
    EXPECT_EQ(lines.lines[0], "here: error 226: Division by zero.");
    HostLog own;
    (void)tn61131::Fail<Message::StackUnderflow>(own, ErrorLocationNull::Get());
    EXPECT_EQ(own.lastId, 209U);
    EXPECT_EQ(own.GetErrorCount(), 1U);
    CErrorLogToNull none;
    (void)tn61131::Fail<Message::StackUnderflow>(none, ErrorLocationNull::Get());
    EXPECT_TRUE(none.GetEntries().empty());
    COutputLogNull nowhere;
    nowhere.LogWarning("w");
    EXPECT_EQ(nowhere.GetWarningCount(), 1U);
    COutputLogString collected;
    collected.PrintData("data", 1, reinterpret_cast<const unsigned char*>("a"));
    EXPECT_FALSE(collected.GetText().empty());
}

TEST(HostLogs, ModulesGiveTheirTexts) {
    static constexpr ResourceEntry kTexts[] = {{1, "one %d"}};
    static constexpr ResourceLanguage kLanguages[] = {{1033, kTexts}};
    const CTNModule module("host", kLanguages);
    EXPECT_STREQ(module.FindText(1), "one %d");
    char buffer[16];
    EXPECT_EQ(module.FormatResourceString(CTNLocale(), buffer, sizeof(buffer), 1, 7), 5U);
    EXPECT_STREQ(buffer, "one 7");
    EXPECT_STREQ(GetVMModule().FindText(226), "Division by zero.");
}

TEST(HostTime, TimestampsIntervalsAndZones) {
    CTNTimestamp timestamp;
    EXPECT_TRUE(timestamp.SetDate(2024, 1, 31));
    char text[32];
    EXPECT_EQ(timestamp.ToText(text, sizeof(text)), 23U);
    EXPECT_STREQ(text, "2024-01-31 00:00:00.000");
    EXPECT_TRUE(CTNTimeZone::IsKnown("Europe/Berlin"));
    timestamp.ToLocalTime(CTNTimeZone("Europe/Berlin"));
    EXPECT_EQ(timestamp.GetVMTimeMS() % kMillisecondsPerDay, 3'600'000);
    EXPECT_EQ(CTNTimeInterval::FromMilliseconds(5).GetTicks(), 5 * kTicksPerMillisecond);
    EXPECT_EQ(TicksFromMilliseconds(INT64_MAX), INT64_MAX);
}

TEST(HostFormats, NumbersAndDatesByPattern) {
    CTextOutputString output;
    DecimalFormat number;
    ASSERT_TRUE(number.ParseDecimalFormat("0.00"));
    number.FormatDouble(CTNLocale("de-DE"), 1.5, output);
    DateTimeFormat date;
    ASSERT_TRUE(date.ParseDateTimeFormat(" yyyy"));
    date.FormatDateTime(CTNLocale(), nullptr, CTNTimestamp(), output);
    CDataFormatSettings settings;
    EXPECT_TRUE(settings.SetDateAndTimeFormat(" HH"));
    settings.FormatDateAndTime(0, output);
    EXPECT_EQ(output.GetText(), "1,50 1970 00");
    EXPECT_TRUE(CTNLocale::IsKnown("de-DE"));
    const CClientAccessContext access("host", std::move(settings));
    EXPECT_EQ(access.GetName(), "host");
}

TEST(HostTools, CharactersRoundingRandomFilesAndJson) {
    EXPECT_EQ(UnicodeCharTable::ToUpper(U'\u00E9'), U'\u00C9');
    EXPECT_TRUE(CTNChar::IsSpace(static_cast<unsigned short>(0x2003)));
    EXPECT_EQ(TNRoundFloat::RoundDouble(2.675, 2, true), 2.68);
    unsigned char random[16] = {};
    TNRandomGenerator::GenerateRandom(random, sizeof(random));
    EXPECT_EQ(FormatText("%05.1f", 2.25), "002.2");
    EXPECT_EQ(FormatArg(7).AsDouble(), 7.0);
    TNFileUnix file;
    EXPECT_FALSE(file.OpenFileForRead(CTNFilePath("/nonexistent/file")));
    COutputLogNull log;
    JSONParseContext context(R"({"a":[1]})", log);
    JSONValue json;
    ASSERT_TRUE(json.Parse(context));
    ASSERT_NE(json.Find("a"), nullptr);
    EXPECT_EQ(json.Find("a")->GetElements().size(), 1U);
    char32_t codePoint = 0;
    EXPECT_EQ(tn_codepoint_from_tnchar("\xC3\xA9", 2, codePoint), 2U);
    EXPECT_EQ(codePoint, 0xE9U);
}

TEST(HostTools, StringObjectsOfBothWidths) {
    Utf8String* const left = Utf8StringCopy("abc", 3);
    Utf8String* const tail = Utf8StringRight(left, 2);
    Utf8String* const both = Utf8StringConcat(left, tail);
    EXPECT_EQ(Utf8StringFind(both, tail), 1);
    EXPECT_GT(Utf8StringCompare(both, left), 0);
    Utf16String* const wide = Utf16StringCopy("abc", 3);
    Utf16String* const middle = Utf16StringMid(wide, 1, 2);
    EXPECT_EQ(Utf16StringLen(middle), 1U);
    for (Utf8String* text : {left, tail, both})
        Utf8StringFree(text);
    for (Utf16String* text : {wide, middle})
        Utf16StringFree(text);
}

}  // namespace
