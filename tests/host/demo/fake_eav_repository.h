#pragma once

#include "interfaces/ieav_repository.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <set>

namespace test_support {

/// A store of values and events in memory. `spoil` and `spoilEvent` are called with every record
/// that a query returns, `afterSave` and `afterSaveEvents` with all that is stored, so that a test
/// can let the store misbehave.
class FakeEavRepository final : public interfaces::IEAVRepository {
public:
    void SaveValues(const std::list<model::dev_value>& values) override {
        batches.push_back(values.size());
        storedValues.insert(storedValues.end(), values.begin(), values.end());
        afterSave(storedValues);
    }

    void SaveEvents(const std::list<model::dev_event>& events) override {
        storedEvents.insert(storedEvents.end(), events.begin(), events.end());
        afterSaveEvents(storedEvents);
    }

    std::shared_ptr<std::map<int, std::list<model::dev_value>>>
    GetValues(const model::filter_eav& filter) override {
        auto result = select(storedValues, [&](const model::dev_value& value) {
            return selectsValue(filter, value);
        });
        if (filter.first_last) {
            keepFirstAndLast(*result);
        }
        for (auto& [device, values] : *result) {
            std::ranges::for_each(values, spoil);
        }
        return result;
    }

    std::shared_ptr<std::map<int, std::list<model::dev_event>>>
    GetEvents(const model::filter_eav& filter) override {
        auto result = select(storedEvents, [&](const model::dev_event& event) {
            return selectsDeviceAndTime(filter, event) &&
                   (filter.tags.empty() || contains(filter.tags, event.message));
        });
        for (auto& [device, events] : *result) {
            std::ranges::for_each(events, spoilEvent);
        }
        return result;
    }

    void DeleteValues(const model::filter_eav& filter) override {
        storedValues.remove_if([&](const model::dev_value& value) {
            return selectsDeviceAndTime(filter, value) &&
                   (filter.tags.empty() || contains(filter.tags, value.tag));
        });
    }

    void DeleteEvents(const model::filter_eav& filter) override {
        storedEvents.remove_if(
            [&](const model::dev_event& event) { return selectsDeviceAndTime(filter, event); });
    }

    std::list<model::dev_value> storedValues;
    std::list<model::dev_event> storedEvents;
    /// The sizes of the lists that were saved.
    std::list<std::size_t> batches;
    std::function<void(model::dev_value&)> spoil = [](model::dev_value& /*value*/) {};
    std::function<void(model::dev_event&)> spoilEvent = [](model::dev_event& /*event*/) {};
    std::function<void(std::list<model::dev_value>&)> afterSave = [](auto& /*stored*/) {};
    std::function<void(std::list<model::dev_event>&)> afterSaveEvents = [](auto& /*stored*/) {};

private:
    template <class Value>
    static bool contains(const std::list<Value>& values, const Value& value) {
        return std::ranges::find(values, value) != values.end();
    }

    template <class Record>
    static bool selectsDeviceAndTime(const model::filter_eav& filter, const Record& record) {
        return contains(filter.modem_ids, record.modem_id) && record.timestamp >= filter.begin &&
               record.timestamp <= filter.end;
    }

    static bool selectsValue(const model::filter_eav& filter, const model::dev_value& value) {
        return selectsDeviceAndTime(filter, value) &&
               (filter.tags.empty() || contains(filter.tags, value.tag)) &&
               (filter.obis_codes.empty() || contains(filter.obis_codes, value.obis_code));
    }

    template <class Record, class Selects>
    static std::shared_ptr<std::map<int, std::list<Record>>> select(const std::list<Record>& stored,
                                                                    Selects selects) {
        auto result = std::make_shared<std::map<int, std::list<Record>>>();
        for (const auto& record : stored) {
            if (selects(record)) {
                (*result)[record.modem_id].push_back(record);
            }
        }
        for (auto& [device, records] : *result) {
            records.sort([](const Record& left, const Record& right) {
                return left.timestamp > right.timestamp;
            });
        }
        return result;
    }

    static void keepFirstAndLast(std::map<int, std::list<model::dev_value>>& result) {
        for (auto& [device, values] : result) {
            std::map<QString, std::list<model::dev_value>> byCode;
            for (const auto& value : values) {
                byCode[value.obis_code].push_back(value);
            }
            values.clear();
            for (const auto& [code, ofCode] : byCode) {
                values.push_back(ofCode.front());
                values.push_back(ofCode.back());
            }
        }
    }
};

} // namespace test_support
