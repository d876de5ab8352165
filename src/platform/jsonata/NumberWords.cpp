#include "platform/jsonata/NumberWords.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace tn61131::jsonata {

namespace {

/// A word, its ordinal form and its value.
struct NumberWord {
    std::string_view cardinal;
    std::string_view ordinal;
    double value;
};

// 0 to 20 at their index, then the tens, then the units that multiply.
constexpr std::array kWords = {
    NumberWord{"Zero", "Zeroth", 0},
    NumberWord{"One", "First", 1},
    NumberWord{"Two", "Second", 2},
    NumberWord{"Three", "Third", 3},
    NumberWord{"Four", "Fourth", 4},
    NumberWord{"Five", "Fifth", 5},
    NumberWord{"Six", "Sixth", 6},
    NumberWord{"Seven", "Seventh", 7},
    NumberWord{"Eight", "Eighth", 8},
    NumberWord{"Nine", "Ninth", 9},
    NumberWord{"Ten", "Tenth", 10},
    NumberWord{"Eleven", "Eleventh", 11},
    NumberWord{"Twelve", "Twelfth", 12},
    NumberWord{"Thirteen", "Thirteenth", 13},
    NumberWord{"Fourteen", "Fourteenth", 14},
    NumberWord{"Fifteen", "Fifteenth", 15},
    NumberWord{"Sixteen", "Sixteenth", 16},
    NumberWord{"Seventeen", "Seventeenth", 17},
    NumberWord{"Eighteen", "Eighteenth", 18},
    NumberWord{"Nineteen", "Nineteenth", 19},
    NumberWord{"Twenty", "Twentieth", 20},
    NumberWord{"Thirty", "Thirtieth", 30},
    NumberWord{"Forty", "Fortieth", 40},
    NumberWord{"Fifty", "Fiftieth", 50},
    NumberWord{"Sixty", "Sixtieth", 60},
    NumberWord{"Seventy", "Seventieth", 70},
    NumberWord{"Eighty", "Eightieth", 80},
    NumberWord{"Ninety", "Ninetieth", 90},
    NumberWord{"Hundred", "Hundredth", 1e2},
    NumberWord{"Thousand", "Thousandth", 1e3},
    NumberWord{"Million", "Millionth", 1e6},
    NumberWord{"Billion", "Billionth", 1e9},
    NumberWord{"Trillion", "Trillionth", 1e12},
};
constexpr std::size_t kTwenty = 20;
constexpr std::size_t kHundred = 28;
constexpr std::size_t kThousand = 29;
constexpr std::size_t kTrillion = 32;
constexpr std::size_t kTrillionDigits = 12;
static_assert(kWords[kTwenty].value == 20 && kWords[kHundred].value == 1e2 && kWords[kThousand].value == 1e3);
static_assert(kWords[kTrillion].value == 1e12 && kTrillion + 1 == kWords.size());

std::string_view DropLeadingZeros(std::string_view digits) {
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

/// Builds the words from left to right; only the last one can be ordinal.
class WordWriter {
 public:
    void Write(std::string_view digits) {
        digits = DropLeadingZeros(digits);
        const std::size_t size = digits.size();
        if (size <= 2) {
            WriteBelowHundred(digits);
        } else if (size == 3) {
            WriteBelowHundred(digits.substr(0, 1));
            WriteUnit(kHundred);
            WriteRest(digits.substr(1));
        } else if (size <= kTrillionDigits) {
            const std::size_t groups = (size - 1) / 3;
            Write(digits.substr(0, size - groups * 3));
            WriteUnit(kThousand + groups - 1);
            WriteRest(digits.substr(size - groups * 3));
        } else {
            Write(digits.substr(0, size - kTrillionDigits));
            WriteUnit(kTrillion);
            WriteRest(digits.substr(size - kTrillionDigits));
        }
    }

    [[nodiscard]] std::string Finish(NumberWordKind kind) {
        text_ += kind == NumberWordKind::Ordinal ? kWords[last_].ordinal : kWords[last_].cardinal;
        return std::move(text_);
    }

 private:
    void WriteWord(std::size_t word) {
        if (hasLast_) text_.append(kWords[last_].cardinal).append(joint_);
        hasLast_ = true;
        last_ = word;
    }

    void WriteUnit(std::size_t unit) {
        joint_ = " ";
        WriteWord(unit);
    }

    void WriteRest(std::string_view digits) {
        digits = DropLeadingZeros(digits);
        if (digits.empty()) return;
        joint_ = digits.size() <= 2 ? " and " : ", ";
        Write(digits);
    }

    void WriteBelowHundred(std::string_view digits) {
        std::size_t value = 0;
        for (const char c : digits)
            value = value * 10 + static_cast<std::size_t>(c - '0');
        if (value <= kTwenty) return WriteWord(value);
        WriteWord(kTwenty + value / 10 - 2);
        if (value % 10 == 0) return;
        joint_ = "-";
        WriteWord(value % 10);
    }

    std::string text_;
    std::string_view joint_;  ///< what goes between the last word and the next one
    std::size_t last_ = 0;
    bool hasLast_ = false;
};

bool EqualsIgnoringCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return (a | 0x20) == (b | 0x20); });
}

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

