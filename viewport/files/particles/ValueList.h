#pragma once

#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace vellum::viewport {

/// Gives memory whose elements have no value before they are written: what a file fills at once is not filled
/// with zeros first.
template <class T>
struct UnfilledAllocator : std::allocator<T> {
    static_assert(std::is_trivially_copyable_v<T>, "an element without a value can be thrown away");

    template <class U>
    struct rebind {
        using other = UnfilledAllocator<U>;
    };

    UnfilledAllocator() = default;
    template <class U>
    UnfilledAllocator(UnfilledAllocator<U> const& /*other*/) {}

    template <class U>
    void construct(U* place) noexcept {
        ::new (static_cast<void*>(place)) U;
    }
    template <class U, class... Arguments>
    void construct(U* place, Arguments&&... arguments) {
        ::new (static_cast<void*>(place)) U{std::forward<Arguments>(arguments)...};
    }
};

/// The values of many particles. resize() leaves new ones undefined: they are to be written.
template <class T>
using ValueList = std::vector<T, UnfilledAllocator<T>>;

}  // namespace vellum::viewport
