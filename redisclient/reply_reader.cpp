#include "redisclient/reply_reader.h"

#include <QByteArray>
#include <QVariantList>

extern "C" {
#include <hiredis/sds.h> // does not say itself that it is C
}
#include <hiredis/hiredis.h>

#include <algorithm>
#include <charconv>
#include <new>
#include <utility>

namespace RedisClient {

namespace {

/// Twice the largest value that a server stores by default (512 MiB). Far below what QByteArray can
/// hold.
constexpr std::size_t maxReplyBytes = std::size_t{1} << 30;
/// An element costs up to some 100 bytes here, but only four on the wire.
constexpr std::size_t maxReplyElements = std::size_t{1} << 24;
/// Beyond that an array grows as its elements come: what is announced may never come.
constexpr std::size_t maxReservedElements = 1024;
/// Values are freed recursively.
constexpr int maxReplyDepth = 128;

int depthOf(const redisReadTask& task) {
    int depth = 1;
    for (const redisReadTask* parent = task.parent; parent; parent = parent->parent) {
        ++depth;
    }
    return depth;
}

} // namespace

/// What hiredis calls. Each returns where the value is, for the elements of an array to find their
/// parent, and nothing to give the answer up.
struct ReplyReader::Callbacks {
    static void* createString(const redisReadTask* task, char* text, std::size_t size) noexcept {
        const auto bytes = [&] { return QByteArray(text, static_cast<int>(size)); };
        switch (task->type) {
        case REDIS_REPLY_STRING:
            // hiredis skips two bytes there, whatever they are.
            if (text[size] != '\r' || text[size + 1] != '\n') {
                return refuse(*task, "the length of a text is wrong");
            }
            return put(*task, Response::Bulk, bytes);
        case REDIS_REPLY_STATUS:
            return put(*task, Response::Status, bytes);
        case REDIS_REPLY_ERROR:
            return task->parent ? put(*task, Response::Error, [] { return QVariant(); })
                                : put(*task, Response::Error, bytes);
        default:
            return refuseVersion(*task);
        }
    }

    static void* createArray(const redisReadTask* task, std::size_t elements) noexcept {
        std::size_t& received = reader(*task).m_receivedElements;
        received += elements;
        if (depthOf(*task) > maxReplyDepth) {
            return refuse(*task, "the arrays of the answer are nested too deeply");
        }
        if (elements > maxReplyElements || received > maxReplyElements) {
            return refuse(*task, "the answer has too many elements");
        }
        if (task->type != REDIS_REPLY_ARRAY) {
            return refuseVersion(*task);
        }
        return put(*task, Response::MultiBulk, [&] {
            QVariantList list;
            list.reserve(static_cast<int>(std::min(elements, maxReservedElements)));
            return list;
        });
    }

    static void* createInteger(const redisReadTask* task, long long number) noexcept {
        return put(*task, Response::Integer, [&] { return qlonglong{number}; });
    }

    static void* createNil(const redisReadTask* task) noexcept {
        return put(*task, Response::Nil, [] { return QVariant(); });
    }

    static void* createDouble(const redisReadTask* task, double /*number*/, char* /*text*/,
                              std::size_t /*size*/) noexcept {
        return refuseVersion(*task);
    }

    static void* createBool(const redisReadTask* task, int /*flag*/) noexcept {
        return refuseVersion(*task);
    }

    static ReplyReader& reader(const redisReadTask& task) {
        return *static_cast<ReplyReader*>(task.privdata);
    }

    static void* refuse(const redisReadTask& task, const char* cause) {
        reader(task).m_refusal = cause;
        return nullptr;
    }

    static void* refuseVersion(const redisReadTask& task) {
        return refuse(task, "the answer is in a version of the protocol that was not asked for");
    }

