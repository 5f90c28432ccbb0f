#include "tests/redis/driver_state_fixture.h"
#include "tests/support/decimal_comma.h"
#include "tests/support/record_equality.h"

// In a process whose locale has a decimal comma.
namespace {

using test_support::canonical;
using test_support::decimal_comma;
using testing::ElementsAre;
using namespace test_support::literals;

using value_type = std::variant<int, double, QByteArray>;

class DriverStateWithADecimalComma : public DriverStateTest {
protected:
    void expectPulledValues() {
        const decimal_comma comma;
        states.SetValue(17, "t"_q, 0);
        states.Pull(17);
        EXPECT_EQ(states.GetAll(17), (QJsonObject{{"t"_q, 2.5}, {"text"_q, "4.5"_q}}));
        EXPECT_EQ(states.GetValue(17, "t"_q), value_type{2.5});
        EXPECT_EQ(states.GetValue(17, "text"_q), value_type{4.5});
    }
};

TEST_F(DriverStateWithADecimalComma, KeepsFractionsInBothCopies) {
    {
        const decimal_comma comma;
        states.SetValue(17, "t"_q, 2.5);
        states.SetValue(17, "text"_q, "4.5"_qba);
        states.Push(17, true);
    }

    EXPECT_EQ(inRedis("drv:17"), R"({"t":2.5,"text":"4.5"})");
    EXPECT_THAT(database.documents("states"),
                ElementsAre(canonical(R"({"_id": 17, "state": {"t": 2.5, "text": "4.5"}})")));
    expectPulledValues();
    server.run({"DEL", "drv:17"});
    expectPulledValues();
}

TEST_F(DriverStateWithADecimalComma, ListsTheFractionsOfAllDevices) {
    server.run({"SET", "x:y:17", R"({"t":2.5})"});
    const decimal_comma comma;

    EXPECT_EQ(*states.GetAllStates("y"_q, "x"_q),
              (QHash<int, QJsonObject>{{17, QJsonObject{{"t"_q, 2.5}}}}));
}

TEST_F(DriverStateWithADecimalComma, KeepsTheFractionsInItsQueues) {
    model::dl_queues pushed;
    pushed.dl["q1"_q].elements["e7"_q].data = QJsonObject{{"t"_q, 2.5}};
    {
        const decimal_comma comma;
        states.DLqueue()->Push(17, pushed, true);
    }

    EXPECT_TRUE(inRedis("17", 7).contains(R"({"t":2.5})"));
    EXPECT_EQ(database.count("dl_queues", R"({"_id": 17, "state.dl.q1.e7.data.t": 2.5})"), 1);
    {
        const decimal_comma comma;
        EXPECT_EQ(states.DLqueue()->Pull(17), pushed);
    }
    server.run({"DEL", "17"}, 7);
    const decimal_comma comma;
    EXPECT_EQ(states.DLqueue()->Pull(17), pushed);
}

} // namespace
