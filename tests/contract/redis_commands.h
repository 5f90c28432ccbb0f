#pragma once

#include <hiredis/hiredis.h>

#include <QJsonObject>
#include <QString>
#include <QUrl>

#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// The Redis server of the environment variable REDIS_URL (redis://[:password@]host:port), asked by
/// commands of the test's own. A missing server is a failure: everything throws
/// std::runtime_error.
class redis_commands {
public:
    redis_commands() {
        const QString url = qEnvironmentVariable("REDIS_URL");
        if (url.isEmpty()) {
            throw std::runtime_error("REDIS_URL names no server; run the tests with ./dev test");
        }
        m_url = QUrl{url};
        m_context.reset(redisConnect(m_url.host().toUtf8().constData(), m_url.port(6379)));
        if (m_context == nullptr || m_context->err != 0) {
            throw std::runtime_error("no Redis server at " + url.toStdString());
        }
        if (!m_url.password().isEmpty()) {
            run({"AUTH", m_url.password().toStdString()});
        }
    }

    /// The "redis" settings object for this server.
    QJsonObject settings() const {
        return {{QStringLiteral("host"), m_url.host()},
                {QStringLiteral("port"), m_url.port(6379)},
                {QStringLiteral("auth"), m_url.password()}};
    }

    void select(int db) { run({"SELECT", std::to_string(db)}); }

    /// Text or number of the answer; empty for nil.
    std::string run(std::initializer_list<std::string> words) {
        std::vector<const char*> texts;
        std::vector<std::size_t> lengths;
        for (const std::string& word : words) {
            texts.push_back(word.data());
            lengths.push_back(word.size());
        }
        const std::unique_ptr<redisReply, reply_deleter> reply{
            static_cast<redisReply*>(redisCommandArgv(
                m_context.get(), static_cast<int>(words.size()), texts.data(), lengths.data()))};
        if (reply == nullptr || reply->type == REDIS_REPLY_ERROR) {
            throw std::runtime_error(*words.begin() + ": " +
                                     (reply == nullptr ? m_context->errstr : reply->str));
        }
        return reply->type == REDIS_REPLY_INTEGER ? std::to_string(reply->integer)
               : reply->str != nullptr            ? std::string{reply->str, reply->len}
                                                  : std::string{};
    }

private:
    struct context_deleter {
        void operator()(redisContext* context) const { redisFree(context); }
    };
    struct reply_deleter {
        void operator()(redisReply* reply) const { freeReplyObject(reply); }
    };

    QUrl m_url;
    std::unique_ptr<redisContext, context_deleter> m_context;
};
