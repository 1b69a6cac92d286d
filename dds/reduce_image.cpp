#include "dds/reduce_image.hpp"

#include "dds/halve_image.hpp"
#include "dds/working_image.hpp"
#include "platform/image_loader/convert.hpp"

#include <optional>
#include <string>

namespace {

using IMAGE_LOADER::IMAGE;

/// Below this a side is not halved any more.
constexpr std::uint32_t smallest_halved_side = 8;

IMAGE_LOADER::TEXTURE_TEXEL_FORMAT working_texel_format(IMAGE const& image) {
    return image.image_format() == IMAGE_LOADER::IMAGE_FORMAT::png ? IMAGE_LOADER::TTF_R8G8B8A8
                                                                   : IMAGE_LOADER::TTF_B8G8R8A8;
}

/// Levels `first` and below of `image` as an image of four 8-bit channels. Not valid when one cannot be converted.
IMAGE levels_from(IMAGE const& image, std::uint32_t first) {
    std::uint32_t const count = image.number_of_mips() - first;
    IMAGE levels =
        make_working_image(image.level_width(first), image.level_height(first), count, working_texel_format(image));
    std::string cause;
    for (std::uint32_t level = 0; level < count; ++level) {
        if (!IMAGE_LOADER::convert(image, first + level, levels, level, cause))
            return IMAGE::failed(cause);
    }
    return levels;
}

bool is_four_bytes_a_texel(IMAGE const& image) {
    return image.texel_format() == IMAGE_LOADER::TTF_B8G8R8A8 || image.texel_format() == IMAGE_LOADER::TTF_R8G8B8A8;
}

}  // namespace

bool reduce_image(OUTPUT_LINE_SINK& sink, IMAGE& image, std::int32_t drop_mips, std::uint32_t max_size,
                  bool need_gamma_correction, float gamma) {
    std::optional<GAMMA_CURVE> other_curve;
    GAMMA_CURVE const* curve = nullptr;
    for (std::int32_t reductions = 0; reductions < drop_mips || image.width() > max_size || image.height() > max_size;
         ++reductions) {
        bool const has_levels = image.number_of_mips() >= 2;
        if (!has_levels && (image.width() < smallest_halved_side || image.height() < smallest_halved_side))
            return true;
        // Dropping a level converts what is left; a lone level is converted once, to have texels that can be averaged.
        if (has_levels || !is_four_bytes_a_texel(image)) {
            IMAGE levels = levels_from(image, has_levels ? 1 : 0);
            if (!levels.valid()) {
                sink.add_output_line(QStringLiteral("Failed drop mip!"));
                return false;
            }
            image = std::move(levels);
        }
        if (has_levels)
            continue;
        if (need_gamma_correction && curve == nullptr) {
            bool const is_standard = gamma == GAMMA_CURVE::standard_exponent;
            curve = is_standard ? &GAMMA_CURVE::standard() : &other_curve.emplace(gamma);
        }
        image = halve_image(image, curve);
    }
    return true;
}
