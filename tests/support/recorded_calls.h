#pragma once

#include "tests/gl_spy/gl_spy.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

/// Lists of calls as recordings show them, put together from parts.
namespace vellum {

using Texts = std::vector<std::string>;

/// The lists one after the other.
inline Texts joined(std::initializer_list<Texts> lists) {
    Texts all;
    for (Texts const& list : lists) {
        all.insert(all.end(), list.begin(), list.end());
    }
    return all;
}

/// The list `times` times.
inline Texts repeated(Texts const& list, std::size_t times) {
    Texts all;
    for (std::size_t i = 0; i < times; ++i) {
        all.insert(all.end(), list.begin(), list.end());
    }
    return all;
}

/// The one primitive of a recording. Fails, and gives an empty one, where there are several or none.
inline gl_spy::Primitive onlyPrimitive(gl_spy::Recording const& recording) {
    std::vector<gl_spy::Primitive> const primitives = recording.primitives();
    EXPECT_EQ(primitives.size(), 1U);
    return primitives.size() == 1 ? primitives.front() : gl_spy::Primitive{};
}

}  // namespace vellum
