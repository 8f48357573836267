#pragma once

#include <cstdint>
#include <utility>

/// \file
/// In-place sorting for arrays with few different keys.

namespace vellum::array_tools {

/// The parts of quickSort. A range is its first and last index, both inclusive.
namespace quickSortParams {

/// Two combined generators of random numbers. Each sort restarts them, so that the same array is always
/// sorted in the same way.
class Dice {
public:
    /// A number from 0 to sides - 1.
    int roll(int const& sides) {
        carrying = (carrying >> 16) + (carrying & 0xFFFF) * 30903;
        multiplying *= 69069;
        return static_cast<int>((carrying + multiplying) % static_cast<std::uint32_t>(sides));
    }

private:
    std::uint32_t carrying = 521288629;  // multiply with carry: 16 bits of number, 16 of carry
    std::uint32_t multiplying = 362436069;
};

template <class T>
struct Pivot {
    T value;
    int position;     // of the value in the array
    bool isRepeated;  // many entries have the same key
};

/// Chooses an entry near the middle of the order, from about 64 samples over lo to hi.
///
/// The samples are sorted among themselves in the array: the pivot is then near its final position, and the
/// last entry is at least as large as every sample.
template <class T, class Less>
Pivot<T> choosePivot(T* data, int const& lo, int const& hi, Less const& less, Dice& dice) {
    constexpr std::size_t MOST_SAMPLES = 66;  // one per block, and the entry at hi
    T samples[MOST_SAMPLES];
    int positions[MOST_SAMPLES];
    int count = 0;
    bool moved = false;
    auto const take = [&](int const& position) {
        int place = count;
        for (; place > 0 && less(data[position], samples[place - 1]); --place) {
            samples[place] = samples[place - 1];
            moved = true;
        }
        samples[place] = data[position];
        positions[count] = position;
        ++count;
    };

    int const step = ((hi - lo + 1) >> 6) + 1;
    for (int block = lo; block < hi - step; block += step) {
        take(block + dice.roll(step));
    }
    take(hi);
    if (moved) {
        for (int k = 0; k < count; ++k) {
            data[positions[k]] = samples[k];
        }
    }

    int const middle = count / 2;
    int equal = 0;
    for (int k = 0; k < count; ++k) {
        equal += !less(samples[k], samples[middle]) && !less(samples[middle], samples[k]) ? 1 : 0;
    }
    return {samples[middle], positions[middle], equal > count / 4};
}

/// Moves the entries less than the pivot to the front of the range.
/// \return the index after them.
template <class T, class Less>
int promote(T* data, int const& lo, int const& hi, T const& pivot, Less const& less) {
    int front = lo;
    for (int k = lo; k <= hi; ++k) {
        if (less(data[k], pivot)) {
            std::swap(data[k], data[front]);
            ++front;
        }
    }
    return front;
}

/// Moves the entries greater than the pivot to the back of the range.
/// \return the index before them.
template <class T, class Less>
int promoteBackwards(T* data, int const& lo, int const& hi, T const& pivot, Less const& less) {
    int back = hi;
    for (int k = hi; k >= lo; --k) {
        if (less(pivot, data[k])) {
            std::swap(data[k], data[back]);
            --back;
        }
    }
    return back;
}

/// Insertion sort for a few entries.
template <class T, class Less>
void insertionSort(T* data, int const& lo, int const& hi, Less const& less) {
    for (int k = lo + 1; k <= hi; ++k) {
        T const moving = data[k];
        int place = k;
        for (; place > lo && less(moving, data[place - 1]); --place) {
            data[place] = data[place - 1];
        }
        data[place] = moving;
    }
}

template <class T, class Less>
void sortRange(T* data, int lo, int hi, Less const& less, Dice& dice) {
    constexpr int SHORT = 16;
    while (hi - lo >= SHORT) {
        Pivot<T> const pivot = choosePivot(data, lo, hi, less, dice);
        int left = 0;
        int right = 0;
        if (pivot.isRepeated) {
            // All entries with the pivot's key are in their final positions after this.
            int const front = promote(data, lo, hi, pivot.value, less);
            right = promoteBackwards(data, front, hi, pivot.value, less) + 1;
            left = front - 1;
        } else {
            std::swap(data[pivot.position], data[hi]);
            int const place = promote(data, lo, hi - 1, pivot.value, less);
            std::swap(data[place], data[hi]);
            left = place - 1;
            right = place + 1;
        }
        // Recursion into the shorter part keeps the stack small.
        if (left - lo < hi - right) {
            sortRange(data, lo, left, less, dice);
            lo = right;
        } else {
            sortRange(data, right, hi, less, dice);
            hi = left;
        }
    }
    insertionSort(data, lo, hi, less);
}

}  // namespace quickSortParams

/// Sorts data[lo] to data[hi], both inclusive, ascending by `less`. In place and not stable; a range in order
/// is unchanged.
template <class T, class Less>
void quickSort(T* data, int const& lo, int const& hi, Less const& less) {
    for (int k = lo; k < hi; ++k) {
        if (less(data[k + 1], data[k])) {
            quickSortParams::Dice dice;
            quickSortParams::sortRange(data, lo, hi, less, dice);
            return;
        }
    }
}

}  // namespace vellum::array_tools
