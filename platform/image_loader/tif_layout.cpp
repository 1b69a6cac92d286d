#include "platform/image_loader/tif_layout.hpp"

namespace IMAGE_LOADER {

namespace {

constexpr std::uint32_t bits_per_sample_tag = 258;
constexpr std::uint32_t compression_tag = 259;
constexpr std::uint32_t samples_per_texel_tag = 277;
constexpr std::size_t entry_bytes = 12;

class READER {
public:
    explicit READER(std::span<std::uint8_t const> file) : file_(file), is_big_(!file.empty() && file[0] == 'M') {}

    /// An unsigned number of 2 or 4 bytes; 0 behind the end of the file.
    std::uint32_t number(std::size_t at, std::size_t bytes) const {
        if (at > file_.size() || bytes > file_.size() - at) {
            return 0;
        }
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i) {
            value = value << 8 | file_[is_big_ ? at + i : at + bytes - 1 - i];
        }
        return value;
    }

private:
    std::span<std::uint8_t const> file_;
    bool is_big_;
};

}  // namespace

TIF_LAYOUT read_tif_layout(std::span<std::uint8_t const> file) {
    READER const reader(file);
    TIF_LAYOUT layout;
    std::size_t const directory = reader.number(4, 4);
    std::uint32_t const entries = reader.number(directory, 2);
    for (std::size_t i = 0; i < entries; ++i) {
        std::size_t const entry = directory + 2 + i * entry_bytes;
        std::uint32_t const tag = reader.number(entry, 2);
        if (tag == samples_per_texel_tag) {
            layout.samples_per_texel = reader.number(entry + 8, 2);
        } else if (tag == compression_tag) {
            layout.compression = reader.number(entry + 8, 2);
        } else if (tag == bits_per_sample_tag) {
            // One number a sample; up to two stand in the entry, more stand where it points.
            std::size_t const at = reader.number(entry + 4, 4) > 2 ? reader.number(entry + 8, 4) : entry + 8;
            layout.bits_per_sample = reader.number(at, 2);
        }
    }
    return layout;
}

}  // namespace IMAGE_LOADER
