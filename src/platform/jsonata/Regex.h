#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/jsonata/Failure.h"

namespace tn61131::jsonata {

/// A place where a regular expression matches; offsets in bytes.
struct RegexMatch {
    std::size_t begin = 0;
    std::size_t end = 0;
    /// The text of each group from 1 on; none for a group that took no part. Borrowed from the text searched in.
    std::vector<std::optional<std::string_view>> groups;
};

/// A regular expression of the language, which is JavaScript's, matched in time linear in the text. What cannot be
/// matched so, references back and looking around, is refused. Constant after construction; may be shared between
/// threads.
class Regex {
 public:
    /// `body` is what stands between the slashes, `flags` what stands behind them ("i", "m", "im" or nothing). Fails
    /// with S0301 for an empty expression, and S0303, which quotes the expression and says what is wrong, for one that
    /// is not understood or too large.
    static Result<std::shared_ptr<const Regex>> Compile(std::string_view body, std::string_view flags);
    ~Regex();
    Regex(const Regex&) = delete;
    Regex& operator=(const Regex&) = delete;

    /// The leftmost match that begins at byte `from` or later; the text before `from` is what ^ and \b look back on.
    /// An empty match is returned as any other. To the language the first match of a text may be empty; searching on,
    /// from the end of a match and before the end of the text, an empty one is the error D1004.
    [[nodiscard]] std::optional<RegexMatch> Find(std::string_view text, std::size_t from) const;
    /// The expression as it was written, without slashes and flags: what the message of D1004 quotes.
    [[nodiscard]] const std::string& GetSource() const noexcept { return source_; }

 private:
    struct Engine;
    Regex(std::string source, std::unique_ptr<const Engine> engine) noexcept;

    std::string source_;
    std::unique_ptr<const Engine> engine_;
};

}  // namespace tn61131::jsonata
