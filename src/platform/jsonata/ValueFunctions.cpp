#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>

#include "platform/TextOutput.h"
#include "platform/jsonata/CodePoints.h"
#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Evaluator.h"
#include "platform/jsonata/NumberText.h"

namespace tn61131::jsonata {

namespace {

void CheckDepth(unsigned int depth) {
    if (depth > kMaxValueDepth) Throw("U1001", "depth");
}

bool EqualsAt(const Value& left, const Value& right, Evaluator& evaluator, unsigned int depth) {
    CheckDepth(depth);
    evaluator.Tick();
    if (left.IsString()) return right.IsString() && left.GetText() == right.GetText();
    if (left.IsNumber()) return right.IsNumber() && left.GetNumber() == right.GetNumber();
    if (left.IsBoolean()) return right.IsBoolean() && left.GetBoolean() == right.GetBoolean();
    if (left.IsFunction()) return right.IsFunction() && &left.GetFunction() == &right.GetFunction();
    if (left.IsArray()) {
        if (!right.IsArray() || left.GetSize() != right.GetSize()) return false;
        for (std::size_t i = 0; i < left.GetSize(); ++i) {
            if (!EqualsAt(left.GetElement(i), right.GetElement(i), evaluator, depth + 1)) return false;
        }
        return true;
    }
    if (left.IsObject()) {
        if (!right.IsObject() || left.GetMemberCount() != right.GetMemberCount()) return false;
        for (std::size_t i = 0; i < left.GetMemberCount(); ++i) {
            const Value other = right.FindMember(left.GetMemberName(i), evaluator.GetHeap());
            if (other.IsUndefined() || !EqualsAt(left.GetMemberValue(i), other, evaluator, depth + 1)) return false;
        }
        return true;
    }
    return left.GetTag() == right.GetTag();
}

std::size_t HashAt(const Value& value, Evaluator& evaluator, unsigned int depth) {
    CheckDepth(depth);
    evaluator.Tick();
    const auto mix = [](std::size_t seed, std::size_t hash) {
        return (std::rotl(seed, 5) ^ hash) * 0x9E3779B97F4A7C15U;
    };
    if (value.IsString()) return std::hash<std::string_view>()(value.GetText());
    if (value.IsNumber()) return std::hash<double>()(value.GetNumber());
    if (value.IsBoolean()) return value.GetBoolean() ? 1 : 2;
    std::size_t hash = 3;
    if (value.IsArray()) {
        for (std::size_t i = 0; i < value.GetSize(); ++i) {
            hash = mix(hash, HashAt(value.GetElement(i), evaluator, depth + 1));
        }
    } else if (value.IsObject()) {
        // Independent of the order of the members.
        for (std::size_t i = 0; i < value.GetMemberCount(); ++i) {
            const std::size_t name = std::hash<std::string_view>()(value.GetMemberName(i));
            hash += mix(name, HashAt(value.GetMemberValue(i), evaluator, depth + 1));
        }
    }
    return hash;
}

/// Writes what $string() makes of a value.
class TextWriter {
 public:
    TextWriter(Evaluator& evaluator, bool isIndented) noexcept : evaluator_(evaluator), isIndented_(isIndented) {}

    [[nodiscard]] std::string TakeText() noexcept { return out_.TakeText(); }

    void Write(const Value& value, unsigned int depth) {
        CheckDepth(depth);
        evaluator_.Tick();
        evaluator_.GetHeap().CheckText(static_cast<double>(out_.GetText().size()));
        if (value.IsString()) {
            WriteText(value.GetText());
        } else if (value.IsNumber()) {
            const Result<std::string> number = PrintRoundedNumber(value.GetNumber());
            if (!number) Throw(depth == 0 ? "D3001" : "D1001", number.GetFailure().value);
            out_.Write(*number);
        } else if (value.IsBoolean()) {
            out_.Write(value.GetBoolean() ? "true" : "false");
        } else if (value.IsFunction()) {
            out_.Write("\"\"");
        } else if (value.IsArray()) {
            WriteElements(value, depth);
        } else if (value.IsObject()) {
            WriteMembers(value, depth);
        } else {
            out_.Write("null");
        }
    }

 private:
    void WriteText(std::string_view text) { JSONValue(std::string(text)).Write(out_); }

    void WriteElements(const Value& array, unsigned int depth) {
        out_.WriteChar('[');
        for (std::size_t i = 0; i < array.GetSize(); ++i) {
            BeginItem(i, depth + 1);
            Write(array.GetElement(i), depth + 1);
        }
        End(array.GetSize(), depth, ']');
    }

    void WriteMembers(const Value& object, unsigned int depth) {
        out_.WriteChar('{');
        for (std::size_t i = 0; i < object.GetMemberCount(); ++i) {
            BeginItem(i, depth + 1);
            WriteText(object.GetMemberName(i));
            out_.Write(isIndented_ ? ": " : ":");
            Write(object.GetMemberValue(i), depth + 1);
        }
        End(object.GetMemberCount(), depth, '}');
    }

