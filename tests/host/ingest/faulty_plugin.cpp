#include "tests/host/ingest/faulty_plugin.h"

#include <QStringList>

#include <csignal>
#include <functional>
#include <iterator>
#include <stdexcept>

namespace {

/// Counts the calls, and makes the one that the fault is for with it.
void call(const std::function<void()>& whole, const std::function<void()>& half) {
    static const auto fault = qEnvironmentVariable("KELVRO_FAULT").split(QLatin1Char(' '));
    static int calls = 0;
    if (++calls != fault.value(0).toInt()) {
        whole();
        return;
    }
    const auto how = fault.value(1);
    if (how.endsWith(QLatin1String("after"))) {
        whole();
    } else if (how.endsWith(QLatin1String("within"))) {
        half();
    }
    if (how.startsWith(QLatin1String("kill"))) {
        std::raise(SIGKILL);
    }
    throw std::runtime_error("a fault of the test");
}

template <class Record>
std::list<Record> firstHalf(const std::list<Record>& records) {
    return {records.begin(), std::next(records.begin(), static_cast<int>(records.size() / 2))};
}

class FaultyUplinks final : public test_support::ForwardingUplinks {
public:
    using ForwardingUplinks::ForwardingUplinks;

    void SaveMessage(const model::message& message) override {
        const auto refused = qEnvironmentVariable("KELVRO_REFUSED_METER");
        if (!refused.isEmpty() && message.hw_type == refused) {
            throw std::runtime_error("no such meters here");
        }
        call([&] { ForwardingUplinks::SaveMessage(message); }, [] {});
    }
};

class FaultyRecords final : public test_support::ForwardingRecords {
public:
    using ForwardingRecords::ForwardingRecords;

    void SaveValues(const std::list<model::dev_value>& values) override {
        const auto refused = qEnvironmentVariable("KELVRO_REFUSED_CODE");
        std::list<model::dev_value> before;
        for (const auto& value : values) {
            if (!refused.isEmpty() && value.obis_code == refused) {
                ForwardingRecords::SaveValues(before);
                throw std::runtime_error("no such values here");
            }
            before.push_back(value);
        }
        call([&] { ForwardingRecords::SaveValues(values); },
             [&] { ForwardingRecords::SaveValues(firstHalf(values)); });
    }
    void SaveEvents(const std::list<model::dev_event>& events) override {
        call([&] { ForwardingRecords::SaveEvents(events); },
             [&] { ForwardingRecords::SaveEvents(firstHalf(events)); });
    }
};

} // namespace

std::shared_ptr<interfaces::IMessagesDatabase>
FaultyPlugin::CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) {
    return std::make_shared<test_support::MessagesWith<FaultyUplinks>>(
        real().CreateMessageDatabaseInst(settings, parent));
}
std::shared_ptr<interfaces::IEAVDatabase>
FaultyPlugin::CreateEavDatabaseInst(const QJsonObject& settings, QObject* parent) {
    return std::make_shared<test_support::ValuesWith<FaultyRecords>>(
        real().CreateEavDatabaseInst(settings, parent));
}
