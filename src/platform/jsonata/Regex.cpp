#include "platform/jsonata/Regex.h"

#include <cstdint>
#include <utility>

#include <re2/re2.h>

#include "platform/jsonata/RegexTranslate.h"

namespace tn61131::jsonata {

struct Regex::Engine {
    Engine(const std::string& expression, const RE2::Options& options) : program(expression, options) {}

    RE2 program;
};

namespace {

/// Longer ones are refused before they are looked at.
constexpr std::size_t kLongestBody = 64 * 1024;
/// For the program and the states that are built while matching; when these exceed it, matching goes on more slowly.
constexpr std::int64_t kMemoryBudget = 4 << 20;

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
    return std::shared_ptr<const Regex>(new Regex(std::string(body), std::move(engine)));
}

std::optional<RegexMatch> Regex::Find(std::string_view text, std::size_t from) const {
    if (from > text.size()) return std::nullopt;
    const RE2& program = engine_->program;
    const auto count = static_cast<std::size_t>(program.NumberOfCapturingGroups()) + 1;
    std::vector<re2::StringPiece> pieces(count);
    // A null pointer would not tell an empty group from none.
    const char* const start = text.data() == nullptr ? "" : text.data();
    const re2::StringPiece whole(start, text.size());
    if (!program.Match(whole, from, text.size(), RE2::UNANCHORED, pieces.data(), static_cast<int>(count))) {
        return std::nullopt;
    }
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
