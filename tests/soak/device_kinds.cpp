#include "tests/soak/device_kinds.h"

#include "host/input/settings.h"
#include "host/records/record_compare.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "tests/soak/device_kind.h"
#include "tests/support/qt_literals.h"

namespace soak {

using namespace test_support::literals;

namespace {

Places places(const QJsonObject& settings, int redisDb, const char* keyStart,
              const char* collection) {
    return {
        .url = settings.value("url"_q).toString().toStdString(),
        .redisPort = host::redisSettings(settings).port,
        .redisDb = redisDb,
        .keyStart = keyStart,
        .collection = collection,
    };
}

class States final : public DeviceKind {
public:
    States(interfaces::IDatabaseFactory& factory, const QJsonObject& settings)
        : DeviceKind(
              places(settings, host::redisSettings(settings).stateDb, "soak:state:", "states")),
          m_factory(factory), m_settings(settings), m_states(open()) {}

    QString name() const override { return "driver states"_q; }

protected:
    void push(int device, int call) override {
        const QJsonObject state = object(call);
        m_states->SetValue(device, "last"_q, mark(call).toUtf8());
        m_states->SetValue(device, "count"_q, call);
        m_states->Push(device, true);
    }

    Pulled pull(int device) override { return pullBy(*m_states, device); }
    Pulled pullAnew(int device) override { return pullBy(*open(), device); }

private:
    std::shared_ptr<interfaces::IDriverState> open() {
        auto states = m_factory.CreateDriverStateInst(m_settings, nullptr);
        states->SetPrefix("soak:state"_q);
        return states;
    }

    static QJsonObject object(int call) { return {{"last"_q, mark(call)}, {"count"_q, call}}; }

    static Pulled pullBy(interfaces::IDriverState& states, int device) {
        states.Pull(device);
        const host::DeviceState read{device, states.GetAll(device)};
        const int call = markedCall(QJsonDocument(read.values).toJson());
        const host::DeviceState written{device, call == 0 ? QJsonObject() : object(call)};
        return {call, host::differences(written, read)};
    }

    interfaces::IDatabaseFactory& m_factory;
    QJsonObject m_settings;
    std::shared_ptr<interfaces::IDriverState> m_states;
};

class Queues final : public DeviceKind {
public:
    Queues(interfaces::IDatabaseFactory& factory, const QJsonObject& settings)
        : DeviceKind(places(settings, host::redisSettings(settings).queueDb, "", "dl_queues")),
          m_factory(factory), m_settings(settings), m_states(open()) {}

    QString name() const override { return "downlink queues"_q; }

protected:
    void push(int device, int call) override {
        m_states->DLqueue()->Push(device, queues(call), true);
    }

    Pulled pull(int device) override { return pullBy(*m_states, device); }
    Pulled pullAnew(int device) override { return pullBy(*open(), device); }

private:
    std::shared_ptr<interfaces::IDriverState> open() {
        return m_factory.CreateDriverStateInst(m_settings, nullptr);
    }

    static model::dl_queues queues(int call) {
        model::dl_queues queues;
        auto& queue = queues.dl["commands"_q];
        queue.timeout = call;
        queue.status = model::dl_queues::status::WAIT;
        queue.elements["first"_q].db_id = mark(call);
        queue.elements["first"_q].type = "read"_q;
        return queues;
    }

    static Pulled pullBy(interfaces::IDriverState& states, int device) {
        const host::DeviceQueues read{device, states.DLqueue()->Pull(device)};
        const int call =
            markedCall(read.queues.dl["commands"_q].elements["first"_q].db_id.toUtf8());
        const host::DeviceQueues written{device, call == 0 ? model::dl_queues() : queues(call)};
        return {call, host::differences(written, read)};
    }

    interfaces::IDatabaseFactory& m_factory;
    QJsonObject m_settings;
    std::shared_ptr<interfaces::IDriverState> m_states;
};

} // namespace

std::vector<std::unique_ptr<Kind>> deviceKinds(interfaces::IDatabaseFactory& factory,
                                               const QJsonObject& settings) {
    std::vector<std::unique_ptr<Kind>> kinds;
    kinds.push_back(std::make_unique<States>(factory, settings));
    kinds.push_back(std::make_unique<Queues>(factory, settings));
    return kinds;
}

} // namespace soak
