#include "host/tool/peak_memory.hpp"

#include <fstream>
#include <string>

namespace tool {

void reset_peak_memory() {
    std::ofstream("/proc/self/clear_refs") << '5';
}

std::optional<std::uint64_t> peak_memory() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word)
        if (std::uint64_t kilobytes = 0; word == "VmHWM:" && status >> kilobytes)
            return kilobytes * 1024;
    return std::nullopt;
}

}  // namespace tool
