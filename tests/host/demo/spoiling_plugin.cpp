#include "tests/host/demo/spoiling_plugin.h"

namespace {

class SpoilingUplinks final : public test_support::ForwardingUplinks {
public:
    using ForwardingUplinks::ForwardingUplinks;

    void SaveMessage(const model::message& message) override {
        const auto how = qEnvironmentVariable("KELVRO_SPOIL");
        const bool third = ++m_saved == 3;
        auto stored = message;
        if (third && how == QLatin1String("lose")) {
            return;
        }
        if (third && how == QLatin1String("alter")) {
            ++stored.rssi;
        }
        ForwardingUplinks::SaveMessage(stored);
        if (third && how == QLatin1String("repeat")) {
            stored.unique_id -= 1'000'000;
            ForwardingUplinks::SaveMessage(stored);
        }
    }

private:
    int m_saved = 0;
};

} // namespace

std::shared_ptr<interfaces::IMessagesDatabase>
SpoilingPlugin::CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) {
    return std::make_shared<test_support::MessagesWith<SpoilingUplinks>>(
        real().CreateMessageDatabaseInst(settings, parent));
}
