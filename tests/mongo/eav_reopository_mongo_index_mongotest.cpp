#include "model/bson_utils.h"
#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "mongo/store_layout.h"
#include "tests/mongo/eav_repository_fixture.h"

#include <mongocxx/v1/collection.hpp>

using namespace records;
using namespace test_support;
using testing::ElementsAre;

namespace {

/// Which indexes the server takes for the repository's queries: those with all that a query names.
/// That of "_id" would mean that the server reads the whole collection.
class EavIndexes : public EavRepositoryTest {
protected:
    EavIndexes() {
        auto valueCollection = database.handle().collection(values);
        mongo::createIndexes(valueCollection, layout::eav_values::indexes);
        auto eventCollection = database.handle().collection(events);
        mongo::createIndexes(eventCollection, layout::eav_events::indexes);
        std::vector<bsoncxx::v1::document::value> valueDocuments;
        std::vector<bsoncxx::v1::document::value> eventDocuments;
        for (int number = 0; number < 300; ++number) {
            valueDocuments.push_back(bson_utils::toBson(
                reading{.modem = number % 30, .at = number, .obis = QString::number(number % 5)}
                    .record()));
            eventDocuments.push_back(
                bson_utils::toBson(happening{.modem = number % 30, .at = number}.record()));
        }
        database.insertMany(values, valueDocuments);
        database.insertMany(events, eventDocuments);
    }

    static model::filter_eav filterOf100To200() {
        auto filter = allOf({7});
        filter.begin = utc(100);
        filter.end = utc(200);
        return filter;
    }

    std::set<std::string> indexesUsed() {
        return database.indexesUsedBy(
            client.sent().back().part({"find", "filter", "sort", "limit"}));
    }
};

TEST_F(EavIndexes, ServeValuesByDeviceAndPeriod) {
    repository.GetValues(filterOf100To200());

    EXPECT_THAT(indexesUsed(), ElementsAre("modem_id_1_timestamp_-1"));
}

TEST_F(EavIndexes, ServeValuesByObisCodeAndTag) {
    auto filter = filterOf100To200();
    filter.obis_codes = {"2"_q};
    repository.GetValues(filter);
    EXPECT_THAT(indexesUsed(), ElementsAre("modem_id_1_obis_code_1_timestamp_-1"));

    filter.tags = {"energy"_q};
    repository.GetValues(filter);
    EXPECT_THAT(indexesUsed(), ElementsAre("modem_id_1_tag_1_obis_code_1_timestamp_-1"));

    filter.obis_codes.clear();
    repository.GetValues(filter);
    EXPECT_THAT(indexesUsed(), ElementsAre("modem_id_1_tag_1_timestamp_-1"));
}

TEST_F(EavIndexes, ServeTheFirstAndLastValues) {
    auto filter = filterOf100To200();
    filter.obis_codes = {"2"_q};
    filter.first_last = true;
    repository.GetValues(filter);

    EXPECT_THAT(indexesUsed(), ElementsAre("modem_id_1_obis_code_1_timestamp_-1"));
}

TEST_F(EavIndexes, ServeEventsByDeviceAndPeriod) {
    repository.GetEvents(filterOf100To200());

    EXPECT_THAT(indexesUsed(), ElementsAre("modem_id_1_timestamp_-1"));
}

} // namespace
