// TOML nests a table for every part of a dotted key, and the library takes as many as there are, one stack frame each:
// a line of a million dots would end the program. This looks at the text before the library does. Internal to the
// framework. The language: https://toml.io/en/v1.0.0
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace framework {

/// The most parts that a dotted key may have; the library's own bound on nested arrays and inline tables is the same.
inline constexpr std::size_t most_key_parts = 256;

/// The line, counted from 1, of the first key that has more parts. The text need not be sound TOML.
std::optional<std::size_t> line_of_too_deep_key(std::string_view text);

}  // namespace framework
