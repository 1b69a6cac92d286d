#include "platform/image_loader/convert.hpp"

#include "blocks/decode.hpp"
#include "blocks/half_float.hpp"
#include "platform/image_loader/exchange_red_and_blue.hpp"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <new>

namespace IMAGE_LOADER {

namespace {

using checked_size::saturating_product;
using checked_size::saturating_sum;

using TEXEL = std::array<std::uint8_t, 4>;

std::uint32_t word_16(std::uint8_t const* bytes) {
    return static_cast<std::uint32_t>(bytes[0] | bytes[1] << 8);
}

std::uint32_t word_32(std::uint8_t const* bytes) {
    return word_16(bytes) | word_16(bytes + 2) << 16;
}

std::uint8_t unit_to_byte(float value) {
    // The comparison is false for NaN, which becomes 0.
    return value > 0.0f ? static_cast<std::uint8_t>(std::fmin(value, 1.0f) * 255.0f + 0.5f) : std::uint8_t{0};
}

/// The channel that a mask cuts out of a texel, widened or narrowed to eight bits and rounded.
class MASKED_CHANNEL {
public:
    MASKED_CHANNEL(std::uint32_t mask, std::uint8_t without)
        : mask_(mask),
          shift_(mask != 0 ? std::countr_zero(mask) : 0),
          most_(mask >> shift_),
          without_(without) {}