const NumberWord* FindWord(std::string_view text) {
    const auto* const found = std::find_if(kWords.begin(), kWords.end(), [text](const NumberWord& word) {
        return EqualsIgnoringCase(text, word.cardinal) || EqualsIgnoringCase(text, word.ordinal);
    });
    return found == kWords.end() ? nullptr : found;
}

/// Multiplies what the words so far count below the unit: "one thousand, two hundred | trillion" counts 1200 of them.
void Multiply(std::vector<double>& parts, double unit) {
    double counted = 0;
    bool isAny = false;
    while (!parts.empty() && parts.back() < unit) {
        counted += parts.back();
        parts.pop_back();
        isAny = true;
    }
    if (!isAny && !parts.empty()) {
        counted = parts.back();
        parts.pop_back();
    }
    parts.push_back(counted * unit);
}

}  // namespace

std::string WriteNumberWords(std::string_view digits, NumberWordKind kind) {
    WordWriter writer;
    writer.Write(digits);
    return writer.Finish(kind);
}

std::optional<double> ReadNumberWords(std::string_view text) {
    std::vector<double> parts;  // what has been counted, each smaller than the one before
    bool isAfterWord = false;   // what "and" must stand behind
    bool isWordMissing = true;  // at the start and behind "and"
    for (std::size_t at = 0; at < text.size();) {
        if (!IsLetter(text[at])) {
            if (std::string_view(" ,-\t\r\n").find(text[at]) == std::string_view::npos) return std::nullopt;
            ++at;
            continue;
        }
        std::size_t end = at;
        while (end < text.size() && IsLetter(text[end]))
            ++end;
        const std::string_view letters = text.substr(at, end - at);
        at = end;
        if (isAfterWord && EqualsIgnoringCase(letters, "and")) {
            isAfterWord = false;
            isWordMissing = true;
            continue;
        }
        const NumberWord* const word = FindWord(letters);
        if (word == nullptr) return std::nullopt;
        isAfterWord = true;
        isWordMissing = false;
        if (word->value >= 100) {
            Multiply(parts, word->value);
        } else if (parts.empty() || parts.back() >= 1000) {
            parts.push_back(word->value);
        } else {
            parts.back() += word->value;
        }
    }
    if (isWordMissing) return std::nullopt;
    double sum = 0;
    for (const double part : parts)
        sum += part;
    return sum;
}

std::string GetNumberWordsExpression() {
    std::string expression = "(?:and|[-, ]";
    for (const NumberWord& word : kWords)
        expression.append("|").append(word.cardinal).append("|").append(word.ordinal);
    return expression + ")+";
}

}  // namespace tn61131::jsonata
