// The texels of a TGA file, whatever its coding, as one kind of image.
#pragma once

#include "platform/qe/file_in.hpp"
#include "platform/qe/image32.hpp"
#include "platform/qe/tga_header.hpp"

#include <optional>
#include <string>

namespace QE {

/// Reads the texels that follow `header`; the file stands where `TGAHeader::read` left it. Every coding becomes blue,
/// green, red, alpha with the top row first and the left texel first:
/// - 24 bits: alpha 255. 32 bits: the fourth byte is alpha whatever the header's attribute bits say, because real
///   files with varying alpha leave them 0.
/// - 15 and 16 bits: five bits a channel, widened by repeating their upper bits (v·8 + v/4). The top bit is alpha (0 or
///   255) in 16-bit texels of files that announce attribute bits; otherwise alpha is 255.
/// - grey: the same value in all three colours; alpha from the second byte where there is one, else 255.
/// - colour map: the entry, read as a texel of its own depth. An index outside the map is an error.
/// Sizes are held against the bytes of the file before memory is taken. Nothing comes back on any failure; `cause` then
/// says what is wrong, and the position is where it was. Running out of memory is such a failure too.
std::optional<IMAGE32> read_pixels(FileIn& file, TGAHeader const& header, std::string& cause);

}  // namespace QE
