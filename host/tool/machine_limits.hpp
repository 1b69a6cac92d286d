// What of this machine a build may use: processors and memory, as the system and the control group that the process
// runs in (containers, build farms) allow.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

/// Processors that this process may run on, at least 1.
int available_processors();

/// Bytes that could be taken now without others losing theirs; nothing where the system does not tell.
std::optional<std::uint64_t> available_memory();

/// "512M", "8G", "1.5g" or a plain number of bytes; nothing for anything else, and for sizes below one byte.
std::optional<std::uint64_t> parse_size(std::string const& text);

}  // namespace tool
