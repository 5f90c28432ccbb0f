#include "model/model_convertors.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/record_equality.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using model::dl_queues;
using model_convertors::fromJson;
using model_convertors::toJson;
using namespace test_support::literals;

using queue_status = enum dl_queues::status;

dl_queues read(const char* json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    EXPECT_TRUE(document.isObject()) << json;
    return fromJson<dl_queues>(document.object());
}

// The queue "q1" that has these members.
dl_queues::queue readQueue(const std::string& members) {
    const dl_queues queues = read((R"({"dl":{"q1":{)" + members + "}}}").c_str());
    EXPECT_EQ(queues.dl.keys(), QStringList{"q1"_q});
    return queues.dl.value("q1"_q);
}

std::string compact(const QJsonObject& json) {
    return QJsonDocument{json}.toJson(QJsonDocument::Compact).toStdString();
}

std::string written(const dl_queues& queues) {
    return compact(toJson(queues));
}

// One queue with one element, everything set.
dl_queues sample() {
    dl_queues::element element;
    element.data = QJsonObject{{"n"_q, 5}};
    element.type = "relay"_q;
    element.db_id = "5f0e"_q;
    element.status = queue_status::FAIL;
    element.repeat = 4;

    dl_queues::queue queue;
    queue.elements.insert("e7"_q, element);
    queue.repeat = 1;
    queue.timeout = 2;
    queue.start_from = 3;
    queue.status = queue_status::DONE;

    dl_queues queues;
    queues.dl.insert("q1"_q, queue);
    queues.lock = true;
    queues.status = queue_status::WAIT;
    return queues;
}

const char* const sampleJson =
    R"({"dl":{"q1":{"e7":{"data":{"n":5},"db_id":"5f0e","repeat":4,"status":"FAIL",)"
    R"("type":"relay"},"repeat":1,"start_from":3,"status":"DONE","timeout":2}},)"
    R"("lock":true,"status":"WAIT"})";

TEST(QueuesToJson, WritesEveryKey) {
    EXPECT_EQ(written(sample()), sampleJson);
}

TEST(QueuesToJson, WritesEveryKeyOfAnEmptyRecordToo) {
    EXPECT_EQ(written({}), R"({"dl":{},"lock":false,"status":"NONE"})");
}

TEST(QueuesToJson, WritesEveryKeyOfAnEmptyQueueToo) {
    dl_queues queues;
    queues.dl.insert("q1"_q, {});

    EXPECT_EQ(written(queues), R"({"dl":{"q1":{"repeat":0,"start_from":0,"status":"NONE",)"
                               R"("timeout":0}},"lock":false,"status":"NONE"})");
}

TEST(QueuesToJson, WritesEveryKeyOfAnEmptyElementToo) {
    dl_queues queues;
    queues.dl["q1"_q].elements.insert("e7"_q, {});

    EXPECT_EQ(compact(toJson(queues).value("dl"_q)["q1"_q]["e7"_q].toObject()),
              R"({"data":{},"db_id":"","repeat":0,"status":"NONE","type":""})");
}

TEST(QueuesToJson, QueuesAndElementsAreInTheOrderOfTheirNames) {
    dl_queues queues;
    for (const QString& name : {"b"_q, "a"_q, "B"_q}) {
        queues.dl["q"_q].elements.insert(name, {});
        queues.dl.insert(name, {});
    }

    EXPECT_EQ(toJson(queues).value("dl"_q).toObject().keys(),
              (QStringList{"B"_q, "a"_q, "b"_q, "q"_q}));
    EXPECT_EQ(
        toJson(queues).value("dl"_q)["q"_q].toObject().keys(),
        (QStringList{"B"_q, "a"_q, "b"_q, "repeat"_q, "start_from"_q, "status"_q, "timeout"_q}));
}

struct status_name {
    queue_status status;
    const char* name;

    friend void PrintTo(const status_name& status, std::ostream* out) { *out << status.name; }
};

class QueueStatus : public testing::TestWithParam<status_name> {
protected:
    const QString name = QString::fromLatin1(GetParam().name);
    const queue_status status = GetParam().status;
};

TEST_P(QueueStatus, OfTheSetIsWrittenByName) {
    dl_queues queues;
    queues.status = status;

    EXPECT_EQ(toJson(queues).value("status"_q), name);
}

