// A TGA file in one step, for those who need nothing of its header.
#pragma once

#include "platform/qe/image32.hpp"
#include "platform/qe/string.hpp"

#include <optional>
#include <string>

namespace QE {

/// The texels of the file at a path in the local 8-bit encoding. Nothing when it cannot be opened or read; `cause` then
/// says why. An image of a width or height of 0 is read: it has no texels.
std::optional<IMAGE32> load_tga(String const& path, std::string& cause);

}  // namespace QE
