#pragma once

#include "host/session/session.h"
#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/message.h"

#include <QJsonArray>
#include <QJsonValue>

#include <algorithm>
#include <functional>
#include <iterator>
#include <vector>

namespace host {

/// One thing that is shown of a record.
template <class Record>
struct RecordColumn {
    Field field;
    std::function<QJsonValue(const Record&, const Session&)> cell;
};

/// What is shown of the records of one kind: every member that the store keeps, under its name, and
/// the unit of a value, which is in its extended_data. A table has those that tell most. Defined
/// for uplinks, values, events and commands.
template <class Record>
const std::vector<RecordColumn<Record>>& columnsOf();
template <>
const std::vector<RecordColumn<model::message>>& columnsOf();
template <>
const std::vector<RecordColumn<model::dev_value>>& columnsOf();
template <>
const std::vector<RecordColumn<model::dev_event>>& columnsOf();
template <>
const std::vector<RecordColumn<model::dl_message>>& columnsOf();

template <class Record>
std::vector<Field> fieldsOf() {
    std::vector<Field> fields;
    std::ranges::transform(columnsOf<Record>(), std::back_inserter(fields),
                           &RecordColumn<Record>::field);
    return fields;
}

template <class Record>
QJsonArray cellsOf(const Record& record, const Session& session) {
    QJsonArray cells;
    for (const auto& column : columnsOf<Record>()) {
        cells.append(column.cell(record, session));
    }
    return cells;
}

} // namespace host
