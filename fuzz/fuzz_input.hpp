// What every harness shares. A harness is one file: it takes any bytes, hands them to one reader as a stranger's file
// would be, and checks what the reader promises of its answers. libFuzzer calls it millions of times; the ordinary test
// run calls it once for every file of its corpus (replay_corpus.cpp).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size);

namespace fuzz {

/// Ends the program, which is how a fuzzer is told, unless a promise was kept.
inline void require(bool kept, char const* promise) {
    if (!kept) {
        std::fprintf(stderr, "broken promise: %s\n", promise);
        std::abort();
    }
}

/// A text that may be large, out of few bytes: what stands between two bytes 1 comes as often as 256 KiB take, and a
/// byte 2 in it is the number of the repetition. So fuzzers come upon what grows with the square of a text's parts.
std::string grown_text(std::uint8_t const* bytes, std::size_t size);

/// The bytes as a file that has a path and no place on a disk.
class INPUT_FILE {
public:
    INPUT_FILE(std::uint8_t const* bytes, std::size_t size);
    explicit INPUT_FILE(std::string_view text)
        : INPUT_FILE(reinterpret_cast<std::uint8_t const*>(text.data()), text.size()) {}
    INPUT_FILE(INPUT_FILE const&) = delete;
    INPUT_FILE& operator=(INPUT_FILE const&) = delete;
    ~INPUT_FILE();

    std::string const& path() const { return path_; }

private:
    int descriptor_;
    std::string path_;
};

}  // namespace fuzz
