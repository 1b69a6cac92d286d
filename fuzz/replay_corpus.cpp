// Gives a harness every file of its corpus folder once: with any compiler, and in every test run, what once crashed a
// reader is tried again.
#include "fuzz/fuzz_input.hpp"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

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
        ++count;
    }
    fuzz::require(count > 0, "the corpus holds something");
}
