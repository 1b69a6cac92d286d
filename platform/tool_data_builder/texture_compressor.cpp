#include "platform/tool_data_builder/texture_compressor.hpp"

#include "platform/image_loader/exchange_red_and_blue.hpp"
#include "platform/qe/load_tga.hpp"
#include "platform/qe/native_path.hpp"
#include "platform/qe/pack_channels.hpp"
#include "platform/tool_data_builder/messages.hpp"
#include "platform/tool_data_builder/mip_chain.hpp"
#include "platform/tool_data_builder/write_block_dds.hpp"

#include <array>
#include <exception>
#include <filesystem>
#include <initializer_list>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace TOOLDATABUILDER {

namespace {

namespace fs = std::filesystem;
using QE::CHANNEL_SOURCE;
using QE::IMAGE32;
using QE::TEXEL_BYTE;
using QE::UniString;

enum class ENCODING : std::uint8_t { dxt1, dxt5, by_alpha };

// Blocks are encoded from red, green, blue, alpha, where a TGA image has blue first: packed images are packed in that
// order at once, by letting red and blue change places.
constexpr std::array<TEXEL_BYTE, 4> encoder_order = {TEXEL_BYTE::blue, TEXEL_BYTE::green, TEXEL_BYTE::red,
                                                     TEXEL_BYTE::alpha};
constexpr std::array<TEXEL_BYTE, 4> taken_channel = {TEXEL_BYTE::red, TEXEL_BYTE::green, TEXEL_BYTE::blue,
                                                     TEXEL_BYTE::red};

fs::path located(UniString const& base_folder, UniString const& path) {
    return QE::native_path(base_folder) / QE::native_path(path);
}

std::string quoted(fs::path const& path) {
    return '\'' + path.string() + '\'';
}

bool is_opaque(IMAGE32 const& image) {
    for (std::size_t at = 3; at < image.pixels.size(); at += 4) {
        if (image.pixels[at] != 255) {
            return false;
        }
    }
    return true;
}

struct OUTPUT {
    fs::path target;
    ENCODING encoding = ENCODING::by_alpha;
    bool mipmaps = true;
    bool linear_light = false;
    QE::EARLIER_FILE earlier = QE::EARLIER_FILE::replaced;
};

/// `image` in the order of the encoder.
bool compress(IMAGE32 const& image, OUTPUT const& output) {
    bool const to_dxt1 =
        output.encoding == ENCODING::dxt1 || (output.encoding == ENCODING::by_alpha && is_opaque(image));
    BLOCK_DDS_SETTINGS settings;
    settings.format = to_dxt1 ? blocks::FORMAT::bc1 : blocks::FORMAT::bc3;
    settings.options.effort = blocks::EFFORT::best;
    settings.earlier = output.earlier;

    blocks::RGBA8_VIEW const top = {image.pixels.data(), image.width, image.height, std::size_t{4} * image.width};
    std::vector<MIP_LEVEL> lower;
    if (output.mipmaps) {
        lower = make_lower_mips(top, output.linear_light ? MIP_FILTER::box_srgb : MIP_FILTER::box);
    }
    std::vector<blocks::RGBA8_VIEW> levels = {top};
    for (MIP_LEVEL const& level : lower) {
        levels.push_back(level.view());
    }
    std::string cause;
    if (write_block_dds(output.target, levels, settings, cause)) {
        return true;
    }
    report("Failed to write " + quoted(output.target) + ": " + cause);
    return false;
}

/// Runs `work`, and turns what it throws into a message that names the target.
template <typename WORK>
bool guarded(UniString const& target, WORK work) {
    std::string cause;
    try {
        return work();
    } catch (std::bad_alloc const&) {
        cause = "not enough memory";
    } catch (std::exception const& exception) {
        // A path that the file system's encoding cannot express, above all.
        cause = exception.what();
    }
    std::string name;
    for (wchar_t const character : target.text()) {
        name += character > 0 && character < 128 ? static_cast<char>(character) : '?';
    }
    report("Failed to make '" + name + "': " + cause);
    return false;
}

/// Whether every source can be used: present, or absent and optional. Says what is wrong with each that cannot.
bool check_sources(std::span<CHANNEL_SOURCE const> sources, std::size_t required, fs::path const& target) {
    bool usable = true;
    bool any = false;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        CHANNEL_SOURCE const& source = sources[i];
        any = any || source.is_present;
        std::error_code ignored;
        bool const is_there = !source.path.empty() && fs::exists(source.path.text(), ignored);
        if (source.is_present || (i >= required && !is_there)) {
            continue;
        }
        usable = false;
        if (source.path.empty()) {
            report("Source " + std::to_string(i + 1) + " of " + quoted(target) + " is required, and none was given");
        } else if (is_there) {
            report("Failed to read '" + source.path.text() + "': " + source.cause);
        } else {
            report("Required source '" + source.path.text() + "' does not exist");
        }
    }
    if (usable && !any) {
        report("None of the sources of " + quoted(target) + " exists");
    }
    return usable && any;
}

