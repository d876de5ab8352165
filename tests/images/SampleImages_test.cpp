#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "tools/Tool.h"

namespace {

using JsonValue = rapidjson::Value;
namespace fs = std::filesystem;

std::string ReadText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string ToText(const JsonValue& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return buffer.GetString();
}

bool IsWildcard(const JsonValue& expected) {
    return expected.IsString() && std::string(expected.GetString()) == "*";
}

bool Matches(const JsonValue& expected, const JsonValue& actual);

bool MembersMatch(const JsonValue& expected, const JsonValue& actual) {
    return actual.IsObject() && expected.MemberCount() == actual.MemberCount() &&
           std::all_of(expected.MemberBegin(), expected.MemberEnd(), [&](const JsonValue::Member& member) {
               const auto found = actual.FindMember(member.name);
               return found != actual.MemberEnd() && Matches(member.value, found->value);
           });
}

bool ElementsMatch(const JsonValue& expected, const JsonValue& actual) {
    return actual.IsArray() && std::equal(expected.Begin(), expected.End(), actual.Begin(), actual.End(), Matches);
}

/// Equal but for the order of members; an expected "*" matches everything.
bool Matches(const JsonValue& expected, const JsonValue& actual) {
    if (IsWildcard(expected)) return true;
    if (expected.IsObject()) return MembersMatch(expected, actual);
    if (expected.IsArray()) return ElementsMatch(expected, actual);
    return expected == actual;
}

/// Runs the command in this process and returns what it writes to standard output.
std::string RunCommandLine(const std::vector<std::string>& arguments) {
    std::vector<const char*> argv = {"tn61131"};
    for (const std::string& argument : arguments)
        argv.push_back(argument.c_str());
    std::ostringstream output;
    std::ostringstream messages;
    std::streambuf* const standardOutput = std::cout.rdbuf(output.rdbuf());
    std::streambuf* const standardError = std::cerr.rdbuf(messages.rdbuf());
    (void)tn61131::RunTool(static_cast<int>(argv.size()), argv.data());
    std::cout.rdbuf(standardOutput);
    std::cerr.rdbuf(standardError);
    return output.str();
}

std::vector<std::string> SplitWords(const std::string& text) {
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

void CheckImage(const fs::path& image) {
    std::vector<std::string> arguments = {"run", "--json", image.filename().string()};
    const std::vector<std::string> options = SplitWords(ReadText(fs::path(image).replace_extension(".opts")));
    arguments.insert(arguments.end(), options.begin(), options.end());
    rapidjson::Document expected;
    expected.Parse(ReadText(fs::path(image).replace_extension(".expected")).c_str());
    ASSERT_TRUE(expected.IsObject());
    const std::string line = RunCommandLine(arguments);
    rapidjson::Document actual;
    actual.Parse(line.c_str());
    ASSERT_TRUE(actual.IsObject()) << line;
    actual.RemoveMember("image");
    EXPECT_TRUE(Matches(expected, actual)) << "expected " << ToText(expected) << "\n     got " << ToText(actual);
}

TEST(SampleImages, EachGivesItsExpectedLine) {
    const fs::path folder = TN61131_SAMPLE_IMAGES;
    if (!fs::is_directory(folder)) GTEST_SKIP() << "no sample images in " << folder;
    fs::current_path(folder);
    std::vector<fs::path> images;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ".vmi") images.push_back(entry.path());
    }
    std::sort(images.begin(), images.end());
    for (const fs::path& image : images) {
        SCOPED_TRACE(image.filename().string());
        CheckImage(image);
    }
    EXPECT_FALSE(images.empty());
}

}  // namespace
