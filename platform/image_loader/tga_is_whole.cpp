#include "platform/image_loader/tga_is_whole.hpp"

#include "platform/checked_size.hpp"
#include "platform/qe/tga_header.hpp"

namespace IMAGE_LOADER {

bool tga_is_whole(std::span<std::uint8_t const> file) {
    constexpr std::uint8_t run_length = 8;
    if (file.size() < QE::TGAHeader::byte_count) {
        return false;
    }
    auto const word = [&](std::size_t at) {
        return static_cast<std::uint64_t>(file[at] | file[at + 1] << 8);
    };
    std::uint64_t const map_bytes = file[1] != 0 ? word(5) * ((file[7] + 7u) / 8) : 0;
    std::uint64_t const texel_bytes = (file[16] + 7u) / 8;
    std::uint64_t texels = word(12) * word(14);
    std::uint64_t at = QE::TGAHeader::byte_count + file[0] + map_bytes;
    if (at > file.size()) {
        return false;
    }
    if ((file[2] & run_length) == 0) {
        return checked_size::saturating_product(texels, texel_bytes) <= file.size() - at;
    }
    while (texels > 0 && at < file.size()) {
        std::uint64_t const in_run = (file[at] & 0x7fu) + 1;
        std::uint64_t const bytes = 1 + ((file[at] & 0x80) != 0 ? 1 : in_run) * texel_bytes;
        if (in_run > texels || bytes > file.size() - at) {
            return false;
        }
        texels -= in_run;
        at += bytes;
    }
    return texels == 0;
}

}  // namespace IMAGE_LOADER
