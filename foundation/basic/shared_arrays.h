#pragma once

#include "foundation/basic/Array.h"
#include "foundation/basic/PoolByIndex.h"
#include "foundation/export.h"

#include <cstring>
#include <type_traits>

namespace vellum {

// The server of shared arrays and the handle to one of them. Each is the other's friend and neither is of use
// alone, so one header has both; ArrayServer.h and ArrayHandle.h include it under the names of the two
// classes.

class ArrayServer;

/// The name of a shared array: an index into VL_ArrayServer.
using ArrayId = unsigned int;

inline constexpr ArrayId ARRAY_ID_NONE = 0xFFFFFFFFU;  ///< The name of no array.

/// The state word of a shared array.
enum ArrayTypeableFlags : unsigned short {
    ARRAY_TYPEABLE_IS_LOCKED_TYPE = 1,  ///< The type of the elements is settled, as long as the array lives.

    /// The contents have changed. Each reader that keeps something derived from them has a bit of its own:
    /// the writer raises it, the reader clears it once it has caught up.
    ARRAY_TYPEABLE_MODIFIED_CONTROL_0 = 256,  ///< Read by the mesh renderers.
    ARRAY_TYPEABLE_MODIFIED_CONTROL_1 = 512,
    ARRAY_TYPEABLE_MODIFIED_CONTROL_2 = 1024,
    ARRAY_TYPEABLE_MODIFIED_CONTROL_MASK = 0xF00
};

/// A shared array as the server keeps it: untyped storage, and what is known about it.
///
/// The contents, the size (up to the capacity) and the modified bits are the holders' to write; everything
/// else is the server's.
struct ArrayTypeable {
    void* data = nullptr;           ///< The elements, without gaps; null when the capacity is 0.
    unsigned int size = 0;          ///< Elements in use.
    unsigned int capacity = 0;      ///< Elements allocated.
    unsigned int elementSize = 0;   ///< Bytes of an element.
    unsigned short flags = 0;       ///< ArrayTypeableFlags
    unsigned short references = 0;  ///< Owners and handles that keep the array alive.

    /// The elements as the type they were created with; null when an element of T has another size.
    template <class T>
    T* as() {
        return sizeof(T) == elementSize ? static_cast<T*>(data) : nullptr;
    }
    template <class T>
    T const* as() const {
        return sizeof(T) == elementSize ? static_cast<T const*>(data) : nullptr;
    }
};

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

    /// Holds the same array. Copies beyond the 65535 that a record can count go on with a record of their
    /// own.
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

/// Keeps the arrays that several objects share: the data of meshes, which renderers read.
///
/// Owners keep 32-bit names (ArrayId) instead of pointers and count their references; the storage goes with
/// the last one. Who only reads an array for a while uses an ArrayHandle.
///
/// Use:
///
///     ArrayId id = VL_ArrayServer.create(positions);                     // a copy of an Array<Vector3<double>>
///     ArrayTypeable* array = VL_ArrayServer.resolve(id);
///     array->as<Vector3<double>>()[0] = {0, 0, 1};
///     array->flags |= ARRAY_TYPEABLE_MODIFIED_CONTROL_0;
///     VL_ArrayServer.release(id);                                        // id is ARRAY_ID_NONE now
///
/// Unknown names (ARRAY_ID_NONE, a name released before) are answered and do no harm, as long as the name has
/// not been given to a new array. All operations belong on one thread.
class VL_FOUNDATION_EXPORT ArrayServer {
public:
    ArrayServer() = default;  ///< Serves no array; allocates nothing.
    ~ArrayServer();           ///< Frees the arrays that were never released.

    ArrayServer(ArrayServer const&) = delete;
    ArrayServer& operator=(ArrayServer const&) = delete;

    /// Makes an array of `count` elements of `elementSize` bytes each, all zero. It has one reference, the
    /// caller's, and counts as modified (ARRAY_TYPEABLE_MODIFIED_CONTROL_0).
    /// \return its name; ARRAY_ID_NONE when the elements have no size or the memory is not to be had.
    ArrayId create(unsigned int const& elementSize, unsigned int const& count);

    /// The same with a copy of `values`.
    template <class T>
    ArrayId create(Array<T> const& values) {
        static_assert(std::is_trivially_copyable_v<T>, "shared arrays hold plain values");
        ArrayId const id = create(static_cast<unsigned int>(sizeof(T)), values.size());
        if (id != ARRAY_ID_NONE && values.size() != 0) {
            std::memcpy(resolve(id)->data, values.data(), sizeof(T) * values.size());
        }
        return id;
    }

    /// The record of an array, or null when there is no such array. The address holds while the array lives.
    ArrayTypeable* resolve(ArrayId const& id) { return typeables.find(id); }
    ArrayTypeable const* resolve(ArrayId const& id) const { return typeables.find(id); }

    /// Adds a reference, to be given back with release().
    /// \return false when there is no such array or its 65535 references are all taken; then nothing changes.
    bool retain(ArrayId const& id);

    /// Gives a reference back; the last one destroys the array. `id` becomes ARRAY_ID_NONE in any case.
    /// \return false when there was no such array; then nothing else changes.
    bool release(ArrayId& id);

    /// Destroys an array, whoever else still refers to it, and sets `id` to ARRAY_ID_NONE. An unknown name is
    /// only set to ARRAY_ID_NONE. Holders should use release(), which waits for the last reference.
    void destroy_typeable(ArrayId& id);

    unsigned int arrayCount() const { return typeables.usedCount(); }  ///< Arrays alive.
    unsigned int handleCount() const { return handles.usedCount(); }   ///< Handle records in use.

private:
    friend class ArrayHandle;

    struct HandleRecord {
        ArrayId typeable = ARRAY_ID_NONE;
        unsigned short references = 0;  // copies of the handle
    };

    unsigned int _createHandle(ArrayId const& id);
    unsigned int _shareHandle(unsigned int const& handle);
    void _releaseHandle(unsigned int& handle) noexcept;
    ArrayTypeable* _resolveHandle(unsigned int const& handle);

    PoolByIndex<HandleRecord> handles;
    PoolByIndex<ArrayTypeable> typeables;  // each owns its storage
};

/// The server of all shared arrays of the process.
extern VL_FOUNDATION_EXPORT ArrayServer VL_ArrayServer;

}  // namespace vellum
