#pragma once

#include "foundation/basic/Array.h"

#include <cstddef>
#include <memory>
#include <new>

namespace vellum {

/// A pool of records that are named by a 32-bit index.
///
/// Code that shares a record keeps its index, four bytes that may be stored, copied and compared, and asks
/// the pool for the record. Records live in pages that never move, so the address of a record stays the same
/// while the pool grows:
///
///     index   = page << pageShift | slot            slot = index & pageMask
///
///     page 0 [ 0 1 2 3 ]   page 1 [ 4 5 . . ]       pageShift 2: six indices handed out since the last reset
///     used     1 1 0 1              0 1             bit set; 2 and 4 wait in the free list
///
/// Use:
///
///     PoolByIndex<Item> items;
///     unsigned int index = items.acquire();
///     items[index].value = 5;
///     items.release(index);                         // index is NOT_FOUND now
///
/// An index is handed out again after its release, and the pool cannot distinguish an old holder of it from
/// the new one. A record is not destroyed when it is released, so the caller first releases the resources
/// that the record owns. The pool is not thread-safe.
template <class Record>
class PoolByIndex {
public:
    static constexpr unsigned int NOT_FOUND = 0xFFFFFFFFU;  ///< The index of no record.

    /// An empty pool whose pages hold 2 to the power of `pageShift` records; larger values count as 16.
    constexpr explicit PoolByIndex(unsigned int const& pageShift = 8)
        : shift(pageShift < 16 ? pageShift : 16), mask((1U << (pageShift < 16 ? pageShift : 16)) - 1) {}

    PoolByIndex(PoolByIndex const&) = delete;
    PoolByIndex& operator=(PoolByIndex const&) = delete;

    ~PoolByIndex() {
        for (Page& page : pages) {
            delete[] page.records;
        }
    }

    /// Gives the index of a record that is not in use and marks it used; the record is as
    /// default-constructed. The index that was released last is reused first; without one, the next index of
    /// the pages is used, and a page is added when they are full. If an allocation throws, the pool is
    /// unchanged.
    /// \return NOT_FOUND when all 2^32 - 1 indices are in use.
    unsigned int acquire() {
        unsigned int index = handedOut;
        if (released.size() != 0) {
            index = released.back();
            (*this)[index] = Record();
            released.setSize(released.size() - 1);
        } else {
            if (index == NOT_FOUND) {
                return NOT_FOUND;
            }
            _makeRoom(index);
            (*this)[index] = Record();
            ++pages[index >> shift].recordCount;
            ++handedOut;
        }
        usedBits[index / WORD_BITS] |= 1U << index % WORD_BITS;
        ++used;
        return index;
    }

    /// Releases a record: its index waits in the free list, to be handed out again. After the last record in
    /// use the pool is reset: page counts, free list and bit set are emptied, and the next index is 0. The
    /// pages are kept.
    /// \return false for an index that is not in use (a second release, NOT_FOUND); the pool is unchanged
    ///     then.
    bool release_dontSetNotFound(unsigned int const& index) noexcept {
        if (!isUsed(index)) {
            return false;
        }
        --used;
        if (used == 0) {
            _reset();
            return true;
        }
        usedBits[index / WORD_BITS] &= ~(1U << index % WORD_BITS);
        try {
            released.pushBack(index);
        } catch (std::bad_alloc const&) {
            // Releasing must not fail. An index without an entry in the free list stays unused until the pool
            // is reset.
        }
        return true;
    }

    /// The same, and sets `index` to NOT_FOUND, whatever it was.
    bool release(unsigned int& index) noexcept {
        bool const wasUsed = release_dontSetNotFound(index);
        index = NOT_FOUND;
        return wasUsed;
    }

    /// The record of an index that is in use, else null. The address holds until the record is released.
    Record* find(unsigned int const& index) { return isUsed(index) ? &(*this)[index] : nullptr; }
    Record const* find(unsigned int const& index) const { return isUsed(index) ? &(*this)[index] : nullptr; }

    /// The record of an index; not checked.
    Record& operator[](unsigned int const& index) { return pages[index >> shift].records[index & mask]; }
    Record const& operator[](unsigned int const& index) const {
        return pages[index >> shift].records[index & mask];
    }

    bool isUsed(unsigned int const& index) const {
        unsigned int const word = index / WORD_BITS;
        return word < usedBits.size() && (usedBits[word] >> index % WORD_BITS & 1U) != 0;
    }

    unsigned int usedCount() const { return used; }            ///< Records in use.
    unsigned int handedOutCount() const { return handedOut; }  ///< Indices below this one were handed out.
    Array<unsigned int> const& freeList() const {
        return released;
    }  ///< Released indices; the last goes out first.

    unsigned int pageShift() const { return shift; }
    unsigned int pageMask() const { return mask; }
    unsigned int pageCount() const { return pages.size(); }  ///< Pages allocated; it never falls.
    /// Indices of a page that were handed out since the last reset; the page must exist.
    unsigned int pageRecordCount(unsigned int const& page) const { return pages[page].recordCount; }

private:
    static constexpr unsigned int WORD_BITS = 32;

    struct Page {
        Record* records = nullptr;     // owned, mask + 1 of them
        unsigned int recordCount = 0;  // indices handed out since the last reset, from slot 0 on
    };

    // Sees to the page and the bit set of the next index.
    void _makeRoom(unsigned int const& index) {
        if (index >> shift == pages.size()) {
            std::unique_ptr<Record[]> records(new Record[std::size_t{mask} + 1]);
            pages.pushBack(Page{records.get(), 0});
            static_cast<void>(records.release());
        }
        if (index / WORD_BITS == usedBits.size()) {
            usedBits.pushBack(0U);
        }
    }

    void _reset() noexcept {
        for (Page& page : pages) {
            page.recordCount = 0;
        }
        released.clear();
        usedBits.clear();
        handedOut = 0;
    }

    Array<Page> pages;
    Array<unsigned int>
        usedBits;  // one bit for each index handed out, in words of 32: set while it is in use
    Array<unsigned int> released;  // the free list
    unsigned int used = 0;         // records in use
    unsigned int handedOut = 0;    // indices handed out since the last reset: the next new one
    unsigned int shift;            // from an index to its page
    unsigned int mask;             // from an index to its slot
};

}  // namespace vellum
