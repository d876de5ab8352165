#include "platform/jsonata/Regex.h"

#include <cstdint>
#include <utility>

#include <re2/re2.h>

#include "platform/jsonata/CodePoints.h"
#include "platform/jsonata/RegexTranslate.h"

namespace tn61131::jsonata {

struct Regex::Engine {
    Engine(const std::string& expression, const RE2::Options& options) : program(expression, options) {}

    RE2 program;
};

namespace {

/// Longer ones are refused before they are looked at.
constexpr std::size_t kLongestBody = 65'536;
/// For the program and the states that are built while matching; when these exceed it, matching goes on more slowly.
constexpr std::int64_t kMemoryBudget = 1 << 20;
/// Each state of a match notes the places of all groups, so that their number multiplies what matching takes.
constexpr int kMostGroups = 100;

/// Whether a character begins before an offset and ends behind it.
bool IsInsideCharacter(std::string_view text, std::size_t offset) {
    const auto isContinuation = [text](std::size_t at) {
        return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80;
    };
    if (offset == text.size() || !isContinuation(offset)) return false;
    std::size_t begin = offset;
    while (begin > 0 && offset - begin < 3 && isContinuation(begin))
        --begin;
    return begin + DecodeAt(text, begin).size > offset;
}

Failure Refuse(std::string_view body, std::string_view reason) {
    return {"S0303", std::string(body), std::string(reason)};
}

}  // namespace

Regex::Regex(std::string source, std::unique_ptr<const Engine> engine) noexcept
    : source_(std::move(source)), engine_(std::move(engine)) {}

Regex::~Regex() = default;

Result<std::shared_ptr<const Regex>> Regex::Compile(std::string_view body, std::string_view flags) {
    if (body.empty()) return Failure{"S0301", {}, {}};
    if (body.size() > kLongestBody) return Refuse(body.substr(0, 100), "too long");
    RE2::Options options;
    options.set_log_errors(false);
    options.set_max_mem(kMemoryBudget);
    RegexLines lines = RegexLines::Whole;
    for (const char flag : flags) {
        if (flag == 'i' && options.case_sensitive()) {
            options.set_case_sensitive(false);
        } else if (flag == 'm' && lines == RegexLines::Whole) {
            lines = RegexLines::Each;
        } else {
            return Refuse(body, "invalid flags");
        }
    }
    Result<std::string> translated = TranslateRegex(body, lines);
    if (!translated) return translated.TakeFailure();
    auto engine = std::make_unique<const Engine>(*translated, options);
    if (!engine->program.ok()) return Refuse(body, engine->program.error());
    if (engine->program.NumberOfCapturingGroups() > kMostGroups) return Refuse(body, "too many groups");
    return std::shared_ptr<const Regex>(new Regex(std::string(body), std::move(engine)));
}

std::optional<RegexMatch> Regex::Find(std::string_view text, std::size_t from) const {
    const RE2& program = engine_->program;
    const auto count = static_cast<std::size_t>(program.NumberOfCapturingGroups()) + 1;
    std::vector<re2::StringPiece> pieces(count);
    // A null pointer would not tell an empty group from none.
    const char* const start = text.data() == nullptr ? "" : text.data();
    const re2::StringPiece whole(start, text.size());
    // The engine looks for \B between bytes: an empty match inside a character is none.
    do {
        if (from > text.size() ||
            !program.Match(whole, from, text.size(), RE2::UNANCHORED, pieces.data(), static_cast<int>(count))) {
            return std::nullopt;
        }
        from = static_cast<std::size_t>(pieces[0].data() - start) + 1;
    } while (pieces[0].empty() && IsInsideCharacter(text, from - 1));
    RegexMatch match;
    match.begin = static_cast<std::size_t>(pieces[0].data() - start);
    match.end = match.begin + pieces[0].size();
    for (std::size_t i = 1; i < count; ++i) {
        const re2::StringPiece& piece = pieces[i];
        match.groups.push_back(piece.data() == nullptr ? std::nullopt
                                                       : std::optional(std::string_view(piece.data(), piece.size())));
    }
    return match;
}

}  // namespace tn61131::jsonata
