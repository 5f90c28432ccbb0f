#pragma once

#include "redisclient/redisclient.h"
#include "tests/soak/kind.h"
#include "tests/soak/last_write.h"

#include <QByteArray>

#include <array>
#include <string>

namespace soak {

/// Where the plug-in keeps one kind of object by device.
struct Places {
    std::string url;
    int redisPort = 0;
    int redisDb = 0;
    /// Of the Redis keys, before the device's number.
    QByteArray keyStart;
    std::string collection;
};

/// A kind of which every call overwrites what is kept of a device, in Redis and durably, with the
/// number of the call.
class DeviceKind : public Kind {
public:
    bool usesRedis() const final { return true; }
    void save(int call) final;
    void note(int call, bool acknowledged) final;
    void check() final;
    Findings readBack() final;

protected:
    explicit DeviceKind(Places places);

    virtual void push(int device, int call) = 0;
    /// What is read through the plug-in, and in what it differs from what that call has stored.
    struct Pulled {
        int call = 0;
        QStringList differences;
    };
    virtual Pulled pull(int device) = 0;
    /// The same by an object that has never had anything to do with the device.
    virtual Pulled pullAnew(int device) = 0;

    /// How the number of a call is written into what it stores, and taken out of a text that has it
    /// somewhere; 0 if there is none.
    static QString mark(int call);
    static int markedCall(const QByteArray& text);

private:
    struct Copies {
        LastWrite inRedis;
        LastWrite durable;
    };
    static constexpr int devices = 8;

    static int deviceOf(int call) { return 1 + call % devices; }
    Copies& copiesOf(int device) { return m_copies.at(static_cast<std::size_t>(device) - 1); }
    QByteArray keyOf(int device) const { return m_places.keyStart + QByteArray::number(device); }
    void found(LastWrite& copy, int call, int device, const char* where);
    void found(LastWrite& copy, const Pulled& pulled, int device, const char* where);
    int durableCall(int device) const;

    Places m_places;
    std::array<Copies, devices> m_copies;
    Findings m_findings;
};

} // namespace soak