TEST_P(QueueStatus, OfAQueueIsWrittenByName) {
    dl_queues queues;
    queues.dl["q1"_q].status = status;

    EXPECT_EQ(toJson(queues).value("dl"_q)["q1"_q]["status"_q], name);
}

TEST_P(QueueStatus, OfAnElementIsWrittenByName) {
    dl_queues queues;
    queues.dl["q1"_q].elements["e7"_q].status = status;

    EXPECT_EQ(toJson(queues).value("dl"_q)["q1"_q]["e7"_q]["status"_q], name);
}

TEST_P(QueueStatus, OfTheSetIsReadByName) {
    EXPECT_EQ(fromJson<dl_queues>({{"status"_q, name}}).status, status);
}

TEST_P(QueueStatus, OfAQueueIsReadByName) {
    EXPECT_EQ(readQueue(R"("status":")" + name.toStdString() + '"').status, status);
}

TEST_P(QueueStatus, OfAnElementIsReadByName) {
    const auto queue = readQueue(R"("e7":{"status":")" + name.toStdString() + "\"}");

    EXPECT_EQ(queue.elements.value("e7"_q).status, status);
}

TEST_P(QueueStatus, IsNeverReadAsANumber) {
    const std::string number = std::to_string(static_cast<int>(status));

    EXPECT_EQ(read((R"({"status":)" + number + "}").c_str()).status, queue_status::NONE);
    EXPECT_EQ(readQueue(R"("status":)" + number).status, queue_status::NONE);
    EXPECT_EQ(readQueue(R"("e7":{"status":)" + number + "}").elements.value("e7"_q).status,
              queue_status::NONE);
}

INSTANTIATE_TEST_SUITE_P(Each, QueueStatus,
                         testing::Values(status_name{queue_status{0}, "NONE"},
                                         status_name{queue_status{1}, "DONE"},
                                         status_name{queue_status{2}, "WAIT"},
                                         status_name{queue_status{3}, "FAIL"}),
                         [](const auto& info) { return std::string{info.param.name}; });

class UnknownQueueStatus : public testing::TestWithParam<const char*> {};

TEST_P(UnknownQueueStatus, IsReadAsNone) {
    const std::string member = std::string{R"("status":")"} + GetParam() + '"';

    EXPECT_EQ(read(("{" + member + "}").c_str()).status, queue_status::NONE);
    EXPECT_EQ(readQueue(member).status, queue_status::NONE);
    EXPECT_EQ(readQueue("\"e7\":{" + member + "}").elements.value("e7"_q).status,
              queue_status::NONE);
}

INSTANTIATE_TEST_SUITE_P(Name, UnknownQueueStatus,
                         testing::Values("wait", "Wait", "WAIT ", " DONE", "", "2", "PENDING",
                                         "WAIT\\u0000"));

TEST(QueuesToJson, StatusWithoutANameIsWrittenAsAnEmptyText) {
    dl_queues queues = sample();
    queues.status = queue_status{4};
    queues.dl["q1"_q].status = queue_status{-1};
    queues.dl["q1"_q].elements["e7"_q].status = queue_status{2147483647};

    EXPECT_EQ(toJson(queues).value("status"_q), QJsonValue{QString()});
    EXPECT_EQ(toJson(queues).value("dl"_q)["q1"_q]["status"_q], QJsonValue{QString()});
    EXPECT_EQ(toJson(queues).value("dl"_q)["q1"_q]["e7"_q]["status"_q], QJsonValue{QString()});
}

// Deliberate: settings and elements share one object, and the settings are written last.
TEST(QueuesToJson, ElementNamedLikeASettingIsOverwrittenByIt) {
    dl_queues queues = sample();
    for (const QString& setting : {"repeat"_q, "start_from"_q, "status"_q, "timeout"_q}) {
        queues.dl["q1"_q].elements.insert(setting, {});
    }

    EXPECT_EQ(written(queues), sampleJson);
}

TEST(QueuesToJson, ElementNamedLikeAnotherMemberOfASettingIsKept) {
    dl_queues queues;
    queues.dl["q1"_q].elements.insert("lock"_q, {});
    queues.dl["q1"_q].elements.insert("dl"_q, {});

    EXPECT_EQ(fromJson<dl_queues>(toJson(queues)), queues);
}

