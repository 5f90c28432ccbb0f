#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// Virtual functions called by their place in the table, as a host does that was compiled with
/// headers of its own (Itanium C++ ABI: a virtual destructor takes two entries ahead of slot 1).
namespace virtual_table {

/// Function pointer in entry `entry`, counted from 0, of the table that the object begins with.
template <typename Function, typename Interface>
Function entryOf(Interface* object, std::size_t entry) {
    const void* const* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(object), sizeof table);
    Function function = nullptr;
    std::memcpy(&function, table + entry, sizeof function);
    return function;
}

template <typename Signature>
struct slot;

/// slot<Result(Arguments…)>::call(object, number, arguments…), slots counted from 1.
template <typename Result, typename... Arguments>
struct slot<Result(Arguments...)> {
    template <typename Interface>
    static Result call(Interface* object, std::size_t number, Arguments... arguments) {
        using function = Result (*)(Interface*, Arguments...);
        constexpr std::size_t ahead = std::has_virtual_destructor_v<Interface> ? 2 : 0;
        return entryOf<function>(object, ahead + number - 1)(object,
                                                             std::forward<Arguments>(arguments)...);
    }
};

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
