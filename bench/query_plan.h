#pragma once

#include "bench/baselines/raw_collection.h"

#include <mongocxx/v1/database.hpp>

#include <QString>

#include <string_view>

namespace bench {

/// How the server would find the answer: the names of the indexes, or of the scan without one.
/// Understands what mongod explains and what FerretDB hands through from PostgreSQL.
QString queryPlan(mongocxx::v1::database database, std::string_view collection,
                  const ReadyQuery& query);

} // namespace bench
