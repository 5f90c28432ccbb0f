#pragma once

#include "contract/slot.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace virtual_table {

using contract::entryOf;
using contract::slot;

/// An operation that was reached: its name, its numbers and the addresses of its references.
struct call {
    std::string operation;
    std::vector<std::intptr_t> arguments;

    friend bool operator==(const call&, const call&) = default;
};

inline std::intptr_t argument(int number) {
    return number;
}

template <typename Type>
std::intptr_t argument(const Type* address) {
    return reinterpret_cast<std::intptr_t>(address);
}

template <typename... Arguments>
call called(std::string operation, Arguments... arguments) {
    return {std::move(operation), {argument(arguments)...}};
}

/// What the recording implementations of the interfaces share.
class recorder {
public:
    explicit recorder(bool* destroyed = nullptr) : m_destroyed(destroyed) {}
    recorder(const recorder&) = delete;
    recorder& operator=(const recorder&) = delete;
    ~recorder() {
        if (m_destroyed != nullptr) {
            *m_destroyed = true;
        }
    }

    const std::vector<call>& calls() const { return m_calls; }

protected:
    template <typename... Arguments>
    void reached(std::string operation, Arguments... arguments) {
        m_calls.push_back(called(std::move(operation), arguments...));
    }

private:
    bool* m_destroyed;
    std::vector<call> m_calls;
};

} // namespace virtual_table
