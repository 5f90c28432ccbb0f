#pragma once

#include <QByteArray>
#include <QString>

#include <map>

namespace test_support {

/// Sets and unsets variables of the process' environment, and puts them back as they were.
class Environment {
public:
    Environment() = default;
    ~Environment() {
        for (const auto& [name, value] : m_previous) {
            value.isNull() ? qunsetenv(name.constData()) : qputenv(name.constData(), value);
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    void set(const char* name, const QString& value) {
        keep(name);
        qputenv(name, value.toLocal8Bit());
    }

    void unset(const char* name) {
        keep(name);
        qunsetenv(name);
    }

private:
    void keep(const char* name) { m_previous.try_emplace(name, qgetenv(name)); }

    std::map<QByteArray, QByteArray> m_previous;
};

} // namespace test_support
