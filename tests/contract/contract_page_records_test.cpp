#include "tests/support/record_equality.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <list>
#include <string>

// docs/contract.md says where the compiler puts the members of the records.
namespace {

template <typename Type>
constexpr const char* nameOf = nullptr;
template <>
constexpr const char* nameOf<bool> = "bool";
template <>
constexpr const char* nameOf<int> = "int";
template <>
constexpr const char* nameOf<double> = "double";
template <>
constexpr const char* nameOf<qint64> = "qint64";
template <>
constexpr const char* nameOf<quint64> = "quint64";
template <>
constexpr const char* nameOf<QString> = "QString";
template <>
constexpr const char* nameOf<QByteArray> = "QByteArray";
template <>
constexpr const char* nameOf<QDateTime> = "QDateTime";
template <>
constexpr const char* nameOf<QVariant> = "QVariant";
template <>
constexpr const char* nameOf<QJsonObject> = "QJsonObject";
template <>
constexpr const char* nameOf<QJsonDocument> = "QJsonDocument";
template <>
constexpr const char* nameOf<QList<int>> = "QList<int>";
template <>
constexpr const char* nameOf<QMap<QString, QString>> = "QMap<QString, QString>";
template <>
constexpr const char* nameOf<QMap<QString, model::dl_queues::queue>> = "QMap<QString, queue>";
template <>
constexpr const char* nameOf<QMap<QString, model::dl_queues::element>> = "QMap<QString, element>";
template <>
constexpr const char* nameOf<std::list<int>> = "std::list<int>";
template <>
constexpr const char* nameOf<std::list<QString>> = "std::list<QString>";
template <>
constexpr const char* nameOf<model::dl_message::dl_status> = "dl_status";
template <>
constexpr const char* nameOf<enum model::dl_queues::status> = "status";

std::string page() {
    std::ifstream file{KELVRO_CONTRACT_PAGE};
    return {std::istreambuf_iterator<char>{file}, {}};
}

/// The section of the page about a record.
template <typename Record>
std::string section(const char* name) {
    std::ostringstream text;
    text << "### `model::" << name << "`, " << sizeof(Record) << " bytes\n\n"
         << "| Offset | Size | Type | Member |\n|---|---|---|---|\n";
    const Record record{};
    test_support::forEachMember(
        record, record, [&](std::string_view member, const auto& value, const auto&) {
            using type = std::remove_cvref_t<decltype(value)>;
            static_assert(nameOf<type> != nullptr);
            text << "| "
                 << reinterpret_cast<const char*>(&value) - reinterpret_cast<const char*>(&record)
                 << " | " << sizeof value << " | `" << nameOf<type> << "` | `" << member << "` |\n";
        });
    return text.str();
}

TEST(ContractPage, SaysWhereTheMembersOfTheRecordsAre) {
    if constexpr (sizeof(void*) != 8) {
        GTEST_SKIP() << "the page is about the 64-bit platforms";
    }
    using namespace model;
    const std::string text = page();
    for (const std::string& expected : {
             section<message>("message"),
             section<dl_message>("dl_message"),
             section<dev_value>("dev_value"),
             section<dev_event>("dev_event"),
             section<filter_roll>("filter_roll"),
             section<filter_dl>("filter_dl"),
             section<filter_eav>("filter_eav"),
             section<dl_queues>("dl_queues"),
             section<dl_queues::queue>("dl_queues::queue"),
             section<dl_queues::element>("dl_queues::element"),
             section<hb_message>("hb_message"),
             section<in_message>("in_message"),
             section<custom_cmd>("custom_cmd"),
         }) {
        EXPECT_NE(text.find(expected), std::string::npos) << "The page should have:\n" << expected;
    }
}

} // namespace
