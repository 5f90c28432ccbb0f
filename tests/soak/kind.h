#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>

namespace soak {

/// What reading back has found. Good is zero, but for `storedThoughThrown`.
struct Findings {
    /// Records or, of what is overwritten, readings.
    std::int64_t read = 0;
    /// Acknowledged, and not there.
    std::int64_t lost = 0;
    /// There, and another than the one that was stored.
    std::int64_t different = 0;
    /// There more than once, though the call returned.
    std::int64_t twice = 0;
    /// There though the call threw: a host that makes such a call again has the record twice, or
    /// has it refused if it has a key of its own.
    std::int64_t storedThoughThrown = 0;
    /// How often it could not be read back, for what the example says.
    std::int64_t unreadable = 0;
    /// The first few of what is wrong.
    QStringList examples;

    void example(const QString& text) {
        constexpr int enough = 20;
        if (examples.size() < enough) {
            examples.append(text);
        }
    }
};

/// One kind of record: how it is stored through the plug-in, and how it is read back, through the
/// plug-in and past it. Holds its own database object, made once for the whole run.
class Kind {
public:
    Kind() = default;
    virtual ~Kind() = default;
    Kind(const Kind&) = delete;
    Kind& operator=(const Kind&) = delete;

    virtual QString name() const = 0;
    virtual bool usesRedis() const = 0;

    /// One call of the plug-in. Calls are numbered from 1.
    virtual void save(int call) = 0;
    /// What became of the call: it returned, or it threw.
    virtual void note(int call, bool acknowledged) = 0;
    /// Reads what later calls would overwrite, after calls have thrown and one has worked again.
    /// Throws what the servers' clients throw when they are not all there; then it is called again.
    virtual void check() {}
    /// Once, at the end, with all servers there.
    virtual Findings readBack() = 0;
};

} // namespace soak
