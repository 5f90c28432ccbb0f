#include "host/demo/demo_parts.h"
#include "host/demo/queries.h"
#include "host/records/command_builder.h"

#include <QStringList>

#include <algorithm>
#include <functional>
#include <utility>

namespace host {

namespace {

using Repository = interfaces::IDLAPPMessageRepository;
using Commands = ReadBack<model::dl_message>;
using Status = model::dl_message::dl_status;

/// Walks the commands through their states.
class Walk {
public:
    Walk(Repository& repository, Commands& commands)
        : m_repository(repository), m_commands(commands),
          m_filter(anyTime<model::filter_dl>(
              distinct(commands.written(), &model::dl_message::modem_id))) {}

    /// Sets the status of the commands for whose number, counted from 0, `affected` holds.
    void setStatus(Status status, const std::function<bool(std::size_t)>& affected) {
        std::size_t number = 0;
        m_commands.change([&](model::dl_message& command) {
            if (affected(number++)) {
                tellStore(command.db_id, status);
                command.status = status;
            }
        });
    }

    /// Asks for the commands that are not acknowledged and notes how many are in which state.
    void checkNotAcknowledged(const QString& step) {
        const auto returned = m_repository.GetNotAckCommands(m_filter);
        m_commands.check(QStringLiteral("not acknowledged, ") + step, isNotAcknowledged, *returned);
        std::size_t listed = 0;
        for (const auto& [device, commands] : *returned) {
            listed += commands.size();
        }
        m_rows.push_back({step, count(Status::PENDING), count(Status::WAIT_DATA),
                          count(Status::EXECUTED), count(Status::TIMEOUT),
                          QString::number(listed)});
    }

    void checkAll() {
        m_commands.check(QStringLiteral("by device"), everyRecord,
                         *m_repository.GetCommands(m_filter));
        for (const auto& command : m_commands.written()) {
            m_commands.check(
                QStringLiteral("by id"),
                [&command](const model::dl_message& each) { return each.db_id == command.db_id; },
                byId(command));
        }
    }

    void show(Console& console) const {
        console.table({{QStringLiteral("Commands")},
                       {QStringLiteral("Pending"), true},
                       {QStringLiteral("Waiting"), true},
                       {QStringLiteral("Executed"), true},
                       {QStringLiteral("Timed out"), true},
                       {QStringLiteral("Listed as not acknowledged"), true}},
                      m_rows);
    }

private:
    static bool isNotAcknowledged(const model::dl_message& command) {
        return command.status == Status::PENDING || command.status == Status::WAIT_DATA;
    }

    /// Nothing if the store has lost the command.
    Returned<model::dl_message> byId(const model::dl_message& command) {
        try {
            return {{command.modem_id, {m_repository.GetById(command.db_id)}}};
        } catch (const QString& error) {
            if (error != QLatin1String("not exist")) {
                throw;
            }
            return {};
        }
    }

    void tellStore(const QString& id, Status status) {
        if (status == Status::EXECUTED) {
            m_repository.AckCommand(id);
        } else {
            m_repository.SetStatus(id, status);
        }
    }

    QString count(Status status) const {
        return QString::number(
            std::ranges::count(m_commands.written(), status, &model::dl_message::status));
    }

    Repository& m_repository;
    Commands& m_commands;
    model::filter_dl m_filter;
    std::vector<QStringList> m_rows;
};

void readBack(Repository& repository, Commands& commands, Console& console) {
    Walk walk(repository, commands);
    walk.checkNotAcknowledged(QStringLiteral("issued"));
    walk.setStatus(Status::WAIT_DATA, [](std::size_t /*number*/) { return true; });
    walk.checkNotAcknowledged(QStringLiteral("sent"));
    walk.setStatus(Status::TIMEOUT, [](std::size_t number) { return number % 4 == 3; });
    walk.setStatus(Status::EXECUTED, [](std::size_t number) { return number % 4 == 1; });
    walk.checkNotAcknowledged(QStringLiteral("half answered"));
    walk.setStatus(Status::EXECUTED, [](std::size_t number) { return number % 2 == 0; });
    walk.checkNotAcknowledged(QStringLiteral("finished"));
    walk.checkAll();
    walk.show(console);
}

} // namespace

Part<model::dl_message> commandPart(Repository& repository,
                                    const std::vector<model::message>& messages) {
    const auto filter = anyTime<model::filter_dl>(distinct(messages, &model::message::modem_id));
    Part<model::dl_message> part;
    part.kind = QStringLiteral("downlink commands");
    part.origin = QLatin1String("issued");
    part.heading = QStringLiteral("Downlink commands");
    part.records = buildCommands(messages);
    part.find = [&repository, filter] { return *repository.GetCommands(filter); };
    part.remove = [&repository, filter] {
        repository.DeleteMessages(filter.modem_ids, filter.begin, filter.end);
    };
    part.store = [&repository](std::span<model::dl_message> batch) {
        std::ranges::for_each(batch, [&](auto& each) { repository.SaveMessage(each); });
    };
    part.readBack = std::bind_front(readBack, std::ref(repository));
    return part;
}

} // namespace host
