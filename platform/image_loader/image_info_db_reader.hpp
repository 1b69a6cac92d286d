// Reads an image-information database where it lies: in a mapped file, or in memory that it was loaded into. Nothing is
// copied or allocated. Needs this header and a C++20 compiler, and nothing else: it is installed for runtimes.
//
//     IMAGE_LOADER::IMAGE_INFO_DB_READER database;
//     if (char const* const cause = database.open(bytes))       // checks all of the file, once
//         complain(cause);
//     if (auto const image = database.find("textures/rock.dds"))
//         create_texture(image->width, image->height, image->number_of_mips);
//
// The file, every number little-endian:
//
// clang-format off
//     header     0   8  "ZABIMGDB"            24   4  number of images
//                8   4  version (1)           28   4  number of surfaces
//               12   4  CRC-32 of all bytes   32   8  bytes of the names
//                       from 16 on            40  24  0
//               16   8  size of the file
//     images    40 bytes each, sorted by name (as unsigned bytes), no name twice: offset of the name among the names,
//               its length, width, height, texel format, image format, number of mips, number of its first surface, a
//               number of the caller's (0), 0; 4 bytes each
//     surfaces  24 bytes each, one for each mip, the largest first: offset from the first texel, bytes, row pitch;
//               8 bytes each. Images of one layout share theirs.
//     names     each followed by a byte 0
// clang-format on
#pragma once

#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

namespace IMAGE_LOADER {

/// Where things stand in the file.
namespace image_info_db_layout {

inline constexpr std::string_view magic = "ZABIMGDB";
inline constexpr std::uint32_t version = 1;
inline constexpr std::size_t checksum_offset = 12;
inline constexpr std::size_t checked_from = 16;
inline constexpr std::size_t header_bytes = 64;
inline constexpr std::size_t image_bytes = 40;
inline constexpr std::size_t surface_bytes = 24;
inline constexpr std::uint32_t most_mips = 32;
/// Above what any system takes for a path. Names may lie over one another in a file that was made to be slow.
inline constexpr std::uint32_t most_name_bytes = 65535;

static_assert(std::endian::native == std::endian::little, "numbers are read as they stand");

template <typename NUMBER>
NUMBER read(std::byte const* at) {
    NUMBER number;
    std::memcpy(&number, at, sizeof number);
    return number;
}

/// Eight tables, so that eight bytes are taken at a time (M. Kounavis and F. Berry, "A systematic approach to building
/// high performance software-based CRC generators", 2005).
struct CRC_TABLES {
    std::uint32_t rows[8][256];

    constexpr CRC_TABLES() : rows() {
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t remainder = i;
            for (int bit = 0; bit < 8; ++bit)
                remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? 0xEDB88320u : 0u);
            rows[0][i] = remainder;
        }
        for (std::uint32_t i = 0; i < 256; ++i)
            for (std::size_t row = 1; row < 8; ++row)
                rows[row][i] = (rows[row - 1][i] >> 8) ^ rows[0][rows[row - 1][i] & 0xFF];
    }
};
inline constexpr CRC_TABLES crc_tables;

/// The CRC-32 of PNG, zlib and Ethernet.
inline std::uint32_t crc_32(std::span<std::byte const> bytes) {
    auto const& rows = crc_tables.rows;
    std::uint32_t crc = 0xFFFFFFFF;
    std::byte const* at = bytes.data();
    std::size_t left = bytes.size();
    for (; left >= 8; left -= 8, at += 8) {
        std::uint32_t const low = crc ^ read<std::uint32_t>(at);
        std::uint32_t const high = read<std::uint32_t>(at + 4);
        crc = rows[7][low & 0xFF] ^ rows[6][(low >> 8) & 0xFF] ^ rows[5][(low >> 16) & 0xFF] ^ rows[4][low >> 24] ^
              rows[3][high & 0xFF] ^ rows[2][(high >> 8) & 0xFF] ^ rows[1][(high >> 16) & 0xFF] ^ rows[0][high >> 24];
    }
    for (; left > 0; --left, ++at)
        crc = (crc >> 8) ^ rows[0][(crc ^ std::to_integer<std::uint32_t>(*at)) & 0xFF];
    return ~crc;
}

}  // namespace image_info_db_layout

/// One image as the database has it. Texel and image formats are the image loader's numbers.
struct IMAGE_INFO_RECORD {
    std::string_view name;  ///< in the database's bytes; a byte 0 follows
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t texel_format = 0;
    std::uint32_t image_format = 0;
    std::uint32_t number_of_mips = 0;
    std::uint32_t user_number = 0;
    std::uint32_t first_surface = 0;
};

struct IMAGE_SURFACE_RECORD {
    std::uint64_t offset = 0;  ///< from the first texel of the image
    std::uint64_t bytes = 0;
    std::uint64_t row_pitch = 0;
};