    std::uint8_t operator()(std::uint32_t texel) const {
        if (mask_ == 0) {
            return without_;
        }
        std::uint64_t const value = (texel & mask_) >> shift_;
        return static_cast<std::uint8_t>((value * 255 + most_ / 2) / most_);
    }

private:
    std::uint32_t mask_;
    int shift_;
    std::uint32_t most_;
    std::uint8_t without_;
};

/// Calls `texel_at` with the bytes of each texel and stores what it gives.
template <typename TEXEL_AT>
void for_each_texel(std::uint8_t const* bytes, std::uint64_t row_pitch, std::uint32_t bytes_per_texel,
                    std::uint32_t width, std::uint32_t height, std::uint8_t* rgba, TEXEL_AT texel_at) {
    for (std::uint32_t y = 0; y < height; ++y) {
        std::uint8_t const* coded = bytes + y * row_pitch;
        for (std::uint32_t x = 0; x < width; ++x, coded += bytes_per_texel, rgba += 4) {
            TEXEL const texel = texel_at(coded);
            std::memcpy(rgba, texel.data(), 4);
        }
    }
}

/// A texel whose channels all have one width; `channel` gives the n-th.
template <typename CHANNEL>
TEXEL texel_of(std::uint32_t channels, CHANNEL channel) {
    TEXEL texel = {0, 0, 0, 255};
    for (std::uint32_t i = 0; i < channels; ++i) {
        texel[i] = channel(i);
    }
    return texel;
}

/// An unsigned float of five bits of exponent, the layout of the 11 and 10 bit channels: a half without its sign.
std::uint8_t small_float_to_byte(std::uint32_t bits, int mantissa_bits) {
    return unit_to_byte(blocks::half_to_float(static_cast<std::uint16_t>(bits << (10 - mantissa_bits))));
}

void decode_numbers(TEXEL_FORMAT_INFO const& format, std::uint8_t const* bytes, std::uint64_t row_pitch,
                    std::uint32_t width, std::uint32_t height, std::uint8_t* rgba) {
    std::uint32_t const channels = format.channels;
    auto const each = [&](auto texel_at) {
        for_each_texel(bytes, row_pitch, format.bytes_per_texel, width, height, rgba, texel_at);
    };
    auto const each_channel = [&](auto channel_at) {
        each([&](std::uint8_t const* coded) {
            return texel_of(channels, [&](std::uint32_t i) { return channel_at(coded, i); });
        });
    };
    // The lowest two's complement number stands for -1 like the one above it.
    auto const signed_to_byte = [](int value, int most) {
        int const clamped = value < -most ? -most : value;
        return static_cast<std::uint8_t>(((clamped + most) * 255 + most) / (2 * most));
    };
    switch (format.kind) {
    case TEXEL_KIND::masks: {
        bool const is_luminance = format.masks.is_luminance;
        MASKED_CHANNEL const red(format.masks.red, 0);
        MASKED_CHANNEL const green(is_luminance ? format.masks.red : format.masks.green, 0);
        MASKED_CHANNEL const blue(is_luminance ? format.masks.red : format.masks.blue, 0);
        MASKED_CHANNEL const alpha(format.masks.alpha, 255);
        std::uint32_t const texel_bytes = format.bytes_per_texel;
        each([&](std::uint8_t const* coded) {
            std::uint32_t texel = 0;
            for (std::uint32_t i = 0; i < texel_bytes; ++i) {
                texel |= static_cast<std::uint32_t>(coded[i]) << (8 * i);
            }
            return TEXEL{red(texel), green(texel), blue(texel), alpha(texel)};
        });
        break;
    }
    case TEXEL_KIND::signed_8:
        each_channel([&](std::uint8_t const* coded, std::uint32_t i) {
            return signed_to_byte(static_cast<std::int8_t>(coded[i]), 127);
        });
        break;
    case TEXEL_KIND::signed_16:
        each_channel([&](std::uint8_t const* coded, std::uint32_t i) {
            return signed_to_byte(static_cast<std::int16_t>(word_16(coded + 2 * i)), 32767);
        });
        break;
    case TEXEL_KIND::unsigned_16:
        each_channel([&](std::uint8_t const* coded, std::uint32_t i) {
            return static_cast<std::uint8_t>((word_16(coded + 2 * i) * 255 + 32767) / 65535);
        });
        break;
    case TEXEL_KIND::half:
        each_channel([&](std::uint8_t const* coded, std::uint32_t i) {
            return unit_to_byte(blocks::half_to_float(static_cast<std::uint16_t>(word_16(coded + 2 * i))));
        });
        break;
    case TEXEL_KIND::single:
        each_channel([&](std::uint8_t const* coded, std::uint32_t i) {
            return unit_to_byte(std::bit_cast<float>(word_32(coded + 4 * i)));
        });
        break;
    case TEXEL_KIND::small_float:
        each([&](std::uint8_t const* coded) {
            std::uint32_t const texel = word_32(coded);
            return TEXEL{small_float_to_byte(texel & 0x7ff, 6), small_float_to_byte(texel >> 11 & 0x7ff, 6),
                         small_float_to_byte(texel >> 22, 5), 255};
        });
        break;
    case TEXEL_KIND::shared_exponent:
        each([&](std::uint8_t const* coded) {
            std::uint32_t const texel = word_32(coded);
            // Nine bits of fraction below a bias of 15.
            int const exponent = static_cast<int>(texel >> 27) - 24;
            return texel_of(3, [&](std::uint32_t i) {
                return unit_to_byte(std::ldexp(static_cast<float>(texel >> (9 * i) & 0x1ff), exponent));
            });
        });
        break;
    default:
        break;
    }
}

bool decode_blocks(TEXEL_FORMAT_INFO const& format, std::span<std::uint8_t const> bytes, std::uint64_t row_pitch,
                   std::uint32_t width, std::uint32_t height, std::span<std::uint8_t> rgba) {
    std::uint64_t const tight_pitch = tight_row_pitch(format.format, width);
    if (row_pitch == tight_pitch) {
        return blocks::decode_image_rgba8(format.block, bytes, width, height, rgba);
    }
    IMAGE_BYTES tight(checked_size::memory_size(level_bytes(format.format, width, height)));
    for (std::uint32_t row = 0; row < surface_rows(format.format, height); ++row) {
        std::memcpy(tight.data() + row * tight_pitch, bytes.data() + row * row_pitch, tight_pitch);
    }
    return blocks::decode_image_rgba8(format.block, tight, width, height, rgba);
}

bool is_four_byte_format(TEXTURE_TEXEL_FORMAT format) {
    return format == TTF_R8G8B8A8 || format == TTF_B8G8R8A8 || format == TTF_R8G8B8A8_SRGB ||
           format == TTF_B8G8R8A8_SRGB;
}

bool is_blue_first(TEXTURE_TEXEL_FORMAT format) {
    return format == TTF_B8G8R8A8 || format == TTF_B8G8R8A8_SRGB;
}

void copy_row(std::uint8_t const* from, std::uint8_t* to, std::uint32_t width, bool swap_red_and_blue) {
    if (!swap_red_and_blue) {
        std::memcpy(to, from, std::size_t{4} * width);
        return;
    }
    exchange_red_and_blue(from, to, width);
}

bool convert_checked(IMAGE const& source, std::uint32_t source_level, IMAGE& destination,
                     std::uint32_t destination_level, std::string& cause) {
    std::span<std::uint8_t const> const from = source.level(source_level);
    std::span<std::uint8_t> const to = destination.level(destination_level);
    if (from.empty() || to.empty()) {
        cause = from.empty() ? "the source has no such level" : "the destination has no such level";
        return false;
    }
    std::uint32_t const width = source.level_width(source_level);
    std::uint32_t const height = source.level_height(source_level);
    if (destination.level_width(destination_level) != width || destination.level_height(destination_level) != height) {
        cause = "the levels differ in size";
        return false;
    }
    if (!is_four_byte_format(destination.texel_format())) {
        cause = "texels are converted to eight bits in four channels only";
        return false;
    }
    std::uint64_t const from_pitch = source.get_image_info().surfaces[source_level].row_pitch;
    std::uint64_t const to_pitch = destination.get_image_info().surfaces[destination_level].row_pitch;
    bool const to_blue_first = is_blue_first(destination.texel_format());
    if (is_four_byte_format(source.texel_format())) {
        bool const swap = is_blue_first(source.texel_format()) != to_blue_first;
        for (std::uint32_t y = 0; y < height; ++y) {
            copy_row(from.data() + y * from_pitch, to.data() + y * to_pitch, width, swap);
        }
        return true;
    }
    std::uint64_t const tight_pitch = std::uint64_t{4} * width;
    TEXEL_FORMAT_INFO const& format = texel_format_info(source.texel_format());
    if (to_pitch == tight_pitch) {
        if (!decode_surface(format, from, from_pitch, width, height, to, cause)) {
            return false;
        }
        for (std::uint32_t y = 0; y < height && to_blue_first; ++y) {
            copy_row(to.data() + y * to_pitch, to.data() + y * to_pitch, width, true);
        }
        return true;
    }
    IMAGE_BYTES rgba(checked_size::memory_size(tight_pitch, height));
    if (!decode_surface(format, from, from_pitch, width, height, rgba, cause)) {
        return false;
    }
    for (std::uint32_t y = 0; y < height; ++y) {
        copy_row(rgba.data() + y * tight_pitch, to.data() + y * to_pitch, width, to_blue_first);
    }
    return true;
}

}  // namespace

bool decode_surface(TEXEL_FORMAT_INFO const& format, std::span<std::uint8_t const> bytes, std::uint64_t row_pitch,
                    std::uint32_t width, std::uint32_t height, std::span<std::uint8_t> rgba, std::string& cause) {
    bool const is_block_format = format.kind == TEXEL_KIND::block;
    std::uint64_t const tight_pitch =
        is_block_format ? tight_row_pitch(format.format, width) : std::uint64_t{width} * format.bytes_per_texel;
    std::uint64_t const rows = is_block_format ? blocks::blocks_across(height) : height;
    if (format.kind == TEXEL_KIND::none || width == 0 || height == 0 || row_pitch < tight_pitch ||
        bytes.size() < saturating_sum(saturating_product(rows - 1, row_pitch), tight_pitch) ||
        rgba.size() < saturating_product(4u, width, height)) {
        cause = "the texels of the format " + std::string(format.name) + " do not fill the surface";
        return false;
    }
    if (is_block_format) {
        if (!decode_blocks(format, bytes, row_pitch, width, height, rgba)) {
            cause = "blocks of the format " + std::string(format.name) + " cannot be decoded";
            return false;
        }
        return true;
    }
    decode_numbers(format, bytes.data(), row_pitch, width, height, rgba.data());
    return true;
}

bool convert(IMAGE const& source, std::uint32_t source_level, IMAGE& destination, std::uint32_t destination_level,
             std::string& cause) {
    try {
        return convert_checked(source, source_level, destination, destination_level, cause);
    } catch (std::bad_alloc const&) {
        cause = "there is not enough memory for the conversion";
        return false;
    }
}

}  // namespace IMAGE_LOADER
