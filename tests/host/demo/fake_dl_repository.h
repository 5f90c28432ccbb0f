#pragma once

#include "interfaces/idl_app_message_repository.h"

#include <algorithm>
#include <functional>
#include <list>
#include <map>
#include <memory>

namespace test_support {

/// A store of downlink commands in memory. `spoil` is called with every command that a query
/// returns and `afterSave` with all that is stored, so that a test can let the store misbehave.
class FakeDlRepository final : public interfaces::IDLAPPMessageRepository {
public:
    using Commands = std::map<int, std::list<model::dl_message>>;

    void SaveMessage(model::dl_message& message) override {
        message.db_id = QStringLiteral("%1").arg(++issued, 24, 16, QLatin1Char('0'));
        stored.push_back(message);
        afterSave(stored);
    }

    model::dl_message GetById(const QString& id) override {
        const auto found = find(id);
        if (found == stored.end()) {
            throw QStringLiteral("not exist");
        }
        auto command = *found;
        spoil(command);
        return command;
    }

    std::shared_ptr<Commands> GetCommands(const model::filter_dl& filter) override {
        return select(filter, [](const model::dl_message& /*command*/) { return true; });
    }

    std::shared_ptr<Commands> GetNotAckCommands(const model::filter_dl& filter) override {
        return select(filter, [](const model::dl_message& command) {
            return command.status == model::dl_message::dl_status::PENDING ||
                   command.status == model::dl_message::dl_status::WAIT_DATA;
        });
    }

    void SetStatus(const QString& id, model::dl_message::dl_status status) override {
        if (const auto found = find(id); found != stored.end() && !ignoresStatus) {
            found->status = status;
        }
    }

    void AckCommand(const QString& id) override {
        ++acknowledged;
        SetStatus(id, model::dl_message::dl_status::EXECUTED);
    }

    void DeleteMessages(const std::list<int>& modem_ids, const QDateTime& from,
                        const QDateTime& to) override {
        stored.remove_if([&](const model::dl_message& command) {
            return std::ranges::find(modem_ids, command.modem_id) != modem_ids.end() &&
                   command.timestamp >= from && command.timestamp <= to;
        });
    }

    std::list<model::dl_message> stored;
    std::function<void(model::dl_message&)> spoil = [](model::dl_message& /*command*/) {};
    std::function<void(std::list<model::dl_message>&)> afterSave = [](auto& /*stored*/) {};
    bool ignoresStatus = false;
    int issued = 0;
    int acknowledged = 0;

private:
    std::list<model::dl_message>::iterator find(const QString& id) {
        return std::ranges::find(stored, id, &model::dl_message::db_id);
    }

    template <class Selects>
    std::shared_ptr<Commands> select(const model::filter_dl& filter, Selects selects) {
        auto result = std::make_shared<Commands>();
        for (const int device : filter.modem_ids) {
            for (const auto& command : stored) {
                if (command.modem_id == device && command.timestamp >= filter.begin &&
                    command.timestamp <= filter.end && selects(command)) {
                    (*result)[device].push_back(command);
                    spoil((*result)[device].back());
                }
            }
        }
        for (auto& [device, commands] : *result) {
            commands.sort([](const model::dl_message& left, const model::dl_message& right) {
                return left.timestamp > right.timestamp;
            });
        }
        return result;
    }
};

} // namespace test_support
