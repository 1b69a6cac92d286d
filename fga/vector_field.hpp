// A vector field on its way from text to texture: already in the texture's numbers, since a field of floats beside a
// field of halves would double the memory.
#pragma once

#include <cstdint>
#include <vector>

namespace UTILITYLIB {

/// Four halves, as the texture holds them.
struct FLOAT16_4 {
    std::uint16_t x = 0;
    std::uint16_t y = 0;
    std::uint16_t z = 0;
    std::uint16_t w = 0;

    friend bool operator==(FLOAT16_4 const&, FLOAT16_4 const&) = default;
};
static_assert(sizeof(FLOAT16_4) == 8);

struct VECTOR_3c {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t z = 0;
};

}  // namespace UTILITYLIB

struct VECTOR_FIELD {
    UTILITYLIB::VECTOR_3c size;
    /// x fastest, then y, then z: size.x × size.y × size.z of them.
    std::vector<UTILITYLIB::FLOAT16_4> texels;
};
