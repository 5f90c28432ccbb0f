#include "contract/rules/record_rules.h"
#include "contract/rules/rules.h"
#include "contract/slot.h"

#include <QRegularExpression>

#include <array>

namespace contract {

namespace {

using Status = model::dl_message::dl_status;
using Query = Answer<model::dl_message>(const model::filter_dl&);

QString unknownId() {
    return QStringLiteral("0123456789abcdef01234567");
}

/// Saves one command and gives it with its id.
model::dl_message saveOne(Trial& trial, int number = 1, Status status = Status::PENDING) {
    auto record = Downlinks::record(trial.device(), number, number * 10);
    record.status = status;
    trial.downlinks().SaveMessage(record);
    return record;
}

void expectStatus(Trial& trial, const QString& id, Status status) {
    expectEqual(QStringLiteral("the status"), trial.downlinks().GetById(id).status, status);
}

void standInTheirSlots(Trial& trial) {
    auto* const downlinks = &trial.downlinks();
    const auto all = Downlinks::everything(trial);
    auto record = Downlinks::record(trial.device(), 1);
    slot<void(model::dl_message&)>::call(downlinks, 1, record);
    const auto& id = record.db_id;
    expectSame(record, slot<model::dl_message(const QString&)>::call(downlinks, 2, id));
    slot<void(const QString&, Status)>::call(downlinks, 5, id, Status::WAIT_DATA);
    expectStatus(trial, id, Status::WAIT_DATA);
    expectFound<Downlinks>(slot<Query>::call(downlinks, 4, all), {{trial.device(), {1}}});
    slot<void(const QString&)>::call(downlinks, 6, id);
    expectStatus(trial, id, Status::EXECUTED);
    expectFound<Downlinks>(slot<Query>::call(downlinks, 3, all), {{trial.device(), {1}}});
    using Delete = void(const std::list<int>&, const QDateTime&, const QDateTime&);
    slot<Delete>::call(downlinks, 7, all.modem_ids, all.begin, all.end);
    expectFound<Downlinks>(downlinks->GetCommands(all), {});
}

void giveAnId(Trial& trial) {
    const QRegularExpression digits(QStringLiteral("^[0-9a-f]{24}$"));
    const auto first = saveOne(trial).db_id;
    const auto second = saveOne(trial).db_id;
    for (const QString& id : {first, second}) {
        expect(digits.match(id).hasMatch(),
               QStringLiteral("SaveMessage writes 24 lowercase hexadecimal digits into db_id"),
               toText(id));
    }
    expect(first != second, QStringLiteral("every command has an id of its own"), toText(second));
}

void comeBackById(Trial& trial) {
    const auto saved = saveOne(trial, 1, Status::WAIT_DATA);
    expectSame(saved, trial.downlinks().GetById(saved.db_id));
}

void refuseWhatIsNoId(Trial& trial) {
    for (const char* const id :
         {"123", "", "0123456789abcdef0123456x", "0123456789abcdef012345678"}) {
        expectThrowsText(QStringLiteral("GetById(\"%1\")").arg(QLatin1String(id)),
                         QStringLiteral("invalid id"),
                         [&] { trial.downlinks().GetById(QLatin1String(id)); });
    }
}

void refuseUnknownIds(Trial& trial) {
    expectThrowsText(QStringLiteral("GetById() of a command that is not there"),
                     QStringLiteral("not exist"), [&] { trial.downlinks().GetById(unknownId()); });
}

void takeEveryStatus(Trial& trial) {
    const auto id = saveOne(trial).db_id;
    for (const Status status :
         {Status::WAIT_DATA, Status::EXECUTED, Status::TIMEOUT, Status::PENDING}) {
        trial.downlinks().SetStatus(id, status);
        expectStatus(trial, id, status);
    }
}

void statusIsOfOneCommand(Trial& trial) {
    const auto changed = saveOne(trial, 1);
    const auto other = saveOne(trial, 2);
    trial.downlinks().SetStatus(changed.db_id, Status::TIMEOUT);
    expectSame(other, trial.downlinks().GetById(other.db_id));
    auto expected = changed;
    expected.status = Status::TIMEOUT;
    expectSame(expected, trial.downlinks().GetById(changed.db_id));
}

void statusOfUnknownIds(Trial& trial) {
    trial.downlinks().SetStatus(unknownId(), Status::EXECUTED);
    trial.downlinks().AckCommand(unknownId());
    expectThrowsText(QStringLiteral("GetById() afterwards"), QStringLiteral("not exist"),
                     [&] { trial.downlinks().GetById(unknownId()); });
}

void statusOfWhatIsNoId(Trial& trial) {
    const auto id = QStringLiteral("123");
    expectThrows(QStringLiteral("SetStatus(\"123\")"),
                 [&] { trial.downlinks().SetStatus(id, Status::EXECUTED); });
    expectThrows(QStringLiteral("AckCommand(\"123\")"), [&] { trial.downlinks().AckCommand(id); });
}

void acknowledge(Trial& trial) {
    const auto id = saveOne(trial).db_id;
    trial.downlinks().AckCommand(id);
    expectStatus(trial, id, Status::EXECUTED);
}

/// One command of each status: 1 pending, 2 waiting, 3 executed, 4 timed out.
void saveEveryStatus(Trial& trial) {
    saveOne(trial, 1, Status::PENDING);
    saveOne(trial, 2, Status::WAIT_DATA);
    saveOne(trial, 3, Status::EXECUTED);
    saveOne(trial, 4, Status::TIMEOUT);
}

void findWhatIsNotAcknowledged(Trial& trial) {
    saveEveryStatus(trial);
    const auto all = Downlinks::everything(trial);
    expectInOrder<Downlinks>(trial.downlinks().GetNotAckCommands(all), {{trial.device(), {2, 1}}});
    expectInOrder<Downlinks>(trial.downlinks().GetCommands(all), {{trial.device(), {4, 3, 2, 1}}});
}

void limitWhatIsNotAcknowledged(Trial& trial) {
    saveEveryStatus(trial);
    auto filter = Downlinks::everything(trial);
    filter.limit = 1;
    expectFound<Downlinks>(trial.downlinks().GetNotAckCommands(filter), {{trial.device(), {2}}});
    filter.limit = 0;
    filter.begin = filter.end = instant(10);
    expectFound<Downlinks>(trial.downlinks().GetNotAckCommands(filter), {{trial.device(), {1}}});
    filter.modem_ids.clear();
    expectFound<Downlinks>(trial.downlinks().GetNotAckCommands(filter), {});
}

void findADeviceTwice(Trial& trial) {
    saveOne(trial, 1);
    saveOne(trial, 2);
    auto filter = Downlinks::everything(trial);
    filter.modem_ids = {trial.device(), trial.device()};
    const Numbers twice{{trial.device(), {2, 1, 2, 1}}};
    expectInOrder<Downlinks>(trial.downlinks().GetCommands(filter), twice);
    expectInOrder<Downlinks>(trial.downlinks().GetNotAckCommands(filter), twice);
}

void deleteAPeriod(Trial& trial) {
    saveFour<Downlinks>(trial);
    Downlinks::save(trial, {Downlinks::record(trial.device(1), 5, 10),
                            Downlinks::record(trial.device(2), 6, 10)});
    trial.downlinks().DeleteMessages({trial.device(0), trial.device(1)}, instant(10), instant(20));
    expectFound<Downlinks>(Downlinks::find(trial, Downlinks::everything(trial)),
                           {{trial.device(0), {1, 4}}, {trial.device(2), {6}}});
}

void deletionNeedsDevices(Trial& trial) {
    saveOne(trial);
    const auto all = Downlinks::everything(trial);
    trial.downlinks().DeleteMessages({}, all.begin, all.end);
    expectFound<Downlinks>(Downlinks::find(trial, all), {{trial.device(), {1}}});
}

void logTheirOperations(Trial& trial) {
    auto& downlinks = trial.downlinks();
    const auto all = Downlinks::everything(trial);
    QString id;
    expectLogLine("Save DL messages", [&] { id = saveOne(trial).db_id; });
    expectLogLine("Get DL messages by ID", [&] { downlinks.GetById(id); });
    expectLogLine("Get DL messages", [&] { downlinks.GetCommands(all); });
    expectLogLine("Get DL messages NOT ACK", [&] { downlinks.GetNotAckCommands(all); });
    expectLogLine("Set DL messages status", [&] { downlinks.SetStatus(id, Status::WAIT_DATA); });
    expectLogLine("Set DL messages status", [&] { downlinks.AckCommand(id); });
    LogLines log;
    downlinks.DeleteMessages(all.modem_ids, all.begin, all.end);
    expectEqual(QStringLiteral("what deleting logs"), log.take(), {});
}

constexpr std::array rules{
    Rule{"downlinks.slots",
         "Slots 1 to 7 are SaveMessage, GetById, GetCommands, GetNotAckCommands, SetStatus, "
         "AckCommand and DeleteMessages",
         standInTheirSlots},
    Rule{"downlinks.id",
         "Saving writes an id of its own, 24 lowercase hexadecimal digits, into the command",
         giveAnId},
    Rule{"downlinks.equal",
         "A command comes back equal in every member but the host's own, which is empty",
         comesBackEqual<Downlinks>},
    Rule{"downlinks.by-id", "A command comes back equal by its id", comeBackById},
    Rule{"downlinks.texts", "Any Unicode text comes back equal", textsComeBackEqual<Downlinks>},
    Rule{"downlinks.bytes", "A payload of any bytes comes back equal",
         bytesComeBackEqual<Downlinks>},
    Rule{"downlinks.json", "Nested JSON content comes back equal", jsonComesBackEqual<Downlinks>},
    Rule{"downlinks.seconds", "A timestamp loses its milliseconds, a ttl keeps them",
         timesAreInSeconds<Downlinks>},
    Rule{"downlinks.invalid-id",
         "GetById of what is not 24 hexadecimal digits throws the QString \"invalid id\"",
         refuseWhatIsNoId},
    Rule{"downlinks.not-exist",
         "GetById of a command that is not there throws the QString \"not exist\"",
         refuseUnknownIds},
    Rule{"downlinks.status", "A command takes every status that it is given", takeEveryStatus},
    Rule{"downlinks.status-only", "Setting a status changes nothing else, and no other command",
         statusIsOfOneCommand},
    Rule{"downlinks.status-unknown",
         "Setting the status of a command that is not there does nothing", statusOfUnknownIds},
    Rule{"downlinks.status-invalid",
         "SetStatus and AckCommand of what is not 24 hexadecimal digits throw", statusOfWhatIsNoId},
    Rule{"downlinks.ack", "Acknowledging sets the status EXECUTED", acknowledge},
    Rule{"downlinks.not-ack",
         "GetNotAckCommands finds those that are pending or wait for data, newest first",
         findWhatIsNotAcknowledged},
    Rule{"downlinks.not-ack-filter", "GetNotAckCommands heeds devices, period and limit",
         limitWhatIsNotAcknowledged},
    Rule{"downlinks.newest-first", "A device's commands come newest first", newestFirst<Downlinks>},
    Rule{"downlinks.devices",
         "Only the filter's devices are found, each under its number, and none without commands",
         groupedByDevice<Downlinks>},
    Rule{"downlinks.device-twice", "A device that the filter names twice has its commands twice",
         findADeviceTwice},
    Rule{"downlinks.period", "Both ends of a period belong to it",
         periodIncludesItsEnds<Downlinks>},
    Rule{"downlinks.period-seconds", "The milliseconds of a period's ends are dropped",
         periodIsInSeconds<Downlinks>},
    Rule{"downlinks.limit", "A limit keeps the newest commands of each device",
         limitKeepsTheNewest<Downlinks>},
    Rule{"downlinks.no-limit", "A limit of 0 is none", noLimitIsZero<Downlinks>},
    Rule{"downlinks.empty",
         "No device, or one without commands, gives an empty answer and no null pointer",
         emptyAnswersAreNoNulls<Downlinks>},
    Rule{"downlinks.delete",
         "Deleting takes the devices' commands of the period, with both its ends", deleteAPeriod},
    Rule{"downlinks.delete-none", "Deleting without a device deletes nothing",
         deletionNeedsDevices},
    Rule{"downlinks.log",
         "Each operation writes its own debug line, an acknowledgement that of SetStatus, and "
         "deleting none",
         logTheirOperations},
};

} // namespace

std::span<const Rule> downlinkRules() {
    return rules;
}

} // namespace contract
