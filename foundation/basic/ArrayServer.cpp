#include "foundation/basic/ArrayServer.h"

#include "foundation/basic/large_pages.h"

#include <cstdlib>
#include <limits>

namespace vellum {

ArrayServer VL_ArrayServer;

namespace {

constexpr unsigned int MOST_REFERENCES = std::numeric_limits<unsigned short>::max();

}  // namespace

ArrayServer::~ArrayServer() {
    for (unsigned int index = 0; index < typeables.handedOutCount(); ++index) {
        if (ArrayTypeable* const array = typeables.find(index)) {
            std::free(array->data);
        }
    }
}

ArrayId ArrayServer::create(unsigned int const& elementSize, unsigned int const& count) {
    if (elementSize == 0) {
        return ARRAY_ID_NONE;
    }
    ArrayId id = typeables.acquire();
    if (id == ARRAY_ID_NONE) {
        return ARRAY_ID_NONE;
    }
    ArrayTypeable& array = typeables[id];
    if (count != 0) {
        // calloc detects an overflow of the product and gets large blocks from the system already zeroed.
        array.data = std::calloc(count, elementSize);
        if (array.data == nullptr) {
            typeables.release(id);
            return ARRAY_ID_NONE;
        }
        preferLargePages(array.data, std::size_t{count} * elementSize);
    }
    array.size = count;
    array.capacity = count;
    array.elementSize = elementSize;
    array.flags = ARRAY_TYPEABLE_IS_LOCKED_TYPE | ARRAY_TYPEABLE_MODIFIED_CONTROL_0;
    array.references = 1;
    return id;
}

bool ArrayServer::retain(ArrayId const& id) {
    ArrayTypeable* const array = typeables.find(id);
    // A count that wrapped around would free the array under its holders.
    if (array == nullptr || array->references == MOST_REFERENCES) {
        return false;
    }
    ++array->references;
    return true;
}

bool ArrayServer::release(ArrayId& id) {
    ArrayTypeable* const array = typeables.find(id);
    if (array != nullptr && array->references != 1) {
        --array->references;
        id = ARRAY_ID_NONE;
        return true;
    }
    destroy_typeable(id);
    return array != nullptr;
}

void ArrayServer::destroy_typeable(ArrayId& id) {
    if (ArrayTypeable* const array = typeables.find(id)) {
        --array->references;
        // The record is cleared before its slot is free: whoever kept its address finds an empty array
        // instead of freed memory.
        array->flags &= static_cast<unsigned short>(~ARRAY_TYPEABLE_IS_LOCKED_TYPE);
        array->size = 0;
        std::free(array->data);
        array->data = nullptr;
        array->capacity = 0;
    }
    typeables.release(id);
}

// == Handles ==

unsigned int ArrayServer::_createHandle(ArrayId const& id) {
    if (typeables.find(id) == nullptr) {
        return ArrayHandle::NONE;
    }
    unsigned int handle = handles.acquire();
    if (handle == ArrayHandle::NONE) {
        return ArrayHandle::NONE;
    }
    if (!retain(id)) {
        handles.release(handle);
        return ArrayHandle::NONE;
    }
    handles[handle].typeable = id;
    handles[handle].references = 1;
    return handle;
}

unsigned int ArrayServer::_shareHandle(unsigned int const& handle) {
    HandleRecord* const record = handles.find(handle);
    if (record == nullptr) {
        return ArrayHandle::NONE;
    }
    // A second record for the same array, so that copying a handle never fails.
    if (record->references == MOST_REFERENCES) {
        return _createHandle(record->typeable);
    }
    ++record->references;
    return handle;
}

void ArrayServer::_releaseHandle(unsigned int& handle) noexcept {
    HandleRecord* const record = handles.find(handle);
    if (record != nullptr && record->references != 1) {
        --record->references;
        handle = ArrayHandle::NONE;
        return;
    }
    if (record != nullptr) {
        release(record->typeable);
        --record->references;
    }
    handles.release(handle);
}

ArrayTypeable* ArrayServer::_resolveHandle(unsigned int const& handle) {
    HandleRecord const* const record = handles.find(handle);
    return record != nullptr ? typeables.find(record->typeable) : nullptr;
}

}  // namespace vellum
