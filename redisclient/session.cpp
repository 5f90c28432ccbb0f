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

/// Types that only exist in the protocol's third version are given as what the second version
/// sends in their place.
Response toResponse(const redisReply& reply) {
    switch (reply.type) {
    case REDIS_REPLY_STATUS:
        return {Response::Status, bytes(reply)};
    case REDIS_REPLY_ERROR:
        return Response::error(bytes(reply));
    case REDIS_REPLY_INTEGER:
    case REDIS_REPLY_BOOL:
        return {Response::Integer, static_cast<qlonglong>(reply.integer)};
    case REDIS_REPLY_STRING:
    case REDIS_REPLY_VERB:
    case REDIS_REPLY_DOUBLE:
    case REDIS_REPLY_BIGNUM:
        return {Response::Bulk, bytes(reply)};
    case REDIS_REPLY_ARRAY:
    case REDIS_REPLY_SET:
    case REDIS_REPLY_MAP:
    case REDIS_REPLY_PUSH: {
        QVariantList list;
        list.reserve(static_cast<int>(reply.elements));
        std::for_each_n(reply.element, reply.elements, [&list](const redisReply* element) {
            list.append(toResponse(*element).getValue());
        });
        return {Response::MultiBulk, list};
    }
    default:
        return {Response::Nil, QVariant()};
    }
}

/// A server that is busy loading its data or the like lets a client in and says so to its commands.
/// The other refusals mean that there will be no conversation at all, and any other answer is not
/// that of a Redis server.
bool letsIn(const Response& response) {
    static constexpr std::array keepOut{"ERR", "NOAUTH", "DENIED"};
    if (!response.isErrorMessage()) {
        return response.getValue() == QByteArray("PONG");
    }
    return std::ranges::none_of(
        keepOut, [&](const char* code) { return response.errorMessage().startsWith(code); });
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
    const auto deadline = Clock::now() + std::chrono::milliseconds(config.connectTimeoutMsecs());
    TcpSocket socket = connectTcp(config.host(), config.port(), deadline);
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
    } else {
        const Response response = say({"PING"});
        if (!letsIn(response)) {
            throw std::runtime_error("PING: " + refusalText(response));
        }
    }
    if (!config.name().isEmpty()) {
        say({"CLIENT", "SETNAME", config.name().toUtf8()});
    }
}

bool Session::hasUnreadAnswer() const noexcept {
    return m_context->reader->pos != m_context->reader->len;
}

bool Session::isUsable() const noexcept {
    if (m_context->err != 0 || hasUnreadAnswer()) {
        return false;
    }
    pollfd watched{.fd = m_context->fd, .events = POLLIN | POLLRDHUP, .revents = 0};
    return ::poll(&watched, 1, 0) == 0;
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
    m_refusal = nullptr;

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
    trackDatabase(parts, response);
    return response;
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

ssize_t Session::receive(redisContext* context, char* buffer, std::size_t capacity) {
    auto& self = *static_cast<Session*>(context->privdata);
    for (;;) {
        const ssize_t count = ::recv(context->fd, buffer, capacity, 0);
        const int error = errno;
        if (count == 0) {
            return self.fail(REDIS_ERR_EOF, "the server closed the connection");
        }
        if (count > 0) {
            self.m_receivedBytes += static_cast<std::size_t>(count);
            if (self.m_receivedBytes > maxReplyBytes) {
                return self.fail(REDIS_ERR_OTHER, "the answer is longer than 1 GiB");
            }
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
