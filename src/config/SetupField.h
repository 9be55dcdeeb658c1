#pragma once

#include "config/SetupRecord.h"

#include <string>

namespace zav {

// The boxes of the set-up record, in the window's order of entry.
enum class SetupField {
    Tester,
    Location,
    lat,
    lon,
    Environment,
    Frequency,
    Receiver,
    Bandwidth,
    RxNF,
    Antenna,
    AntGain,
    Feedline,
    Loss,
    Attenuator,
    AGC,
    Interval,
    Notes,
};

inline constexpr int kSetupFieldCount = static_cast<int>(SetupField::Notes) + 1;

// The boxes that hold numbers (read with Number, shown in a display format).
bool IsNumericField(SetupField field);

// The text a box holds.
std::string& FieldText(SetupRecord& record, SetupField field);
const std::string& FieldText(const SetupRecord& record, SetupField field);

} // namespace zav
