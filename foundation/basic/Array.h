#pragma once

#include "foundation/basic/ArrayCore.h"

#include <initializer_list>

namespace vellum {

/// A dynamic array: ArrayCore with the element operations.
///
/// Use:
///
///     Array<Vector3<float>> points{{0, 0, 0}, {1, 0, 0}};
///     points.pushBack({0, 1, 0});
///     glVertexPointer(3, GL_FLOAT, 0, points.data());
///
/// Indices are not checked.
template <class T, class Policy = _Wa>
class Array : public ArrayCore<T, VL_NO, VL_NO, VL_NO, Policy> {
    using Core = ArrayCore<T, VL_NO, VL_NO, VL_NO, Policy>;

public:
    Array() = default;  ///< Empty: no storage.

    Array(std::initializer_list<T> const values) {
        this->reserve(static_cast<unsigned int>(values.size()), false);
        this->setSize(static_cast<unsigned int>(values.size()));
        T* out = this->data();
        for (T const& value : values) {
            *out++ = value;
        }
    }

    T& operator[](unsigned int const& index) { return this->data()[index]; }
    T const& operator[](unsigned int const& index) const { return this->data()[index]; }
    T& back() { return this->data()[this->size() - 1]; }              ///< The last element; must exist.
    T const& back() const { return this->data()[this->size() - 1]; }  ///< The last element; must exist.

    T* begin() { return this->data(); }
    T* end() { return this->data() + this->size(); }
    T const* begin() const { return this->data(); }
    T const* end() const { return this->data() + this->size(); }

    /// Appends a copy of `value`, which may be an element of this array. A full array first grows to size +
    /// size / 8 + 4 elements; if that throws, the array is unchanged.
    void pushBack(T const& value) {
        if (this->size() < this->capacity()) {
            _append(value);
        } else {
            // Growing moves the elements away from under the argument.
            T const copy(value);  // NOLINT(performance-unnecessary-copy-initialization)
            this->reserve(Core::_grownCapacity(this->size()), true);
            _append(copy);
        }
    }

    void clear() { this->setSize(0); }  ///< Size 0; the capacity is kept.

private:
    void _append(T const& value) {
        unsigned int const size = this->size();
        this->data()[size] = value;
        this->setSize(size + 1);
    }
};

}  // namespace vellum
