#include "measure/Observation.h"

#include "platform/Format.h"
#include "platform/Number.h"
#include "platform/TextHelpers.h"

namespace zav {

std::string FormatObsTime(std::time_t time) {
    const std::tm local = LocalTime(time);
    char buf[32];
    std::strftime(buf, sizeof buf, "%Y%m%d%H%M%S", &local);
    return buf;
}

std::string FormatObsCoordinate(const std::string& fieldText, char decimalSeparator) {
    if (fieldText.empty())
        return {};
    return Format(Number(fieldText, decimalSeparator), "00.000000", decimalSeparator);
}

} // namespace zav