class IMAGE_INFO_DB_READER {
public:
    /// Takes the bytes of a whole file, which must stay as they are for as long as the reader is used. Null when they
    /// are sound in every part; otherwise a text that says what is wrong, and the reader is empty.
    char const* open(std::span<std::byte const> file) {
        *this = {};
        char const* const cause = check(file);
        if (cause != nullptr)
            *this = {};
        return cause;
    }

    std::uint32_t size() const { return image_count_; }

    /// The image at a place below `size()`, in the order of names.
    IMAGE_INFO_RECORD image(std::uint32_t place) const {
        std::byte const* const at = images_ + image_info_db_layout::image_bytes * place;
        auto const number = [at](std::size_t index) {
            return image_info_db_layout::read<std::uint32_t>(at + 4 * index);
        };
        return {name(place), number(2), number(3), number(4), number(5), number(6), number(8), number(7)};
    }

    /// A mip level below the image's `number_of_mips`.
    IMAGE_SURFACE_RECORD surface(IMAGE_INFO_RECORD const& image, std::uint32_t level) const {
        using image_info_db_layout::read;
        std::byte const* const at =
            surfaces_ + image_info_db_layout::surface_bytes * (std::size_t{image.first_surface} + level);
        return {read<std::uint64_t>(at), read<std::uint64_t>(at + 8), read<std::uint64_t>(at + 16)};
    }

    std::optional<IMAGE_INFO_RECORD> find(std::string_view wanted) const {
        std::uint32_t first = 0;
        std::uint32_t end = image_count_;
        while (first < end) {
            std::uint32_t const middle = first + (end - first) / 2;
            int const order = name(middle).compare(wanted);
            if (order == 0)
                return image(middle);
            if (order < 0)
                first = middle + 1;
            else
                end = middle;
        }
        return std::nullopt;
    }

private:
    std::string_view name(std::uint32_t place) const {
        std::byte const* const at = images_ + image_info_db_layout::image_bytes * place;
        return {names_ + image_info_db_layout::read<std::uint32_t>(at),
                image_info_db_layout::read<std::uint32_t>(at + 4)};
    }

    char const* check(std::span<std::byte const> file) {
        namespace layout = image_info_db_layout;
        using layout::read;
        if (file.size() < layout::magic.size() ||
            std::memcmp(file.data(), layout::magic.data(), layout::magic.size()) != 0)
            return "this is no image-information database";
        if (file.size() < layout::header_bytes)
            return "the file ends within its header";
        if (read<std::uint32_t>(file.data() + 8) != layout::version)
            return "the database is of another version";
        if (read<std::uint64_t>(file.data() + 16) != file.size())
            return "the file has another size than its header says";
        if (read<std::uint32_t>(file.data() + layout::checksum_offset) !=
            layout::crc_32(file.subspan(layout::checked_from)))
            return "the checksum is wrong";

        // A sum that is right says nothing about who made it: all that is followed later is held against the file now.
        std::uint64_t const image_count = read<std::uint32_t>(file.data() + 24);
        std::uint64_t const surface_count = read<std::uint32_t>(file.data() + 28);
        std::uint64_t const name_bytes = read<std::uint64_t>(file.data() + 32);
        std::uint64_t const names_at =
            layout::header_bytes + layout::image_bytes * image_count + layout::surface_bytes * surface_count;
        if (names_at > file.size() || file.size() - names_at != name_bytes)
            return "the parts do not make up the file";
        images_ = file.data() + layout::header_bytes;
        surfaces_ = images_ + layout::image_bytes * image_count;
        names_ = reinterpret_cast<char const*>(file.data() + names_at);
        for (std::uint32_t i = 0; i < image_count; ++i) {
            std::byte const* const at = images_ + layout::image_bytes * i;
            std::uint64_t const name_end = std::uint64_t{read<std::uint32_t>(at)} + read<std::uint32_t>(at + 4);
            if (name_end >= name_bytes || names_[name_end] != '\0')
                return "a name lies outside of the names";
            if (read<std::uint32_t>(at + 4) > layout::most_name_bytes)
                return "a name is longer than any path";
            if (read<std::uint32_t>(at + 24) > layout::most_mips)
                return "an image has more mips than there are sizes";
            if (std::uint64_t{read<std::uint32_t>(at + 28)} + read<std::uint32_t>(at + 24) > surface_count)
                return "an image has surfaces outside of the surfaces";
            if (i > 0 && !(name(i - 1) < name(i)))
                return "the names are not sorted";
        }
        image_count_ = static_cast<std::uint32_t>(image_count);
        return nullptr;
    }

    std::byte const* images_ = nullptr;
    std::byte const* surfaces_ = nullptr;
    char const* names_ = nullptr;
    std::uint32_t image_count_ = 0;
};

}  // namespace IMAGE_LOADER
