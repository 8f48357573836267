#pragma once

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>

namespace vellum {

/// Policy tag of ArrayCore: the feature that this argument position stands for is switched off.
struct VL_NO {};

/// Policy tag of ArrayCore: storage comes from array `new[]` and grows by an eighth.
struct _Wa {};  // NOLINT(bugprone-reserved-identifier): the tag's name belongs to the interface.

/// The storage of the family's arrays and strings: contiguous elements, a size and a capacity in 32 bits.
///
/// The elements follow each other without gaps, because arrays of vertices, indices and texture names are
/// handed to OpenGL as raw memory. ArrayCore owns the storage; Array adds the element operations and
/// VL_String the text operations.
///
/// Use:
///
///     ArrayCore<float> values;
///     values.reserve(16, false);   // 16 elements of storage, contents not kept
///     values.setSize(3);           // the caller writes the three elements
///     values.data()[0] = 1.0F;
///
/// It does not check indices, and it does not check that a size is within the capacity. If an allocation
/// fails, the exception of `new[]` leaves the array unchanged.
template <class T, class Feature0 = VL_NO, class Feature1 = VL_NO, class Feature2 = VL_NO, class Policy = _Wa>
class ArrayCore {
public:
    ArrayCore() = default;  ///< Empty: no storage.
    ArrayCore(ArrayCore const& other) { _copy(other); }
    ArrayCore(ArrayCore&& other) noexcept { swap(other); }
    ~ArrayCore() { delete[] storage; }

    ArrayCore& operator=(ArrayCore const& other) {
        if (this != &other) {
            ArrayCore copy(other);
            swap(copy);
        }
        return *this;
    }
    ArrayCore& operator=(ArrayCore&& other) noexcept {
        swap(other);
        return *this;
    }

    T* data() { return storage; }              ///< First element, or null when the capacity is 0.
    T const* data() const { return storage; }  ///< First element, or null when the capacity is 0.
    unsigned int size() const { return used; }
    unsigned int capacity() const { return allocated; }

    /// Makes the storage exactly `n` elements large.
    ///
    /// If `n` is the present capacity, the call does nothing. With 0 the storage is released and the size
    /// becomes 0. Otherwise the new size is the smaller of the old size and `n`; with `keep` that many
    /// elements are copied.
    ///
    /// Deliberate (discarding-reserve): without `keep` the size becomes the same number, although the
    /// elements are only default-constructed.
    void reserve(unsigned int const& n, bool const& keep) {
        if (n == allocated) {
            return;
        }
        if (n == 0) {
            delete[] storage;
            storage = nullptr;
            used = 0;
            allocated = 0;
            return;
        }
        // The argument may be a reference into the old storage.
        unsigned int const newCapacity = n;
        unsigned int const newSize = used < newCapacity ? used : newCapacity;
        ArrayCore fresh;
        fresh.storage = new T[newCapacity];
        fresh.allocated = newCapacity;
        fresh.used = newSize;
        if (keep) {
            for (unsigned int i = 0; i < newSize; ++i) {
                fresh.storage[i] = storage[i];
            }
        }
        swap(fresh);
    }

    /// Sets the number of elements in use, 0 to capacity(); touches no element.
    void setSize(unsigned int const& n) { used = n; }

    /// Exchanges the storage of two arrays; copies no element.
    void swap(ArrayCore& other) noexcept {
        std::swap(storage, other.storage);
        std::swap(used, other.used);
        std::swap(allocated, other.allocated);
    }

protected:
    /// The capacity that appending to a full array asks for: 4, 8, 13, 18, 24, 31, ...
    static unsigned int _grownCapacity(unsigned int const& size) {
        std::uint64_t const grown = std::uint64_t{size} + size / 8 + 4;
        if (grown > std::numeric_limits<unsigned int>::max()) {
            throw std::length_error("vellum::Array: more elements than 32 bits can count");
        }
        return static_cast<unsigned int>(grown);
    }

private:
    void _copy(ArrayCore const& other) {
        if (other.used == 0) {
            return;
        }
        reserve(other.used, false);
        for (unsigned int i = 0; i < other.used; ++i) {
            storage[i] = other.storage[i];
        }
        used = other.used;
    }

    T* storage = nullptr;        // owned, from new[]; null when allocated is 0
    unsigned int used = 0;       // elements in use, at most allocated
    unsigned int allocated = 0;  // elements allocated
};

static_assert(sizeof(ArrayCore<float>) == sizeof(void*) + 8, "pointer, 32-bit size, 32-bit capacity");

}  // namespace vellum
