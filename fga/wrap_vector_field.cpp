#include "fga/wrap_vector_field.hpp"

#include <algorithm>

// In place, axis after axis: a copy that is made by one axis is what the next one copies, so that a corner ends up as
// sample 0 of every axis.
void wrap_vector_field(VECTOR_FIELD& field) {
    std::size_t const row = field.size.x;
    std::size_t const plane = row * field.size.y;
    std::size_t const last_plane = plane * (field.size.z - 1);
    auto const texels = field.texels.begin();
    auto const at = [&](std::size_t index) {
        return texels + static_cast<std::ptrdiff_t>(index);
    };
    for (std::size_t z = 0; z < last_plane; z += plane) {
        std::size_t const last_row = z + plane - row;
        for (std::size_t y = z; y < last_row; y += row)
            *at(y + row - 1) = *at(y);
        std::copy(at(z), at(z + row), at(last_row));
    }
    std::copy(at(0), at(plane), at(last_plane));
}
