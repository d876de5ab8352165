#include "platform/jsonata/Signature.h"

#include <algorithm>

#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Nodes.h"

namespace tn61131::jsonata {

namespace {

// How a value is written in a signature; m for one that is missing.
char TypeLetter(const Value& value) noexcept {
    if (value.IsFunction()) return 'f';
    if (value.IsString()) return 's';
    if (value.IsNumber()) return 'n';
    if (value.IsBoolean()) return 'b';
    if (value.IsNull()) return 'l';
    if (value.IsArray()) return 'a';
    if (value.IsObject()) return 'o';
    return 'm';
}

std::size_t ClosingBracket(std::string_view text, std::size_t open) noexcept {
    const char opening = text[open];
    const char closing = opening == '<' ? '>' : ')';
    int depth = 0;
    for (std::size_t at = open; at < text.size(); ++at) {
        if (text[at] == opening) ++depth;
        if (text[at] == closing && --depth == 0) return at;
    }
    return text.size();
}

std::string_view TypeName(char letter) noexcept {
    switch (letter) {
        case 'n': return "numbers";
        case 's': return "strings";
        case 'b': return "booleans";
        case 'o': return "objects";
        case 'a': return "arrays";
        case 'f': return "functions";
        default: return "values of one type";
    }
}

}  // namespace

std::shared_ptr<const Signature> Signature::Parse(std::string_view text) {
    auto signature = std::make_shared<Signature>();
    signature->text_ = text;
    std::vector<Parameter>& parameters = signature->parameters_;
    for (std::size_t at = 1; at < text.size() && text[at] != ':'; ++at) {
        const char letter = text[at];
        switch (letter) {
            case 's':
            case 'n':
            case 'b':
            case 'l':
            case 'o': parameters.emplace_back().types = {letter, 'm'}; break;
            case 'a':
                parameters.emplace_back().types = "asnblfom";
                parameters.back().isArray = true;
                break;
            case 'f': parameters.emplace_back().types = "f"; break;
            case 'j': parameters.emplace_back().types = "asnblom"; break;
            case 'u': parameters.emplace_back().types = "bnsm"; break;
            case 'x': parameters.emplace_back().types = "asnblfom"; break;
            case '(': {
                const std::size_t end = ClosingBracket(text, at);
                const std::string_view choice = text.substr(at + 1, end - at - 1);
                if (choice.find('<') != std::string_view::npos) Throw("S0402", choice);
                parameters.emplace_back().types = std::string(choice) + "m";
                at = end;
                break;
            }
            case '<': {
                const bool mayHave =
                    !parameters.empty() && (parameters.back().isArray || parameters.back().types == "f");
                if (!mayHave) Throw("S0401", text.substr(at - 1, 1));
                const std::size_t end = ClosingBracket(text, at);
                if (parameters.back().isArray && at + 1 < end) parameters.back().elementType = text[at + 1];
                at = end;
                break;
            }
            case '-':
                if (parameters.empty()) break;
                parameters.back().takesContext = true;
                break;
            case '?':
                if (!parameters.empty()) parameters.back().isOptional = true;
                break;
            case '+':
                if (!parameters.empty()) parameters.back().repeats = true;
                break;
            default: break;
        }
    }
    return signature;
}

// Takes as many arguments for each parameter as it can, and fewer where the others would not fit.
bool Signature::Match(std::string_view supplied, std::size_t parameter, std::size_t argument,
                      std::vector<std::size_t>& counts, std::size_t& furthest, unsigned int& steps) const {
    furthest = std::max(furthest, argument);
    if (parameter == parameters_.size()) return argument == supplied.size();
    if (++steps > 10000) return false;
    const Parameter& expected = parameters_[parameter];
    const std::size_t most = expected.repeats ? supplied.size() - argument : 1;
    std::size_t fits = 0;
    while (fits < most && argument + fits < supplied.size() &&
           expected.types.find(supplied[argument + fits]) != std::string::npos) {
        ++fits;
    }
    const std::size_t least = expected.isOptional || expected.takesContext ? 0 : 1;
    for (std::size_t count = fits + 1; count-- > least;) {
        counts[parameter] = count;
        if (Match(supplied, parameter + 1, argument + count, counts, furthest, steps)) return true;
    }
    return false;
}

void Signature::CheckElements(const Parameter& parameter, const Value& argument, std::size_t number,
                              std::string_view function) const {
    if (parameter.elementType == 0) return;
    const auto fail = [&] {
        Throw("T0412", std::to_string(number),
              std::string(function) + "\" must be an array of " + std::string(TypeName(parameter.elementType)));
    };
    if (!argument.IsArray()) {
        if (TypeLetter(argument) != parameter.elementType) fail();
        return;
    }
    const ArrayNode* node = argument.AsArrayNode();
    if (node != nullptr && node->isRange) {
        if (parameter.elementType != 'n' && argument.GetSize() > 0) fail();
        return;
    }
    for (std::size_t i = 0; i < argument.GetSize(); ++i) {
        if (TypeLetter(argument.GetElement(i)) != parameter.elementType) fail();
    }
}

void Signature::Apply(std::vector<Value>& arguments, const Value& context, std::string_view function,
                      Heap& heap) const {
    std::string supplied;
    for (const Value& argument : arguments)
        supplied.push_back(TypeLetter(argument));
    std::vector<std::size_t> counts(parameters_.size());
    std::size_t furthest = 0;
    unsigned int steps = 0;
    if (!Match(supplied, 0, 0, counts, furthest, steps)) Throw("T0410", std::to_string(furthest + 1), function);

    std::vector<Value> taken;
    taken.reserve(std::max(arguments.size(), parameters_.size()));
    std::size_t next = 0;
    for (std::size_t i = 0; i < parameters_.size(); ++i) {
        const Parameter& parameter = parameters_[i];
        if (counts[i] == 0) {
            if (parameter.takesContext) {
                if (parameter.types.find(TypeLetter(context)) == std::string::npos) {
                    Throw("T0411", std::to_string(next + 1), function);
                }
                taken.push_back(context);
            } else {
                taken.emplace_back();
            }
            continue;
        }
        for (std::size_t count = 0; count < counts[i]; ++count, ++next) {
            Value& argument = arguments[next];
            if (parameter.isArray && !argument.IsUndefined()) {
                CheckElements(parameter, argument, next + 1, function);
                if (!argument.IsArray()) {
                    Ref<ArrayNode> array = heap.Make<ArrayNode>();
                    array->Push(std::move(argument));
                    argument = Value(std::move(array));
                }
            }
            taken.push_back(std::move(argument));
        }
    }
    arguments = std::move(taken);
}

}  // namespace tn61131::jsonata
