#pragma once

#include <QByteArray>
#include <QString>

namespace host {

/// What becomes of a record whose key the store has already.
enum class Existing { Keep, Replace };

struct ImportCounts {
    qint64 added = 0;
    /// There already, and the same.
    qint64 same = 0;
    /// There already with other content, and left so.
    qint64 different = 0;
    qint64 replaced = 0;
    /// Past their time, and not stored.
    qint64 expired = 0;
};

/// Takes the lines of one exported store into a server. Throws Failure, with the number of the line
/// that cannot be stored; what the servers' libraries throw passes through.
class StoreImport {
public:
    StoreImport() = default;
    virtual ~StoreImport() = default;
    StoreImport(const StoreImport&) = delete;
    StoreImport& operator=(const StoreImport&) = delete;

    /// How many records the store has now.
    virtual qint64 records() = 0;

    /// Stores the line at once or with some of the next ones.
    virtual void add(const QByteArray& line, qint64 lineNumber) = 0;

    /// Stores those that are still waiting.
    virtual void flush() = 0;

    /// How many records the store should have now, and has not: of those that are to stay for
    /// another day.
    virtual qint64 missing() = 0;

    const ImportCounts& counts() const { return m_counts; }

protected:
    ImportCounts& mutableCounts() { return m_counts; }

private:
    ImportCounts m_counts;
};

} // namespace host
