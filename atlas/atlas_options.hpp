// The settings of the atlas builder, given like the arguments of a command. The atlas action makes such a list in
// memory; the names, the checks and their texts are those of a command-line tool.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// In the order in which names are tried and the usage lists them.
enum class ATLAS_OPTION : std::uint8_t {
    h,
    help,
    question_mark,
    no_mip_map,
    volume,
    half_texel,
    width,
    height,
    depth,
    output,
};
inline constexpr std::size_t atlas_option_count = 10;

class ATLAS_OPTIONS {
public:
    /// Reads and checks a list whose first entry is the program's name. Names are found in any case; the first entry
    /// that is none begins the file names, and every entry behind it is one. Of what is wrong the first thing is
    /// reported, with the usage; what was read stays readable.
    explicit ATLAS_OPTIONS(std::vector<std::string> arguments);

    bool valid() const { return valid_; }
    bool is_set(ATLAS_OPTION option) const { return places_[static_cast<std::size_t>(option)].has_value(); }
    /// The option's argument, the last one given; null for options that are not set or take none.
    std::string const* argument(ATLAS_OPTION option) const;
    /// The option's argument as a whole number; nothing where there is none.
    std::optional<std::int32_t> number(ATLAS_OPTION option) const;
    std::span<std::string const> file_names() const { return std::span(arguments_).subspan(first_file_name_); }

private:
    void read();
    bool check() const;
    bool check_size(ATLAS_OPTION option) const;

    std::vector<std::string> arguments_;
    /// Of each option that is set, its entry.
    std::array<std::optional<std::size_t>, atlas_option_count> places_;
    std::size_t first_file_name_;
    bool valid_ = false;
};

/// The integer that a text begins with, as C's "%i" reads it: blanks, a sign, then decimal digits, hexadecimal ones
/// after 0x, octal ones after 0. Numbers beyond 32 bits become the nearest that has them. Nothing when no number comes
/// first.
std::optional<std::int32_t> read_integer(std::string const& text);
