#include "contract/rules/record_rules.h"
#include "contract/rules/rules.h"
#include "contract/slot.h"

#include <array>
#include <limits>
#include <utility>

namespace contract {

namespace {

using Texts = std::pair<QString, QString>;

void standInTheirSlots(Trial& trial) {
    auto* const uplinks = &trial.uplinks();
    const auto all = Uplinks::everything(trial);
    using Query = Answer<model::message>(const model::filter_roll&);
    slot<void(const model::message&)>::call(uplinks, 1, Uplinks::record(trial.device(), 1));
    expectFound<Uplinks>(slot<Query>::call(uplinks, 2, all), {{trial.device(), {1}}});
    expectEqual(QStringLiteral("what slot 4 gives"),
                slot<Texts(int)>::call(uplinks, 4, trial.device()), Texts());
    slot<void(const model::filter_roll&)>::call(uplinks, 3, all);
    expectFound<Uplinks>(uplinks->GetMessages(all), {});
}

void numbersHave64Bits(Trial& trial) {
    auto record = Uplinks::record(trial.device(), 1);
    record.unique_id |= std::numeric_limits<quint64>::max() << 44U;
    Uplinks::save(trial, {record});
    expectSame(record, expectOne(Uplinks::find(trial, Uplinks::everything(trial))));
}

void areStoredOnce(Trial& trial) {
    const auto record = Uplinks::record(trial.device(), 1);
    auto second = Uplinks::record(trial.device(), 2, 10);
    second.unique_id = record.unique_id;
    Uplinks::save(trial, {record});
    expectThrows(QStringLiteral("saving a second message with the same unique_id"),
                 [&] { trial.uplinks().SaveMessage(second); });
    expectSame(record, expectOne(Uplinks::find(trial, Uplinks::everything(trial))));
}

/// Three messages, detected in the order opposite to that in which they were registered, with the
/// tags "a", "b" and "c".
void saveTagged(Trial& trial) {
    for (int number = 1; number <= 3; ++number) {
        auto record = Uplinks::record(trial.device(), number, number * 10);
        record.time_detected = instant(100 - number * 10);
        record.tag = QString(QLatin1Char(static_cast<char>('a' + number - 1)));
        Uplinks::save(trial, {record});
    }
}

void periodOfDetection(Trial& trial) {
    saveTagged(trial);
    auto filter = Uplinks::everything(trial);
    filter.by_time_detected = true;
    expectInOrder<Uplinks>(Uplinks::find(trial, filter), {{trial.device(), {1, 2, 3}}});
    filter.begin = instant(70);
    filter.end = instant(80);
    expectInOrder<Uplinks>(Uplinks::find(trial, filter), {{trial.device(), {2, 3}}});
}

void tagsSelect(Trial& trial) {
    saveTagged(trial);
    auto filter = Uplinks::everything(trial);
    filter.tags = {QStringLiteral("c"), QStringLiteral("a"), QStringLiteral("none")};
    expectFound<Uplinks>(Uplinks::find(trial, filter), {{trial.device(), {1, 3}}});
    filter.tags = {QStringLiteral("none")};
    expectFound<Uplinks>(Uplinks::find(trial, filter), {});
}

void tagsAreNotReadByDetection(Trial& trial) {
    saveTagged(trial);
    auto filter = Uplinks::everything(trial);
    filter.by_time_detected = true;
    filter.tags = {QStringLiteral("a")};
    expectFound<Uplinks>(Uplinks::find(trial, filter), {{trial.device(), {1, 2, 3}}});
}

void deletionTakesAllOfTheDevices(Trial& trial) {
    Uplinks::save(
        trial, {Uplinks::record(trial.device(0), 1, 10), Uplinks::record(trial.device(0), 2, 20),
                Uplinks::record(trial.device(1), 3, 10), Uplinks::record(trial.device(2), 4, 10)});
    auto filter = Uplinks::everything(trial);
    filter.modem_ids = {trial.device(0), trial.device(1)};
    filter.begin = filter.end = instant(20);
    filter.tags = {QStringLiteral("none")};
    filter.limit = 1;
    trial.uplinks().DeleteMessages(filter);
    expectFound<Uplinks>(Uplinks::find(trial, Uplinks::everything(trial)),
                         {{trial.device(2), {4}}});
}

void deletionNeedsDevices(Trial& trial) {
    Uplinks::save(trial, {Uplinks::record(trial.device(), 1)});
    auto filter = Uplinks::everything(trial);
    filter.modem_ids.clear();
    trial.uplinks().DeleteMessages(filter);
    expectFound<Uplinks>(Uplinks::find(trial, Uplinks::everything(trial)), {{trial.device(), {1}}});
}

void knowNoProtocol(Trial& trial) {
    Uplinks::save(trial, {Uplinks::record(trial.device(), 1)});
    expectEqual(QStringLiteral("protocol and hardware type"),
                trial.uplinks().GetDeviceProtocolHWType(trial.device()), Texts());
}

void logTheirOperations(Trial& trial) {
    auto& uplinks = trial.uplinks();
    const auto all = Uplinks::everything(trial);
    expectLogLine("Save UL message",
                  [&] { uplinks.SaveMessage(Uplinks::record(trial.device(), 1)); });
    expectLogLine("Get UL messages", [&] { uplinks.GetMessages(all); });
    expectLogLine("Delete UL message", [&] { uplinks.DeleteMessages(all); });
}

constexpr std::array rules{
    Rule{"uplinks.slots",
         "Slots 1 to 4 are SaveMessage, GetMessages, DeleteMessages and GetDeviceProtocolHWType",
         standInTheirSlots},
    Rule{"uplinks.equal",
         "A message comes back equal in every member but the host's own, which are empty",
         comesBackEqual<Uplinks>},
    Rule{"uplinks.texts", "Any Unicode text comes back equal", textsComeBackEqual<Uplinks>},
    Rule{"uplinks.bytes", "A payload of any bytes comes back equal", bytesComeBackEqual<Uplinks>},
    Rule{"uplinks.json", "Nested JSON content comes back equal", jsonComesBackEqual<Uplinks>},
    Rule{"uplinks.seconds", "A timestamp loses its milliseconds, a ttl keeps them",
         timesAreInSeconds<Uplinks>},
    Rule{"uplinks.64-bits", "A unique_id keeps all its 64 bits", numbersHave64Bits},
    Rule{"uplinks.once",
         "Saving a second message with the same unique_id throws, and the first one stays",
         areStoredOnce},
    Rule{"uplinks.newest-first", "A device's messages come newest first", newestFirst<Uplinks>},
    Rule{"uplinks.devices",
         "Only the filter's devices are found, each under its number, and none without messages",
         groupedByDevice<Uplinks>},
    Rule{"uplinks.period", "Both ends of a period belong to it", periodIncludesItsEnds<Uplinks>},
    Rule{"uplinks.period-seconds", "The milliseconds of a period's ends are dropped",
         periodIsInSeconds<Uplinks>},
    Rule{"uplinks.detected",
         "With by_time_detected the period and the order are those of time_detected",
         periodOfDetection},
    Rule{"uplinks.tags", "Tags select the messages that have one of them", tagsSelect},
    Rule{"uplinks.tags-detected", "With by_time_detected the tags are not read",
         tagsAreNotReadByDetection},
    Rule{"uplinks.limit", "A limit keeps the newest messages of all devices together",
         limitKeepsTheNewest<Uplinks>},
    Rule{"uplinks.no-limit", "A limit of 0 is none", noLimitIsZero<Uplinks>},
    Rule{"uplinks.empty",
         "No device, or one without messages, gives an empty answer and no null pointer",
         emptyAnswersAreNoNulls<Uplinks>},
    Rule{"uplinks.delete",
         "Deleting takes all messages of the devices, whatever the period, the tags and the limit",
         deletionTakesAllOfTheDevices},
    Rule{"uplinks.delete-none", "Deleting without a device deletes nothing", deletionNeedsDevices},
    Rule{"uplinks.protocol", "Protocol and hardware type are two empty texts for every device",
         knowNoProtocol},
    Rule{"uplinks.log", "Each operation on the store writes its own debug line",
         logTheirOperations},
};

} // namespace

std::span<const Rule> uplinkRules() {
    return rules;
}

} // namespace contract
