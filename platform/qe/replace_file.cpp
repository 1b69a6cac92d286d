// A name that is too long for an extension is cut, and told from others by its hash (FNV-1a, by G. Fowler, L. C. Noll
// and K.-P. Vo).
#include "platform/qe/replace_file.hpp"

#include <cerrno>
#include <fstream>
#include <string_view>
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

std::filesystem::path unfinished_file(std::filesystem::path const& target) {
    constexpr std::string_view extension = ".part";
    constexpr std::size_t longest_name = 255;
    constexpr std::size_t hash_digits = 16;
    std::string name = target.filename().string();
    if (name.size() + extension.size() > longest_name) {
        std::uint64_t hash = 0xcbf29ce484222325;
        for (char const c : name)
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
        std::size_t kept = longest_name - extension.size() - hash_digits - 1;
        // Not in the middle of a UTF-8 character: such a name could not be listed by everybody.
        while (kept > 0 && (static_cast<unsigned char>(name[kept]) & 0xC0) == 0x80)
            --kept;
        name.resize(kept);
        name += '.';
        for (std::size_t i = hash_digits; i-- > 0;)
            name += "0123456789abcdef"[hash >> (4 * i) & 15];
    }
    return target.parent_path() / name.append(extension);
}

bool replace_file(std::filesystem::path const& target, std::span<std::uint8_t const> bytes, std::string& cause) {
    return replace_file(target, std::span<std::span<std::uint8_t const> const>(&bytes, 1), cause);
}

bool replace_file(std::filesystem::path const& target, std::span<std::span<std::uint8_t const> const> parts,
                  std::string& cause) {
    std::filesystem::path const unfinished = unfinished_file(target);
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