    void BeginItem(std::size_t index, unsigned int depth) {
        if (index > 0) out_.WriteChar(',');
        BreakLine(depth);
    }

    void End(std::size_t count, unsigned int depth, char bracket) {
        if (count > 0) BreakLine(depth);
        out_.WriteChar(bracket);
    }

    void BreakLine(unsigned int depth) {
        if (isIndented_) out_.Write("\n" + std::string(std::size_t{2} * depth, ' '));
    }

    Evaluator& evaluator_;
    bool isIndented_;
    CTextOutputString out_;
};

/// Copies a value out of the evaluation and counts the bytes of its text.
class Exporter {
 public:
    explicit Exporter(Evaluator& evaluator) noexcept : evaluator_(evaluator) {}

    JSONValue Export(const Value& value, unsigned int depth) {
        CheckDepth(depth);
        evaluator_.Tick();
        Count(1);
        if (value.IsBoolean()) return JSONValue(value.GetBoolean());
        if (value.IsNumber()) return JSONValue(value.GetNumber());
        if (value.IsString()) {
            Count(value.GetText().size());
            return JSONValue(ToValidUtf8(value.GetText()));
        }
        if (value.IsArray()) {
            JSONValue::Array elements;
            Count(value.GetSize());
            elements.reserve(value.GetSize());
            for (std::size_t i = 0; i < value.GetSize(); ++i) {
                elements.push_back(Export(value.GetElement(i), depth + 1));
            }
            return JSONValue(std::move(elements));
        }
        if (value.IsObject()) {
            JSONValue::Object members;
            Count(value.GetMemberCount());
            for (std::size_t i = 0; i < value.GetMemberCount(); ++i) {
                const Value member = value.GetMemberValue(i);
                if (member.IsFunction() || member.IsUndefined()) continue;
                Count(value.GetMemberName(i).size());
                members.push_back({ToValidUtf8(value.GetMemberName(i)), Export(member, depth + 1)});
            }
            return JSONValue(std::move(members));
        }
        return {};
    }

 private:
    void Count(std::size_t bytes) {
        size_ += static_cast<double>(bytes);
        evaluator_.GetHeap().CheckText(size_);
    }

    Evaluator& evaluator_;
    double size_ = 0;
};

Value CloneAt(const Value& value, Evaluator& evaluator, unsigned int depth) {
    CheckDepth(depth);
    evaluator.Tick();
    if (value.IsArray()) {
        Ref<ArrayNode> array = evaluator.MakeArray();
        for (std::size_t i = 0; i < value.GetSize(); ++i) {
            array->Push(CloneAt(value.GetElement(i), evaluator, depth + 1));
        }
        return Value(std::move(array));
    }
    if (value.IsObject()) {
        Ref<ObjectNode> object = evaluator.GetHeap().Make<ObjectNode>();
        for (std::size_t i = 0; i < value.GetMemberCount(); ++i) {
            object->Set(value.GetMemberName(i), CloneAt(value.GetMemberValue(i), evaluator, depth + 1));
        }
        return Value(std::move(object));
    }
    return value;
}

bool AsBooleanAt(const Value& value, Evaluator& evaluator, unsigned int depth) {
    CheckDepth(depth);
    evaluator.Tick();
    if (value.IsBoolean()) return value.GetBoolean();
    if (value.IsNumber()) return value.GetNumber() != 0 && !std::isnan(value.GetNumber());
    if (value.IsString()) return !value.GetText().empty();
    if (value.IsObject()) return value.GetMemberCount() > 0;
    if (!value.IsArray()) return false;
    for (std::size_t i = 0; i < value.GetSize(); ++i) {
        if (AsBooleanAt(value.GetElement(i), evaluator, depth + 1)) return true;
    }
    return false;
}

}  // namespace

bool AsBoolean(const Value& value, Evaluator& evaluator) {
    return AsBooleanAt(value, evaluator, 0);
}

bool Equals(const Value& left, const Value& right, Evaluator& evaluator) {
    return EqualsAt(left, right, evaluator, 0);
}

std::size_t HashOf(const Value& value, Evaluator& evaluator) {
    return HashAt(value, evaluator, 0);
}

std::string TextOf(const Value& value, Evaluator& evaluator, bool isIndented) {
    if (value.IsString()) return std::string(value.GetText());
    if (value.IsFunction()) return {};
    TextWriter writer(evaluator, isIndented);
    writer.Write(value, 0);
    return writer.TakeText();
}

Value Clone(const Value& value, Evaluator& evaluator) {
    return CloneAt(value, evaluator, 0);
}

std::optional<JSONValue> ToJSON(const Value& value, Evaluator& evaluator) {
    if (value.IsUndefined() || value.IsFunction()) return std::nullopt;
    return Exporter(evaluator).Export(value, 0);
}

}  // namespace tn61131::jsonata
