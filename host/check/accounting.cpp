#include "host/check/accounting.h"

#include <QStringList>

namespace host {

bool isComplete(const Accounting& accounting) {
    const int accepted = accounting.read - accounting.rejected;
    return accounting.stored == accepted && accounting.equal == accepted &&
           accounting.unexpected == 0;
}

QString accountingLine(const Accounting& accounting, QLatin1String origin) {
    QStringList parts;
    const auto add = [&parts](int count, QLatin1String what) {
        parts.append(QString::number(count) + QLatin1Char(' ') + what);
    };
    add(accounting.read, origin);
    if (accounting.rejected != 0) {
        add(accounting.rejected, QLatin1String("rejected"));
    }
    add(accounting.stored, QLatin1String("stored"));
    add(accounting.equal, QLatin1String("read back equal"));
    add(accounting.lost, QLatin1String("lost"));
    if (accounting.different != 0) {
        add(accounting.different, QLatin1String("different"));
    }
    if (accounting.unexpected != 0) {
        add(accounting.unexpected, QLatin1String("unexpected"));
    }
    return parts.join(QLatin1String(", "));
}

} // namespace host
