#include "foundation/basic/ArrayHandle.h"

#include <utility>

namespace vellum {

ArrayHandle::ArrayHandle(ArrayId const& id) : index(VL_ArrayServer._createHandle(id)) {}

ArrayHandle::ArrayHandle(ArrayHandle const& other) : index(VL_ArrayServer._shareHandle(other.index)) {}

ArrayHandle::ArrayHandle(ArrayHandle&& other) noexcept : index(std::exchange(other.index, NONE)) {}

ArrayHandle& ArrayHandle::operator=(ArrayHandle const& other) {
    ArrayHandle copy(other);
    std::swap(index, copy.index);
    return *this;
}

ArrayHandle& ArrayHandle::operator=(ArrayHandle&& other) noexcept {
    ArrayHandle taken(std::move(other));
    std::swap(index, taken.index);
    return *this;
}

ArrayHandle::~ArrayHandle() {
    VL_ArrayServer._releaseHandle(index);
}

ArrayTypeable* ArrayHandle::resolve() const {
    return VL_ArrayServer._resolveHandle(index);
}

}  // namespace vellum
