#include "platform/image_loader/image_memory.hpp"

#include <atomic>

namespace IMAGE_LOADER {

namespace {

std::atomic<std::uint64_t> bytes_in_use = 0;
std::atomic<std::uint64_t> most_bytes_in_use = 0;

}  // namespace

IMAGE_ALLOCATION_STATISTICS image_allocation_statistics() {
    return {bytes_in_use.load(), most_bytes_in_use.load()};
}

void count_image_allocation(std::size_t bytes) {
    std::uint64_t const now = bytes_in_use.fetch_add(bytes) + bytes;
    std::uint64_t most = most_bytes_in_use.load();
    while (most < now && !most_bytes_in_use.compare_exchange_weak(most, now)) {
    }
}

void count_image_release(std::size_t bytes) {
    bytes_in_use.fetch_sub(bytes);
}

}  // namespace IMAGE_LOADER
