#include "interfaces/idl_app_message_repository.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "interfaces/ieav_database.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/contract/redis_commands.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/record_samples.h"

#include <gmock/gmock.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>

#include <array>
#include <clocale>

using namespace test_support;
using namespace test_support::literals;
using testing::HasSubstr;

// Every record through the whole driver in a process that writes 2.5 as "2,5", as a
// QCoreApplication under LC_ALL=de_DE.UTF-8 does.
namespace {

constexpr int device = 1001;

struct content {
    const char* name;
    const char* json;
    /// Stored in the members that are JSON documents: the BSON library decides the types. Qt has
    /// no number beyond 2^53 that is odd.
    const char* asDocument;
    /// Stored in those that are JSON objects: every number is a double, and a member of the name
    /// "$date", which the test's own reader would take for a date, stands as "@date".
    const char* asObject;

    QJsonObject object() const { return QJsonDocument::fromJson(json).object(); }

    friend void PrintTo(const content& content, std::ostream* out) { *out << content.json; }
};

constexpr std::array contents{
    content{"plain", R"({"n": 3, "t": 2.5})", R"({"n": 3, "t": 2.5})", R"({"n": 3.0, "t": 2.5})"},
    content{"beside_an_emoji", R"({"n": "😀", "t": 2.5})", R"({"n": "😀", "t": 2.5})",
            R"({"n": "😀", "t": 2.5})"},
    content{"beside_a_date", R"({"t": 2.5, "when": {"$date": 5}})",
            R"({"t": 2.5, "when": {"$date": {"$numberLong": "5"}}})",
            R"({"t": 2.5, "when": {"@date": 5.0}})"},
    content{"in_arrays", R"({"list": [2.5, [0.1, {"u": -7.25}], "😀"], "t": 2.5})",
            R"({"list": [2.5, [0.1, {"u": -7.25}], "😀"], "t": 2.5})",
            R"({"list": [2.5, [0.1, {"u": -7.25}], "😀"], "t": 2.5})"},
    content{"beside_a_long_number", R"({"id": 9007199254740993, "t": 2.5})",
            R"({"id": {"$numberLong": "9007199254740992"}, "t": 2.5})",
            R"({"id": 9007199254740992.0, "t": 2.5})"},
    content{"large_and_small", R"({"large": 1.7e300, "small": 1.5e-7, "t": 2.5, "u": 0.1})",
            R"({"large": 1.7e300, "small": 1.5e-7, "t": 2.5, "u": 0.1})",
            R"({"large": 1.7e300, "small": 1.5e-7, "t": 2.5, "u": 0.1})"},
};

/// The calling thread's numbers have a decimal point while this lives: the test's own look into the
/// database needs one.
class decimal_point {
public:
    decimal_point()
        : m_plain(newlocale(LC_ALL_MASK, "C", nullptr)), m_previous(uselocale(m_plain)) {}
    ~decimal_point() {
        uselocale(m_previous);
        freelocale(m_plain);
    }
    decimal_point(const decimal_point&) = delete;
    decimal_point& operator=(const decimal_point&) = delete;

private:
    locale_t m_plain;
    locale_t m_previous;
};

class PluginUnderADecimalComma : public FixedMongoDatabase,
                                 public testing::WithParamInterface<content> {
protected:
    static void SetUpTestSuite() {
        static const QTemporaryDir folder;
        const int ended = QProcess::execute("localedef"_q, {"-i"_q, "de_DE"_q, "-f"_q, "UTF-8"_q,
                                                            folder.filePath("de_DE.UTF-8"_q)});
        ASSERT_EQ(ended, 0);
        qputenv("LOCPATH", folder.path().toLocal8Bit());
        qputenv("LC_ALL", "de_DE.UTF-8");
        ASSERT_NE(std::setlocale(LC_ALL, ""), nullptr);
        ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    }

    ~PluginUnderADecimalComma() override {
        redis.select(0);
        redis.run({"DEL", "kelvro-locale:1001"});
        redis.select(7);
        redis.run({"DEL", "1001"});
    }

    QJsonObject settings() const {
        QJsonObject settings = settingsFor(mongoUrl());
        settings.insert("redis"_q, redis.settings());
        return settings;
    }

    static QDateTime in2100() { return utcMsecs(4'102'444'800'123); }

    /// Canonical extended JSON of the one document's member, or of a member of that.
    std::string stored(std::string_view collection, std::initializer_list<const char*> path) {
        const decimal_point here;
        const auto document = database.document(collection);
        bsoncxx::v1::document::view found = document;
        for (const char* key : path) {
            found = found[key].get_document().value;
        }
        return toJson(found);
    }

    static std::string expected(const char* json) {
        const decimal_point here;
        std::string text = canonical(json);
        if (const auto at = text.find("@date"); at != std::string::npos) {
            text[at] = '$';
        }
        return text;
    }

    /// What a date and a number beyond 2^53 read back as differs by record; fractions do not.
    static void expectFractions(const QJsonObject& found) {
        const QJsonObject object = GetParam().object();
        for (const char* key : {"t", "u", "list", "large", "small"}) {
            EXPECT_EQ(found.value(QLatin1String(key)), object.value(QLatin1String(key))) << key;
        }
    }

    template <typename Filter>
    static Filter everything() {
        Filter filter;
        filter.modem_ids = {device};
        filter.begin = utcSecs(0);
        filter.end = in2100();
        return filter;
    }

    redis_commands redis;
    log_capture log;
    LoadedPlugin plugin;
};

TEST_P(PluginUnderADecimalComma, KeepsTheFractionsOfUplinks) {
    const auto messages = plugin.factory()->CreateMessageDatabaseInst(settings(), nullptr);
    model::message message = sampleMessage();
    message.ttl = in2100();
    message.data = QJsonDocument{GetParam().object()};
    message.extended_data = QJsonDocument{GetParam().object()};
    messages->UlMessageRepository()->SaveMessage(message);

    EXPECT_EQ(stored("ul_messages", {"data"}), expected(GetParam().asDocument));
    EXPECT_EQ(stored("ul_messages", {"extended_data"}), expected(GetParam().asDocument));
    const auto found =
        messages->UlMessageRepository()->GetMessages(everything<model::filter_roll>());
    ASSERT_EQ(found->count(device), 1u);
    expectFractions(found->at(device).front().data.object());
    expectFractions(found->at(device).front().extended_data.object());
}

TEST_P(PluginUnderADecimalComma, KeepsTheFractionsOfUplinksThatAreArrays) {
    const auto messages = plugin.factory()->CreateMessageDatabaseInst(settings(), nullptr);
    model::message message = sampleMessage();
    message.ttl = in2100();
    message.data = QJsonDocument{QJsonArray{2.5, GetParam().object()}};
    messages->UlMessageRepository()->SaveMessage(message);

    EXPECT_EQ(stored("ul_messages", {"data"}),
              expected((std::string{R"({"0": 2.5, "1": )"} + GetParam().asDocument + "}").c_str()));
}

TEST_P(PluginUnderADecimalComma, KeepsTheFractionsOfCommands) {
    const auto messages = plugin.factory()->CreateMessageDatabaseInst(settings(), nullptr);
    model::dl_message command = sampleCommand();
    command.ttl = in2100();
    command.data = GetParam().object();
    messages->DlMessageRepository()->SaveMessage(command);

    EXPECT_EQ(stored("dl_messages", {"data"}), expected(GetParam().asObject));
    expectFractions(messages->DlMessageRepository()->GetById(command.db_id).data);
    const auto found = messages->DlMessageRepository()->GetCommands(everything<model::filter_dl>());
    ASSERT_EQ(found->count(device), 1u);
    expectFractions(found->at(device).front().data);
}

TEST_P(PluginUnderADecimalComma, KeepsTheFractionsOfValues) {
    const auto eav = plugin.factory()->CreateEavDatabaseInst(settings(), nullptr);
    model::dev_value value = sampleValue();
    value.ttl = in2100();
    value.value = 0.1;
    value.extended_data = QJsonDocument{GetParam().object()};
    eav->EAVRepository()->SaveValues({value});

    EXPECT_EQ(stored("eav_values", {"extended_data"}), expected(GetParam().asDocument));
    EXPECT_EQ(database.document("eav_values")["value"].get_double().value, 0.1);
    const auto found = eav->EAVRepository()->GetValues(everything<model::filter_eav>());
    ASSERT_EQ(found->count(device), 1u);
    EXPECT_EQ(found->at(device).front().value, QVariant(0.1));
    expectFractions(found->at(device).front().extended_data.object());
}

TEST_P(PluginUnderADecimalComma, KeepsTheFractionsOfEvents) {
    const auto eav = plugin.factory()->CreateEavDatabaseInst(settings(), nullptr);
    model::dev_event event = sampleEvent();
    event.ttl = in2100();
    event.extended_data = QJsonDocument{GetParam().object()};
    eav->EAVRepository()->SaveEvents({event});

    EXPECT_EQ(stored("eav_events", {"extended_data"}), expected(GetParam().asDocument));
    const auto found = eav->EAVRepository()->GetEvents(everything<model::filter_eav>());
    ASSERT_EQ(found->count(device), 1u);
    expectFractions(found->at(device).front().extended_data.object());
}

TEST_P(PluginUnderADecimalComma, KeepsTheFractionsOfStates) {
    const auto state = plugin.factory()->CreateDriverStateInst(settings(), nullptr);
    state->SetPrefix("kelvro-locale"_q);
    state->SetValueAsVariant(device, "object"_q, GetParam().object());
    state->SetValue(device, "number"_q, 2.5);
    state->SetValue(device, "text"_q, "2.5"_qba);
    state->Push(device, true);

    EXPECT_EQ(stored("states", {"state", "object"}), expected(GetParam().asObject));
    redis.select(0);
    EXPECT_THAT(redis.run({"GET", "kelvro-locale:1001"}), HasSubstr(R"("t":2.5)"));
    state->Pull(device);
    expectFractions(state->GetAll(device).value("object"_q).toObject());

    redis.run({"DEL", "kelvro-locale:1001"});
    state->Pull(device);
    expectFractions(state->GetAll(device).value("object"_q).toObject());
    using value = std::variant<int, double, QByteArray>;
    EXPECT_EQ(state->GetValue(device, "number"_q), value{2.5});
    EXPECT_EQ(state->GetValue(device, "text"_q), value{2.5});
}

TEST_P(PluginUnderADecimalComma, KeepsTheFractionsOfQueues) {
    const auto state = plugin.factory()->CreateDriverStateInst(settings(), nullptr);
    model::dl_queues queues;
    queues.dl["q"_q].elements["e"_q].data = GetParam().object();
    state->DLqueue()->Push(device, queues, true);

    EXPECT_EQ(stored("dl_queues", {"state", "dl", "q", "e", "data"}),
              expected(GetParam().asObject));
    expectFractions(state->DLqueue()->Pull(device).dl["q"_q].elements["e"_q].data);

    redis.select(7);
    redis.run({"DEL", "1001"});
    expectFractions(state->DLqueue()->Pull(device).dl["q"_q].elements["e"_q].data);
}

INSTANTIATE_TEST_SUITE_P(With, PluginUnderADecimalComma, testing::ValuesIn(contents),
                         [](const auto& info) { return std::string{info.param.name}; });

} // namespace
