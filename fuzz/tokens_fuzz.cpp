// Any text as structured text: the tokens' texts make up the source again, their places follow each other, and a token
// that is pushed back comes again. First byte: the settings; the rest is the source.
#include <cstdlib>
#include <string>
#include <utility>

#include "literal/LogicParseContext.h"
#include "platform/TextInput.h"
#include "value/Value.h"

namespace {

bool IsSame(const CLogicToken& left, const CLogicToken& right) {
    return left.GetType() == right.GetType() && left.GetText() == right.GetText() &&
           left.GetKeyword() == right.GetKeyword() && left.IsNotTerminated() == right.IsNotTerminated() &&
           left.Location().GetStart() == right.Location().GetStart() &&
           left.Location().GetEnd() == right.Location().GetEnd();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string source(reinterpret_cast<const char*>(data) + 1, size - 1);
    CTextInputUtf8 input(data + 1, size - 1);
    CLogicParseContext context(&input, nullptr);
    context.SetLineEndHandling((data[0] & 1) != 0);
    context.AllowDollarInIdentifiers((data[0] & 2) != 0);
    const bool hasMark = source.starts_with("\xEF\xBB\xBF");
    std::string joined(source, 0, hasMark ? 3 : 0);
    TextPosition end{0, 1, 1};
    CLogicToken token;
    do {
        context.GetNextLogicToken(token);
        CLogicToken copy(token);
        context.ReplaceToken(std::move(copy));
        context.GetNextLogicToken(copy);
        if (!IsSame(copy, token) || token.Location().GetStart() != end) abort();
        joined += token.GetText();
        end = token.Location().GetEnd();
        CErrorLogToNull log;
        CValue value;
        const bool parsed = value.InitialiseFromToken(log, token, ElementaryType::Undefined);
        if (parsed ? !token.IsLiteral() : log.GetErrorCount() != 1) abort();
    } while (!token.IsType(CParseToken::kEndOfInput));
    if (joined != source) abort();
    return 0;
}
