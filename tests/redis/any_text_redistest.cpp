// Names of any kind as names and texts of states and of queues, in Redis and in the durable copy.

#include "tests/redis/driver_state_fixture.h"
#include "tests/support/any_names.h"
#include "tests/support/record_equality.h"

#include <bsoncxx/v1/exception.hpp>

using namespace test_support::literals;

namespace {

class AnyTextInRedis : public DriverStateTest {
protected:
    /// A key with a zero character has no BSON form.
    template <typename Push>
    static bool isPersisted(const QString& name, const Push& push) {
        if (name.contains(QChar::Null)) {
            EXPECT_THROW(push(), bsoncxx::v1::exception) << name.toStdString();
            return false;
        }
        push();
        return true;
    }
};

TEST_F(AnyTextInRedis, IsANameAndATextOfAState) {
    int device = 0;
    for (const QString& name : test_support::anyNames()) {
        ++device;
        states.SetValueAsVariant(device, name, QJsonObject{{name, name}});
        const QJsonObject state = states.GetAll(device);

        states.Push(device, false);
        states.Pull(device);
        EXPECT_EQ(states.GetAll(device), state);

        if (isPersisted(name, [&] { states.Push(device, true); })) {
            server.run({"DEL", "drv:" + QByteArray::number(device)});
            states.Pull(device);
            EXPECT_EQ(states.GetAll(device), state);
        }
    }
}

TEST_F(AnyTextInRedis, IsANameAndATextOfAQueue) {
    int device = 0;
    for (const QString& name : test_support::anyNames()) {
        ++device;
        model::dl_queues queues;
        auto& element = queues.dl[name].elements[name];
        element.data = QJsonObject{{name, name}};
        element.type = element.db_id = name;

        states.DLqueue()->Push(device, queues, false);
        EXPECT_EQ(states.DLqueue()->Pull(device), queues);

        if (isPersisted(name, [&] { states.DLqueue()->Push(device, queues, true); })) {
            server.run({"DEL", QByteArray::number(device)}, 7);
            EXPECT_EQ(states.DLqueue()->Pull(device), queues);
        }
    }
}

// JSON's reader takes a byte order mark at the start of a text for no part of it.
TEST_F(AnyTextInRedis, LosesOnlyAByteOrderMark) {
    const QString half(QChar(0xD800));
    states.SetValueAsVariant(7, "v"_q, QJsonObject{{"mark"_q, "\ufeffx"_q}, {"half"_q, half}});

    states.Push(7, false);
    states.Pull(7);

    const QJsonObject kept = states.GetAll(7).value("v"_q).toObject();
    EXPECT_EQ(kept.value("mark"_q).toString(), "x"_q);
    EXPECT_EQ(kept.value("half"_q).toString(), half);
}

} // namespace
