#pragma once

#include <QLocale>

namespace zav {

// The decimal separator the operator reads and types in `locale`; "." where the locale's is
// not a single ASCII character.
char LocaleDecimalSeparator(const QLocale& locale = QLocale());

} // namespace zav
