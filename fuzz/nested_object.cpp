// The ways of reading a nested document: inserted member by member, by its text, after an earlier
// one.

#include "fuzz/support/compare_readers.h"
#include "model/bson/similar_objects.h"

namespace {

// Of a repeated key the last value stays, in whatever way; only the text tells the kinds of numbers
// apart.
void requireSame(const std::optional<QJsonObject>& actual, const QJsonObject& expected,
                 const char* what) {
    if (actual) {
        const std::string text = fuzz::jsonOf(QJsonDocument{*actual});
        const std::string plain = fuzz::jsonOf(QJsonDocument{expected});
        fuzz::require(text == plain && *actual == expected, what, text + "\n" + plain);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    bson_utils::similar_objects known;
    const std::vector<test_support::random_bson::member> members{
        {"a", test_support::random_bson::member::object},
        {"b", test_support::random_bson::member::object},
        {"c", test_support::random_bson::member::any}};
    for (fuzz::similar_documents documents{fuzz::textOf(data, size), members}; documents.next();) {
        const auto document = documents.document().view();
        const auto ordinary = bson_utils::ordinaryObject(document);
        for (std::uint32_t times = documents.times(); times > 0; --times) {
            const auto similar = known.object(document);
            fuzz::require(similar.has_value() || !ordinary.has_value(),
                          "similar_objects gives something where ordinaryObject does");
            if (!similar) {
                break;
            }
            requireSame(similar, bson_utils::insertedObject(document), "similar and inserted");
            requireSame(similar, bson_utils::legacyObject(document), "similar and by text");
            requireSame(ordinary, *similar, "ordinary and similar");
        }
    }
    return 0;
}
