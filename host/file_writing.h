#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>

namespace host {

/// Why the file has not taken what was written to it, in the system's words. Qt knows no reason
/// where it took a part, as a disk does that becomes full: the file is then asked to take more.
QString writeFault(QFileDevice& file);

/// Makes the file hold just this. Throws Failure, naming it; a part may be there then.
void writeFile(const QString& fileName, const QByteArray& content);

/// As writeFile(), but what the file held until then stays if it cannot be done. For files in
/// folders of ours: one that a link leads to is replaced there, whatever it is.
void replaceFile(const QString& fileName, const QByteArray& content);

} // namespace host