    template <typename MakeValue>
    static void* put(const redisReadTask& task, Response::Type type, const MakeValue& make) {
        try {
            if (task.parent) {
                auto* const parent = static_cast<QVariant*>(task.parent->obj);
                auto& list = *static_cast<QVariantList*>(parent->data());
                list.append(QVariant());
                list.last() = make();
                return &list.last();
            }
            ReplyReader& self = reader(task);
            self.m_type = type;
            self.m_value = make();
            return &self.m_value;
        } catch (const std::bad_alloc&) {
            return nullptr; // which hiredis takes for just that
        }
    }
};

void ReplyReader::ReaderDeleter::operator()(redisReader* reader) const noexcept {
    ::redisReaderFree(reader);
}

ReplyReader::ReplyReader() {
    static redisReplyObjectFunctions functions{
        .createString = &Callbacks::createString,
        .createArray = &Callbacks::createArray,
        .createInteger = &Callbacks::createInteger,
        .createDouble = &Callbacks::createDouble,
        .createNil = &Callbacks::createNil,
        .createBool = &Callbacks::createBool,
        .freeObject = nullptr, // all is the reader's own
    };
    m_reader.reset(::redisReaderCreateWithFunctions(&functions));
    if (!m_reader) {
        throw std::bad_alloc();
    }
    m_reader->privdata = this;
}

std::optional<Response> ReplyReader::read(std::string_view received) {
    m_receivedBytes += received.size();
    void* value = nullptr;
    if (!makeRoom(received.size())) {
        throw ReplyError("out of memory for the answer");
    }
    if (::redisReaderFeed(m_reader.get(), received.data(), received.size()) != REDIS_OK ||
        ::redisReaderGetReply(m_reader.get(), &value) != REDIS_OK) {
        throw ReplyError(m_refusal ? m_refusal : m_reader->errstr);
    }
    if (!value) {
        if (answerBytes() > maxReplyBytes) {
            throw ReplyError("the answer is longer than 1 GiB");
        }
        return std::nullopt;
    }
    releaseRoom();
    m_receivedBytes = m_reader->len - m_reader->pos; // has begun the next one
    m_receivedElements = 0;
    if (m_type == Response::Error) {
        return Response::error(std::exchange(m_value, QVariant()).toByteArray());
    }
    return Response(m_type, std::exchange(m_value, QVariant()));
}

bool ReplyReader::hasUnread() const noexcept {
    return m_reader->pos != m_reader->len;
}

/// How long the answer is, as far as that is known: what has come of it, and if hiredis is waiting
/// for the rest of a text, that text to its end. Its length stands at the reader's position then.
std::size_t ReplyReader::answerBytes() const noexcept {
    const redisReader& reader = *m_reader;
    if (reader.ridx < 0 || reader.task[reader.ridx]->type != REDIS_REPLY_STRING) {
        return m_receivedBytes;
    }
    std::size_t length = 0; // stays so if there is no number yet, or one that hiredis refuses
    std::from_chars(reader.buf + reader.pos, reader.buf + reader.len, length);
    return std::max(m_receivedBytes, m_receivedBytes - (reader.len - reader.pos) + length);
}

/// Left alone, hiredis lets the buffer grow by a mebibyte at a time; wherever realloc() cannot just
/// remap, a large answer would be copied hundreds of times. False without memory.
bool ReplyReader::makeRoom(std::size_t incoming) noexcept {
    if (::sdsavail(m_reader->buf) >= incoming) {
        return true;
    }
    char* const grown =
        ::sdsMakeRoomFor(m_reader->buf, std::max(incoming, ::sdslen(m_reader->buf)));
    if (!grown) {
        return false;
    }
    m_reader->buf = grown;
    return true;
}

/// Left alone, hiredis keeps a large buffer until the next answer.
void ReplyReader::releaseRoom() noexcept {
    if (::sdsavail(m_reader->buf) > m_reader->maxbuf) {
        if (char* const shrunk = ::sdsRemoveFreeSpace(m_reader->buf)) {
            m_reader->buf = shrunk;
        }
    }
}

} // namespace RedisClient
