#include "platform/qe/replace_file.hpp"

#include <cerrno>
#include <fstream>
#include <system_error>

namespace QE {

namespace {

bool write_whole(std::filesystem::path const& path, std::span<std::span<std::uint8_t const> const> parts,
                 std::string& cause) {
    errno = 0;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    for (std::span<std::uint8_t const> const bytes : parts) {
        file.write(reinterpret_cast<char const*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    file.close();
    if (file) {
        return true;
    }
    cause = errno != 0 ? std::generic_category().message(errno) : "the file cannot be written";
    return false;
}

/// A file that a killed program left is of no use, and through a link in its place the bytes would end up elsewhere.
void remove_what_is_left(std::filesystem::path const& path) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

}  // namespace

bool replace_file(std::filesystem::path const& target, std::span<std::uint8_t const> bytes, std::string& cause) {
    return replace_file(target, std::span<std::span<std::uint8_t const> const>(&bytes, 1), cause);
}

bool replace_file(std::filesystem::path const& target, std::span<std::span<std::uint8_t const> const> parts,
                  std::string& cause) {
    std::filesystem::path unfinished = target;
    unfinished += ".part";
    remove_what_is_left(unfinished);
    std::error_code error;
    if (write_whole(unfinished, parts, cause)) {
        std::filesystem::rename(unfinished, target, error);
        if (!error) {
            return true;
        }
        cause = error.message();
    }
    std::filesystem::remove(unfinished, error);
    return false;
}

}  // namespace QE
