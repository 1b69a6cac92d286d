#include "fuzz/fuzz_input.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <csignal>
#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>

// The linker hands every call of a harness to the first of these (--wrap), and calls the harness the second.
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names.
extern "C" int __wrap_LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size);
extern "C" int __real_LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size);
// NOLINTEND(bugprone-reserved-identifier)

namespace {

void limit_time(time_t seconds) {
    itimerval const limit = {{}, {seconds, 0}};
    fuzz::require(setitimer(ITIMER_PROF, &limit, nullptr) == 0, "time can be limited");
}

}  // namespace

// One second of the program's own work: a busy machine does not count.
int __wrap_LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    std::signal(SIGPROF, [](int) { fuzz::require(false, "an input takes less than a second"); });
    limit_time(1);
    int const result = __real_LLVMFuzzerTestOneInput(bytes, size);
    limit_time(0);
    return result;
}

namespace fuzz {

std::string grown_text(std::uint8_t const* bytes, std::size_t size) {
    constexpr std::size_t largest = 256 << 10;
    std::string_view const given(reinterpret_cast<char const*>(bytes), size);
    std::string text;
    bool repeats = false;
    for (std::size_t at = 0; at <= size; repeats = !repeats) {
        std::size_t const end = std::min(given.find('\1', at), size);
        std::string_view const piece = given.substr(at, end - at);
        at = end + 1;
        // A piece that is never ended stands as it is.
        if (!repeats || piece.empty() || end == size) {
            text += piece;
            continue;
        }
        for (std::size_t number = 0; text.size() < largest; ++number)
            for (char const letter : piece)
                letter == '\2' ? text += std::to_string(number) : text += letter;
    }
    return text;
}

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
