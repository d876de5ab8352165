#include <limits>
#include <utility>

#include <unicode/basictz.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include "platform/Time.h"

struct CTNTimeZone::Data {
    Data(std::string_view zoneName, std::unique_ptr<const icu::BasicTimeZone> rules)
        : name(zoneName), zone(std::move(rules)) {}

    std::string name;
    std::unique_ptr<const icu::BasicTimeZone> zone;  ///< null only if the platform has no zone data at all: UTC then
};

namespace {

/// Empty, which names no zone, for anything but the characters of zone names: the library reads a name only up to a
/// zero, and looks at any length of text.
icu::UnicodeString FromName(std::string_view name) {
    constexpr std::size_t kLongestName = 255;
    constexpr std::string_view kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/_+-";
    if (name.size() > kLongestName || name.find_first_not_of(kCharacters) != std::string_view::npos) return {};
    return icu::UnicodeString::fromUTF8(icu::StringPiece(name.data(), static_cast<std::int32_t>(name.size())));
}

/// Null for a zone without transition data, which no named zone is.
std::unique_ptr<const icu::BasicTimeZone> CreateZone(std::string_view name) {
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(FromName(name)));
    const auto* basic = dynamic_cast<const icu::BasicTimeZone*>(zone.get());
    if (basic != nullptr) static_cast<void>(zone.release());
    return std::unique_ptr<const icu::BasicTimeZone>(basic);
}

constexpr std::string_view kUTC = "UTC";

/// UTC is asked for by every default-constructed zone: one object serves all.
std::shared_ptr<const CTNTimeZone::Data> SharedUTC() {
    static const std::shared_ptr<const CTNTimeZone::Data> kShared =
        std::make_shared<CTNTimeZone::Data>(kUTC, CreateZone(kUTC));
    return kShared;
}

/// The zone rules count whole milliseconds; rounded down, as a tick belongs to the millisecond it lies in.
double WholeMilliseconds(std::int64_t ticks) {
    std::int64_t milliseconds = ticks / kTicksPerMillisecond;
    if (ticks % kTicksPerMillisecond < 0) --milliseconds;
    return static_cast<double>(milliseconds);  // exact: below 2^53
}

std::int64_t AddSaturating(std::int64_t ticks, std::int64_t offset) {
    std::int64_t sum = 0;
    if (!__builtin_add_overflow(ticks, offset, &sum)) return sum;
    return offset < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

}  // namespace

CTNTimeZone::CTNTimeZone() : data_(SharedUTC()) {}

CTNTimeZone::CTNTimeZone(std::string_view name)
    : data_(name == kUTC || !IsKnown(name) ? SharedUTC() : std::make_shared<Data>(name, CreateZone(name))) {}

CTNTimeZone::CTNTimeZone(const CTNTimeZone&) = default;
// A moved-from zone stays usable, as the interface promises an object for every zone: moving copies the reference.
// NOLINTNEXTLINE(performance-move-constructor-init)
CTNTimeZone::CTNTimeZone(CTNTimeZone&& other) noexcept : CTNTimeZone(std::as_const(other)) {}
CTNTimeZone& CTNTimeZone::operator=(const CTNTimeZone&) = default;
CTNTimeZone& CTNTimeZone::operator=(CTNTimeZone&& other) noexcept {
    data_ = other.data_;
    return *this;
}
CTNTimeZone::~CTNTimeZone() = default;

bool CTNTimeZone::IsKnown(std::string_view name) {
    icu::UnicodeString canonical;
    UBool isSystemId = 0;
    UErrorCode status = U_ZERO_ERROR;
    icu::TimeZone::getCanonicalID(FromName(name), canonical, isSystemId, status);
    // Fixed offsets like "GMT+3" are valid to the library but are no zone names.
    return U_SUCCESS(status) != 0 && isSystemId != 0 && name != UCAL_UNKNOWN_ZONE_ID;
}

const std::string& CTNTimeZone::GetName() const noexcept {
    return data_->name;
}

std::int64_t CTNTimeZone::ToLocal(std::int64_t utcTicks) const {
    if (data_->zone == nullptr) return utcTicks;
    std::int32_t rawMs = 0;
    std::int32_t dstMs = 0;
    UErrorCode status = U_ZERO_ERROR;
    data_->zone->getOffset(WholeMilliseconds(utcTicks), 0, rawMs, dstMs, status);
    return AddSaturating(utcTicks, TicksFromMilliseconds(rawMs + dstMs));
}

std::int64_t CTNTimeZone::ToUTC(std::int64_t localTicks) const {
    if (data_->zone == nullptr) return localTicks;
    std::int32_t rawMs = 0;
    std::int32_t dstMs = 0;
    UErrorCode status = U_ZERO_ERROR;
    // The offset in force before the transition: in a gap it lands behind the gap by as much as the time lay inside it,
    // in an overlap it is the first of the two instants.
    data_->zone->getOffsetFromLocal(WholeMilliseconds(localTicks), UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_FORMER, rawMs,
                                    dstMs, status);
    return AddSaturating(localTicks, -TicksFromMilliseconds(rawMs + dstMs));
}
