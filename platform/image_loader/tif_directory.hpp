// The directory of a TIF file's first picture: what its fields say, and a copy of the file in which some say something
// else. Both kinds of TIF are read, the classic one and the one with offsets of 64 bits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace IMAGE_LOADER {

/// The fields that are looked at, by their numbers in the format.
enum class TIF_TAG : std::uint16_t {
    width = 256,
    height = 257,
    bits_per_sample = 258,
    compression = 259,
    photometric = 262,
    strip_offsets = 273,
    samples_per_texel = 277,
    rows_per_strip = 278,
    strip_bytes = 279,
    planes = 284,
    predictor = 317,
    colour_map = 320,
    tile_width = 322,
    tile_offsets = 324,
    tile_bytes = 325,
    extra_samples = 338,
    sample_format = 339,
};

class TIF_DIRECTORY {
public:
    /// Bytes that are no TIF file, or whose directory lies behind their end, give a directory without fields.
    explicit TIF_DIRECTORY(std::span<std::uint8_t const> file);

    struct FIELD {
        std::uint64_t type = 0;
        std::uint64_t count = 0;  ///< as announced
        std::uint64_t at = 0;     ///< of the first number
    };
    std::optional<FIELD> find(TIF_TAG tag) const;
    /// One number of a field; nothing behind its last or the end of the file, and for a type of other things than
    /// unsigned whole numbers.
    std::optional<std::uint64_t> number(FIELD const& field, std::uint64_t index) const;
    /// The first number of a field, as far as 32 bits hold it.
    std::uint32_t number(TIF_TAG tag, std::uint32_t without_field) const;

    struct CHANGE {
        TIF_TAG tag;
        std::optional<std::uint32_t> number;  ///< the field's one number; nothing takes the field away
    };
    /// The file with another first directory, which stands behind its last byte.
    std::vector<std::uint8_t> file_with(std::span<CHANGE const> changes) const;

private:
    std::size_t entry_bytes() const { return is_64_ ? 20 : 12; }
    /// Of the entry at this place.
    FIELD field_of(std::size_t entry) const;
    std::optional<std::uint64_t> read(std::uint64_t at, std::size_t bytes) const;
    void write(std::vector<std::uint8_t>& out, std::size_t at, std::uint64_t value, std::size_t bytes) const;

    std::span<std::uint8_t const> file_;
    bool is_big_endian_ = false;
    bool is_64_ = false;
    std::size_t entries_at_ = 0;
    std::size_t entry_count_ = 0;
};

}  // namespace IMAGE_LOADER
