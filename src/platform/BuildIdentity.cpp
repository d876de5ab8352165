#include "platform/BuildIdentity.h"

#include <utility>

#include "platform/BinaryStream.h"

namespace {

constexpr unsigned char kRecordFormat = 1;

}  // namespace

bool CBuildIdentity::LoadContent(CBinaryInput& input) {
    unsigned char format = 0;
    input >> format;
    if (format != kRecordFormat) return false;
    CBuildIdentity read;
    long long ticks = 0;
    input >> read.product >> read.major >> read.minor >> read.build >> read.revision >> ticks >> read.sourceRevision;
    if (input.HasFailed()) return false;
    read.buildTime = ticks;
    *this = std::move(read);
    return true;
}

void CBuildIdentity::SaveContent(CBinaryOutput& output) const {
    output << kRecordFormat << product << major << minor << build << revision << static_cast<long long>(buildTime)
           << sourceRevision;
}
