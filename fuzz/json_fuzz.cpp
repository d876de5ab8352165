// Any bytes as JSON: what is accepted writes as JSON that reads back to an equal value, and what is refused is reported
// exactly once.
#include <cstdlib>
#include <string_view>

#include "platform/ErrorLog.h"
#include "platform/JSONValue.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    COutputLogString log;
    JSONParseContext context({reinterpret_cast<const char*>(data), size}, log);
    JSONValue json;
    const bool parsed = json.Parse(context);
    if (log.GetErrorCount() != (parsed ? 0U : 1U)) abort();
    if (!parsed) return 0;
    CTextOutputString text;
    json.Write(text);
    JSONParseContext written(text.GetText(), log);
    JSONValue again;
    if (!again.Parse(written) || !(again == json)) abort();
    CValue value;
    value.SetFromJSONValue(&json);
    return 0;
}
