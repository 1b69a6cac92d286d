#include "platform/qe/pack_channels.hpp"

#include "platform/qe/load_tga.hpp"

#include <cstddef>
#include <utility>

namespace QE {

namespace {

IMAGE32 start_image(std::uint32_t width, std::uint32_t height, std::uint8_t alpha) {
    IMAGE32 image(width, height);
    if (alpha != 0) {
        for (std::size_t at = static_cast<std::size_t>(TEXEL_BYTE::alpha); at < image.pixels.size(); at += 4) {
            image.pixels[at] = alpha;
        }
    }
    return image;
}

void copy_channel(IMAGE32 const& source, TEXEL_BYTE from, TEXEL_BYTE to, IMAGE32& target) {
    std::uint8_t const* in = source.pixels.data() + static_cast<std::size_t>(from);
    std::uint8_t* out = target.pixels.data() + static_cast<std::size_t>(to);
    for (std::size_t left = source.pixels.size() / 4; left > 0; --left, in += 4, out += 4) {
        *out = *in;
    }
}

}  // namespace

std::optional<IMAGE32> pack_channels(std::span<CHANNEL_SOURCE> sources, std::uint8_t alpha) {
    std::optional<IMAGE32> packed;
    bool sizes_agree = true;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        bool is_read = sources[i].path.empty();
        for (std::size_t earlier = 0; earlier < i; ++earlier) {
            is_read = is_read || sources[earlier].path == sources[i].path;
        }
        if (is_read) {
            continue;
        }
        std::string cause;
        std::optional<IMAGE32> const image = load_tga(sources[i].path, cause);
        if (image && image->pixels.empty()) {
            sizes_agree = false;
        } else if (image && !packed) {
            packed = start_image(image->width, image->height, alpha);
        } else if (image && (image->width != packed->width || image->height != packed->height)) {
            sizes_agree = false;
        }
        for (CHANNEL_SOURCE& source : sources.subspan(i)) {
            if (source.path != sources[i].path) {
                continue;
            }
            source.is_present = image.has_value();
            source.cause = cause;
            if (image) {
                source.width = image->width;
                source.height = image->height;
                if (sizes_agree) {
                    copy_channel(*image, source.from, source.to, *packed);
                }
            }
        }
    }
    return sizes_agree ? std::move(packed) : std::nullopt;
}

}  // namespace QE
