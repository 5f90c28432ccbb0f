#include "redisclient/session.h"

#include "redisclient/connection_config.h"

#include <QVariant>
#include <QVariantList>

extern "C" {
#include <hiredis/sds.h> // does not say itself that it is C
}
#include <hiredis/hiredis.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <new>
#include <vector>

namespace RedisClient {

namespace {

/// Twice the largest value that a server stores by default (512 MiB). Far below what QByteArray can
/// hold.
constexpr std::size_t maxReplyBytes = std::size_t{1} << 30;
/// An element costs up to some 200 bytes here, but only four on the wire.
constexpr std::size_t maxReplyElements = std::size_t{1} << 24;
/// Replies are converted and freed recursively.
constexpr int maxReplyDepth = 128;

struct ReplyDeleter {
    void operator()(redisReply* reply) const noexcept { ::freeReplyObject(reply); }
};
using Reply = std::unique_ptr<redisReply, ReplyDeleter>;

QByteArray bytes(const redisReply& reply) {
    return {reply.str, static_cast<int>(reply.len)};
}

Response toResponse(const redisReply& reply) {
    switch (reply.type) {
    case REDIS_REPLY_STATUS:
        return {Response::Status, bytes(reply)};
    case REDIS_REPLY_ERROR:
        return Response::error(bytes(reply));
    case REDIS_REPLY_INTEGER:
        return {Response::Integer, static_cast<qlonglong>(reply.integer)};
    case REDIS_REPLY_STRING:
        return {Response::Bulk, bytes(reply)};
    case REDIS_REPLY_NIL:
        return {Response::Nil, QVariant()};
    case REDIS_REPLY_ARRAY: {
        QVariantList list;
        list.reserve(static_cast<int>(reply.elements));
        std::for_each_n(reply.element, reply.elements, [&list](const redisReply* element) {
            list.append(toResponse(*element).getValue());
        });
        return {Response::MultiBulk, list};
    }
    default:
        throw SessionError(SessionError::Kind::answerLost,
                           "the answer is in a version of the protocol that was not asked for");
    }
}

bool isError(const Response& response, const char* code) {
    return response.isErrorMessage() && response.errorMessage().split(' ').first() == code;
}

/// The server answers but for the moment does nothing that it is asked, neither reading nor
/// writing. Not so OOM, MISCONF, READONLY and NOREPLICAS, with which it refuses to write and reads
/// on.
bool doesNotServeNow(const Response& response) {
    static constexpr std::array codes{
        "LOADING",     // reads its data back, after a start or from the server that it copies
        "MASTERDOWN",  // lost the server that it copies, and must not serve what is out of date
        "BUSY",        // runs a script that does not end
        "CLUSTERDOWN", // the cluster does not cover the key, or is down
        "TRYAGAIN",    // the keys are on their way from one server of the cluster to another
    };
    return std::ranges::any_of(codes, [&](const char* code) { return isError(response, code); });
}

/// Whoever may not say PING, or cannot have what he writes kept, has a server before him all the
/// same. The other refusals (a password, too many clients, a protected server) mean that there will
/// be no conversation, and any other answer is not that of a Redis server.
bool letsIn(const Response& response) {
    return response.getValue() == QByteArray("PONG") || isError(response, "NOPERM") ||
           isError(response, "MISCONF");
}

std::string refusalText(const Response& response) {
    return response.isErrorMessage() ? response.errorMessage().toStdString()
                                     : "the answer is not that of a Redis server";
}

/// Left alone, hiredis lets the buffer grow by a mebibyte at a time; wherever realloc() cannot just
/// remap, a large answer would be copied hundreds of times. False without memory.
bool makeRoom(redisReader& reader, std::size_t incoming) noexcept {
    if (::sdsavail(reader.buf) >= incoming) {
        return true;
    }
    char* const grown = ::sdsMakeRoomFor(reader.buf, std::max(incoming, ::sdslen(reader.buf)));
    if (!grown) {
        return false;
    }
    reader.buf = grown;
    return true;
}

/// Left alone, hiredis keeps a large buffer until the next answer.
void releaseRoom(redisReader& reader) noexcept {
    if (::sdsavail(reader.buf) > reader.maxbuf) {
        if (char* const shrunk = ::sdsRemoveFreeSpace(reader.buf)) {
            reader.buf = shrunk;
        }
    }
}

} // namespace

void Session::ContextDeleter::operator()(redisContext* context) const noexcept {
    ::redisFree(context);
}

Session::Session(const ConnectionConfig& config) {
    const AddressList addresses = resolve(config.host(), config.port());
    const auto deadline = Clock::now() + std::chrono::milliseconds(config.connectTimeoutMsecs());
    TcpSocket socket = connectTcp(addresses, deadline);
    m_context.reset(::redisConnectFd(socket.fd()));
    if (!m_context) {
        throw std::bad_alloc();
    }
    socket.release(); // redisFree() closes it

    static const redisContextFuncs functions = [defaults = *m_context->funcs]() mutable {
        defaults.write = &Session::send;
        defaults.read = &Session::receive;
        return defaults;
    }();
    static redisReplyObjectFunctions replyFunctions = [defaults =
                                                           *m_context->reader->fn]() mutable {
        defaults.createArray = &Session::createArray;
        return defaults;
    }();
    m_createArray = m_context->reader->fn->createArray;
    m_context->funcs = &functions;
    m_context->privdata = this;
    m_context->reader->fn = &replyFunctions;
    m_context->reader->privdata = this;
    ::redisSetPushCallback(m_context.get(),
                           nullptr); // which would pass over what was not asked for

    introduce(config, deadline);
}

Session::~Session() = default;

void Session::introduce(const ConnectionConfig& config, Clock::time_point deadline) {
    const auto say = [&](const QList<QByteArray>& parts) {
        try {
            return roundTrip(parts, deadline);
        } catch (const SessionError& error) {
            throw std::runtime_error(parts.first().toStdString() + ": " + error.what());
        }
    };
    if (!config.auth().isEmpty()) {
        const Response response = say({"AUTH", config.auth()});
        if (response.getValue() != QByteArray("OK")) {
            throw std::runtime_error("AUTH: " + refusalText(response));
        }
    }
    // Not the password: a server takes that also while it does not serve.
    if (const Response response = say({"PING"}); !letsIn(response)) {
        throw std::runtime_error("PING: " + refusalText(response));
    }
    if (!config.name().isEmpty()) {
        say({"CLIENT", "SETNAME", config.name().toUtf8()});
    }
}

bool Session::hasUnreadAnswer() const noexcept {
    return m_context->reader->pos != m_context->reader->len;
}

bool Session::isUsable() const noexcept {
    if (hasUnreadAnswer()) {
        return false;
    }
    pollfd watched{.fd = m_context->fd, .events = POLLIN, .revents = 0};
    int count = 0;
    do {
        count = ::poll(&watched, 1, 0);
    } while (count < 0 && errno == EINTR);
    return count == 0;
}

Response Session::roundTrip(const QList<QByteArray>& parts, Clock::time_point deadline) {
    if (hasUnreadAnswer()) {
        throw SessionError(SessionError::Kind::notWritten, "the server sent something unasked");
    }
    std::vector<const char*> starts;
    std::vector<std::size_t> sizes;
    starts.reserve(static_cast<std::size_t>(parts.size()));
    sizes.reserve(static_cast<std::size_t>(parts.size()));
    for (const QByteArray& part : parts) {
        starts.push_back(part.constData());
        sizes.push_back(static_cast<std::size_t>(part.size()));
    }
    m_deadline = deadline;
    m_written = false;
    m_receivedBytes = 0;
    m_receivedElements = 0;

    if (::redisAppendCommandArgv(m_context.get(), parts.size(), starts.data(), sizes.data()) !=
        REDIS_OK) {
        throw failure();
    }
    void* raw = nullptr;
    const int status = ::redisGetReply(m_context.get(), &raw);
    const Reply reply(static_cast<redisReply*>(raw));
    if (status != REDIS_OK || !reply) {
        throw failure();
    }
    releaseRoom(*m_context->reader);
    Response response = toResponse(*reply);
    if (doesNotServeNow(response)) {
        throw SessionError(SessionError::Kind::refused, response.errorMessage().toStdString());
    }
    trackDatabase(parts, response);
    return response;
}

void Session::select(int db, Clock::time_point deadline) {
    if (m_database == db) {
        return;
    }
    const Response response = roundTrip({"SELECT", QByteArray::number(db)}, deadline);
    if (response.isErrorMessage()) {
        throw SessionError(SessionError::Kind::refused,
                           "database " + std::to_string(db) +
                               " cannot be selected: " + response.errorMessage().toStdString());
    }
    if (response.type() != Response::Status) {
        throw SessionError(SessionError::Kind::answerLost, "SELECT got no answer of its kind");
    }
}

void Session::trackDatabase(const QList<QByteArray>& parts, const Response& response) {
    const auto is = [&parts](const char* name) {
        return parts.first().compare(name, Qt::CaseInsensitive) == 0;
    };
    if (is("SELECT")) {
        if (response.isErrorMessage()) {
            return;
        }
        bool isNumber = false;
        const int db = parts.value(1).toInt(&isNumber);
        // Inside a transaction the answer is "QUEUED", and whether it comes to that stays open.
        const bool selected = isNumber && response.getValue() == QByteArray("OK");
        m_database = selected ? std::optional(db) : std::nullopt;
    } else if (is("RESET")) {
        m_database = std::nullopt;
    }
}

ssize_t Session::send(redisContext* context) {
    auto& self = *static_cast<Session*>(context->privdata);
    const std::size_t size = ::sdslen(context->obuf);
    std::size_t sent = 0;
    // All at once: hiredis would move the rest of its buffer after every partial write.
    while (sent < size) {
        const ssize_t count = ::send(context->fd, context->obuf + sent, size - sent, MSG_NOSIGNAL);
        if (count >= 0) {
            sent += static_cast<std::size_t>(count);
            self.m_written = true;
        } else if (errno == EAGAIN) {
            switch (waitUntilReady(context->fd, POLLOUT, self.m_deadline)) {
            case Readiness::ready:
                break;
            case Readiness::timedOut:
                return self.fail(REDIS_ERR_TIMEOUT, "timed out while sending");
            case Readiness::failed:
                return self.fail(REDIS_ERR_IO, std::strerror(errno));
            }
        } else if (errno != EINTR) {
            return self.fail(REDIS_ERR_IO, std::strerror(errno));
        }
    }
    return static_cast<ssize_t>(sent);
}

/// How long the answer is, as far as that is known: what has come of it, and if hiredis is waiting
/// for the rest of a text, that text to its end. Its length stands at the reader's position then.
std::size_t Session::answerBytes() const noexcept {
    const redisReader& reader = *m_context->reader;
    if (reader.ridx < 0 || reader.task[reader.ridx]->type != REDIS_REPLY_STRING) {
        return m_receivedBytes;
    }
    std::size_t length = 0; // stays so if there is no number yet, or one that hiredis refuses
    std::from_chars(reader.buf + reader.pos, reader.buf + reader.len, length);
    return std::max(m_receivedBytes, m_receivedBytes - (reader.len - reader.pos) + length);
}

ssize_t Session::receive(redisContext* context, char* buffer, std::size_t capacity) {
    auto& self = *static_cast<Session*>(context->privdata);
    if (self.answerBytes() > maxReplyBytes) {
        return self.fail(REDIS_ERR_OTHER, "the answer is longer than 1 GiB");
    }
    for (;;) {
        const ssize_t count = ::recv(context->fd, buffer, capacity, 0);
        const int error = errno;
        if (count == 0) {
            return self.fail(REDIS_ERR_EOF, "the server closed the connection");
        }
        if (count > 0) {
            self.m_receivedBytes += static_cast<std::size_t>(count);
            // A peer that never stops sending must not get past the deadline either.
            if (Clock::now() >= self.m_deadline) {
                return self.fail(REDIS_ERR_TIMEOUT, "timed out reading the answer");
            }
            if (!makeRoom(*context->reader, static_cast<std::size_t>(count))) {
                return self.fail(REDIS_ERR_OOM, "out of memory for the answer");
            }
            return count;
        }
        if (error != EAGAIN && error != EINTR) {
            return self.fail(REDIS_ERR_IO, std::strerror(error));
        }
        switch (waitUntilReady(context->fd, POLLIN, self.m_deadline)) {
        case Readiness::ready:
            break;
        case Readiness::timedOut:
            return self.fail(REDIS_ERR_TIMEOUT, "timed out waiting for the answer");
        case Readiness::failed:
            return self.fail(REDIS_ERR_IO, std::strerror(errno));
        }
    }
}

void* Session::createArray(const redisReadTask* task, std::size_t elements) {
    auto& self = *static_cast<Session*>(task->privdata);
    int depth = 1;
    for (const redisReadTask* parent = task->parent; parent; parent = parent->parent) {
        ++depth;
    }
    self.m_receivedElements += elements;
    if (depth > maxReplyDepth) {
        self.m_refusal = "the arrays of the answer are nested too deeply";
    } else if (elements > maxReplyElements || self.m_receivedElements > maxReplyElements) {
        self.m_refusal = "the answer has too many elements";
    } else {
        return self.m_createArray(task, elements);
    }
    return nullptr;
}

ssize_t Session::fail(int hiredisError, const char* cause) noexcept {
    m_context->err = hiredisError;
    qstrncpy(m_context->errstr, cause, sizeof m_context->errstr);
    return -1;
}

SessionError Session::failure() const {
    const char* cause = m_refusal ? m_refusal : m_context->errstr;
    if (m_context->err == REDIS_ERR_TIMEOUT) {
        return {SessionError::Kind::timedOut, cause};
    }
    return {m_written ? SessionError::Kind::answerLost : SessionError::Kind::notWritten, cause};
}

} // namespace RedisClient
