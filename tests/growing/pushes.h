#pragma once

#include "interfaces/idatabase_factory.h"
#include "interfaces/idriver_state.h"
#include "tests/soak/kind.h"

#include <QJsonObject>

#include <memory>
#include <vector>

namespace growing {

/// Driver states, each call that of a new device, for a Writer: which of them returned.
class Pushes final : public soak::Kind {
public:
    enum class Copy { RedisOnly, Durable };

    /// The devices are numbered from `firstDevice` on, by call.
    Pushes(interfaces::IDatabaseFactory& factory, const QJsonObject& settings, Copy copy,
           int firstDevice);

    QString name() const override;
    bool usesRedis() const override { return true; }
    void save(int call) override;
    void note(int call, bool acknowledged) override;
    /// By the caller.
    soak::Findings readBack() override { return {}; }

    /// When the writer has stopped. The calls that returned, counted from 1.
    const std::vector<int>& acknowledged() const { return m_acknowledged; }
    bool isDurable() const { return m_copy == Copy::Durable; }
    int deviceOf(int call) const { return m_firstDevice + call; }

private:
    Copy m_copy;
    int m_firstDevice;
    std::shared_ptr<interfaces::IDriverState> m_states;
    std::vector<int> m_acknowledged;
};

} // namespace growing
