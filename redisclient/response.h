#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QVariant>

#include <utility>

namespace RedisClient {

/// The server's answer to one command.
///
/// A plain value, independent of the connection that it came from; usable in any thread.
class Response {
public:
    enum Type {
        Invalid,   ///< no answer: a default-constructed response
        Status,    ///< getValue() is a QByteArray, for example "OK"
        Error,     ///< getValue() is invalid, errorMessage() says what the server refused
        Integer,   ///< getValue() is a qlonglong
        Bulk,      ///< getValue() is a QByteArray with any bytes
        MultiBulk, ///< getValue() is a QVariantList of such values, nested where the answer is
        Nil,       ///< getValue() is invalid: there is no such thing on the server
    };

    Response() = default;
    /// `value` must be what the list above says for `type`.
    Response(Type type, QVariant value) : m_type(type), m_value(std::move(value)) {}
    /// `message` is the server's text, beginning with its code: "WRONGTYPE Operation against …".
    static Response error(QByteArray message) {
        Response response(Error, QVariant());
        response.m_errorMessage = std::move(message);
        return response;
    }

    Type type() const { return m_type; }
    bool isErrorMessage() const { return m_type == Error; }
    /// An error or nil inside an array is an invalid element; the text of such an error is not
    /// kept.
    const QVariant& getValue() const { return m_value; }
    /// Empty unless isErrorMessage().
    const QByteArray& errorMessage() const { return m_errorMessage; }

private:
    Type m_type = Invalid;
    QVariant m_value;
    QByteArray m_errorMessage;
};

} // namespace RedisClient

Q_DECLARE_METATYPE(RedisClient::Response)
