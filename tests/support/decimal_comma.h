#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <clocale>
#include <stdexcept>
#include <string>

namespace test_support {

/// Gives the process a locale while it lives, in which numbers have a decimal comma, as a
/// QCoreApplication does under LC_ALL=de_DE.UTF-8. The locale is made for the purpose, by
/// localedef, once for the process. Throws std::runtime_error if it cannot be.
class decimal_comma {
public:
    decimal_comma()
        : m_wasSet(qEnvironmentVariableIsSet("LOCPATH")), m_previous(qgetenv("LOCPATH")) {
        qputenv("LOCPATH", folder().toLocal8Bit());
        if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr ||
            std::string(std::localeconv()->decimal_point) != ",") {
            restore();
            throw std::runtime_error("localedef made no locale with a decimal comma; is there "
                                     "/usr/share/i18n/locales/de_DE (Debian: locales)?");
        }
    }

    ~decimal_comma() { restore(); }

    decimal_comma(const decimal_comma&) = delete;
    decimal_comma& operator=(const decimal_comma&) = delete;

private:
    static QString folder() {
        static const QTemporaryDir made;
        // Warnings make localedef fail too, so only its work is looked at.
        static const int ended = QProcess::execute(
            QStringLiteral("localedef"),
            QStringList{QStringLiteral("-i"), QStringLiteral("de_DE"), QStringLiteral("-f"),
                        QStringLiteral("UTF-8"), made.filePath(QStringLiteral("de_DE.UTF-8"))});
        static_cast<void>(ended);
        return made.path();
    }

    void restore() {
        std::setlocale(LC_ALL, "C");
        if (m_wasSet) {
            qputenv("LOCPATH", m_previous);
        } else {
            qunsetenv("LOCPATH");
        }
    }

    bool m_wasSet;
    QByteArray m_previous;
};

} // namespace test_support
