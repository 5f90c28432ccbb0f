#pragma once

#include "interfaces/idatabase.h"

namespace interfaces {

class IEAVRepository;

/// The store of meter readings and events.
///
/// Owns the repository: the pointer stays valid, and stays the same, while this object lives.
class IEAVDatabase : public IDatabase {
public:
    /// Never null.
    virtual IEAVRepository* EAVRepository() = 0;
};

} // namespace interfaces
