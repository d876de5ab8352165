#include "compiler/Diagnostics.h"

#include <algorithm>
#include <cstdio>

#include "assembler/SymbolType.h"

namespace tn61131::st {

namespace {

constexpr std::size_t kTabWidth = 4;
// Longer lines are shown from a little before the place meant.
constexpr std::size_t kMaxShown = 160;
constexpr std::size_t kShownBefore = 60;
// Bytes that are looked at on either side of the place: enough for what is shown, however long a line is.
constexpr std::size_t kMaxLooked = 4096;

constexpr std::string_view SeverityName(Severity severity) noexcept {
    switch (severity) {
        case Severity::Error: return "error";
        case Severity::Warning: return "warning";
        case Severity::Hint: return "hint";
    }
    return "";
}

// The text of a code with its {0}, {1}, ... replaced.
std::string FillText(std::string_view text, std::initializer_list<std::string_view> arguments) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isPlace = text[i] == '{' && i + 2 < text.size() && text[i + 2] == '}';
        const std::size_t index = isPlace ? static_cast<std::size_t>(text[i + 1] - '0') : arguments.size();
        if (index < arguments.size()) {
            result += arguments.begin()[index];
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

// The length of the well-formed UTF-8 sequence at the start of the text; 0 where there is none.
std::size_t SequenceLength(std::string_view text) noexcept {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length == 0 || length > text.size()) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return 0;
    }
    return length;
}

// The cells of a line as a terminal shows them: tabs as blanks, what cannot be shown as one replacement character.
struct ShownLine {
    std::vector<std::string_view> cells;
    std::size_t begin = 0;  ///< cell of the range's first byte
    std::size_t end = 0;    ///< cell behind its last
};

ShownLine Show(std::string_view line, std::size_t rangeBegin, std::size_t rangeEnd) {
    ShownLine shown;
    std::size_t at = 0;
    const auto mark = [&] {
        if (at <= rangeBegin) shown.begin = shown.cells.size();
        if (at <= rangeEnd) shown.end = shown.cells.size();
    };
    while (at < line.size()) {
        mark();
        const std::size_t length = SequenceLength(line.substr(at));
        if (line[at] == '\t') {
            do
                shown.cells.emplace_back(" ");
            while (shown.cells.size() % kTabWidth != 0);
        } else if (length == 0) {
            shown.cells.emplace_back("\xEF\xBF\xBD");
        } else if (static_cast<unsigned char>(line[at]) < 0x20 || line[at] == 0x7F) {
            shown.cells.emplace_back(" ");
        } else {
            shown.cells.push_back(line.substr(at, length));
        }
        at += std::max<std::size_t>(length, 1);
    }
    mark();
    return shown;
}

void AppendExcerpt(const SourceManager& sources, SourceRange range, const SourceLocation& place, std::string& text) {
    std::string_view line = sources.GetLine(place.file, place.line);
    const char* const meant = sources.GetText(place.file).data() + (range.begin - sources.GetStart(place.file));
    std::size_t begin = std::min(line.size(), static_cast<std::size_t>(meant - line.data()));
    if (begin > kMaxLooked) {
        std::size_t dropped = begin - kMaxLooked;
        while ((static_cast<unsigned char>(line[dropped]) & 0xC0) == 0x80 && dropped < begin)
            ++dropped;
        line.remove_prefix(dropped);
        begin -= dropped;
    }
    line = line.substr(0, begin + kMaxLooked);
    const std::size_t length = range.end > range.begin ? range.end - range.begin : 0;
    const ShownLine shown = Show(line, begin, std::min(line.size(), begin + length));
    const std::size_t first =
        shown.cells.size() > kMaxShown && shown.begin > kShownBefore ? shown.begin - kShownBefore : 0;
    const std::size_t last = std::min(shown.cells.size(), first + kMaxShown);
    for (std::size_t i = first; i < last; ++i)
        text += shown.cells[i];
    text += '\n';
    text.append(shown.begin - first, ' ');
    text += '^';
    const std::size_t end = std::min(shown.end, last);
    if (end > shown.begin + 1) text.append(end - shown.begin - 1, '~');
    text += '\n';
}

void AppendMessage(const SourceManager& sources, SourceRange range, std::string_view label, std::string_view message,
                   std::string& text) {
    const SourceLocation place = sources.Locate(range.begin);
    if (place.line != 0) {
        text += sources.GetName(place.file);
        text += ':' + std::to_string(place.line) + ':' + std::to_string(place.column) + ": ";
    }
    text += label;
    text += ": ";
    text += message;
    text += '\n';
    if (place.line != 0) AppendExcerpt(sources, range, place, text);
}

// Insertions, deletions, replacements and exchanges of neighbours that turn one name into the other; `limit` + 1 where
// there are more than that. Rows beyond the limit are not computed to the end.
std::size_t EditDistance(std::string_view left, std::string_view right, std::size_t limit) {
    const std::size_t longer = std::max(left.size(), right.size());
    if (longer - std::min(left.size(), right.size()) > limit) return limit + 1;
    std::vector<std::size_t> before(right.size() + 1);
    std::vector<std::size_t> previous(right.size() + 1);
    std::vector<std::size_t> current(right.size() + 1);
    for (std::size_t j = 0; j <= right.size(); ++j)
        previous[j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        current[0] = i;
        std::size_t least = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t replace = previous[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
            current[j] = std::min({replace, previous[j] + 1, current[j - 1] + 1});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1])
                current[j] = std::min(current[j], before[j - 2] + 1);
            least = std::min(least, current[j]);
        }
        if (least > limit) return limit + 1;
        before.swap(previous);
        previous.swap(current);
    }
    return previous[right.size()];
}

}  // namespace

