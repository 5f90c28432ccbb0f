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

/// Gives the process a locale while it lives, in which numbers have a decimal comma. The locale is
/// made for the purpose, by localedef. Throws std::runtime_error if it cannot be.
class decimal_comma {
public:
    decimal_comma()
        : m_wasSet(qEnvironmentVariableIsSet("LOCPATH")), m_previous(qgetenv("LOCPATH")) {
        // Warnings make localedef fail too, so only its work is looked at.
        QProcess::execute(QStringLiteral("localedef"),
                          QStringList{QStringLiteral("-i"), QStringLiteral("de_DE"),
                                      QStringLiteral("-f"), QStringLiteral("UTF-8"),
                                      m_folder.filePath(QStringLiteral("de_DE.UTF-8"))});
        qputenv("LOCPATH", m_folder.path().toLocal8Bit());
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
    void restore() {
        std::setlocale(LC_ALL, "C");
        if (m_wasSet) {
            qputenv("LOCPATH", m_previous);
        } else {
            qunsetenv("LOCPATH");
        }
    }

    QTemporaryDir m_folder;
    bool m_wasSet;
    QByteArray m_previous;
};

} // namespace test_support
