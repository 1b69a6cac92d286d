// A file that is written is whole or not there at all: a reader, or a build that goes on after a crash, must never find
// half a texture under the name of a whole one.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace QE {

/// Where the bytes of `target` stand until they are whole: "<target>.part" in the same folder. Of a name that leaves no
/// room for that, its beginning and a hash, so that the name always ends in ".part" and has at most 255 bytes.
std::filesystem::path unfinished_file(std::filesystem::path const& target);

/// Writes the bytes to `unfinished_file(target)`, which then takes the place of `target`. False on failure: `cause`
/// says why, `target` is as it was, and nothing is left beside it.
bool replace_file(std::filesystem::path const& target, std::span<std::uint8_t const> bytes, std::string& cause);
/// The same with bytes that lie in several places, written one behind the other.
bool replace_file(std::filesystem::path const& target, std::span<std::span<std::uint8_t const> const> parts,
                  std::string& cause);

}  // namespace QE
