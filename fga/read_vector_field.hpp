// FGA: a vector field as text, written by simulation tools. Numbers with commas between them: three dimensions, six for
// the bounding box, then three for each vector, x fastest.
#pragma once

#include "fga/vector_field.hpp"

#include <optional>
#include <span>
#include <string>

/// Reads the text of one file. What stands between two commas is one number, line breaks and all; nothing between them
/// is no number; what does not read as a number counts as 0. Numbers behind the last vector are left alone. Nothing
/// when a dimension is below 2, when there are more vectors than 32 bits count, or fewer numbers than announced;
/// `cause` then gives what was announced and what is there. No memory is taken before the text is long enough for what
/// it announces. Throws std::bad_alloc.
std::optional<VECTOR_FIELD> read_vector_field(std::span<char const> text, std::string& cause);

/// How many numbers the text holds, readable ones or not.
std::uint64_t count_numbers(std::span<char const> text);
