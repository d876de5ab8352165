#include <cmath>
#include <optional>

#include "platform/jsonata/CodePoints.h"
#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Evaluator.h"
#include "platform/jsonata/Functions.h"
#include "platform/jsonata/Regex.h"
#include "platform/jsonata/TextFunctions.h"

namespace tn61131::jsonata::functions {

namespace {

/// The byte at which a UTF-16 unit of a text begins.
std::size_t ByteOfUnit(std::string_view text, double unit) {
    std::size_t at = 0;
    for (double passed = 0; passed < unit && at < text.size();) {
        const CodePoint codePoint = DecodeAt(text, at);
        passed += codePoint.value > 0xFFFF ? 2 : 1;
        at += codePoint.size;
    }
    return at;
}

struct Found {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string text;
    std::vector<std::optional<std::string>> groups;
    Value object;  ///< as functions see it; only where asked for
};

/// The matches of a text, one after the other, by a regular expression or by a function of the expression.
class Matches {
 public:
    enum class With : std::uint8_t { Positions, Objects };

    Matches(NativeCall& call, const Value& matcher, const Value& text, With with)
        : call_(call), matcher_(matcher), text_(text) {
        const FunctionNode& function = matcher.GetFunction();
        if (function.kind == FunctionNode::Kind::Matcher && with == With::Positions) regex_ = function.regex.get();
    }

    std::optional<Found> Next() {
        call_.evaluator.Tick();
        return regex_ != nullptr ? NextOfRegex() : NextOfFunction();
    }

 private:
    std::optional<Found> NextOfRegex() {
        const std::string_view text = text_.GetText();
        const std::optional<RegexMatch> match = regex_->Find(text, from_);
        if (!match) return std::nullopt;
        if (match->begin == match->end) Throw("D1004", regex_->GetSource());
        from_ = match->end;
        Found found{
            match->begin, match->end, std::string(text.substr(match->begin, match->end - match->begin)), {}, {}};
        for (const std::optional<std::string_view>& group : match->groups)
            found.groups.emplace_back(group);
        return found;
    }

    std::optional<Found> NextOfFunction() {
        Value result = isFirst_ ? call_.Invoke(matcher_, {text_}) : call_.Invoke(next_, {});
        isFirst_ = false;
        if (result.IsUndefined()) return std::nullopt;
        Heap& heap = call_.evaluator.GetHeap();
        const auto member = [&](std::string_view name) {
            return result.IsObject() ? result.FindMember(name, heap) : Value();
        };
        const Value start = member("start");
        const Value end = member("end");
        const Value groups = member("groups");
        const Value match = member("match");
        next_ = member("next");
        const bool isMatch = start.IsNumber() && end.IsNumber() && groups.IsArray() && next_.IsFunction();
        if (!isMatch) Throw("T1010");
        Found found;
        found.begin = ByteOfUnit(text_.GetText(), start.GetNumber());
        found.end = ByteOfUnit(text_.GetText(), end.GetNumber());
        if (found.end < found.begin) found.end = found.begin;
        if (match.IsString()) found.text = match.GetText();
        for (std::size_t i = 0; i < groups.GetSize(); ++i) {
            const Value group = groups.GetElement(i);
            found.groups.push_back(group.IsString() ? std::optional<std::string>(group.GetText()) : std::nullopt);
        }
        found.object = std::move(result);
        return found;
    }

