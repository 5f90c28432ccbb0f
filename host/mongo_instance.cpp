#include "host/mongo_instance.h"

#include "host/mongo_log.h"

#include <QByteArray>

#include <memory>

namespace host {

namespace {

std::unique_ptr<MongoLog> preparedLog() {
    // The memory that the driver's library would share its counters in stays behind when a program
    // is killed, and then a later one of the same number complains that it is taken.
    qputenv("MONGOC_DISABLE_SHM", QByteArrayLiteral("1"));
    return std::make_unique<MongoLog>();
}

} // namespace

MongoInstance::MongoInstance() : m_instance(preparedLog()) {}

} // namespace host
