#include "redisclient/response.h"

#include <utility>

namespace RedisClient {

Response::Response(Type type, QVariant value) : m_type(type), m_value(std::move(value)) {}

Response Response::error(QByteArray message) {
    Response response;
    response.m_type = Error;
    response.m_errorMessage = std::move(message);
    return response;
}

} // namespace RedisClient
