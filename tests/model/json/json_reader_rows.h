#pragma once

#include "model/model_convertors.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/record_equality.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>
#include <type_traits>

/// A reader of JSON as a table: which key reaches which member, row by row.
namespace json_rows {

using namespace test_support::literals;

/// What a key is read as; everything else is mistyped.
enum class accessor { integer, real, text, object, array };

template <typename Record>
struct row {
    const char* key = nullptr;
    accessor type = accessor::integer;
    QJsonValue given;
    /// What the given value changes in the record of an empty object.
    void (*change)(Record&) = nullptr;

    friend void PrintTo(const row& row, std::ostream* out) { *out << row.key; }
};

struct row_name {
    template <typename Record>
    std::string operator()(const testing::TestParamInfo<row<Record>>& info) const {
        return info.param.key;
    }
};

/// Values that the accessor does not take, among them those that look alike.
inline QJsonArray mistyped(accessor type) {
    const QJsonArray number{7};
    const QJsonArray fraction{2.5};
    const QJsonArray text{"7"_q};
    const QJsonArray object{QJsonObject{{"a"_q, 7}}};
    const QJsonArray array{QJsonArray{7}};

    QJsonArray values{QJsonValue::Null, true};
    const auto add = [&values](const QJsonArray& more) {
        for (const QJsonValue& value : more) {
            values.append(value);
        }
    };
    if (type == accessor::integer) {
        add(fraction);
        add({2147483648.0, -2147483649.0, 1e300, std::numeric_limits<qint64>::max()});
    }
    if (type != accessor::integer && type != accessor::real) {
        add(number);
        add(fraction);
    }
    if (type != accessor::text) {
        add(text);
    }
    if (type != accessor::object) {
        add(object);
    }
    if (type != accessor::array) {
        add(array);
    }
    return values;
}

inline QJsonObject with(const char* key, const QJsonValue& value) {
    return {{QString::fromUtf8(key), value}};
}

/// Reads a record, and takes out of it what is not read from the object.
template <typename Record>
Record read(const QJsonObject& json) {
    auto record = model_convertors::fromJson<Record>(json);
    if constexpr (std::is_same_v<Record, model::dl_message>) {
        record.timestamp = QDateTime();
    }
    return record;
}

template <typename Record>
void expectKeyReachesItsMemberAlone(const row<Record>& row) {
    auto expected = read<Record>({});
    row.change(expected);
    ASSERT_NE(expected, read<Record>({})) << "the row shows nothing";

    EXPECT_EQ(read<Record>(with(row.key, row.given)), expected);
}

template <typename Record>
void expectMistypedValuesGiveTheDefault(const row<Record>& row) {
    const QJsonArray values = mistyped(row.type);
    for (const QJsonValue& value : values) {
        EXPECT_EQ(read<Record>(with(row.key, value)), read<Record>({}))
            << testing::PrintToString(value);
    }
}

/// Keys are compared exactly.
template <typename Record>
void expectOtherSpellingsAreIgnored(const row<Record>& row) {
    const std::string key = row.key;
    for (const std::string& other :
         {key + ' ', ' ' + key, QString::fromStdString(key).toUpper().toStdString()}) {
        EXPECT_EQ(read<Record>(with(other.c_str(), row.given)), read<Record>({})) << other;
    }
}

} // namespace json_rows