TEST(QueuesFromJson, ReadsEveryKey) {
    EXPECT_EQ(read(sampleJson), sample());
}

TEST(QueuesFromJson, EmptyObjectGivesTheEmptyRecord) {
    const dl_queues queues = read("{}");

    EXPECT_TRUE(queues.dl.isEmpty());
    EXPECT_FALSE(queues.lock);
    EXPECT_EQ(queues.status, queue_status::NONE);
}

class MistypedTopLevel : public testing::TestWithParam<const char*> {};

TEST_P(MistypedTopLevel, GivesTheEmptyRecord) {
    EXPECT_EQ(read(GetParam()), dl_queues{});
}

INSTANTIATE_TEST_SUITE_P(Member, MistypedTopLevel,
                         testing::Values(R"({"dl":[{"q1":{}}]})", R"({"dl":"q1"})",
                                         R"({"dl":null})", R"({"lock":1})", R"({"lock":"true"})",
                                         R"({"lock":null})", R"({"lock":{}})", R"({"status":true})",
                                         R"({"status":null})", R"({"status":["WAIT"]})",
                                         R"({"DL":{"q1":{}}})", R"({"Lock":true})",
                                         R"({"Status":"WAIT"})", R"({"q1":{"e7":{}}})"));

class QueueThatIsNoObject : public testing::TestWithParam<const char*> {};

TEST_P(QueueThatIsNoObject, IsAnEmptyQueueOfItsName) {
    dl_queues expected;
    expected.dl.insert("q1"_q, {});

    EXPECT_EQ(read((std::string{R"({"dl":{"q1":)"} + GetParam() + "}}").c_str()), expected);
}

INSTANTIATE_TEST_SUITE_P(Value, QueueThatIsNoObject,
                         testing::Values("null", "5", "\"text\"", "[{\"e7\":{}}]", "true"));

TEST(QueueSettingsFromJson, EachNumberReachesItsMember) {
    dl_queues::queue repeat, startFrom, timeout;
    repeat.repeat = 7;
    startFrom.start_from = -8;
    timeout.timeout = 2147483647;

    EXPECT_EQ(readQueue(R"("repeat":7)"), repeat);
    EXPECT_EQ(readQueue(R"("start_from":-8)"), startFrom);
    EXPECT_EQ(readQueue(R"("timeout":2147483647)"), timeout);
}

class QueueSetting : public testing::TestWithParam<const char*> {
protected:
    dl_queues::queue readSettingAs(const std::string& value) {
        return readQueue('"' + std::string{GetParam()} + "\":" + value);
    }
};

TEST_P(QueueSetting, ThatIsATextIsIgnoredAndNoElement) {
    EXPECT_EQ(readSettingAs(R"("3")"), dl_queues::queue{});
}

TEST_P(QueueSetting, ThatIsNullABooleanOrAnArrayIsIgnored) {
    EXPECT_EQ(readSettingAs("null"), dl_queues::queue{});
    EXPECT_EQ(readSettingAs("true"), dl_queues::queue{});
    EXPECT_EQ(readSettingAs("[3]"), dl_queues::queue{});
}

TEST_P(QueueSetting, ThatIsAFractionIsZero) {
    EXPECT_EQ(readSettingAs("2.5"), dl_queues::queue{});
}

TEST_P(QueueSetting, OutsideTheRangeOfIntIsZero) {
    EXPECT_EQ(readSettingAs("2147483648"), dl_queues::queue{});
    EXPECT_EQ(readSettingAs("-2147483649"), dl_queues::queue{});
}

// Deliberate: an object is an element, whatever its name.
TEST_P(QueueSetting, ThatIsAnObjectIsAnElementOfThatName) {
    dl_queues::queue expected;
    expected.elements[QString::fromLatin1(GetParam())].repeat = 6;

    EXPECT_EQ(readSettingAs(R"({"repeat":6})"), expected);
}

INSTANTIATE_TEST_SUITE_P(Number, QueueSetting, testing::Values("repeat", "start_from", "timeout"),
                         [](const auto& info) { return std::string{info.param}; });

