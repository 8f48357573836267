#pragma once

#include "viewport/text/Fault.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vellum::viewport {

/// A text whose beginning can be read while the rest is still on its way. For one thread.
class GrowingText {
public:
    GrowingText() = default;
    virtual ~GrowingText() = default;
    GrowingText(GrowingText const&) = delete;
    GrowingText& operator=(GrowingText const&) = delete;

    /// Waits until more than so many bytes are there. \return what is there: no more than those only where no
    /// more come before whole(). It stays where it is until whole(). May throw what a progress throws.
    virtual std::string_view beyond(std::size_t known) = 0;

    /// About how many bytes it will have.
    virtual std::uint64_t expectedSize() const = 0;

    /// Waits for all of it. \return the text, perhaps at another place, or why there is none. May throw as
    /// beyond().
    virtual Result<std::string_view> whole() = 0;
};

}  // namespace vellum::viewport
