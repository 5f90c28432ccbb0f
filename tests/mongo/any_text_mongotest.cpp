// Names of any kind as tags, codes and texts: stored, found again by them, and equal.

#include "mongo/dl_message_repository.h"
#include "mongo/eav_reopository_mongo.h"
#include "mongo/ul_app_message_reopository.h"
#include "tests/mongo/eav_repository_fixture.h"
#include "tests/mongo/records.h"
#include "tests/support/any_names.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"
#include "tests/support/record_equality.h"

#include <gmock/gmock.h>

using namespace records;

namespace {

class AnyText : public test_support::UniqueMongoDatabase {
protected:
    test_support::log_capture log;
};

TEST_F(AnyText, IsATagOfAnUplink) {
    mongo::ULAPPMessageRepository repository{database.handle()};
    quint64 id = 0;
    for (const QString& name : test_support::anyNames()) {
        auto message = uplink{.id = ++id, .tag = name}.record();
        message.phy = message.hw_type = message.protocol = message.parse_status = name;
        message.data = QJsonDocument{QJsonObject{{"text"_q, name}}};
        repository.SaveMessage(message);
        auto filter = uplinksOf({7});
        filter.tags = {name};

        const auto found = repository.GetMessages(filter);

        ASSERT_EQ(found->size(), 1u) << name.toStdString();
        message.extra_text = ""_q;
        message.extra_value1 = message.extra_value2 = 0;
        EXPECT_THAT(found->at(7), testing::SizeIs(1)) << name.toStdString();
        EXPECT_EQ(test_support::differences(found->at(7).front(), message,
                                            test_support::date_times::byInstant),
                  "");
    }
}

TEST_F(AnyText, IsTheTagAndTheCodeOfAValue) {
    mongo::EAVRepositoryMongo repository{database.handle()};
    for (const QString& name : test_support::anyNames()) {
        auto value = reading{.obis = name, .tag = name, .value = name}.record();
        value.message_id = name;
        repository.SaveValues({value});
        auto filter = allOf({7});
        filter.tags = filter.obis_codes = {name};

        const auto found = repository.GetValues(filter);

        ASSERT_EQ(found->size(), 1u) << name.toStdString();
        EXPECT_THAT(found->at(7), testing::SizeIs(1)) << name.toStdString();
        EXPECT_EQ(test_support::differences(found->at(7).front(), value,
                                            test_support::date_times::byInstant),
                  "");
    }
}

TEST_F(AnyText, IsTheMessageOfAnEvent) {
    mongo::EAVRepositoryMongo repository{database.handle()};
    for (const QString& name : test_support::anyNames()) {
        auto event = happening{.message = name}.record();
        event.message_id = name;
        repository.SaveEvents({event});
        auto filter = allOf({7});
        filter.tags = {name};

        const auto found = repository.GetEvents(filter);

        ASSERT_EQ(found->size(), 1u) << name.toStdString();
        EXPECT_THAT(found->at(7), testing::SizeIs(1)) << name.toStdString();
        EXPECT_EQ(test_support::differences(found->at(7).front(), event,
                                            test_support::date_times::byInstant),
                  "");
    }
}

TEST_F(AnyText, IsTheKeyAndTheContentOfACommand) {
    mongo::DLMessageRepository repository{database.handle()};
    for (const QString& name : test_support::anyNames()) {
        auto command = downlink{}.record();
        command.api_key = name;
        command.data = QJsonObject{{"text"_q, name}};
        repository.SaveMessage(command);
        command.extra_text = ""_q;

        EXPECT_EQ(test_support::differences(repository.GetById(command.db_id), command,
                                            test_support::date_times::byInstant),
                  "");
    }
}

// BSON is UTF-8, and decoders take a byte order mark at the start for no part of the text.
TEST_F(AnyText, LosesOnlyLoneSurrogatesAndAByteOrderMark) {
    mongo::EAVRepositoryMongo repository{database.handle()};
    repository.SaveValues(
        {reading{.tag = QString(QChar(0xD800)) + "x"_q}, reading{.modem = 8, .tag = "\ufeffx"_q}});

    const auto found = repository.GetValues(allOf({7, 8}));

    EXPECT_EQ(found->at(7).front().tag, "?x"_q);
    EXPECT_EQ(found->at(8).front().tag, "x"_q);
}

} // namespace
