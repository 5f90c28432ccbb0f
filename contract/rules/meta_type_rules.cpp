#include "contract/expectations.h"
#include "contract/rules/rules.h"
#include "contract/trial.h"

#include <QMetaType>

#include <array>

namespace contract {

namespace {

constexpr std::array names{"Command",   "RedisClient::Command", "Response", "RedisClient::Response",
                           "QVariant*", "QVector<QVariant*>"};

bool isKnown(const char* name) {
    return QMetaType::type(name) != QMetaType::UnknownType;
}

/// Loads the plug-in. Throws NotApplicable if it registers none of the names, as a driver does that
/// has no Redis client.
void load(Trial& trial) {
    trial.plugin().factory();
    if (std::ranges::none_of(names, isKnown)) {
        throw NotApplicable{QStringLiteral("the plug-in registers no types of a Redis client")};
    }
}

void areRegistered(Trial& trial) {
    load(trial);
    for (const char* const name : names) {
        expect(isKnown(name), QStringLiteral("the name %1 is registered").arg(QLatin1String(name)),
               QStringLiteral("it is not"));
    }
    for (const auto& [shorter, longer] : {std::pair{"Command", "RedisClient::Command"},
                                          std::pair{"Response", "RedisClient::Response"}}) {
        expect(QMetaType::type(shorter) == QMetaType::type(longer),
               QStringLiteral("%1 and %2 are one type")
                   .arg(QLatin1String(shorter), QLatin1String(longer)),
               QStringLiteral("two types"));
    }
}

void canBeMade(Trial& trial) {
    load(trial);
    for (const char* const name : names) {
        const QMetaType type(QMetaType::type(name));
        void* const object = type.create();
        expect(object != nullptr, QStringLiteral("a ") + QLatin1String(name),
               QStringLiteral("a null pointer"));
        void* const copy = type.create(object);
        type.destroy(copy);
        type.destroy(object);
    }
}

/// Larger than any Redis client's command.
struct TypeOfTheHost {
    std::array<char, 1024> other{};
};

// Qt would end the process over a second type of the same name.
void leaveTheHosts(Trial& trial) {
    TypeOfTheHost any;
    const int host = qRegisterMetaType<TypeOfTheHost>("Command", &any);
    trial.plugin().factory();
    expectEqual(QStringLiteral("the number of the host's type \"Command\""),
                QMetaType::type("Command"), host);
    expectEqual(QStringLiteral("its size"), QMetaType::sizeOf(host),
                static_cast<int>(sizeof(TypeOfTheHost)));
}

constexpr std::array rules{
    Rule{"meta-types.registered",
         "Loading registers the Redis client's types with Qt, command and response each under two "
         "names",
         areRegistered},
    Rule{"meta-types.usable", "The registered types can be made, copied and destroyed", canBeMade},
    Rule{"meta-types.of-the-host",
         "A type that the host has registered under one of the names stays the host's",
         leaveTheHosts},
};

} // namespace

std::span<const Rule> metaTypeRules() {
    return rules;
}

} // namespace contract
