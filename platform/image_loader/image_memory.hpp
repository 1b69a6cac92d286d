// The memory that images take, counted for the whole process: how much is in use now and the most that ever was. Every
// buffer of texels is an IMAGE_BYTES, so nothing has to be counted by hand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace IMAGE_LOADER {

struct IMAGE_ALLOCATION_STATISTICS {
    std::uint64_t current_bytes = 0;
    std::uint64_t high_water_bytes = 0;
};

/// The counters at one moment; may be called from any thread.
IMAGE_ALLOCATION_STATISTICS image_allocation_statistics();

/// What the allocator below reports; nobody else calls them.
void count_image_allocation(std::size_t bytes);
void count_image_release(std::size_t bytes);

/// An allocator that counts. Allocation failure throws std::bad_alloc and counts nothing.
template <typename T>
struct IMAGE_ALLOCATOR {
    using value_type = T;

    IMAGE_ALLOCATOR() = default;
    template <typename U>
    IMAGE_ALLOCATOR(IMAGE_ALLOCATOR<U> const&) {}

    T* allocate(std::size_t count) {
        T* const memory = std::allocator<T>().allocate(count);
        count_image_allocation(count * sizeof(T));
        return memory;
    }
    void deallocate(T* memory, std::size_t count) {
        std::allocator<T>().deallocate(memory, count);
        count_image_release(count * sizeof(T));
    }

    friend bool operator==(IMAGE_ALLOCATOR const&, IMAGE_ALLOCATOR const&) { return true; }
};

/// A buffer of texels or blocks.
using IMAGE_BYTES = std::vector<std::uint8_t, IMAGE_ALLOCATOR<std::uint8_t>>;

}  // namespace IMAGE_LOADER
