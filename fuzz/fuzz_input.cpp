#include "fuzz/fuzz_input.hpp"

#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

namespace fuzz {

INPUT_FILE::INPUT_FILE(std::uint8_t const* bytes, std::size_t size) : descriptor_(memfd_create("input", 0)) {
    require(descriptor_ >= 0 && (size == 0 || write(descriptor_, bytes, size) == static_cast<ssize_t>(size)),
            "the input can be written to memory");
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
    if (access(path_.c_str(), R_OK) != 0) {
        std::puts("skipped: the input of this harness is a file in memory, which has no name without /proc");
        std::exit(77);
    }
}

INPUT_FILE::~INPUT_FILE() {
    close(descriptor_);
}

}  // namespace fuzz
