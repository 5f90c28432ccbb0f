#pragma once

#include <mongocxx/v1/instance.hpp>

namespace host {

/// The MongoDB driver's process-wide instance, whose lines go into the program's log (MongoLog). A
/// program has one, older and longer-lived than all that uses the driver: before it loads a plug-in
/// until all that came from it is gone.
class MongoInstance {
public:
    MongoInstance();

private:
    mongocxx::v1::instance m_instance;
};

} // namespace host
