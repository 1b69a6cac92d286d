// Coded bytes are brought in row by row, run-length coded or not, each row is widened to 32 bits, and put where the
// header's origin says. Only one coded row is in memory beside the image; run-length coded bytes are read whole, since
// their length is known only once they are read.
#include "platform/qe/read_pixels.hpp"

#include "platform/checked_size.hpp"
#include "platform/dds_container/dds_container.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <vector>

namespace QE {

namespace {

using TEXEL = std::array<std::uint8_t, 4>;

std::uint8_t widen_5_bits(std::uint32_t value) {
    value &= 31;
    return static_cast<std::uint8_t>(value << 3 | value >> 2);
}

/// One texel of 15 to 32 bits; `bits` says which.
TEXEL true_colour_texel(std::uint8_t const* coded, std::uint32_t bits, bool top_bit_is_alpha) {
    if (bits <= 16) {
        std::uint32_t const value = static_cast<std::uint32_t>(coded[0] | coded[1] << 8);
        bool const opaque = !top_bit_is_alpha || bits == 15 || (value & 0x8000) != 0;
        return {widen_5_bits(value), widen_5_bits(value >> 5), widen_5_bits(value >> 10),
                static_cast<std::uint8_t>(opaque ? 255 : 0)};
    }
    return {coded[0], coded[1], coded[2], bits == 32 ? coded[3] : std::uint8_t{255}};
}

/// Hands out rows of coded texels from run-length packets. A packet may run on into the next row, as older writers let
/// it; the last one may announce more texels than the image has.
class RUN_LENGTH_ROWS {
public:
    RUN_LENGTH_ROWS(std::vector<std::uint8_t> bytes, std::size_t texel_bytes)
        : bytes_(std::move(bytes)),
          texel_bytes_(texel_bytes) {}

    /// False when the bytes end before the row does.
    bool next(std::span<std::uint8_t> row) {
        while (!row.empty()) {
            if (left_in_packet_ == 0) {
                if (at_ == bytes_.size()) {
                    return false;
                }
                std::uint8_t const head = bytes_[at_++];
                left_in_packet_ = (head & 0x7fu) + 1;
                packet_repeats_ = (head & 0x80u) != 0;
            }
            std::size_t const texels = std::min(left_in_packet_, row.size() / texel_bytes_);
            std::size_t const needed = packet_repeats_ ? texel_bytes_ : texels * texel_bytes_;
            if (needed > bytes_.size() - at_) {
                return false;
            }
            if (packet_repeats_) {
                for (std::size_t i = 0; i < texels; ++i) {
                    std::memcpy(row.data() + i * texel_bytes_, bytes_.data() + at_, texel_bytes_);
                }
            } else {
                std::memcpy(row.data(), bytes_.data() + at_, needed);
            }
            left_in_packet_ -= texels;
            // The repeated texel is used up only with its packet.
            if (!packet_repeats_ || left_in_packet_ == 0) {
                at_ += needed;
            }
            row = row.subspan(texels * texel_bytes_);
        }
        return true;
    }

private:
    std::vector<std::uint8_t> bytes_;
    std::size_t texel_bytes_;
    std::size_t at_ = 0;
    std::size_t left_in_packet_ = 0;
    bool packet_repeats_ = false;
};

/// Widens rows of one file's coding to 32 bits.
class ROW_WIDENER {
public:
    ROW_WIDENER(TGAHeader const& header, std::vector<TEXEL> map)
        : format_(header.format()),
          bits_(header.bits_per_texel()),
          top_bit_is_alpha_(header.attribute_bits() != 0),
          first_entry_(header.first_map_entry()),
          map_(std::move(map)) {}

    /// False when an index lies outside the map; `bad_index` then holds it.
    bool widen(std::uint8_t const* coded, std::span<std::uint8_t> row, std::uint32_t& bad_index) const {
        if (format_ == TGA_PIXEL_FORMAT::true_colour_24) {
            widen_24_bits(coded, row);
            return true;
        }
        std::size_t const coded_bytes = (bits_ + 7) / 8;
        for (std::size_t x = 0; x < row.size() / 4; ++x, coded += coded_bytes) {
            TEXEL texel;
            switch (format_) {
            case TGA_PIXEL_FORMAT::grey_8:
                texel = {coded[0], coded[0], coded[0], 255};
                break;
            case TGA_PIXEL_FORMAT::grey_alpha_16:
                texel = {coded[0], coded[0], coded[0], coded[1]};
                break;
            case TGA_PIXEL_FORMAT::colour_map_8:
            case TGA_PIXEL_FORMAT::colour_map_16: {
                std::uint32_t const index =
                    coded_bytes == 1 ? coded[0] : static_cast<std::uint32_t>(coded[0] | coded[1] << 8);
                if (index < first_entry_ || index - first_entry_ >= map_.size()) {
                    bad_index = index;
                    return false;
                }
                texel = map_[index - first_entry_];
                break;
            }
            default:
                texel = true_colour_texel(coded, bits_, top_bit_is_alpha_);
                break;
            }
            std::memcpy(row.data() + 4 * x, texel.data(), 4);
        }
        return true;
    }

private:
    static void widen_24_bits(std::uint8_t const* coded, std::span<std::uint8_t> row) {
        if (row.empty()) {
            return;
        }
        // Four bytes at a time, the fourth being the next texel's; only the last texel has no next one.
        TEXEL texel;
        std::size_t const last = row.size() - 4;
        for (std::size_t at = 0; at < last; at += 4, coded += 3) {
            std::memcpy(texel.data(), coded, 4);
            texel[3] = 255;
            std::memcpy(row.data() + at, texel.data(), 4);
        }
        std::memcpy(row.data() + last, coded, 3);
        row[last + 3] = 255;
    }

