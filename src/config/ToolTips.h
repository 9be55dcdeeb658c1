#pragma once

#include "config/SetupField.h"

#include <string>

namespace zav {

// What a set-up box holds, its unit and the values it takes. The gain box and the interval box
// change meaning with their options.
std::string SetupFieldTip(SetupField field, bool antennaFactor, bool samples);

// What a result grid's row or column heading means (the headings as the grids hold them, with
// "dBuV/m"); empty for a heading it does not know.
std::string GridHeadingTip(const std::string& heading);

// What one of the figures of the ITU-R P.372 comparison means, by its caption.
std::string P372FigureTip(const std::string& caption);

} // namespace zav
