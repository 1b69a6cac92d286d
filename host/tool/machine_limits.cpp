// Control groups: the Linux kernel's "Control Group v2" document, sections on cpu.max and memory.max. Each group above
// the process's own binds too.
#include "host/tool/machine_limits.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

#include <sched.h>

namespace tool {

namespace {

namespace fs = std::filesystem;

// Calls `visit` with the folder of the process's own group and of each one above it.
template <typename VISIT>
void for_each_group(VISIT const& visit) {
    fs::path const top = "/sys/fs/cgroup";
    std::ifstream file("/proc/self/cgroup");
    std::string line;
    while (std::getline(file, line)) {
        if (!line.starts_with("0::/"))
            continue;
        fs::path group = line.substr(4);
        while (!group.empty()) {
            visit(top / group);
            group = group.parent_path();
        }
        visit(top);
    }
}

// The number behind a word in a file of "word number" lines; with an empty word, the file's first number.
std::optional<std::uint64_t> number_in(fs::path const& path, std::string const& word) {
    std::ifstream file(path);
    std::uint64_t number = 0;
    if (word.empty())
        return file >> number ? std::optional(number) : std::nullopt;
    std::string line;
    while (std::getline(file, line))
        if (line.starts_with(word + ' '))
            return std::strtoull(line.c_str() + word.size(), nullptr, 10);
    return std::nullopt;
}

}  // namespace

int available_processors() {
    cpu_set_t set;
    int processors = sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
    for_each_group([&](fs::path const& group) {
        std::ifstream file(group / "cpu.max");
        std::uint64_t quota = 0;
        std::uint64_t period = 0;
        if (file >> quota >> period && period > 0)
            processors = static_cast<int>(std::min<std::uint64_t>(static_cast<unsigned>(processors), quota / period));
    });
    return std::max(1, processors);
}

std::optional<std::uint64_t> available_memory() {
    std::optional<std::uint64_t> available = number_in("/proc/meminfo", "MemAvailable:");
    if (!available)
        return std::nullopt;
    *available *= 1024;
    for_each_group([&](fs::path const& group) {
        std::optional<std::uint64_t> const limit = number_in(group / "memory.max", "");
        std::optional<std::uint64_t> const used = number_in(group / "memory.current", "");
        if (!limit || !used)
            return;
        // Pages of files that nobody has touched for a while are given back when room is wanted.
        std::uint64_t const cached = number_in(group / "memory.stat", "inactive_file").value_or(0);
        std::uint64_t const held = *used - std::min(*used, cached);
        *available = std::min(*available, *limit - std::min(*limit, held));
    });
    return available;
}

std::optional<std::uint64_t> parse_size(std::string const& text) {
    double number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    std::string_view const suffix(end, static_cast<std::size_t>(text.data() + text.size() - end));
    constexpr std::string_view letters = "KMGT";
    if (error != std::errc() || suffix.size() > 1)
        return std::nullopt;
    if (suffix.size() == 1) {
        std::size_t const place = letters.find(static_cast<char>(std::toupper(static_cast<unsigned char>(suffix[0]))));
        if (place == std::string_view::npos)
            return std::nullopt;
        number *= std::pow(1024.0, static_cast<double>(place + 1));
    }
    // The comparison is false for NaN.
    if (!(number >= 1 && number < 9e18))
        return std::nullopt;
    return static_cast<std::uint64_t>(number);
}

}  // namespace tool