    TGA_PIXEL_FORMAT format_;
    std::uint32_t bits_;
    bool top_bit_is_alpha_;
    std::uint32_t first_entry_;
    std::vector<TEXEL> map_;
};

void mirror_row(std::span<std::uint8_t> row) {
    if (row.empty()) {
        return;
    }
    for (std::size_t left = 0, right = row.size() - 4; left < right; left += 4, right -= 4) {
        std::swap_ranges(row.begin() + static_cast<std::ptrdiff_t>(left),
                         row.begin() + static_cast<std::ptrdiff_t>(left) + 4,
                         row.begin() + static_cast<std::ptrdiff_t>(right));
    }
}

std::optional<std::vector<TEXEL>> read_map(FileIn& file, TGAHeader const& header, std::string& cause) {
    std::size_t const entry_bytes = (header.bits_per_map_entry() + 7) / 8;
    std::vector<std::uint8_t> coded(header.map_entry_count() * entry_bytes);
    if (!file.read(coded)) {
        cause = "the colour map of " + std::to_string(coded.size()) + " bytes is cut short";
        return std::nullopt;
    }
    std::vector<TEXEL> map(header.map_entry_count());
    for (std::size_t i = 0; i < map.size(); ++i) {
        map[i] = true_colour_texel(coded.data() + i * entry_bytes, header.bits_per_map_entry(),
                                   header.attribute_bits() != 0);
    }
    return map;
}

std::optional<IMAGE32> read_checked(FileIn& file, TGAHeader const& header, std::string& cause) {
    if (header.format() == TGA_PIXEL_FORMAT::unsupported) {
        cause = header.cause().empty() ? "no TGA header was read" : header.cause();
        return std::nullopt;
    }
    if (!file.seek(file.position() + header.id_length())) {
        cause = "the file ends within the image id";
        return std::nullopt;
    }
    std::optional<std::vector<TEXEL>> map = read_map(file, header, cause);
    if (!map) {
        return std::nullopt;
    }

    std::uint64_t const texels = checked_size::saturating_product(header.width(), header.height());
    std::uint64_t const texel_bytes = (header.bits_per_texel() + 7) / 8;
    std::string const announced = "the header announces " + std::to_string(header.width()) + " x " +
                                  std::to_string(header.height()) + " texels of " +
                                  std::to_string(header.bits_per_texel()) + " bits (" +
                                  std::to_string(texels * texel_bytes) + " bytes)";
    std::string const follow = ", but only " + std::to_string(file.remaining()) + " bytes follow";
    // The tightest run-length coding is nothing but packets of 128 equal texels.
    std::uint64_t const least =
        header.is_run_length_coded() ? (texels + 127) / 128 * (1 + texel_bytes) : texels * texel_bytes;
    if (least > file.remaining()) {
        cause =
            announced +
            (header.is_run_length_coded() ? ", which take at least " + std::to_string(least) + " bytes run-length coded"
                                          : "") +
            follow;
        return std::nullopt;
    }
    if (texels > dds_container::most_texels_per_surface) {
        cause = announced + ", more than the " + std::to_string(dds_container::most_texels_per_surface) +
                " texels that an image may have";
        return std::nullopt;
    }

    std::vector<std::uint8_t> packets;
    if (header.is_run_length_coded()) {
        packets.resize(std::min(file.remaining(), texels * (1 + texel_bytes)));
        if (!file.read(packets)) {
            cause = "the texels cannot be read from the file";
            return std::nullopt;
        }
    }
    RUN_LENGTH_ROWS runs(std::move(packets), texel_bytes);
    ROW_WIDENER const widener(header, std::move(*map));
    IMAGE32 image(header.width(), header.height());
    std::vector<std::uint8_t> coded(header.width() * texel_bytes);
    // Texels of 32 bits are coded as they are kept: they go where they belong at once.
    bool const is_wide = header.format() == TGA_PIXEL_FORMAT::true_colour_32;
    for (std::uint32_t i = 0; i < header.height(); ++i) {
        std::uint32_t const y = header.is_top_down() ? i : header.height() - 1 - i;
        std::span<std::uint8_t> const row =
            std::span(image.pixels).subspan(std::size_t{4} * y * header.width(), std::size_t{4} * header.width());
        std::span<std::uint8_t> const read = is_wide ? row : std::span(coded);
        if (!(header.is_run_length_coded() ? runs.next(read) : file.read(read))) {
            cause = announced + ", but its texels end in row " + std::to_string(i);
            return std::nullopt;
        }
        std::uint32_t bad_index = 0;
        if (!is_wide && !widener.widen(coded.data(), row, bad_index)) {
            cause = "a texel names entry " + std::to_string(bad_index) + " of the colour map, which has the entries " +
                    std::to_string(header.first_map_entry()) + " to " +
                    std::to_string(header.first_map_entry() + header.map_entry_count() - 1);
            return std::nullopt;
        }
        if (header.is_right_to_left()) {
            mirror_row(row);
        }
    }
    return image;
}

}  // namespace

std::optional<IMAGE32> read_pixels(FileIn& file, TGAHeader const& header, std::string& cause) {
    std::uint64_t const start = file.position();
    std::optional<IMAGE32> image;
    try {
        image = read_checked(file, header, cause);
    } catch (std::bad_alloc const&) {
        cause = "there is not enough memory for " + std::to_string(header.width()) + " x " +
                std::to_string(header.height()) + " texels";
    }
    if (!image) {
        file.seek(start);
    }
    return image;
}

}  // namespace QE
