// Date-times: whatever the text, reading ends; and what is printed reads back as the same value and text.

#include "driveapi/GTLDateTime.h"
#include "tests/fuzz/FuzzSupport.h"

using namespace quenby;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const GTLDateTime value =
        GTLDateTime::dateTimeWithRFC3339String(std::string_view(reinterpret_cast<const char*>(data), size));
    require(value.milliseconds() >= 0 && value.milliseconds() <= 999, "milliseconds lie within a second");
    const QDateTime date = value.date();
    const auto instant = value.millisecondsSinceEpoch();
    if (date.isValid() && instant)
        require(date.toMSecsSinceEpoch() == *instant, "both roads to the instant agree");

    const GTLDateComponents& fields = value.dateComponents();
    const bool isDay = fields.year >= 0 && fields.year <= 9999 && fields.month >= 1 && fields.month <= 12 &&
                       fields.day >= 1 && fields.day <= 31;
    const bool isTime = value.hasTime() && fields.hour >= 0 && fields.hour <= 23 && fields.minute >= 0 &&
                        fields.minute <= 59 && fields.second >= 0 && fields.second <= 59;
    const bool isOffset = value.offsetSeconds() == gtlUndefinedDateComponent ||
                          (value.offsetSeconds() > -86400 && value.offsetSeconds() < 86400);
    if (isDay && isOffset && (isTime || !value.hasTime())) {
        const QString text = value.RFC3339String();
        const GTLDateTime again = GTLDateTime::dateTimeWithRFC3339String(text);
        require(again.RFC3339String() == text, "a printed date-time reads back as the same text");
    }
    return 0;
}
