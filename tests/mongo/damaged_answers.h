#pragma once

#include "tests/support/mongo_wire.h"

#include <QString>

/// A repository whose server's answers come damaged: a text in them is no UTF-8 any more, as after
/// a fault of a disk or of another writer.
template <typename Repository>
class damaged_answers {
public:
    static QString text() { return QStringLiteral("to be broken"); }

    explicit damaged_answers(const std::string& database)
        : repository(m_client.database(database)) {
        m_proxy.damageAnswers(text().toUtf8(), "to be\xff\xff\xff\xff\xff\xff\xff");
    }

private:
    test_support::MongoProxy m_proxy;
    test_support::recording_client m_client{m_proxy.url()};

public:
    Repository repository;
};
