#include "host/failure.h"

namespace host {

Failure::Failure(const QString& message) : std::runtime_error(message.toStdString()) {}

} // namespace host
