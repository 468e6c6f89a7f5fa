#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

/// The place of a virtual operation in the table of virtual functions of its class, from 0; -1 for
/// an operation that is not virtual.
///
/// By the x86-64 C++ ABI a pointer to a virtual member holds the operation's offset in bytes, plus one.
template<class Operation>
std::ptrdiff_t virtualSlot(Operation operation)
{
    static_assert(std::is_member_function_pointer_v<Operation>);
    std::ptrdiff_t representation[2];
    static_assert(sizeof operation == sizeof representation);
    std::memcpy(representation, &operation, sizeof representation);

    if (representation[0] % 2 == 0)
        return -1;
    return representation[0] / static_cast<std::ptrdiff_t>(sizeof(void *));
}

/// The function that a call of this operation of this object ends in.
template<class Class>
const void *functionInSlot(const Class *object, std::ptrdiff_t slot)
{
    static_assert(std::is_polymorphic_v<Class>);
    const void *const *table;
    std::memcpy(&table, object, sizeof table);
    return table[slot];
}
