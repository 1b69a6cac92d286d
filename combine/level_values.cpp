#include "combine/level_values.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace {

struct LEVELS {
    int input_min = 0;
    int input_max = 255;
    int output_min = 0;
    int output_max = 255;
};

/// Reads the properties one after the other and stops at the first that is of no use.
class LEVEL_READER {
public:
    LEVEL_READER(OUTPUT_LINE_SINK& sink, RULE const& rule) : sink_(sink), rule_(rule) {}

    /// True, and `level` as it was, when the property is not set. `lowest` is 0, or −1 where that stands for "find it".
    bool read(char const* property, int lowest, int& level) {
        QVariant const& value = rule_.value(QLatin1String(property));
        if (value.isNull())
            return true;
        // A variant would round 12.7 and take true for 1.
        bool is_number = value.type() != QVariant::Bool && value.type() != QVariant::Double;
        if (value.type() == QVariant::Double)
            is_number = value.toDouble() == std::trunc(value.toDouble());
        bool is_converted = false;
        qlonglong const number = value.toLongLong(&is_converted);
        is_number = is_number && is_converted;
        if (!is_number)
            return refuse(property, " is not a number!");
        if (number < lowest || number > 255)
            return refuse(property, " value is out of bounds!");
        level = static_cast<int>(number);
        return true;
    }

private:
    bool refuse(char const* property, char const* why) {
        sink_.add_output_line(QStringLiteral("Error in TextureLevelling rule: ") + QLatin1String(property) +
                              QLatin1String(why));
        return false;
    }

    OUTPUT_LINE_SINK& sink_;
    RULE const& rule_;
};

std::optional<LEVELS> read_levels(OUTPUT_LINE_SINK& sink, RULE const& rule) {
    LEVELS levels;
    LEVEL_READER reader(sink, rule);
    bool const is_usable =
        reader.read("InputMin", -1, levels.input_min) && reader.read("InputMax", -1, levels.input_max) &&
        reader.read("OutputMin", 0, levels.output_min) && reader.read("OutputMax", 0, levels.output_max);
    return is_usable ? std::optional(levels) : std::nullopt;
}

void find_input_bounds(std::span<std::uint8_t const> values, LEVELS& levels) {
    std::uint8_t smallest = 255;
    std::uint8_t largest = 0;
    for (std::uint8_t const value : values) {
        smallest = std::min(smallest, value);
        largest = std::max(largest, value);
    }
    if (levels.input_min < 0)
        levels.input_min = smallest;
    if (levels.input_max < 0)
        levels.input_max = largest;
}

std::uint8_t level(std::size_t value, LEVELS const& levels) {
    float const range = static_cast<float>(levels.input_max - levels.input_min);
    float const t = std::clamp((static_cast<float>(value) - static_cast<float>(levels.input_min)) / range, 0.0F, 1.0F);
    // What is added lets all of 1 reach the output's largest value although the result is cut off below.
    float const levelled =
        (static_cast<float>(levels.output_max - levels.output_min) + 0.99F) * t + static_cast<float>(levels.output_min);
    return static_cast<std::uint8_t>(levelled);
}

}  // namespace

void level_values(OUTPUT_LINE_SINK& sink, std::span<std::uint8_t> values, LOGICAL_PATH const& source,
                  RULE_CACHE const& rules, bool& failed) {
    RULE const rule = rules.get(source, QStringLiteral("TextureLevelling"));
    if (!rule.exists())
        return;
    std::optional<LEVELS> levels = read_levels(sink, rule);
    if (!levels) {
        failed = true;
        return;
    }
    if (levels->input_min < 0 || levels->input_max < 0)
        find_input_bounds(values, *levels);

    bool const whole_input = levels->input_min == 0 && levels->input_max == 255;
    if (whole_input && levels->output_min == 0 && levels->output_max == 255)
        return;
    if (!whole_input && levels->input_min >= levels->input_max) {
        sink.add_output_line(QStringLiteral("Texture levelling: Input min is higher than max!"));
        failed = true;
        return;
    }
    if (levels->output_min >= levels->output_max) {
        sink.add_output_line(QStringLiteral("Texture levelling: Output min is higher than max!"));
        failed = true;
        return;
    }
    std::array<std::uint8_t, 256> table;
    for (std::size_t value = 0; value < table.size(); ++value)
        table[value] = level(value, *levels);
    for (std::uint8_t& value : values)
        value = table[value];
}
