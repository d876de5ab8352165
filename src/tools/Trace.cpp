#include "tools/Trace.h"

namespace tn61131 {

bool Trace::Open(const std::string& path, std::vector<WatchedVariable> variables) {
    file_.open(path, std::ios::binary | std::ios::trunc);
    variables_ = std::move(variables);
    values_.resize(variables_.size());
    for (const WatchedVariable& variable : variables_) {
        const SymbolType& type = variable.reference.type;
        writer_.AddVariable(variable.name, type.IsArray() ? ElementaryType::Composite : type.elementary);
    }
    writer_.WriteHeader();
    return file_.good();
}

void Trace::Sample(long long timestampMS, const WatchMemory& memory) {
    for (std::size_t i = 0; i < variables_.size(); ++i) {
        if (!ReadWatched(variables_[i], memory, values_[i])) values_[i].SetUndefined();
    }
    writer_.Sample(timestampMS, values_);
}

bool Trace::Close() {
    file_.close();
    return file_.good();
}

}  // namespace tn61131
