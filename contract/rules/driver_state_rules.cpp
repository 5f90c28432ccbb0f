#include "contract/expectations.h"
#include "contract/kinds.h"
#include "contract/rules/rules.h"
#include "contract/slot.h"

#include <QHash>
#include <QJsonArray>

#include <algorithm>
#include <array>
#include <variant>
#include <vector>

namespace contract {

namespace {

using StateValue = std::variant<int, double, QByteArray>;

QString name() {
    return QStringLiteral("name");
}

QJsonObject content(double number) {
    return {{name(), number}};
}

void expectState(interfaces::IDriverState& states, int device, const QJsonObject& expected) {
    expectEqual(QStringLiteral("the state"), states.GetAll(device), expected);
}

/// What another object finds in the store.
void expectStored(Trial& trial, int device, const QJsonObject& expected) {
    const auto other = trial.makeStates();
    other->Pull(device);
    expectState(*other, device, expected);
}

void store(Trial& trial, int device, double number, bool persist = false) {
    auto& states = trial.states();
    states.SetValue(device, name(), number);
    states.Push(device, persist);
}

void standInTheirSlots(Trial& trial) {
    auto* const states = &trial.states();
    const int device = trial.device();
    const QString text = name();
    slot<void(const QString&)>::call(states, 1, trial.prefix());
    expectEqual(QStringLiteral("what slot 2 gives"), slot<const QString&()>::call(states, 2),
                trial.prefix());
    slot<void(int, const QString&, const StateValue&)>::call(states, 7, device, text,
                                                             StateValue(2.5));
    expectEqual(QStringLiteral("what slot 6 gives"),
                slot<StateValue(int, const QString&)>::call(states, 6, device, text),
                StateValue(2.5));
    expectEqual(QStringLiteral("what slot 8 gives"),
                slot<QVariant(int, const QString&)>::call(states, 8, device, text), QVariant(2.5));
    expectEqual(QStringLiteral("what slot 10 gives"),
                slot<QJsonObject(int)>::call(states, 10, device), content(2.5));
    slot<bool(int, bool)>::call(states, 4, device, false);
    expectEqual(QStringLiteral("what slot 11 gives"),
                slot<QList<QVariant>(const QString&, const QString&)>::call(
                    states, 11, trial.prefixFirst(), Trial::prefixSecond()),
                {device});
    using All = std::shared_ptr<QHash<int, QJsonObject>>(const QString&, const QString&);
    expectEqual(
        QStringLiteral("what slot 13 gives"),
        expectObject(QStringLiteral("what slot 13 gives"),
                     slot<All>::call(states, 13, trial.prefixFirst(), Trial::prefixSecond())),
        {{device, content(2.5)}});
    slot<void(int, const QString&, const QVariant&)>::call(states, 9, device, text, content(1));
    slot<bool(int)>::call(states, 3, device);
    expectState(*states, device, content(2.5));
    slot<bool(int)>::call(states, 5, device);
    states->Push(device, false);
    slot<bool(const QList<int>&, const QDateTime&, const QDateTime&)>::call(states, 12, {device},
                                                                            instant(0), instant(0));
    expectStored(trial, device, {});
    expect(slot<interfaces::IDriverDLqueue*()>::call(states, 14) == states->DLqueue(),
           QStringLiteral("slot 14 is DLqueue"), QStringLiteral("another answer"));
}

void keepThePrefix(Trial& trial) {
    const auto states = trial.plugin().factory().CreateDriverStateInst(trial.settings(), nullptr);
    expectEqual(QStringLiteral("a new object's prefix"), states->GetPrefix(), QString());
    states->SetPrefix(QStringLiteral("some prefix"));
    expectEqual(QStringLiteral("the prefix"), states->GetPrefix(), QStringLiteral("some prefix"));
}

void prefixesAreApart(Trial& trial) {
    const int device = trial.device();
    store(trial, device, 1);
    const auto other = trial.makeStates();
    other->SetPrefix(trial.otherPrefix());
    other->Pull(device);
    expectState(*other, device, {});
    other->SetValue(device, name(), 2.0);
    other->Push(device, false);
    expectStored(trial, device, content(1));
    other->Delete(device);
    expectStored(trial, device, content(1));
}

void beginEmpty(Trial& trial) {
    auto& states = trial.states();
    const int device = trial.device();
    expectState(states, device, {});
    states.Pull(device);
    expectState(states, device, {});
}

void stayInMemory(Trial& trial) {
    auto& states = trial.states();
    const int device = trial.device();
    store(trial, device, 1);
    states.SetValue(device, name(), 2.0);
    expectState(states, device, content(2));
    expectStored(trial, device, content(1));
    states.Pull(device);
    expectState(states, device, content(1));
}

void arePushedAndPulled(Trial& trial) {
    const int device = trial.device();
    store(trial, device, 1);
    store(trial, trial.device(1), 2);
    expectStored(trial, device, content(1));
    expectStored(trial, trial.device(1), content(2));
    store(trial, device, 3);
    expectStored(trial, device, content(3));
}

void arePushedDurably(Trial& trial) {
    const int device = trial.device();
    store(trial, device, 1, true);
    expectStored(trial, device, content(1));
    store(trial, device, 2, true);
    expectStored(trial, device, content(2));
}

void areEachObjectsOwn(Trial& trial) {
    const auto one = trial.makeStates();
    const auto other = trial.makeStates();
    one->SetValue(trial.device(), name(), 1.0);
    expectState(*other, trial.device(), {});
    expectState(*one, trial.device(1), {});
}

void expectValue(Trial& trial, const StateValue& set, const StateValue& expected) {
    auto& states = trial.states();
    states.SetValue(trial.device(), name(), set);
    expectEqual(toText(set) + QStringLiteral(", read again,"),
                states.GetValue(trial.device(), name()), expected);
}

void areZeroIfAbsent(Trial& trial) {
    expectEqual(QStringLiteral("a value that is not there"),
                trial.states().GetValue(trial.device(), name()), StateValue(0));
}

void numbersAreDoubles(Trial& trial) {
    expectValue(trial, 5, 5.0);
    expectValue(trial, -2147483647, -2147483647.0);
    expectValue(trial, 2.5, 2.5);
    expectEqual(QStringLiteral("what is kept of a number"), trial.states().GetAll(trial.device()),
                content(2.5));
}

void textsThatAreNumbers(Trial& trial) {
    expectValue(trial, QByteArrayLiteral("42"), 42);
    expectValue(trial, QByteArrayLiteral("-7"), -7);
    expectValue(trial, QByteArrayLiteral("4.5"), 4.5);
    expectValue(trial, QByteArrayLiteral("abc"), QByteArrayLiteral("abc"));
    expectValue(trial, QByteArrayLiteral("4 km"), QByteArrayLiteral("4 km"));
}

void bytesAreUtf8(Trial& trial) {
    const auto text = QStringLiteral("\u00e4\u03a9\U0001f600");
    expectValue(trial, text.toUtf8(), text.toUtf8());
    expectEqual(QStringLiteral("what is kept of bytes"), trial.states().GetAll(trial.device()),
                {{name(), text}});
    expectValue(trial, QByteArray("before\0after", 12), QByteArrayLiteral("before"));
}

void variants(Trial& trial) {
    auto& states = trial.states();
    const int device = trial.device();
    expect(!states.GetValueAsVariant(device, name()).isValid(),
           QStringLiteral("a value that is not there is an invalid variant"),
           QStringLiteral("a valid one"));
    states.SetValue(device, name(), 5);
    expectEqual(QStringLiteral("a number"), states.GetValueAsVariant(device, name()),
                QVariant(5.0));
    states.SetValueAsVariant(device, name(), content(1));
    expectEqual(QStringLiteral("an object"),
                QJsonObject::fromVariantMap(states.GetValueAsVariant(device, name()).toMap()),
                content(1));
    states.SetValueAsVariant(device, name(), QStringLiteral("no object"));
    expectState(states, device, {{name(), QJsonObject()}});
}

void anyContent(Trial& trial) {
    const QJsonObject nested{
        {QStringLiteral("list"), QJsonArray{1, 2.5, QStringLiteral("three")}},
        {QStringLiteral("text"), QStringLiteral("\u00e4 \"\\\n\U0001f600")},
        {QStringLiteral("Z\u00e4hler"), QJsonObject{{QStringLiteral("no"), false}}},
        {QStringLiteral("2^53"), 9007199254740992.0},
        {QStringLiteral("tenth"), 0.1}};
    auto& states = trial.states();
    const int device = trial.device();
    states.SetValueAsVariant(device, name(), nested);
    states.Push(device, true);
    expectStored(trial, device, {{name(), nested}});
}

void deletionLeavesTheWorkingCopy(Trial& trial) {
    auto& states = trial.states();
    const int device = trial.device();
    store(trial, device, 1, true);
    store(trial, trial.device(1), 2);
    states.Delete(device);
    expectState(states, device, content(1));
    states.Pull(device);
    expectState(states, device, {});
    expectStored(trial, trial.device(1), content(2));
}

void deleteDevices(Trial& trial) {
    for (int index = 0; index < 3; ++index) {
        store(trial, trial.device(index), index, true);
    }
    const auto inThePast = instant(-1);
    trial.states().DeleteDevices({trial.device(0), trial.device(1)}, inThePast, inThePast);
    expectStored(trial, trial.device(0), {});
    expectStored(trial, trial.device(1), {});
    expectStored(trial, trial.device(2), content(2));
}

void sayYes(Trial& trial) {
    auto& states = trial.states();
    const int device = trial.device();
    const bool all = states.Pull(device) && states.Push(device, false) &&
                     states.Push(device, true) && states.Delete(device) && states.Delete(device) &&
                     states.DeleteDevices({}, instant(0), instant(0)) &&
                     states.DeleteDevices({device}, instant(0), instant(0));
    expect(all, QStringLiteral("Pull, Push, Delete and DeleteDevices give true"),
           QStringLiteral("false"));
}

void listTheirDevices(Trial& trial) {
    auto& states = trial.states();
    expectEqual(QStringLiteral("the list of no devices"),
                states.GetIDs(trial.prefixFirst(), Trial::prefixSecond()), {});
    for (int index = 0; index < 3; ++index) {
        store(trial, trial.device(index), index);
    }
    const auto other = trial.makeStates();
    auto ids = other->GetIDs(trial.prefixFirst(), Trial::prefixSecond());
    const bool ints = std::ranges::all_of(
        ids, [](const QVariant& id) { return id.userType() == QMetaType::Int; });
    expect(ints, QStringLiteral("each id is an int"), toText(ids));
    // In no order and possibly repeated.
    std::set<int> seen;
    for (const QVariant& id : ids) {
        seen.insert(id.toInt());
    }
    expectEqual(QStringLiteral("the list of devices"), QList<int>(seen.begin(), seen.end()),
                {trial.device(0), trial.device(1), trial.device(2)});
}

void giveAll(Trial& trial) {
    auto& states = trial.states();
    const auto all = [&] {
        return expectObject(QStringLiteral("the answer"),
                            states.GetAllStates(trial.prefixFirst(), Trial::prefixSecond()));
    };
    using States = QHash<int, QJsonObject>;
    expectEqual(QStringLiteral("all states of no device"), all(), States());
    store(trial, trial.device(0), 1);
    store(trial, trial.device(1), 2);
    states.SetValue(trial.device(0), name(), 3.0);
    expectEqual(QStringLiteral("all states"), all(),
                States{{trial.device(0), content(1)}, {trial.device(1), content(2)}});
    expectState(states, trial.device(0), content(3));
}

constexpr std::array rules{
    Rule{"states.slots", "Slots 1 to 14 are the operations in the order of the interface",
         standInTheirSlots},
    Rule{"states.prefix", "The prefix is empty until it is set", keepThePrefix},
    Rule{"states.prefixes-apart", "What is pushed under one prefix is not touched under another",
         prefixesAreApart},
    Rule{"states.empty", "A device that nobody knows has an empty state", beginEmpty},
    Rule{"states.working-copy", "Values stay in memory until Push, and Pull replaces them",
         stayInMemory},
    Rule{"states.push", "What is pushed another object pulls, each device's own",
         arePushedAndPulled},
    Rule{"states.push-durably", "What is pushed durably is pulled as well", arePushedDurably},
    Rule{"states.durable-copy", "What is pushed durably outlives the working store",
         durableCopyShowsNowhere},
    Rule{"states.apart", "Each object has a working copy of its own", areEachObjectsOwn},
    Rule{"states.absent", "A value that is not there is the int 0", areZeroIfAbsent},
    Rule{"states.numbers", "A number comes back as a double, also one that was set as an int",
         numbersAreDoubles},
    Rule{"states.texts", "Bytes that read as an int or a double come back as that, others as bytes",
         textsThatAreNumbers},
    Rule{"states.utf8", "Bytes are kept as UTF-8 text, up to their first zero byte", bytesAreUtf8},
    Rule{"states.variants",
         "As variants, an absent value is invalid, an object is kept as it is, and what is no "
         "object as an empty one",
         variants},
    Rule{"states.json", "Nested JSON content comes back equal", anyContent},
    Rule{"states.delete",
         "Deleting takes what is stored, of this device alone, and leaves the working copy until "
         "the next Pull",
         deletionLeavesTheWorkingCopy},
    Rule{"states.delete-devices", "DeleteDevices deletes each of them, whatever the period",
         deleteDevices},
    Rule{"states.true", "Pull, Push, Delete and DeleteDevices give true, also for unknown devices",
         sayYes},
    Rule{"states.ids", "GetIDs lists the devices of the keys SECOND:FIRST:ID as ints",
         listTheirDevices},
    Rule{"states.all",
         "GetAllStates gives what is stored under the keys SECOND:FIRST:ID, and no "
         "null pointer",
         giveAll},
};

} // namespace

void durableCopyShowsNowhere(Trial& /*trial*/) {
    throw NotApplicable{
        QStringLiteral("no operation of the interface makes the working store lose a device")};
}

std::span<const Rule> driverStateRules() {
    return rules;
}

} // namespace contract
