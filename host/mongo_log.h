#pragma once

#include <mongocxx/v1/logger.hpp>

namespace host {

/// Takes the MongoDB driver's own lines into the program's log, Qt's, under the category "mongodb",
/// with their level. Left alone, that library writes some of them to the standard output.
///
/// To be handed to the driver's process-wide instance.
class MongoLog final : public mongocxx::v1::logger {
public:
    void operator()(mongocxx::v1::log_level level, bsoncxx::v1::stdx::string_view domain,
                    bsoncxx::v1::stdx::string_view message) noexcept override;
};

} // namespace host
