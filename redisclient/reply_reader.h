#pragma once

#include "redisclient/response.h"

#include <QVariant>

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>

struct redisReader;
struct redisReadTask;
struct redisReplyObjectFunctions;

namespace RedisClient {

/// What came is no answer, or one that is too large to be taken.
class ReplyError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Makes Responses of the bytes that a server sends, in whatever pieces they come. The only user of
/// hiredis, whose parser calls it for every part of an answer: a text is copied once, to where the
/// Response has it.
///
/// Refuses an answer of more than 1 GiB, of more than 2^24 elements or of arrays nested more than
/// 128 deep, as soon as that shows, and a text that does not end where it should. Takes memory for
/// what has come, not for what is announced.
///
/// Owns the parser and what has not been parsed yet. One thread at a time. After a ReplyError the
/// object can only be destroyed.
class ReplyReader {
public:
    ReplyReader();
    ~ReplyReader() = default;
    ReplyReader(const ReplyReader&) = delete;
    ReplyReader& operator=(const ReplyReader&) = delete;

    /// The answer, once it is complete. Throws ReplyError.
    std::optional<Response> read(std::string_view received);

    /// True when more has come than the answers that were read.
    bool hasUnread() const noexcept;

private:
    struct Callbacks;
    struct ReaderDeleter {
        void operator()(redisReader* reader) const noexcept;
    };

    std::size_t answerBytes() const noexcept;
    bool makeRoom(std::size_t incoming) noexcept;
    void releaseRoom() noexcept;

    std::unique_ptr<redisReader, ReaderDeleter> m_reader;

    // Of the current answer:
    Response::Type m_type = Response::Invalid;
    QVariant m_value;
    std::size_t m_receivedBytes = 0;
    std::size_t m_receivedElements = 0;

    const char* m_refusal = nullptr; ///< of what hiredis was told to give up
};

} // namespace RedisClient
