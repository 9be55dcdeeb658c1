#include "measure/Observation.h"

#include "platform/Format.h"
#include "platform/Number.h"

namespace zav {

std::string FormatObsTime(std::time_t time) {
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &time);
#else
    localtime_r(&time, &local);
#endif
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
