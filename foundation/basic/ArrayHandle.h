#pragma once

#include "foundation/export.h"

namespace vellum {

struct ArrayTypeable;

/// The name of a shared array: an index into VL_ArrayServer.
using ArrayId = unsigned int;

inline constexpr ArrayId ARRAY_ID_NONE = 0xFFFFFFFFU;  ///< The name of no array.

/// Holds a shared array of VL_ArrayServer while it is being used.
///
/// The owner of an array (a mesh) keeps its ArrayId. Who only reads it for a while (a renderer that draws it)
/// holds it through a handle: the array then lives until the handle is gone, even when its owner releases or
/// replaces it meanwhile.
///
/// Use:
///
///     ArrayHandle const positions(positionsId);
///     if (ArrayTypeable const* array = positions.resolve()) {
///         draw(static_cast<Vector3<double> const*>(array->data), array->size);
///     }
///
/// A handle is a 32-bit index, 0xFFFFFFFF for no array. Copies share one record of the server, which counts
/// them. It must not be used after VL_ArrayServer is gone, nor on several threads at once.
class VL_FOUNDATION_EXPORT ArrayHandle {
public:
    ArrayHandle() = default;  ///< Holds no array.

    /// Holds the array `id`. It holds none when there is no such array, or when the array's references (its
    /// owners and handles, at most 65535) cannot be counted any more.
    explicit ArrayHandle(ArrayId const& id);

    /// Holds the same array. Copies beyond the 65535 that a record can count go on with a record of their own.
    ArrayHandle(ArrayHandle const& other);
    ArrayHandle(ArrayHandle&& other) noexcept;  ///< The other handle holds no array afterwards.

    /// Lets go of the array held so far and holds the other one's.
    ArrayHandle& operator=(ArrayHandle const& other);
    ArrayHandle& operator=(ArrayHandle&& other) noexcept;

    /// Lets go of the array; the last reference destroys it.
    ~ArrayHandle();

    /// The array's record, or null when the handle holds no array. Valid while the handle holds it.
    ArrayTypeable* resolve() const;

    bool isHolding() const { return resolve() != nullptr; }

private:
    friend class ArrayServer;

    static constexpr unsigned int NONE = 0xFFFFFFFFU;

    unsigned int index = NONE;  // of the handle record in VL_ArrayServer
};

static_assert(sizeof(ArrayHandle) == 4, "a handle is its index and nothing more");

}  // namespace vellum

// Either header gives the handle and the server; each needs no more of the other than its name.
#include "foundation/basic/ArrayServer.h"
