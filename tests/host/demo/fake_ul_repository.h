#pragma once

#include "interfaces/iul_app_message_repository.h"

#include <algorithm>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <utility>

namespace test_support {

/// An uplink store in memory. `spoil` is called with every message that a query returns and
/// `afterSave` with all that is stored, so that a test can let the store misbehave.
class FakeUlRepository final : public interfaces::IULAPPMessageRepository {
public:
    void SaveMessage(const model::message& message) override {
        stored.push_back(message);
        afterSave(stored);
    }

    std::shared_ptr<std::map<int, std::list<model::message>>>
    GetMessages(const model::filter_roll& filter) override {
        auto result = std::make_shared<std::map<int, std::list<model::message>>>();
        for (const auto& message : stored) {
            if (selects(filter, message)) {
                auto& ofDevice = (*result)[message.modem_id];
                ofDevice.push_back(message);
                spoil(ofDevice.back());
            }
        }
        for (auto& [device, messages] : *result) {
            messages.sort([](const model::message& left, const model::message& right) {
                return left.timestamp > right.timestamp;
            });
        }
        return result;
    }

    void DeleteMessages(const model::filter_roll& filter) override {
        ++deletions;
        stored.remove_if([&](const model::message& message) {
            return contains(filter.modem_ids, message.modem_id);
        });
    }

    std::pair<QString, QString> GetDeviceProtocolHWType(int /*modem_id*/) override { return {}; }

    std::list<model::message> stored;
    std::function<void(model::message&)> spoil = [](model::message& /*message*/) {};
    std::function<void(std::list<model::message>&)> afterSave = [](auto& /*stored*/) {};
    int deletions = 0;

private:
    template <class Value>
    static bool contains(const std::list<Value>& values, const Value& value) {
        return std::ranges::find(values, value) != values.end();
    }

    static bool selects(const model::filter_roll& filter, const model::message& message) {
        const auto& time = filter.by_time_detected ? message.time_detected : message.timestamp;
        const bool anyTag = filter.by_time_detected || filter.tags.empty();
        return contains(filter.modem_ids, message.modem_id) && time >= filter.begin &&
               time <= filter.end && (anyTag || contains(filter.tags, message.tag));
    }
};

} // namespace test_support
