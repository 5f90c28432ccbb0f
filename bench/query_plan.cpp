#include "bench/query_plan.h"

#include "model/bson/bson_builder.h"
#include "model/bson/json_values.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

namespace bench {

namespace {

void collectScans(const QJsonValue& value, QStringList& scans);

void collectScans(const QJsonObject& plan, QStringList& scans) {
    const QString index = plan.value(QLatin1String("Index Name")).toString();
    const QString mongodIndex = plan.value(QLatin1String("indexName")).toString();
    const QString node = plan.value(QLatin1String("Node Type")).toString();
    const QString stage = plan.value(QLatin1String("stage")).toString();
    if (!index.isEmpty()) {
        scans.append(index);
    } else if (plan.contains(QLatin1String("Relation Name")) &&
               !node.startsWith(QLatin1String("Bitmap"))) { // whose index is told further in
        scans.append(node);
    } else if (!stage.isEmpty() && !mongodIndex.isEmpty()) {
        scans.append(mongodIndex);
    } else if (stage == QLatin1String("COLLSCAN")) {
        scans.append(stage);
    }
    for (auto member = plan.begin(); member != plan.end(); ++member) {
        if (member.key() != QLatin1String("rejectedPlans")) {
            collectScans(member.value(), scans);
        }
    }
}

void collectScans(const QJsonValue& value, QStringList& scans) {
    if (value.isObject()) {
        collectScans(value.toObject(), scans);
    }
    const QJsonArray elements = value.toArray();
    for (const auto& element : elements) {
        collectScans(element, scans);
    }
}

} // namespace

QString queryPlan(mongocxx::v1::database database, std::string_view collection,
                  const ReadyQuery& query) {
    bson_utils::bson_builder command;
    command.appendDocument("explain", [&](bson_utils::bson_builder& find) {
        find.appendUtf8("find", collection);
        find.appendDocument("filter", query.filter.view());
        if (const auto sort = query.options.sort()) {
            find.appendDocument("sort", *sort);
        }
        if (const auto limit = query.options.limit()) {
            find.appendInt64("limit", *limit);
        }
    });
    command.appendUtf8("verbosity", "queryPlanner");
    const auto explained = bson_utils::fromBsonJobj(database.run_command(command.take()));
    QStringList scans;
    collectScans(explained, scans);
    scans.removeDuplicates();
    return scans.join(QStringLiteral(", "));
}

} // namespace bench
