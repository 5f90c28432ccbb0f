#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

/// Virtual functions called by their place in the table, as a host does that was compiled with
/// headers of its own (Itanium C++ ABI: a virtual destructor takes two entries ahead of slot 1).
namespace contract {

/// Function pointer in entry `entry`, counted from 0, of the table that the object begins with.
template <typename Function, typename Interface>
Function entryOf(Interface* object, std::size_t entry) {
    void* const* table = nullptr;
    std::memcpy(static_cast<void*>(&table), static_cast<const void*>(object), sizeof table);
    return reinterpret_cast<Function>(table[entry]);
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

} // namespace contract
