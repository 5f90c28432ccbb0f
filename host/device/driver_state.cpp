#include "host/device/driver_state.h"

#include "host/check/attempt.h"
#include "host/command_line/json_options.h"
#include "host/input/settings.h"

#include <QVariant>

#include <cmath>
#include <limits>
#include <map>

namespace host {

namespace {

QString serversOf(Session& session) {
    return QStringLiteral("%1 and %2")
        .arg(serverName(session.settings()), redisName(session.settings()));
}

QString what(const char* doing, const StateOf& state, Session& session) {
    return QStringLiteral("%1 the state %2:%3 at %4")
        .arg(QLatin1String(doing), state.prefix)
        .arg(state.device)
        .arg(serversOf(session));
}

QJsonObject pull(const StateOf& state, Session& session) {
    auto& store = session.states();
    store.SetPrefix(state.prefix);
    return attempt(what("reading", state, session), [&] {
        store.Pull(state.device);
        return store.GetAll(state.device);
    });
}

bool isWhole(double number) {
    return std::trunc(number) == number && number >= std::numeric_limits<int>::min() &&
           number <= std::numeric_limits<int>::max();
}

void set(interfaces::IDriverState& store, int device, const QString& name,
         const QJsonValue& value) {
    if (value.isObject()) {
        store.SetValueAsVariant(device, name, QVariant(value.toObject()));
    } else if (value.isString()) {
        store.SetValue(device, name, value.toString().toUtf8());
    } else if (const double number = value.toDouble(); isWhole(number)) {
        store.SetValue(device, name, static_cast<int>(number));
    } else {
        store.SetValue(device, name, number);
    }
}

} // namespace

std::optional<QJsonValue> stateValue(const QString& typed) {
    const auto value = parseJson(typed);
    if (!value) {
        const auto first = typed.trimmed().left(1);
        const bool meantAsJson = first == QLatin1String("{") || first == QLatin1String("[") ||
                                 first == QLatin1String("\"");
        return meantAsJson ? std::nullopt : std::optional(QJsonValue(typed));
    }
    const bool fits = value->isDouble() || value->isString() || value->isObject();
    return fits ? value : std::nullopt;
}

void showState(const StateOf& state, Session& session) {
    const auto values = pull(state, session);
    auto output = session.output(
        {{.name = QStringLiteral("modem_id"), .title = {}, .number = true},
         {.name = QStringLiteral("name"), .title = QStringLiteral("Name")},
         {.name = QStringLiteral("value"), .title = QStringLiteral("Value"), .widest = 60}});
    for (auto value = values.begin(); value != values.end(); ++value) {
        output.add({state.device, value.key(), value.value()});
    }
    output.finish();
    session.results().requireWritten();
    if (values.isEmpty()) {
        session.remarks().line(QStringLiteral("Device %1 has no state under the prefix \"%2\".")
                                   .arg(state.device)
                                   .arg(state.prefix));
    }
}

void setStateValue(const StateOf& state, const QString& name, const QJsonValue& value, bool persist,
                   Session& session) {
    auto wanted = pull(state, session);
    wanted.insert(name, value);
    auto& store = session.states();
    attempt(what("storing", state, session), [&] {
        set(store, state.device, name, value);
        store.Push(state.device, persist);
    });
    // The store does not tell whether the servers took it.
    if (pull(state, session) != wanted) {
        throw Failure(what("storing", state, session) +
                      QStringLiteral(" failed: it does not read back as it was stored"));
    }
}

void deleteState(const StateOf& state, Session& session) {
    auto& store = session.states();
    store.SetPrefix(state.prefix);
    attempt(what("deleting", state, session), [&] { store.Delete(state.device); });
    if (!pull(state, session).isEmpty()) {
        throw Failure(what("deleting", state, session) +
                      QStringLiteral(" failed: it is still there"));
    }
}

void listStates(const QString& prefix, Session& session) {
    // The keys are SECOND:FIRST:DEVICE; at which colon a longer prefix is parted does not matter.
    const auto second = prefix.section(QLatin1Char(':'), 0, 0);
    const auto first = prefix.section(QLatin1Char(':'), 1);
    auto& store = session.states();
    const auto states =
        attempt(QStringLiteral("reading the states %1:* at %2").arg(prefix, serversOf(session)),
                [&] { return store.GetAllStates(first, second); });
    std::map<int, QJsonObject> byDevice;
    for (auto state = states->begin(); state != states->end(); ++state) {
        byDevice.emplace(state.key(), state.value());
    }
    auto output = session.output(
        {{.name = QStringLiteral("modem_id"), .title = QStringLiteral("Device"), .number = true},
         {.name = QStringLiteral("state"), .title = QStringLiteral("State"), .widest = 100}});
    for (const auto& [device, state] : byDevice) {
        output.add({device, state});
    }
    output.finish();
    session.results().requireWritten();
    if (byDevice.empty()) {
        session.remarks().line(QStringLiteral("No states found under the prefix %1.").arg(prefix));
    }
}

} // namespace host
