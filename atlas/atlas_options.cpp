#include "atlas/atlas_options.hpp"

#include "atlas/atlas_messages.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>

namespace {

struct OPTION_ROW {
    std::string_view name;
    bool takes_argument;
    std::string_view usage_name;
    std::string_view help;
};

constexpr std::array<OPTION_ROW, atlas_option_count> rows = {{
    {"-h", false, "-h", "prints this usage help"},
    {"-help", false, "-help", "prints this usage help"},
    {"-?", false, "-?", "prints this usage help"},
    {"-nomipmap", false, "-nomipmap", "only writes out the top-level mipmap"},
    {"-volume", false, "-volume", "only valid w/ -nomipmap; make atlases volume textures"},
    {"-halftexel", false, "-halftexel", "adds a half-texel offset to the generated texture coordinates"},
    {"-width", true, "-width <w>", "limits texture atlases to a maximum width of w texels"},
    {"-height", true, "-height <h>", "limits texture atlases to a maximum height of h texels"},
    {"-depth", true, "-depth <d>", "limits texture atlases to a maximum depth of d slices"},
    {"-o", true, "-o <filename>", "mandatory option that specifies output filename"},
}};

OPTION_ROW const& row_of(ATLAS_OPTION option) {
    return rows[static_cast<std::size_t>(option)];
}

std::string usage_name(ATLAS_OPTION option) {
    return std::string(row_of(option).usage_name);
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool is_same_name(std::string_view entry, std::string_view name) {
    return std::equal(entry.begin(), entry.end(), name.begin(), name.end(),
                      [](char a, char b) { return lower(a) == lower(b); });
}

void print_usage() {
    constexpr std::size_t name_column = 13;
    std::string text = "\nUsage: TextureAtlasTool.exe";
    for (OPTION_ROW const& row : rows) {
        text += ' ';
        text += row.usage_name;
    }
    text += " <img1> <img2> ...\n";
    for (OPTION_ROW const& row : rows) {
        text += "   ";
        text += row.usage_name;
        text.append(name_column - std::min(name_column, row.usage_name.size()), ' ');
        text += "   ";
        text += row.help;
        text += '\n';
    }
    text += "\nFor example: TextureAtlasTool.exe -halftexel -o Default Textures\\*.png\n\n";
    print_atlas_text(text);
}

/// False, after the message and the usage.
bool refuse(std::string const& message) {
    report_atlas_error(message);
    print_usage();
    return false;
}

bool is_power_of_two(std::int32_t value) {
    // In single precision on purpose: beyond two million it lets neighbours of powers pass, which no page can have.
    auto const exponent = static_cast<float>(std::log(static_cast<double>(value)) / std::log(2.0));
    return exponent == std::floor(exponent);
}

}  // namespace

std::optional<std::int32_t> read_integer(std::string const& text) {
    char* end = nullptr;
    long const value = std::strtol(text.c_str(), &end, 0);
    if (end == text.c_str())
        return std::nullopt;
    return static_cast<std::int32_t>(
        std::clamp<long>(value, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

ATLAS_OPTIONS::ATLAS_OPTIONS(std::vector<std::string> arguments)
    : arguments_(std::move(arguments)),
      first_file_name_(arguments_.size()) {
    read();
    valid_ = check();
}

void ATLAS_OPTIONS::read() {
    for (std::size_t entry = 1; entry < arguments_.size(); ++entry) {
        auto const row = std::find_if(rows.begin(), rows.end(), [&](OPTION_ROW const& candidate) {
            return is_same_name(arguments_[entry], candidate.name);
        });
        if (row == rows.end()) {
            first_file_name_ = entry;
            return;
        }
        std::optional<std::size_t>& place = places_[static_cast<std::size_t>(row - rows.begin())];
        if (place) {
            report_atlas_warning("Option '" + std::string(row->usage_name) +
                                 "' specified multiple times on the cmd-line:");
            report_atlas_warning("         Only keeping the last value.");
        }
        place = entry;
        entry += row->takes_argument ? 1 : 0;
    }
}

std::string const* ATLAS_OPTIONS::argument(ATLAS_OPTION option) const {
    std::optional<std::size_t> const place = places_[static_cast<std::size_t>(option)];
    bool const has_argument = place && row_of(option).takes_argument && *place + 1 < arguments_.size();
    return has_argument ? &arguments_[*place + 1] : nullptr;
}

std::optional<std::int32_t> ATLAS_OPTIONS::number(ATLAS_OPTION option) const {
    std::string const* const text = argument(option);
    return text != nullptr ? read_integer(*text) : std::nullopt;
}

bool ATLAS_OPTIONS::check_size(ATLAS_OPTION option) const {
    std::optional<std::int32_t> const value = number(option);
    if (!value || *value < 2)
        return refuse(usage_name(option) + " option requires argument to be an integer greater than 1.");
    if (!is_power_of_two(*value))
        return refuse(usage_name(option) + " option requires argument to be a power of 2.");
    return true;
}

bool ATLAS_OPTIONS::check() const {
    std::string const volume = usage_name(ATLAS_OPTION::volume);
    bool const is_volume = is_set(ATLAS_OPTION::volume);
    if (file_names().empty())
        return refuse("No texture filenames specified.");
    for (auto const& [option, side] : {std::pair(ATLAS_OPTION::width, "width"), {ATLAS_OPTION::height, "height"}}) {
        if (!is_set(option))
            continue;
        if (is_volume)
            report_atlas_warning(volume + " currently uses the passed in texture's " + side + " and thus ignores " +
                                 usage_name(option));
        else if (!check_size(option))
            return false;
    }
    if (is_set(ATLAS_OPTION::depth)) {
        std::string const depth = usage_name(ATLAS_OPTION::depth);
        if (!is_volume)
            report_atlas_warning(depth + " specified, yet " + volume + " is not specified: ignoring " + depth);
        else if (!check_size(ATLAS_OPTION::depth))
            return false;
    }
    if (is_volume && !is_set(ATLAS_OPTION::no_mip_map))
        return refuse(volume + " option requires " + usage_name(ATLAS_OPTION::no_mip_map) + " option to be set.");
    if (!is_set(ATLAS_OPTION::output))
        return refuse(usage_name(ATLAS_OPTION::output) + " option has to be set.");
    if (is_set(ATLAS_OPTION::h) || is_set(ATLAS_OPTION::help) || is_set(ATLAS_OPTION::question_mark))
        print_usage();
    return true;
}
