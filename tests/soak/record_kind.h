#pragma once

#include "tests/soak/kind.h"

#include <QDateTime>

#include <functional>
#include <string>
#include <vector>

namespace soak {

/// A kind of which every call stores new records, each with a number of its own: the number of the
/// call times the records of a call, and on.
class RecordKind : public Kind {
public:
    bool usesRedis() const final { return false; }
    void save(int call) final;
    void note(int call, bool acknowledged) final;
    Findings readBack() final;

protected:
    RecordKind(std::string url, std::string collection, std::string numberField,
               int recordsOfCall = 1);

    /// Stores these records with one call.
    virtual void store(const std::vector<int>& numbers) = 0;
    /// The number that stands in the text of the number field.
    virtual int numberIn(const std::string& text) const;
    /// Reads all records of a device through the plug-in and says of each its number and in what it
    /// differs from the one that was stored.
    using Seen = std::function<void(int number, const QStringList& differences)>;
    virtual void readDevice(int device, const Seen& seen) = 0;

    static int deviceOf(int number);
    /// A second for each record.
    static QDateTime timeOf(int number);
    static QDateTime endOfTime();

private:
    /// How many documents there are of each record, by number.
    std::vector<int> countDocuments() const;
    std::vector<int> countThroughPlugin(Findings& findings);

    std::string m_url;
    std::string m_collection;
    std::string m_numberField;
    int m_recordsOfCall;
    std::vector<bool> m_acknowledged{false}; // by call
};

} // namespace soak