void report_sizes(std::span<CHANNEL_SOURCE const> sources, fs::path const& target) {
    std::string message = "The sources of " + quoted(target) + " must have the same size:";
    for (CHANNEL_SOURCE const& source : sources) {
        if (source.is_present) {
            message += " '" + source.path.text() + "' has " + std::to_string(source.width) + " x " +
                       std::to_string(source.height) + ",";
        }
    }
    message.pop_back();
    report(message);
}

void pack_and_compress(UniString const& base_folder, std::initializer_list<UniString const*> paths,
                       std::size_t required, UniString const& target, ENCODING encoding) {
    guarded(target, [&] {
        OUTPUT output;
        output.target = located(base_folder, target);
        output.encoding = encoding;
        std::vector<CHANNEL_SOURCE> sources;
        for (UniString const* const path : paths) {
            CHANNEL_SOURCE source = {};
            source.path = path->empty() ? std::string() : located(base_folder, *path).string();
            source.from = taken_channel[sources.size()];
            source.to = encoder_order[sources.size()];
            sources.push_back(std::move(source));
        }
        std::optional<IMAGE32> const image = QE::pack_channels(sources, 255);
        if (!check_sources(sources, required, output.target)) {
            return false;
        }
        if (!image) {
            report_sizes(sources, output.target);
            return false;
        }
        return compress(*image, output);
    });
}

}  // namespace

bool TEXTURE_COMPRESSOR::process_tga(UniString const& target_folder, UniString const* target_name,
                                     UniString const& source, bool linear_light, bool mipmaps, bool forbid_dxt1) {
    return guarded(source, [&] {
        fs::path const path = located(base_folder_, source);
        OUTPUT output;
        output.target = target_folder.empty() ? path.parent_path() : located(base_folder_, target_folder);
        output.target /= target_name != nullptr ? QE::native_path(*target_name) : path.stem();
        output.target += ".dds";
        output.encoding = forbid_dxt1 ? ENCODING::dxt5 : ENCODING::by_alpha;
        output.earlier = QE::EARLIER_FILE::kept;
        output.mipmaps = mipmaps;
        output.linear_light = linear_light;

        std::string cause;
        std::optional<IMAGE32> image = QE::load_tga(QE::String(path.string()), cause);
        if (image && image->pixels.empty()) {
            image.reset();
            cause = "the image has no texels";
        }
        if (!image) {
            report("Failed to read " + quoted(path) + ": " + cause);
            return false;
        }
        IMAGE_LOADER::exchange_red_and_blue(image->pixels.data(), image->pixels.data(), image->pixels.size() / 4);
        return compress(*image, output);
    });
}

void TEXTURE_COMPRESSOR::compress_to_dxt1(UniString const& red, UniString const& green, UniString const& blue,
                                          UniString const& target, bool all_required) {
    pack_and_compress(base_folder_, {&red, &green, &blue}, all_required ? 3 : 1, target, ENCODING::dxt1);
}

void TEXTURE_COMPRESSOR::compress_to_dxt1_optional(UniString const& red, UniString const& green, UniString const& blue,
                                                   UniString const& target) {
    pack_and_compress(base_folder_, {&red, &green, &blue}, 0, target, ENCODING::dxt1);
}

void TEXTURE_COMPRESSOR::compress_to_dxt5_optional(UniString const& red, UniString const& green, UniString const& blue,
                                                   UniString const& alpha, UniString const& target) {
    pack_and_compress(base_folder_, {&red, &green, &blue, &alpha}, 0, target, ENCODING::dxt5);
}

void TEXTURE_COMPRESSOR::compress_to_optimal(UniString const& red, UniString const& green, UniString const& blue,
                                             UniString const& alpha, UniString const& target) {
    pack_and_compress(base_folder_, {&red, &green, &blue, &alpha}, 1, target, ENCODING::by_alpha);
}

}  // namespace TOOLDATABUILDER
