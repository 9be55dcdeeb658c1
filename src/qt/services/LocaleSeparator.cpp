#include "qt/services/LocaleSeparator.h"

namespace zav {

char LocaleDecimalSeparator(const QLocale& locale) {
    const QString point = locale.decimalPoint();
    return point.size() == 1 && point[0].unicode() < 128 ? point[0].toLatin1() : '.';
}

} // namespace zav
