// Gives a harness every file of its corpus folder once: with any compiler, and in every test run, what once crashed a
// reader is tried again, under the same limits as in a fuzzer.
#include "fuzz/fuzz_input.hpp"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <sys/resource.h>

namespace {

void check_memory() {
    constexpr long most_kib = 2 << 20;
    rusage used = {};
    fuzz::require(getrusage(RUSAGE_SELF, &used) == 0 && used.ru_maxrss < most_kib, "2 GiB are enough");
}

}  // namespace

int main(int argc, char** argv) {
    fuzz::require(argc == 2, "the corpus folder is the only argument");
    std::size_t count = 0;
    for (std::filesystem::directory_entry const& entry : std::filesystem::recursive_directory_iterator(argv[1])) {
        if (!entry.is_regular_file()) {
            continue;
        }
        std::ifstream file(entry.path(), std::ios::binary);
        std::vector<char> const bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        // Printed first: after a crash it is the last line.
        std::printf("%s\n", entry.path().c_str());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
        check_memory();
        ++count;
    }
    fuzz::require(count > 0, "the corpus holds something");
}
