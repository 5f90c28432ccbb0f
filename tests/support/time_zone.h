#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <ctime>

namespace test_support {

/// Gives the process another local time zone while it lives, for example "XST-05:30" (half past
/// five ahead of UTC; the sign is POSIX's). For tests of what depends on the host's zone.
class local_time_zone {
public:
    explicit local_time_zone(const char* posixRule)
        : m_wasSet(qEnvironmentVariableIsSet("TZ")), m_previous(qgetenv("TZ")) {
        qputenv("TZ", posixRule);
        tzset();
    }

    ~local_time_zone() {
        if (m_wasSet) {
            qputenv("TZ", m_previous);
        } else {
            qunsetenv("TZ");
        }
        tzset();
    }

    local_time_zone(const local_time_zone&) = delete;
    local_time_zone& operator=(const local_time_zone&) = delete;

private:
    bool m_wasSet;
    QByteArray m_previous;
};

} // namespace test_support
