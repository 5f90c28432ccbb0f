#include "contract/rules/record_rules.h"
#include "contract/rules/rules.h"
#include "contract/slot.h"

#include <array>

namespace contract {

namespace {

void standInTheirSlots(Trial& trial) {
    auto* const eav = &trial.eav();
    const auto all = Events::everything(trial);
    using Save = void(const std::list<model::dev_event>&);
    using Query = Answer<model::dev_event>(const model::filter_eav&);
    slot<Save>::call(eav, 2, {Events::record(trial.device(), 1)});
    expectFound<Events>(slot<Query>::call(eav, 4, all), {{trial.device(), {1}}});
    slot<void(const model::filter_eav&)>::call(eav, 6, all);
    expectFound<Events>(eav->GetEvents(all), {});
}

/// Events 1, 2 and 3, ten seconds apart, with the texts "a", "b" and "c".
void saveThree(Trial& trial) {
    std::list<model::dev_event> records;
    for (int number = 1; number <= 3; ++number) {
        auto record = Events::record(trial.device(), number, number * 10);
        record.message = QString(QLatin1Char(static_cast<char>('a' + number - 1)));
        records.push_back(record);
    }
    Events::save(trial, records);
}

void tagsSelectByText(Trial& trial) {
    saveThree(trial);
    auto filter = Events::everything(trial);
    filter.tags = {QStringLiteral("c"), QStringLiteral("none"), QStringLiteral("a")};
    expectFound<Events>(Events::find(trial, filter), {{trial.device(), {1, 3}}});
}

void codesAreNotRead(Trial& trial) {
    saveThree(trial);
    auto filter = Events::everything(trial);
    filter.obis_codes = {QStringLiteral("1-0:1.8.0")};
    filter.first_last = true;
    expectFound<Events>(Events::find(trial, filter), {{trial.device(), {1, 2, 3}}});
}

void saveNothing(Trial& trial) {
    Events::save(trial, {});
    expectFound<Events>(Events::find(trial, Events::everything(trial)), {});
}

void deleteByPeriod(Trial& trial) {
    saveFour<Events>(trial);
    Events::save(trial, {Events::record(trial.device(1), 5, 10)});
    auto filter = Events::everything(trial);
    filter.modem_ids = {trial.device()};
    filter.begin = instant(10);
    filter.end = instant(20);
    trial.eav().DeleteEvents(filter);
    expectFound<Events>(Events::find(trial, Events::everything(trial)),
                        {{trial.device(0), {1, 4}}, {trial.device(1), {5}}});
}

void deletionReadsNoTags(Trial& trial) {
    saveThree(trial);
    auto filter = Events::everything(trial);
    filter.tags = {QStringLiteral("b")};
    filter.limit = 1;
    trial.eav().DeleteEvents(filter);
    expectFound<Events>(Events::find(trial, Events::everything(trial)), {});
}

void deletionNeedsDevices(Trial& trial) {
    saveThree(trial);
    auto filter = Events::everything(trial);
    filter.modem_ids.clear();
    trial.eav().DeleteEvents(filter);
    expectFound<Events>(Events::find(trial, Events::everything(trial)),
                        {{trial.device(), {1, 2, 3}}});
}

void logTheirOperations(Trial& trial) {
    auto& eav = trial.eav();
    auto filter = Events::everything(trial);
    expectLogLine("Save EAV events", [&] { eav.SaveEvents({Events::record(trial.device(), 1)}); });
    expectLogLine("Get EAV events", [&] { eav.GetEvents(filter); });
    expectLogLine("Delete EAV events", [&] { eav.DeleteEvents(filter); });
    filter.modem_ids.clear();
    expectLogLine("Save EAV events", [&] { eav.SaveEvents({}); });
    expectLogLine("Get EAV events", [&] { eav.GetEvents(filter); });
    expectLogLine("Delete EAV events", [&] { eav.DeleteEvents(filter); });
}

constexpr std::array rules{
    Rule{"events.slots", "Slots 2, 4 and 6 are SaveEvents, GetEvents and DeleteEvents",
         standInTheirSlots},
    Rule{"events.equal", "An event comes back equal in every member", comesBackEqual<Events>},
    Rule{"events.texts", "Any Unicode text comes back equal", textsComeBackEqual<Events>},
    Rule{"events.json", "Nested JSON content comes back equal", jsonComesBackEqual<Events>},
    Rule{"events.seconds", "A timestamp loses its milliseconds, a ttl keeps them",
         timesAreInSeconds<Events>},
    Rule{"events.newest-first", "A device's events come newest first", newestFirst<Events>},
    Rule{"events.devices",
         "Only the filter's devices are found, each under its number, and none without events",
         groupedByDevice<Events>},
    Rule{"events.period", "Both ends of a period belong to it", periodIncludesItsEnds<Events>},
    Rule{"events.period-seconds", "The milliseconds of a period's ends are dropped",
         periodIsInSeconds<Events>},
    Rule{"events.tags", "Tags select the events whose text is one of them", tagsSelectByText},
    Rule{"events.codes", "OBIS codes and first_last are not read", codesAreNotRead},
    Rule{"events.limit", "A limit keeps the newest events of all devices together",
         limitKeepsTheNewest<Events>},
    Rule{"events.no-limit", "A limit of 0 is none", noLimitIsZero<Events>},
    Rule{"events.empty",
         "No device, or one without events, gives an empty answer and no null pointer",
         emptyAnswersAreNoNulls<Events>},
    Rule{"events.save-none", "Saving an empty list does nothing", saveNothing},
    Rule{"events.delete", "Deleting takes the devices' events of the period, with both its ends",
         deleteByPeriod},
    Rule{"events.delete-tags", "Deleting reads neither the tags nor the limit",
         deletionReadsNoTags},
    Rule{"events.delete-none", "Deleting without a device deletes nothing", deletionNeedsDevices},
    Rule{"events.log", "Each operation writes its own debug line, also when there is nothing to do",
         logTheirOperations},
};

} // namespace

std::span<const Rule> eventRules() {
    return rules;
}

} // namespace contract