TEST(QueueSettingsFromJson, StatusThatIsAnObjectIsAnElementOfThatName) {
    dl_queues::queue expected;
    expected.elements["status"_q].type = "t"_q;

    EXPECT_EQ(readQueue(R"("status":{"type":"t"})"), expected);
}

TEST(QueueSettingsFromJson, StatusThatIsANumberIsIgnoredAndNoElement) {
    EXPECT_EQ(readQueue(R"("status":2)"), dl_queues::queue{});
}

TEST(QueueSettingsFromJson, OtherSpellingsAreIgnored) {
    EXPECT_EQ(readQueue(R"("Repeat":1,"startFrom":2,"STATUS":"WAIT","time_out":3)"),
              dl_queues::queue{});
}

TEST(QueueElementsFromJson, OtherMembersAreIgnored) {
    EXPECT_EQ(readQueue(R"("a":1,"b":"text","c":null,"d":true,"e":[{}])"), dl_queues::queue{});
}

TEST(QueueElementsFromJson, EmptyObjectIsAnEmptyElement) {
    dl_queues::queue expected;
    expected.elements.insert("e7"_q, {});

    EXPECT_EQ(readQueue(R"("e7":{})"), expected);
}

TEST(QueueElementsFromJson, EachMemberReachesItsOwn) {
    dl_queues::element data, dbId, repeat, status, type;
    data.data = QJsonObject{{"n"_q, QJsonArray{QJsonValue::Null, 2.5}}};
    dbId.db_id = "5f"_q;
    repeat.repeat = -4;
    status.status = queue_status::WAIT;
    type.type = "relay"_q;

    const auto queue = readQueue(R"("a":{"data":{"n":[null,2.5]}},"b":{"db_id":"5f"},)"
                                 R"("c":{"repeat":-4},"d":{"status":"WAIT"},"e":{"type":"relay"})");

    EXPECT_EQ(queue.elements,
              (QMap<QString, dl_queues::element>{
                  {"a"_q, data}, {"b"_q, dbId}, {"c"_q, repeat}, {"d"_q, status}, {"e"_q, type}}));
}

class MistypedElement : public testing::TestWithParam<const char*> {};

TEST_P(MistypedElement, HasTheDefaults) {
    dl_queues::queue expected;
    expected.elements.insert("e7"_q, {});

    EXPECT_EQ(readQueue(std::string{R"("e7":{)"} + GetParam() + "}"), expected);
}

INSTANTIATE_TEST_SUITE_P(Member, MistypedElement,
                         testing::Values(R"("data":[1])", R"("data":"x")", R"("data":null)",
                                         R"("db_id":5)", R"("db_id":{"$oid":"5f"})",
                                         R"("repeat":"4")", R"("repeat":2.5)",
                                         R"("repeat":4294967296)", R"("status":1)",
                                         R"("status":null)", R"("type":7)", R"("type":true)",
                                         R"("Data":{"n":5})", R"("timeout":3)"));

TEST(QueueElementsFromJson, OfTwoWithOneIdTheLastCounts) {
    dl_queues::queue expected;
    expected.elements["e7"_q].repeat = 2;

    EXPECT_EQ(readQueue(R"("e7":{"repeat":1,"type":"t"},"e7":{"repeat":2})"), expected);
}

TEST(QueuesFromJson, NamesMayBeAnyText) {
    dl_queues queues;
    for (const QString& name : {""_q, "\u0416\U0001F50C"_q, "a.b$c:\0\"d"_q, "dl"_q, "status"_q}) {
        queues.dl[name].elements["e-"_q + name].type = name;
    }

    EXPECT_EQ(fromJson<dl_queues>(toJson(queues)), queues);
}

TEST(QueuesFromJson, ExtremeNumbersComeBack) {
    dl_queues queues;
    queues.dl["q1"_q].repeat = std::numeric_limits<int>::max();
    queues.dl["q1"_q].timeout = std::numeric_limits<int>::min();
    queues.dl["q1"_q].start_from = -1;
    queues.dl["q1"_q].elements["e7"_q].repeat = std::numeric_limits<int>::min();

    EXPECT_EQ(fromJson<dl_queues>(toJson(queues)), queues);
}

} // namespace
