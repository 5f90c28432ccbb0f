#include "host/output/record_output.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QRegularExpression>

#include <csv.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace host {

namespace {

QString cellText(const QJsonValue& cell) {
    switch (cell.type()) {
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        return {};
    case QJsonValue::Object:
        return QString::fromUtf8(QJsonDocument(cell.toObject()).toJson(QJsonDocument::Compact));
    case QJsonValue::Array:
        return QString::fromUtf8(QJsonDocument(cell.toArray()).toJson(QJsonDocument::Compact));
    default:
        return cell.toVariant().toString();
    }
}

QByteArray csvField(const QString& cell) {
    static const QRegularExpression special(QStringLiteral("[\",\r\n]"));
    auto text = cell.toUtf8();
    if (!cell.contains(special)) {
        return text;
    }
    const auto size = static_cast<std::size_t>(text.size());
    QByteArray quoted(static_cast<int>(csv_write(nullptr, 0, text.constData(), size)), '\0');
    csv_write(quoted.data(), static_cast<std::size_t>(quoted.size()), text.constData(), size);
    return quoted;
}

} // namespace

RecordOutput::RecordOutput(Console& console, OutputForm form, std::vector<Field> fields)
    : m_console(console), m_form(form), m_fields(std::move(fields)) {
    if (m_form == OutputForm::Csv) {
        QStringList names;
        std::ranges::transform(m_fields, std::back_inserter(names), &Field::name);
        addCsv(names);
    }
}

void RecordOutput::add(const QJsonArray& cells) {
    switch (m_form) {
    case OutputForm::Table:
        addRow(cells);
        break;
    case OutputForm::JsonLines:
        addLine(cells);
        break;
    case OutputForm::Csv:
        QStringList texts;
        std::ranges::transform(cells, std::back_inserter(texts), cellText);
        addCsv(texts);
        break;
    }
}

void RecordOutput::addLine(const QJsonArray& cells) {
    QJsonObject record;
    for (int i = 0; i < cells.size(); ++i) {
        record.insert(m_fields.at(static_cast<std::size_t>(i)).name, cells.at(i));
    }
    m_console.bytes(QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n');
}

void RecordOutput::addCsv(const QStringList& cells) {
    QByteArray line;
    for (const auto& cell : cells) {
        line += csvField(cell) + ',';
    }
    line.chop(1);
    m_console.bytes(line + "\r\n");
}

void RecordOutput::addRow(const QJsonArray& cells) {
    QStringList row;
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        if (!m_fields.at(i).title.isEmpty()) {
            row.append(cellText(cells.at(static_cast<int>(i))));
        }
    }
    m_rows.push_back(row);
}

void RecordOutput::finish() {
    if (!m_rows.empty()) {
        std::vector<Console::Column> columns;
        for (const auto& field : m_fields) {
            if (!field.title.isEmpty()) {
                columns.push_back({field.title, field.number, field.widest});
            }
        }
        m_console.table(columns, m_rows);
    }
    m_rows.clear();
}

QJsonValue timeCell(const QDateTime& time, bool local) {
    if (!time.isValid()) {
        return {};
    }
    const auto shown =
        local ? time.toOffsetFromUtc(time.toLocalTime().offsetFromUtc()) : time.toUTC();
    return shown.toString(time.time().msec() == 0 ? Qt::ISODate : Qt::ISODateWithMs);
}

} // namespace host
