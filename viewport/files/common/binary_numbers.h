#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace vellum::viewport {

/// The number at these bytes. Assembled byte by byte: records of files are not aligned, and either byte order
/// may differ from that of the machine.
template <class T>
T binaryNumber(char const* bytes, bool isBigEndian) {
    using Bits = std::conditional_t<
        sizeof(T) == 1, std::uint8_t,
        std::conditional_t<sizeof(T) == 2, std::uint16_t,
                           std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>>>;
    static_assert(sizeof(T) == sizeof(Bits));
    unsigned char raw[sizeof(T)];
    std::memcpy(raw, bytes, sizeof raw);
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < sizeof raw; ++i) {
        bits |= static_cast<std::uint64_t>(raw[isBigEndian ? sizeof raw - 1 - i : i]) << (8 * i);
    }
    auto const sized = static_cast<Bits>(bits);
    T value;
    std::memcpy(&value, &sized, sizeof value);
    return value;
}

}  // namespace vellum::viewport
