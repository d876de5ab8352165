#include "programs/ProgramFile.h"

#include <charconv>

#include "value/Value.h"

namespace program_test {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view Trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Takes the first word off the text.
std::string_view TakeWord(std::string_view& text) {
    text = Trim(text);
    const std::size_t end = std::min(text.find_first_of(kBlanks), text.size());
    const std::string_view word = text.substr(0, end);
    text = Trim(text.substr(end));
    return word;
}

template <typename Number>
bool ReadNumber(std::string_view text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, status] = std::from_chars(text.data(), end, number);
    return status == std::errc() && stop == end;
}

class CommentReader {
 public:
    explicit CommentReader(ProgramFile& file) : file_(file) {}

    /// A line of the program. False for a comment that cannot be read.
    bool ReadLine(std::string_view line, std::uint32_t number) {
        line_ = number;
        for (std::size_t comment = FindComment(line); comment != std::string_view::npos;) {
            line = line.substr(comment + 2);
            comment = FindComment(line);
            if (!ReadComment(line.substr(0, comment))) return false;
        }
        return true;
    }

 private:
    static std::size_t FindComment(std::string_view line) {
        for (std::size_t at = line.find("//"); at != std::string_view::npos; at = line.find("//", at + 1)) {
            if (at + 2 < line.size() && std::string_view("@!:").find(line[at + 2]) != std::string_view::npos) return at;
        }
        return std::string_view::npos;
    }

    bool ReadComment(std::string_view text) {
        if (text.starts_with("!!")) return ReadFault(text.substr(2));
        if (text.starts_with('!')) return ReadDiagnostics(text.substr(1));
        if (text.starts_with('@')) return ReadValue(text.substr(1));
        return ReadDirective(text.substr(1));
    }

    bool ReadFault(std::string_view text) {
        ExpectedFault fault{.line = line_};
        if (file_.fault || !ReadNumber(Trim(text), fault.message)) return false;
        file_.fault = fault;
        return true;
    }

    bool ReadDiagnostics(std::string_view text) {
        do {
            const std::string_view word = TakeWord(text);
            const std::size_t colon = word.find(':');
            ExpectedDiagnostic expected{.line = line_, .code = std::string(word.substr(0, colon))};
            if (!expected.code.starts_with("ST")) return false;
            if (colon != std::string_view::npos && !ReadNumber(word.substr(colon + 1), expected.column)) return false;
            file_.diagnostics.push_back(std::move(expected));
        } while (!text.empty());
        return true;
    }

    bool ReadValue(std::string_view text) {
        ExpectedValue expected{.line = line_};
        const std::string_view scan = text.substr(0, std::min(text.find_first_of(kBlanks), text.size()));
        if (!scan.empty() && !ReadNumber(scan, expected.scan)) return false;
        text = text.substr(scan.size());
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos) return false;
        expected.path = Trim(text.substr(0, equals));
        expected.value = Trim(text.substr(equals + 1));
        file_.values.push_back(std::move(expected));
        return true;
    }

    bool ReadDirective(std::string_view text) {
        const std::string_view word = TakeWord(text);
        if (word == "scans") return ReadNumber(text, file_.scans);
        if (word == "step") return ReadNumber(text, file_.stepMs);
        if (word == "limit") return ReadNumber(text, file_.instructionLimit);
        if (word == "profile") return tn61131::st::SetProfile(text, file_.options);
        if (word == "warnings") {
            file_.compareWarnings = false;
            return text == "off";
        }
        if (word == "program") {
            file_.program = text;
            return !text.empty();
        }
        if (word == "expression") {
            file_.options.expressions.push_back({1, std::string(text)});
            file_.runsExpression = true;
            return !text.empty();
        }
        std::string error;
        if (word == "set") return tn61131::st::SetSwitch(text, file_.options, error);
        return word == "tag" && ReadTag(text);
    }

    bool ReadTag(std::string_view text) {
        tn61131::st::TagSymbol tag;
        tag.address = TakeWord(text);
        if (!ReadNumber(TakeWord(text), tag.tagId) || !ReadNumber(TakeWord(text), tag.offset)) return false;
        tag.type = FindType(TakeWord(text));
        TagBytes bytes{.id = tag.tagId};
        for (std::string_view digits = TakeWord(text); !digits.empty(); digits.remove_prefix(2)) {
            unsigned char byte = 0;
            if (digits.size() < 2 || std::from_chars(digits.data(), digits.data() + 2, byte, 16).ec != std::errc()) {
                return false;
            }
            bytes.bytes += static_cast<char>(byte);
        }
        tag.readOnly = text == "ro";
        file_.options.tags.push_back(std::move(tag));
        file_.tags.push_back(std::move(bytes));
        return file_.options.tags.back().type != ElementaryType::Undefined && (text.empty() || text == "ro");
    }

    static ElementaryType FindType(std::string_view name) {
        for (const TypeInfo& row : kTypeTable) {
            if (name == row.name) return row.type;
        }
        return ElementaryType::Undefined;
    }

    ProgramFile& file_;
    std::uint32_t line_ = 0;
};

}  // namespace

bool ReadProgramFile(std::string name, std::string text, ProgramFile& file, std::string& error) {
    file.name = std::move(name);
    file.text = std::move(text);
    CommentReader reader(file);
    std::uint32_t number = 0;
    for (std::string_view rest = file.text; !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        if (!reader.ReadLine(rest.substr(0, end), ++number)) {
            error = "line " + std::to_string(number) + ": this comment cannot be read";
            return false;
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    if (file.values.empty() && file.diagnostics.empty() && !file.fault) {
        error = "the file expects nothing";
        return false;
    }
    return true;
}

}  // namespace program_test
