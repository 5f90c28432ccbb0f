// What a Redis server may send, given to the reader of replies in one piece and in many, and to
// hiredis' own reader.

#include "fuzz/support/choices.h"
#include "fuzz/support/target.h"
#include "redisclient/reply_reader.h"

#include <hiredis/hiredis.h>

#include <QVariantList>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using RedisClient::ReplyError;
using RedisClient::ReplyReader;
using RedisClient::Response;

/// The answers until the bytes end or are none.
struct conversation {
    std::vector<Response> answers;
    bool isRefused = false;
};

conversation readInPieces(std::string_view bytes, std::size_t size) {
    conversation read;
    ReplyReader reader;
    try {
        while (!bytes.empty()) {
            const std::string_view piece = bytes.substr(0, size);
            bytes.remove_prefix(piece.size());
            for (auto answer = reader.read(piece); answer; answer = reader.read({})) {
                read.answers.push_back(*std::move(answer));
            }
        }
    } catch (const ReplyError&) {
        read.isRefused = true;
    }
    return read;
}

bool same(const Response& first, const Response& second) {
    return first.type() == second.type() && first.getValue() == second.getValue() &&
           first.errorMessage() == second.errorMessage();
}

/// Whether the value is what hiredis makes of it.
bool same(const QVariant& value, const redisReply& reply) {
    switch (reply.type) {
    case REDIS_REPLY_STRING:
    case REDIS_REPLY_STATUS:
        return value.type() == QVariant::ByteArray &&
               value.toByteArray() == QByteArray(reply.str, static_cast<int>(reply.len));
    case REDIS_REPLY_INTEGER:
        return value.type() == QVariant::LongLong && value.toLongLong() == reply.integer;
    case REDIS_REPLY_NIL:
    case REDIS_REPLY_ERROR:
        return !value.isValid();
    case REDIS_REPLY_ARRAY: {
        const QVariantList list = value.toList();
        bool isSame = value.type() == QVariant::List && std::cmp_equal(list.size(), reply.elements);
        for (std::size_t i = 0; isSame && i < reply.elements; ++i) {
            isSame = same(list[static_cast<int>(i)], *reply.element[i]);
        }
        return isSame;
    }
    default:
        return false; // of another version of the protocol
    }
}

void compareWithHiredis(const std::vector<Response>& answers, std::string_view bytes) {
    const std::unique_ptr<redisReader, decltype(&::redisReaderFree)> reader{::redisReaderCreate(),
                                                                            &::redisReaderFree};
    ::redisReaderFeed(reader.get(), bytes.data(), bytes.size());
    for (const Response& answer : answers) {
        void* made = nullptr;
        const int status = ::redisReaderGetReply(reader.get(), &made);
        const std::unique_ptr<void, decltype(&::freeReplyObject)> reply{made, &::freeReplyObject};
        fuzz::require(status == REDIS_OK && reply != nullptr, "hiredis reads this answer too");
        const auto& theirs = *static_cast<const redisReply*>(made);
        fuzz::require(same(answer.getValue(), theirs), "the value is that of hiredis");
        fuzz::require(
            answer.isErrorMessage() == (theirs.type == REDIS_REPLY_ERROR) &&
                (!answer.isErrorMessage() ||
                 answer.errorMessage() == QByteArray(theirs.str, static_cast<int>(theirs.len))),
            "the error is that of hiredis");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Without the end of its line, a length is refused earlier if it comes in pieces.
    const std::string bytes = std::string{fuzz::textOf(data, size)} + "\r\n";
    const conversation whole = readInPieces(bytes, bytes.size());
    for (const std::size_t piece : {std::size_t{1}, std::size_t{3}, 1 + size / 2}) {
        const conversation pieces = readInPieces(bytes, piece);
        fuzz::require(pieces.isRefused == whole.isRefused &&
                          std::ranges::equal(pieces.answers, whole.answers,
                                             [](const Response& first, const Response& second) {
                                                 return same(first, second);
                                             }),
                      "the pieces do not matter");
    }
    compareWithHiredis(whole.answers, bytes);
    return 0;
}
