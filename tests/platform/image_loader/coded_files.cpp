#include "tests/platform/image_loader/coded_files.hpp"

#include <string_view>

namespace platform_test {

namespace {

void put_big(BYTES& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

std::uint32_t crc_32(std::uint8_t const* bytes, std::size_t count) {
    std::uint32_t crc = 0xffffffff;
    for (std::size_t i = 0; i < count; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc >> 1 ^ (crc & 1 ? 0xedb88320 : 0);
        }
    }
    return ~crc;
}

void put_chunk(BYTES& png, std::string_view name, BYTES const& content) {
    put_big(png, static_cast<std::uint32_t>(content.size()));
    std::size_t const start = png.size();
    png.insert(png.end(), name.begin(), name.end());
    png.insert(png.end(), content.begin(), content.end());
    put_big(png, crc_32(png.data() + start, png.size() - start));
}

/// A zlib stream of one stored block.
BYTES stored(BYTES const& content) {
    std::uint32_t const size = static_cast<std::uint32_t>(content.size());
    BYTES stream = {0x78, 0x01, 0x01};
    for (std::uint32_t const half : {size, ~size}) {
        stream.push_back(static_cast<std::uint8_t>(half));
        stream.push_back(static_cast<std::uint8_t>(half >> 8));
    }
    stream.insert(stream.end(), content.begin(), content.end());
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (std::uint8_t const byte : content) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    put_big(stream, b << 16 | a);
    return stream;
}

}  // namespace

BYTES make_png(PNG_FILE const& png) {
    BYTES file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    BYTES header;
    put_big(header, png.width);
    put_big(header, png.height);
    header.insert(header.end(), {png.bits, png.colour_type, 0, 0, 0});
    put_chunk(file, "IHDR", header);
    if (png.with_gamma_1) {
        put_chunk(file, "gAMA", {0x00, 0x01, 0x86, 0xa0});
    }
    if (!png.palette.empty()) {
        put_chunk(file, "PLTE", png.palette);
    }
    if (!png.transparency.empty()) {
        put_chunk(file, "tRNS", png.transparency);
    }
    put_chunk(file, "IDAT", stored(png.rows));
    put_chunk(file, "IEND", {});
    return file;
}

BYTES make_tif(TIF_FILE const& tif) {
    BYTES file = {'I', 'I', 42, 0};
    auto const put = [&](std::uint64_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) {
            file.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    };
    constexpr std::uint32_t type_short = 3;
    constexpr std::uint32_t type_long = 4;
    int const word = tif.is_64 ? 8 : 4;
    if (tif.is_64) {
        file[2] = 43;
        put(8, 4);
    }
    put(2u * static_cast<unsigned>(word), word);
    std::uint32_t const entries = 9u + (tif.has_alpha ? 1 : 0) + (tif.tells_channels ? 1 : 0);
    std::uint32_t const behind_directory = tif.is_64 ? 16 + 8 + entries * 20 + 8 : 8 + 2 + entries * 12 + 4;
    std::uint32_t const texels_at = behind_directory + 2 * 2 * tif.channels;
    auto const entry = [&](std::uint32_t tag, std::uint32_t type, std::uint32_t count, std::uint64_t value) {
        put(tag, 2);
        put(type, 2);
        put(count, word);
        put(value, word);
    };
    // Short lists of shorts stand in the entry itself, one after the other.
    auto const per_channel = [&](std::uint32_t tag, std::uint64_t value, std::uint32_t at) {
        std::uint64_t const all = value | value << 16 | value << 32 | value << 48;
        entry(tag, type_short, tif.channels, 2 * tif.channels > word ? at : all >> (64 - 16 * tif.channels));
    };
    put(entries, tif.is_64 ? 8 : 2);
    entry(256, type_long, 1, tif.width);
    entry(257, type_long, 1, tif.height);
    per_channel(258, tif.bits, behind_directory);
    entry(259, type_short, 1, tif.compression);
    entry(262, type_short, 1, tif.photometric);
    entry(273, type_long, 1, texels_at);
    if (tif.tells_channels) {
        entry(277, type_short, 1, tif.channels);
    }
    entry(278, type_long, 1, tif.height);
    entry(279, type_long, 1, tif.texels.size());
    if (tif.has_alpha) {
        entry(338, type_short, 1, 2);
    }
    per_channel(339, tif.sample_format, behind_directory + 2u * tif.channels);
    put(0, word);
    for (std::uint32_t const value : {tif.bits, tif.sample_format}) {
        for (int i = 0; i < tif.channels; ++i) {
            put(value, 2);
        }
    }
    file.insert(file.end(), tif.texels.begin(), tif.texels.end());
    return file;
}

}  // namespace platform_test
