#pragma once

#include <cstddef>
#include <cstring>

/// Where a virtual operation stands in the table of virtual functions, read out of a pointer to member
/// function.
namespace member_slots {

constexpr std::size_t NOT_VIRTUAL = static_cast<std::size_t>(-1);

/// The slot of a virtual operation of `Class` with exactly the type `Signature`, result included. Under the
/// Itanium C++ ABI, which GCC and Clang follow on every system but Windows, a pointer to a virtual member is
/// its offset in the table; a bit tells it from an address: the lowest of the offset, or, where code
/// addresses may be odd (ARM), the lowest of the adjustment that follows it.
template <class Class, class Signature>
std::size_t slotOf(Signature Class::*member) {
    struct {
        std::ptrdiff_t pointer;
        std::ptrdiff_t adjustment;
    } words{};
    static_assert(sizeof(words) == sizeof(member), "a pointer to member function is two words");
    std::memcpy(&words, &member, sizeof(words));
#if defined(__arm__) || defined(__aarch64__)
    bool const isVirtual = (words.adjustment & 1) != 0;
    std::ptrdiff_t const offset = words.pointer;
#else
    bool const isVirtual = (words.pointer & 1) != 0;
    std::ptrdiff_t const offset = words.pointer - 1;
#endif
    return isVirtual ? static_cast<std::size_t>(offset) / sizeof(void*) : NOT_VIRTUAL;
}

/// The table of virtual functions of an object whose first word points at it.
inline void* const* tableOf(void const* object) {
    void* const* table = nullptr;
    std::memcpy(&table, object, sizeof(table));
    return table;
}

}  // namespace member_slots
