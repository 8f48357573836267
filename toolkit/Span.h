#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace vellum::toolkit {

/// Elements that lie one after the other in memory and belong to somebody else, read only: an array, a
/// `std::vector`, a `std::array`, an `Array`, or a pointer and a count.
///
///     std::vector<Vector3<float>> points = ...;
///     setPositions(mesh, points);
///     setPositions(mesh, {pointer, count});
///
/// The elements must stay where they are while the span is used; a span never outlives the call that it is
/// passed to.
template <class T>
class Span {
public:
    constexpr Span() = default;  ///< Empty.

    /// \param data the first element; may be null if the count is 0.
    constexpr Span(T const* data, std::size_t size) : first(data), count(size) {}

    /// From anything that has data() and size(), if its elements are of type T: elements of a derived type
    /// lie farther apart than a span of their base would look for them.
    template <class Container,
              class Element =
                  std::remove_cv_t<std::remove_pointer_t<decltype(std::declval<Container const&>().data())>>,
              class = std::enable_if_t<std::is_same_v<Element, T>>>
    constexpr Span(
        Container const& container)  // NOLINT(google-explicit-constructor): a view of the same elements
        : first(container.data()), count(static_cast<std::size_t>(container.size())) {}

    template <std::size_t SIZE>
    constexpr Span(
        T const (&elements)[SIZE])  // NOLINT(google-explicit-constructor): a view of the same elements
        : first(elements), count(SIZE) {}

    constexpr T const* data() const { return first; }
    constexpr std::size_t size() const { return count; }
    constexpr bool empty() const { return count == 0; }
    constexpr T const& operator[](std::size_t index) const { return first[index]; }  ///< Not checked.
    constexpr T const* begin() const { return first; }
    constexpr T const* end() const { return first + count; }

private:
    T const* first = nullptr;
    std::size_t count = 0;
};

}  // namespace vellum::toolkit
