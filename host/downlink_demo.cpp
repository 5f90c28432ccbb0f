#include "host/downlink_demo.h"

#include "host/command_builder.h"
#include "host/demo_mark.h"
#include "host/failure.h"
#include "host/read_back.h"

#include <QStringList>

#include <algorithm>
#include <set>

namespace host {

namespace {

using Repository = interfaces::IDLAPPMessageRepository;
using Commands = ReadBack<model::dl_message>;
using Status = model::dl_message::dl_status;

/// One in so many commands times out, and as many are acknowledged early.
constexpr std::size_t cycle = 4;

model::filter_dl anyTime(const std::set<int>& devices) {
    model::filter_dl filter;
    filter.modem_ids = {devices.begin(), devices.end()};
    filter.begin = beginOfTime();
    filter.end = endOfTime();
    return filter;
}

void deleteEarlierDemo(Repository& repository, const model::filter_dl& filter, Console& console) {
    const auto stored = repository.GetCommands(filter);
    std::size_t count = 0;
    for (const auto& [device, commands] : *stored) {
        if (!std::ranges::all_of(
                commands, [](const auto& command) { return command.api_key == demoSource(); })) {
            throw Failure(QStringLiteral("the store holds commands for device %1 that no demo "
                                         "issued; the demo would have to delete them and does not "
                                         "run")
                              .arg(device));
        }
        count += commands.size();
    }
    if (count != 0) {
        repository.DeleteMessages(filter.modem_ids, filter.begin, filter.end);
        console.line(QStringLiteral("Deleted %1 commands of an earlier demo.").arg(count));
    }
}

/// Stores the commands and gives them with the ids that the store has given them.
std::vector<model::dl_message> issue(Repository& repository,
                                     std::vector<model::dl_message> commands, Console& console) {
    auto progress =
        console.progress(QStringLiteral("Issuing commands"), static_cast<int>(commands.size()));
    for (auto& command : commands) {
        repository.SaveMessage(command);
        progress.advance();
    }
    return commands;
}

/// Walks the commands through their states.
class Walk {
public:
    Walk(Repository& repository, Commands& commands, model::filter_dl filter)
        : m_repository(repository), m_commands(commands), m_filter(std::move(filter)) {}

    /// Sets the status of the commands for whose number, counted from 0, `affected` holds.
    template <class Affected>
    void setStatus(Status status, Affected affected) {
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
        m_commands.check(
            QStringLiteral("by device"), [](const model::dl_message& /*command*/) { return true; },
            *m_repository.GetCommands(m_filter));
        for (const auto& command : m_commands.written()) {
            m_commands.check(
                QStringLiteral("by id"),
                [&command](const model::dl_message& each) { return each.db_id == command.db_id; },
                {{command.modem_id, {m_repository.GetById(command.db_id)}}});
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

    void tellStore(const QString& id, Status status) {
        if (status == Status::EXECUTED) {
            m_repository.AckCommand(id);
        } else {
            m_repository.SetStatus(id, status);
        }
    }

    QString count(Status status) const {
        const auto& commands = m_commands.written();
        return QString::number(std::ranges::count_if(
            commands, [status](const auto& command) { return command.status == status; }));
    }

    Repository& m_repository;
    Commands& m_commands;
    model::filter_dl m_filter;
    std::vector<QStringList> m_rows;
};

} // namespace

Accounting runDownlinkDemo(Repository& repository, const std::vector<model::message>& messages,
                           Console& console) {
    std::set<int> devices;
    for (const auto& message : messages) {
        devices.insert(message.modem_id);
    }
    const auto filter = anyTime(devices);
    deleteEarlierDemo(repository, filter, console);

    Commands commands(issue(repository, buildCommands(messages), console));
    const auto count = static_cast<int>(commands.written().size());
    commands.countStored(count);

    Walk walk(repository, commands, filter);
    walk.checkNotAcknowledged(QStringLiteral("issued"));
    walk.setStatus(Status::WAIT_DATA, [](std::size_t /*number*/) { return true; });
    walk.checkNotAcknowledged(QStringLiteral("sent"));
    walk.setStatus(Status::TIMEOUT, [](std::size_t number) { return number % cycle == 3; });
    walk.setStatus(Status::EXECUTED, [](std::size_t number) { return number % cycle == 1; });
    walk.checkNotAcknowledged(QStringLiteral("half answered"));
    walk.setStatus(Status::EXECUTED, [](std::size_t number) { return number % 2 == 0; });
    walk.checkNotAcknowledged(QStringLiteral("finished"));
    walk.checkAll();

    walk.show(console);
    console.complaints(commands.complaints());
    return commands.accounting(count, 0);
}

} // namespace host