    NativeCall& call_;
    Value matcher_;
    Value text_;
    Value next_;
    const Regex* regex_ = nullptr;
    std::size_t from_ = 0;
    bool isFirst_ = true;
};

/// The greatest number of results; without bound where none is given.
double LimitOf(const Value& limit, std::string_view code) {
    if (!limit.IsNumber()) return HUGE_VAL;
    if (limit.GetNumber() < 0) Throw(code, std::to_string(limit.GetNumber()));
    return limit.GetNumber();
}

// "$0" to "$99" in a replacement stand for groups, as many digits as there are groups; "$$" for the sign itself.
std::string Expand(std::string_view replacement, const Found& found) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    std::string text;
    std::size_t at = 0;
    while (at < replacement.size()) {
        const char c = replacement[at++];
        const char next = at < replacement.size() ? replacement[at] : '\0';
        if (c != '$' || (next != '$' && !isDigit(next))) {
            text.push_back(c);
        } else if (next == '$') {
            text.push_back(c);
            ++at;
        } else if (next == '0') {
            text += found.text;
            ++at;
        } else {
            const std::size_t count = found.groups.size();
            std::size_t group = 0;
            const std::size_t first = at;
            while (at < replacement.size() && isDigit(replacement[at])) {
                const std::size_t longer = group * 10 + static_cast<std::size_t>(replacement[at] - '0');
                if (at > first && longer > count) break;
                group = longer;
                ++at;
            }
            if (group <= count) text += found.groups[group - 1].value_or("");
        }
    }
    return text;
}

void AppendChecked(NativeCall& call, std::string& text, std::string_view more) {
    call.evaluator.GetHeap().CheckText(static_cast<double>(text.size() + more.size()));
    text += more;
}

Value ReplaceText(NativeCall& call, double limit) {
    const std::string_view text = call[0].GetText();
    const std::string_view pattern = call[1].GetText();
    std::string result;
    std::size_t from = 0;
    for (double count = 0; count < limit; ++count) {
        call.evaluator.Tick();
        const std::size_t at = text.find(pattern, from);
        if (at == std::string_view::npos) break;
        AppendChecked(call, result, text.substr(from, at - from));
        AppendChecked(call, result, call[2].GetText());
        from = at + pattern.size();
    }
    AppendChecked(call, result, text.substr(from));
    return call.evaluator.MakeText(std::move(result));
}

std::string ReplacementOf(NativeCall& call, const Found& found) {
    if (call[2].IsString()) return Expand(call[2].GetText(), found);
    const Value replacement = call.Invoke(call[2], {found.object});
    if (!replacement.IsString()) Throw("D3012", TextOf(replacement, call.evaluator));
    return std::string(replacement.GetText());
}

Value ReplaceMatches(NativeCall& call, double limit) {
    const std::string_view text = call[0].GetText();
    Matches matches(call, call[1], call[0], call[2].IsFunction() ? Matches::With::Objects : Matches::With::Positions);
    std::string result;
    std::size_t from = 0;
    for (double count = 0; count < limit; ++count) {
        const std::optional<Found> found = matches.Next();
        if (!found) break;
        if (found->begin < from) continue;  // a function may find whatever it likes
        AppendChecked(call, result, text.substr(from, found->begin - from));
        AppendChecked(call, result, ReplacementOf(call, *found));
        from = std::min(text.size(), found->begin + found->text.size());
    }
    AppendChecked(call, result, text.substr(from));
    return call.evaluator.MakeText(std::move(result));
}

// Into its characters where the separator is empty.
void SplitText(NativeCall& call, double limit, ArrayNode& parts) {
    const std::string_view text = call[0].GetText();
    const std::string_view separator = call[1].GetText();
    std::size_t from = 0;
    while (static_cast<double>(parts.GetSize()) < limit) {
        call.evaluator.Tick();
        if (separator.empty()) {
            if (from >= text.size()) return;
            const std::string_view part = text.substr(from, DecodeAt(text, from).size);
            parts.Push(call.evaluator.MakeText(std::string(part)));
            from += part.size();
            continue;
        }
        const std::size_t at = text.find(separator, from);
        parts.Push(call.evaluator.MakeText(std::string(text.substr(from, at - from))));
        if (at == std::string_view::npos) return;
        from = at + separator.size();
    }
}

void SplitByMatches(NativeCall& call, double limit, ArrayNode& parts) {
    const std::string_view text = call[0].GetText();
    Matches matches(call, call[1], call[0], Matches::With::Positions);
    std::size_t from = 0;
    std::optional<Found> found = matches.Next();
    while (found && static_cast<double>(parts.GetSize()) < limit) {
        const std::size_t begin = std::max(from, found->begin);
        parts.Push(call.evaluator.MakeText(std::string(text.substr(from, begin - from))));
        from = std::max(from, found->end);
        found = matches.Next();
    }
    if (static_cast<double>(parts.GetSize()) < limit) {
        parts.Push(call.evaluator.MakeText(std::string(text.substr(from))));
    }
}

}  // namespace

Value Contains(NativeCall& call) {
    if (call[0].IsUndefined() || call[1].IsUndefined()) return {};
    if (call[1].IsString()) return Value(call[0].GetText().find(call[1].GetText()) != std::string_view::npos);
    return Value(Matches(call, call[1], call[0], Matches::With::Positions).Next().has_value());
}

Value Match(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    const double limit = LimitOf(call[2], "D3040");
    Matches matches(call, call[1], call[0], Matches::With::Positions);
    const std::string_view text = call[0].GetText();
    Ref<ArrayNode> found = call.evaluator.MakeSequence();
    std::size_t counted = 0;
    std::size_t units = 0;
    for (double count = 0; count < limit; ++count) {
        const std::optional<Found> match = matches.Next();
        if (!match) break;
        if (match->begin < counted) counted = units = 0;
        units += CountUTF16Units(text.substr(counted, match->begin - counted));
        counted = match->begin;
        Ref<ArrayNode> groups = call.evaluator.MakeArray();
        for (const std::optional<std::string>& group : match->groups) {
            groups->Push(group ? call.evaluator.MakeText(*group) : Value());
        }
        Ref<ObjectNode> object = call.evaluator.GetHeap().Make<ObjectNode>();
        object->Set("match", call.evaluator.MakeText(match->text));
        object->Set("index", Value(static_cast<double>(units)));
        object->Set("groups", Value(std::move(groups)));
        found->Push(Value(std::move(object)));
    }
    return Value(std::move(found));
}

Value Replace(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    if (call[1].IsString() && call[1].GetText().empty()) Throw("D3010");
    const double limit = LimitOf(call[3], "D3011");
    if (call[1].IsUndefined() || call[2].IsUndefined()) return {};
    if (call[1].IsFunction()) return ReplaceMatches(call, limit);
    if (!call[2].IsString()) Throw("D3012");
    return ReplaceText(call, limit);
}

Value Split(NativeCall& call) {
    if (call[0].IsUndefined() || call[1].IsUndefined()) return {};
    const double limit = LimitOf(call[2], "D3020");
    Ref<ArrayNode> parts = call.evaluator.MakeArray();
    if (call[1].IsString()) {
        SplitText(call, std::floor(limit), *parts);
    } else {
        SplitByMatches(call, std::floor(limit), *parts);
    }
    return Value(std::move(parts));
}

}  // namespace tn61131::jsonata::functions
