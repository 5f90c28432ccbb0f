#pragma once

#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_dl_queue_persistent.h"
#include "interfaces/idriver_state.h"
#include "interfaces/idriver_state_persistent.h"
#include "tests/contract/recording_databases.h"

namespace virtual_table {

class recording_state final : public interfaces::IDriverState, public recorder {
public:
    using number_or_bytes = std::variant<int, double, QByteArray>;
    using all_states = std::shared_ptr<QHash<int, QJsonObject>>;

    void SetPrefix(const QString& prefix) override { reached("SetPrefix", &prefix); }
    const QString& GetPrefix() override {
        reached("GetPrefix");
        return prefix;
    }
    bool Pull(int modem_id) override {
        reached("Pull", modem_id);
        return true;
    }
    bool Push(int modem_id, bool persist) override {
        reached("Push", modem_id, persist);
        return true;
    }
    bool Delete(int modem_id) override {
        reached("Delete", modem_id);
        return true;
    }
    number_or_bytes GetValue(int modem_id, const QString& name) override {
        reached("GetValue", modem_id, &name);
        return 2.5;
    }
    void SetValue(int modem_id, const QString& name, const number_or_bytes& value) override {
        reached("SetValue", modem_id, &name, &value);
    }
    QVariant GetValueAsVariant(int modem_id, const QString& name) override {
        reached("GetValueAsVariant", modem_id, &name);
        return 8;
    }
    void SetValueAsVariant(int modem_id, const QString& name, const QVariant& value) override {
        reached("SetValueAsVariant", modem_id, &name, &value);
    }
    QJsonObject GetAll(int modem_id) override {
        reached("GetAll", modem_id);
        return {{QStringLiteral("all"), modem_id}};
    }
    QList<QVariant> GetIDs(const QString& first, const QString& second) override {
        reached("GetIDs", &first, &second);
        return {11};
    }
    bool DeleteDevices(const QList<int>& modem_ids, const QDateTime& from,
                       const QDateTime& to) override {
        reached("DeleteDevices", &modem_ids, &from, &to);
        return true;
    }
    all_states GetAllStates(const QString& first, const QString& second) override {
        reached("GetAllStates", &first, &second);
        return sharedNowhere<all_states::element_type>(0x1300);
    }
    interfaces::IDriverDLqueue* DLqueue() override {
        reached("DLqueue");
        return nowhere<interfaces::IDriverDLqueue>(0x1400);
    }

    QString prefix = QStringLiteral("prefix");
};

class recording_queue final : public interfaces::IDriverDLqueue, public recorder {
public:
    model::dl_queues Pull(int modem_id) override {
        reached("Pull", modem_id);
        model::dl_queues queues;
        queues.lock = true;
        return queues;
    }
    bool Push(int modem_id, const model::dl_queues& queues, bool persist) override {
        reached("Push", modem_id, &queues, persist);
        return true;
    }
    bool Delete(int modem_id) override {
        reached("Delete", modem_id);
        return true;
    }
    bool DeleteDevices(const QList<int>& modem_ids) override {
        reached("DeleteDevices", &modem_ids);
        return true;
    }
};

template <typename Interface>
class recording_persistent final : public Interface, public recorder {
public:
    void Create() override { reached("Create"); }
    bool Save(int modem_id, const QJsonObject& state) override {
        reached("Save", modem_id, &state);
        return true;
    }
    QJsonObject Get(int modem_id) override {
        reached("Get", modem_id);
        return {{QStringLiteral("of"), modem_id}};
    }
    bool Delete(int modem_id) override {
        reached("Delete", modem_id);
        return true;
    }
};

} // namespace virtual_table
