#include "combine/combine_mask_images.hpp"

#include "platform/qe/pack_channels.hpp"

#include <QFile>

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

using QE::CHANNEL_SOURCE;
using QE::TEXEL_BYTE;

constexpr std::uint8_t alpha_of_three = 1;
constexpr std::uint8_t absent_alpha = 255;

CHANNEL_SOURCE source(PHYSICAL_PATH const& path, TEXEL_BYTE from, TEXEL_BYTE to) {
    CHANNEL_SOURCE source = {};
    source.path = QFile::encodeName(path).toStdString();
    source.from = from;
    source.to = to;
    return source;
}

CHANNEL_SOURCE source(PHYSICAL_PATH const& path, TEXEL_BYTE channel) {
    return source(path, channel, channel);
}

std::optional<QE::IMAGE32> with_size_check(OUTPUT_LINE_SINK& sink, std::optional<QE::IMAGE32> packed) {
    if (!packed)
        sink.add_output_line(QStringLiteral("Mask image size invalid!"));
    return packed;
}

}  // namespace

std::optional<QE::IMAGE32> combine_mask_images_3(OUTPUT_LINE_SINK& sink, PHYSICAL_PATH const& path_1,
                                                 PHYSICAL_PATH const& path_2, PHYSICAL_PATH const& path_3,
                                                 bool required_1, bool required_2, bool required_3) {
    std::array sources = {source(path_1, TEXEL_BYTE::red), source(path_2, TEXEL_BYTE::green),
                          source(path_3, TEXEL_BYTE::blue)};
    std::optional<QE::IMAGE32> packed = QE::pack_channels(sources, alpha_of_three);

    struct REQUIREMENT {
        bool is_missed;
        PHYSICAL_PATH const& path;
        char const* message;
    };
    // The third message lacks the others' " !"; people search their logs for the texts as they are.
    REQUIREMENT const requirements[] = {
        {required_1 && !sources[0].is_present, path_1, " Required but not found !"},
        {required_2 && !sources[1].is_present, path_2, " Required but not found !"},
        {required_3 && !sources[2].is_present, path_3, " Required but not found"},
    };
    for (REQUIREMENT const& requirement : requirements) {
        if (requirement.is_missed) {
            sink.add_output_line(requirement.path + QLatin1String(requirement.message));
            return std::nullopt;
        }
    }
    return with_size_check(sink, std::move(packed));
}

std::optional<QE::IMAGE32> combine_mask_images_4(OUTPUT_LINE_SINK& sink, PHYSICAL_PATH const& path_1,
                                                 PHYSICAL_PATH const& path_2, PHYSICAL_PATH const& path_3,
                                                 PHYSICAL_PATH const& path_4, bool alpha_from_red) {
    std::array sources = {source(path_1, TEXEL_BYTE::red), source(path_2, TEXEL_BYTE::green),
                          source(path_3, TEXEL_BYTE::blue),
                          source(path_4, alpha_from_red ? TEXEL_BYTE::red : TEXEL_BYTE::alpha, TEXEL_BYTE::alpha)};
    std::optional<QE::IMAGE32> packed = QE::pack_channels(sources, absent_alpha);
    if (std::none_of(sources.begin(), sources.end(), [](CHANNEL_SOURCE const& found) { return found.is_present; })) {
        sink.add_output_line(QStringLiteral(" No mask images found!"));
        return std::nullopt;
    }
    return with_size_check(sink, std::move(packed));
}
