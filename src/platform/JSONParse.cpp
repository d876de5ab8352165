#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include "platform/JSONValue.h"
#include "platform/ReadDouble.h"

namespace {

// What the parser refuses beyond the grammar.
constexpr const char* kTooDeep = "Nesting is deeper than 1000 levels.";
constexpr const char* kOutOfRange = "The number is beyond the range of a double.";
constexpr const char* kLoneSurrogate = "The string escapes a surrogate without its partner.";
constexpr const char* kTooLong = "The text is longer than 4 GiB.";
constexpr const char* kTextAfterValue = "The document root must not be followed by other values.";
static_assert(JSONParseContext::kMaxDepth == 1000, "kTooDeep states it");

// How far the parser reads behind the NUL that ends its text: in search of the rest of a UTF-8 sequence that is cut.
constexpr std::size_t kLookahead = 4;

// A number of the grammar, which is a subset of what from_chars() takes.
std::optional<double> ReadNumber(std::string_view digits) noexcept {
    double number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc()) return number;
    // Out of range does not say in which direction.
    const std::string text(digits);
    const char* at = text.c_str();
    number = tn_strtod(at);
    if (std::isinf(number)) return std::nullopt;
    return number;
}

// The parser writes an escaped low surrogate that stands alone as three bytes, which no valid text contains.
bool HasSurrogate(std::string_view text) noexcept {
    for (std::size_t at = text.find('\xED'); at != std::string_view::npos; at = text.find('\xED', at + 1)) {
        if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) >= 0xA0) return true;
    }
    return false;
}

// Takes the parser's events and builds the value. The elements and members of containers that are still open lie on a
// stack each; a container that closes takes its own from there, in one piece of memory of the right size.
class TreeBuilder {
 public:
    bool Null() { return Add(JSONValue()); }
    bool Bool(bool value) { return Add(JSONValue(value)); }
    // Numbers arrive as text.
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(std::int64_t) { return false; }
    bool Uint64(std::uint64_t) { return false; }
    bool Double(double) { return false; }
    bool RawNumber(const char* text, rapidjson::SizeType length, bool) {
        const std::optional<double> number = ReadNumber({text, length});
        return number.has_value() ? Add(JSONValue(*number)) : Refuse(kOutOfRange);
    }
    bool String(const char* text, rapidjson::SizeType length, bool) {
        std::string content(text, length);
        return HasSurrogate(content) ? Refuse(kLoneSurrogate) : Add(JSONValue(std::move(content)));
    }
    bool Key(const char* text, rapidjson::SizeType length, bool) {
        members_.push_back({std::string(text, length), {}});
        return HasSurrogate(members_.back().name) ? Refuse(kLoneSurrogate) : true;
    }
    bool StartArray() { return Open({.isObject = false, .first = elements_.size()}); }
    bool StartObject() { return Open({.isObject = true, .first = members_.size()}); }
    bool EndArray(rapidjson::SizeType) { return Add(JSONValue(TakeFrom(elements_, Close()))); }
    bool EndObject(rapidjson::SizeType) { return Add(JSONValue(TakeFrom(members_, Close()))); }

    JSONValue TakeRoot() noexcept { return std::move(root_); }
    // Why the building was ended; null when it was not.
    [[nodiscard]] const char* GetRefusal() const noexcept { return refusal_; }

 private:
    struct Container {
        bool isObject;
        std::size_t first;  // where its elements or members begin
    };

    bool Refuse(const char* reason) noexcept {
        refusal_ = reason;
        return false;
    }
    bool Open(Container container) {
        if (open_.size() == JSONParseContext::kMaxDepth) return Refuse(kTooDeep);
        open_.push_back(container);
        return true;
    }
    std::size_t Close() noexcept {
        const std::size_t first = open_.back().first;
        open_.pop_back();
        return first;
    }
    template <typename T>
    static std::vector<T> TakeFrom(std::vector<T>& stack, std::size_t first) {
        const auto begin = stack.begin() + static_cast<std::ptrdiff_t>(first);
        std::vector<T> taken(std::make_move_iterator(begin), std::make_move_iterator(stack.end()));
        stack.erase(begin, stack.end());
        return taken;
    }
    bool Add(JSONValue value) {
        if (open_.empty()) {
            root_ = std::move(value);
        } else if (open_.back().isObject) {
            members_.back().value = std::move(value);
        } else {
            elements_.push_back(std::move(value));
        }
        return true;
    }

    JSONValue root_;
    std::vector<Container> open_;
    JSONValue::Array elements_;
    JSONValue::Object members_;  // the last one's value comes next
    const char* refusal_ = nullptr;
};

}  // namespace

bool JSONValue::Parse(JSONParseContext& context) {
    // In situ on a copy: the parser then needs no stack of its own, which computes with null pointers. It calls itself
    // for each level, some 200 bytes that the builder's limit bounds.
    constexpr unsigned kFlags =
        rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag | rapidjson::kParseValidateEncodingFlag;
    if (context.GetText().size() > UINT32_MAX) {
        context.ReportError(0, kTooLong);
        return false;
    }
    std::string text(context.GetText());
    text.append(kLookahead, '\0');
    rapidjson::InsituStringStream stream(text.data());
    rapidjson::Reader reader;
    TreeBuilder builder;
    const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, builder);
    if (result.IsError()) {
        const char* refusal = builder.GetRefusal();
        context.ReportError(result.Offset(), refusal != nullptr ? refusal : rapidjson::GetParseError_En(result.Code()));
        return false;
    }
    // The parser takes a NUL for the end of the text.
    if (stream.Tell() != context.GetText().size()) {
        context.ReportError(stream.Tell(), kTextAfterValue);
        return false;
    }
    *this = builder.TakeRoot();
    return true;
}
