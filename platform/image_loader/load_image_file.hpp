// Loading an image by its file name, TGA included.
#pragma once

#include "platform/image_loader/image.hpp"
#include "platform/qe/image32.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace IMAGE_LOADER {

/// Loads a TGA (by its extension, since the format has no mark), or whatever the file's first bytes show. The image
/// owns its texels. Not valid, and `cause` filled, when the file cannot be read.
IMAGE load_image_file(std::filesystem::path const& path, std::string& cause);

/// Whether the name ends in ".tga", in capitals or not.
bool has_tga_extension(std::filesystem::path const& path);

/// The texels of a TGA file. Nothing on failure, and `cause` says why.
std::optional<QE::IMAGE32> load_tga_file(std::filesystem::path const& path, std::string& cause);

/// All bytes of a file. Nothing on failure, and `cause` says why.
std::optional<std::vector<std::uint8_t>> read_whole_file(std::filesystem::path const& path, std::string& cause);

}  // namespace IMAGE_LOADER
