#pragma once

#include "interfaces/idatabase.h"

namespace interfaces {

class IULAPPMessageRepository;
class IDLAPPMessageRepository;

/// The store of uplink messages and downlink commands.
///
/// Owns both repositories: the pointers stay valid, and stay the same, while this object lives.
class IMessagesDatabase : public IDatabase {
public:
    /// Uplink messages. Never null.
    virtual IULAPPMessageRepository* UlMessageRepository() = 0;
    /// Downlink commands. Never null.
    virtual IDLAPPMessageRepository* DlMessageRepository() = 0;
};

} // namespace interfaces