Diagnostic& Diagnostics::Report(DiagnosticCode code, SourceRange range,
                                std::initializer_list<std::string_view> arguments) {
    return Report(code, GetDiagnosticRow(code).severity, range, arguments);
}

Diagnostic& Diagnostics::Report(DiagnosticCode code, Severity severity, SourceRange range,
                                std::initializer_list<std::string_view> arguments) {
    dropped_ = {};
    if (severity == Severity::Error) {
        const std::uint64_t key = (std::uint64_t{range.begin} << 16) | static_cast<std::uint64_t>(code);
        if (errors_ < kMaxErrors && !reported_.insert(key).second) return dropped_;
        if (++errors_ > kMaxErrors) return dropped_;
    } else if (diagnostics_.size() >= std::size_t{10} * kMaxErrors) {
        return dropped_;
    }
    return diagnostics_.emplace_back(
        Diagnostic{code, severity, range, FillText(GetDiagnosticRow(code).text, arguments), {}});
}

const std::vector<Diagnostic>& Diagnostics::Sort() {
    std::stable_sort(diagnostics_.begin(), diagnostics_.end(), [](const Diagnostic& left, const Diagnostic& right) {
        return left.range.begin < right.range.begin;
    });
    return diagnostics_;
}

std::string FormatCode(DiagnosticCode code) {
    char text[16];
    std::snprintf(text, sizeof text, "ST%04u", static_cast<unsigned>(code));
    return text;
}

std::string FormatDiagnostic(const SourceManager& sources, const Diagnostic& diagnostic) {
    std::string text;
    const std::string label = std::string(SeverityName(diagnostic.severity)) + '[' + FormatCode(diagnostic.code) + ']';
    AppendMessage(sources, diagnostic.range, label, diagnostic.text, text);
    for (const DiagnosticNote& note : diagnostic.notes)
        AppendMessage(sources, note.range, "note", note.text, text);
    return text;
}

std::string_view FindNearestName(std::string_view name, std::span<const std::string_view> candidates) {
    const std::string folded = FoldName(name);
    std::string_view nearest;
    std::size_t least = name.size() / 3 + 1;
    for (const std::string_view candidate : candidates) {
        const std::size_t distance = EditDistance(folded, FoldName(candidate), least - 1);
        if (distance >= least) continue;
        least = distance;
        nearest = candidate;
        if (least == 0) break;
    }
    return nearest;
}

}  // namespace tn61131::st
