#pragma once

namespace interfaces {

/// Common base of the database objects that the plug-in hands to the host.
///
/// The order of the operations is the binary contract: host and plug-in are compiled separately.
/// One thread at a time may use a database object and everything that it hands out.
class IDatabase {
public:
    virtual ~IDatabase() = default;

    /// Lays out collections and indexes where the store has none. The factory has called it before
    /// the host receives the object; calling it again changes nothing. Blocks on the server.
    /// The MongoDB driver's exceptions pass through unchanged.
    virtual void CreateDatabase() = 0;

    /// There are no transactions: every write takes effect at once and this does nothing.
    virtual void CommitTransaction() = 0;
    /// Does nothing, as CommitTransaction.
    virtual void RollbackTransaction() = 0;
    /// Does nothing, as CommitTransaction.
    virtual void BeginTransaction() = 0;
};

} // namespace interfaces
