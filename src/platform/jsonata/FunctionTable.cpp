#include "platform/jsonata/FunctionTable.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "platform/jsonata/Evaluator.h"
#include "platform/jsonata/Functions.h"

namespace tn61131::jsonata {

namespace {

constexpr std::array kFunctions{
    FunctionInfo{"string", "<x-b?:s>", 1, functions::String},
    FunctionInfo{"length", "<s-:n>", 1, functions::Length},
    FunctionInfo{"substring", "<s-nn?:s>", 3, functions::Substring},
    FunctionInfo{"substringBefore", "<s-s:s>", 2, functions::SubstringBefore},
    FunctionInfo{"substringAfter", "<s-s:s>", 2, functions::SubstringAfter},
    FunctionInfo{"uppercase", "<s-:s>", 1, functions::Uppercase},
    FunctionInfo{"lowercase", "<s-:s>", 1, functions::Lowercase},
    FunctionInfo{"trim", "<s-:s>", 1, functions::Trim},
    FunctionInfo{"pad", "<s-ns?:s>", 3, functions::Pad},
    FunctionInfo{"contains", "<s-(sf):b>", 2, functions::Contains},
    FunctionInfo{"split", "<s-(sf)n?:a<s>>", 3, functions::Split},
    FunctionInfo{"join", "<a<s>s?:s>", 2, functions::Join},
    FunctionInfo{"match", "<s-f<s:o>n?:a<o>>", 3, functions::Match},
    FunctionInfo{"replace", "<s-(sf)(sf)n?:s>", 4, functions::Replace},
    FunctionInfo{"eval", "<sx?:x>", 2, functions::Eval, true},
    FunctionInfo{"base64encode", "<s-:s>", 1, functions::Base64Encode},
    FunctionInfo{"base64decode", "<s-:s>", 1, functions::Base64Decode},
    FunctionInfo{"encodeUrlComponent", "<s-:s>", 1, functions::EncodeUrlComponent},
    FunctionInfo{"encodeUrl", "<s-:s>", 1, functions::EncodeUrl},
    FunctionInfo{"decodeUrlComponent", "<s-:s>", 1, functions::DecodeUrlComponent},
    FunctionInfo{"decodeUrl", "<s-:s>", 1, functions::DecodeUrl},
    FunctionInfo{"number", "<(nsb)-:n>", 1, functions::Number},
    FunctionInfo{"abs", "<n-:n>", 1, functions::Abs},
    FunctionInfo{"floor", "<n-:n>", 1, functions::Floor},
    FunctionInfo{"ceil", "<n-:n>", 1, functions::Ceil},
    FunctionInfo{"round", "<n-n?:n>", 2, functions::Round},
    FunctionInfo{"power", "<n-n:n>", 2, functions::Power},
    FunctionInfo{"sqrt", "<n-:n>", 1, functions::Sqrt},
    FunctionInfo{"random", "<:n>", 0, functions::Random},
    FunctionInfo{"formatNumber", "<n-so?:s>", 3, functions::FormatNumber},
    FunctionInfo{"formatBase", "<n-n?:s>", 2, functions::FormatBase},
    FunctionInfo{"formatInteger", "<n-s:s>", 2, functions::FormatInteger},
    FunctionInfo{"parseInteger", "<s-s:n>", 2, functions::ParseInteger},
    FunctionInfo{"sum", "<a<n>:n>", 1, functions::Sum},
    FunctionInfo{"max", "<a<n>:n>", 1, functions::Max},
    FunctionInfo{"min", "<a<n>:n>", 1, functions::Min},
    FunctionInfo{"average", "<a<n>:n>", 1, functions::Average},
    FunctionInfo{"boolean", "<x-:b>", 1, functions::Boolean},
    FunctionInfo{"not", "<x-:b>", 1, functions::Not},
    FunctionInfo{"exists", "<x:b>", 1, functions::Exists},
    FunctionInfo{"count", "<a:n>", 1, functions::Count},
    FunctionInfo{"append", "<xx:a>", 2, functions::Append},
    FunctionInfo{"sort", "<af?:a>", 2, functions::Sort},
    FunctionInfo{"reverse", "<a:a>", 1, functions::Reverse},
    FunctionInfo{"shuffle", "<a:a>", 1, functions::Shuffle},
    FunctionInfo{"distinct", "<x:x>", 1, functions::Distinct},
    FunctionInfo{"zip", "<a+>", 1, functions::Zip},
    FunctionInfo{"keys", "<x-:a<s>>", 1, functions::Keys},
    FunctionInfo{"lookup", "<x-s:x>", 2, functions::Lookup},
    FunctionInfo{"spread", "<x-:a<o>>", 1, functions::Spread},
    FunctionInfo{"merge", "<a<o>:o>", 1, functions::Merge},
    FunctionInfo{"sift", "<o-f?:o>", 2, functions::Sift},
    FunctionInfo{"each", "<o-f:a>", 2, functions::Each},
    FunctionInfo{"error", "<s?:x>", 1, functions::Error},
    FunctionInfo{"assert", "<bs?:x>", 2, functions::Assert},
    FunctionInfo{"type", "<x:s>", 1, functions::Type},
    FunctionInfo{"clone", "<(oa)-:o>", 1, functions::CloneValue},
    FunctionInfo{"now", "<s?s?:s>", 2, functions::Now},
    FunctionInfo{"millis", "<:n>", 0, functions::Millis},
    FunctionInfo{"fromMillis", "<n-s?s?:s>", 3, functions::FromMillis},
    FunctionInfo{"toMillis", "<s-s?:n>", 2, functions::ToMillis},
    FunctionInfo{"map", "<af>", 2, functions::Map},
    FunctionInfo{"filter", "<af>", 2, functions::Filter},
    FunctionInfo{"single", "<af?>", 2, functions::Single},
    FunctionInfo{"reduce", "<afj?:j>", 3, functions::Reduce},
};

using Signatures = std::array<std::shared_ptr<const Signature>, kFunctions.size()>;

const Signatures& AllSignatures() {
    static const Signatures signatures = [] {
        Signatures parsed;
        std::ranges::transform(kFunctions, parsed.begin(),
                               [](const FunctionInfo& function) { return Signature::Parse(function.signature); });
        return parsed;
    }();
    return signatures;
}

const std::unordered_map<std::string_view, const FunctionInfo*>& FunctionsByName() {
    static const auto byName = [] {
        std::unordered_map<std::string_view, const FunctionInfo*> names;
        for (const FunctionInfo& function : kFunctions)
            names.emplace(function.name, &function);
        return names;
    }();
    return byName;
}

}  // namespace

std::span<const FunctionInfo> AllFunctions() noexcept {
    return kFunctions;
}

const FunctionInfo* FindFunction(std::string_view name) {
    const auto found = FunctionsByName().find(name);
    return found == FunctionsByName().end() ? nullptr : found->second;
}

const Signature& SignatureOf(const FunctionInfo& function) {
    return *AllSignatures()[static_cast<std::size_t>(&function - kFunctions.data())];
}

std::size_t ArityOf(const Value& function) {
    const FunctionNode& node = function.GetFunction();
    switch (node.kind) {
        case FunctionNode::Kind::Native: return node.info->arity;
        case FunctionNode::Kind::Lambda: return node.expression->parameters.size();
        case FunctionNode::Kind::Partial: return static_cast<std::size_t>(std::ranges::count(node.holes, true));
        default: return 1;
    }
}

const Value& NativeCall::operator[](std::size_t index) const noexcept {
    static const Value undefined;
    return index < arguments.size() ? arguments[index] : undefined;
}

Value NativeCall::Invoke(const Value& function, std::vector<Value> values) const {
    static const Value noContext = Value::Null();
    return evaluator.Call(function, std::move(values), {&noContext, site.frame, nullptr});
}

Value NativeCall::InvokeFor(const Value& function, const Value& value, const Value& position,
                            const Value& whole) const {
    const std::size_t arity = ArityOf(function);
    std::vector<Value> values{value};
    if (arity > 1) values.push_back(position);
    if (arity > 2) values.push_back(whole);
    return Invoke(function, std::move(values));
}

}  // namespace tn61131::jsonata
