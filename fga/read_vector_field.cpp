// One pass over the text, number by number, without a list of them. Nearly all numbers are plain decimals of few
// digits: digits as an integer below 2^53, divided or multiplied by a power of ten up to 10^22, which both are exact in
// double precision, so that one operation gives the nearest double (W. D. Clinger, "How to read floating point numbers
// accurately", 1990). Everything else is left to the standard library, or to Qt, whose reading is the rule for it.
#include "fga/read_vector_field.hpp"

#include "fga/float_to_half.hpp"
#include "platform/checked_size.hpp"

#include <QString>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

namespace {

constexpr std::array powers_of_ten = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                      1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int most_digits = 19;

bool is_digit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}

bool is_space(char c) {
    return c == ' ' || static_cast<unsigned char>(c - '\t') < 5;
}

constexpr char const* byte_order_mark = "\xEF\xBB\xBF";

/// For Qt's own reading: of numbers in other spellings and beyond a float's range, and of what is no number at all. A
/// mark at the start of a number is no number, though decoding the number by itself would drop it.
QString qt_text(std::string_view token) {
    constexpr std::size_t longest = 1 << 30;
    return token.size() <= longest && !token.starts_with(byte_order_mark)
               ? QString::fromUtf8(token.data(), static_cast<int>(token.size()))
               : QString();
}

class NUMBERS {
public:
    explicit NUMBERS(std::span<char const> text) : at_(text.data()), end_(text.data() + text.size()) {
        // Decoding text drops its mark.
        if (text.size() >= 3 && std::memcmp(at_, byte_order_mark, 3) == 0)
            at_ += 3;
    }

    /// Moves to the next number; false at the end of the text.
    bool find() {
        while (at_ != end_ && *at_ == ',')
            ++at_;
        return at_ != end_;
    }

    /// The text of the number that `find` found.
    std::string_view take() {
        char const* const start = at_;
        void const* const comma = std::memchr(at_, ',', static_cast<std::size_t>(end_ - at_));
        at_ = comma != nullptr ? static_cast<char const*>(comma) : end_;
        return {start, static_cast<std::size_t>(at_ - start)};
    }

    float take_float() {
        float value = 0;
        return take_plain_float(value) ? value : read_float(take());
    }

private:
    /// Reads a decimal of the usual kind, and moves behind it. False, and no move, for anything else.
    bool take_plain_float(float& value) {
        char const* at = at_;
        while (at != end_ && is_space(*at))
            ++at;
        bool const is_negative = at != end_ && *at == '-';
        at += is_negative ? 1 : 0;
        char const* const first = at;
        std::uint64_t digits = 0;
        int exponent = 0;
        while (at != end_ && is_digit(*at))
            digits = digits * 10 + static_cast<std::uint64_t>(*at++ - '0');
        std::ptrdiff_t count = at - first;
        if (count == 0)
            return false;
        if (at != end_ && *at == '.') {
            char const* const point = at++;
            while (at != end_ && is_digit(*at))
                digits = digits * 10 + static_cast<std::uint64_t>(*at++ - '0');
            std::ptrdiff_t const decimals = at - point - 1;
            count += decimals;
            // Above 19 digits the sum has overflowed; it is thrown away below.
            exponent = decimals <= most_digits ? -static_cast<int>(decimals) : 0;
        }
        while (at != end_ && is_space(*at))
            ++at;
        if (count > most_digits || (at != end_ && *at != ',') || digits >= (std::uint64_t{1} << 53))
            return false;
        double const number = static_cast<double>(digits) / powers_of_ten[static_cast<std::size_t>(-exponent)];
        // So few digits are nowhere near the ends of a float's range.
        value = static_cast<float>(is_negative ? -number : number);
        at_ = at;
        return true;
    }

    static float read_float(std::string_view token) {
        std::string_view digits = token;
        while (!digits.empty() && is_space(digits.front()))
            digits.remove_prefix(1);
        while (!digits.empty() && is_space(digits.back()))
            digits.remove_suffix(1);
        double number = 0;
        bool const has_digit_first =
            !digits.empty() && is_digit(digits[digits.front() == '-' && digits.size() > 1 ? 1 : 0]);
        if (has_digit_first) {
            auto const [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
            bool const is_normal = std::abs(number) >= std::numeric_limits<float>::min() &&
                                   std::abs(number) <= std::numeric_limits<float>::max();
            if (failure == std::errc() && end == digits.data() + digits.size() && is_normal)
                return static_cast<float>(number);
        }
        // What lies beyond a float's range is not read either, though Qt gives infinity for it.
        bool is_read = false;
        float const value = qt_text(token).toFloat(&is_read);
        return is_read ? value : 0;
    }

    char const* at_;
    char const* end_;
};

std::string shown(UTILITYLIB::VECTOR_3c const& size) {
    return std::to_string(size.x) + " x " + std::to_string(size.y) + " x " + std::to_string(size.z);
}

}  // namespace

std::uint64_t count_numbers(std::span<char const> text) {
    NUMBERS numbers(text);
    std::uint64_t count = 0;
    while (numbers.find()) {
        numbers.take();
        ++count;
    }
    return count;
}

std::optional<VECTOR_FIELD> read_vector_field(std::span<char const> text, std::string& cause) {
    constexpr int box_numbers = 6;
    NUMBERS numbers(text);
    VECTOR_FIELD field;
    for (std::uint32_t* const dimension : {&field.size.x, &field.size.y, &field.size.z})
        *dimension = numbers.find() ? qt_text(numbers.take()).toUInt() : 0;

    auto const refuse = [&](std::string const& announced) {
        std::uint64_t const count = count_numbers(text);
        std::uint64_t const before = 3 + box_numbers;
        cause = "it announces " + shown(field.size) + " vectors, " + announced + ", and holds " +
                std::to_string(count > before ? count - before : 0) + " numbers for them";
        return std::nullopt;
    };
    auto const [x, y, z] = field.size;
    if (x < 2 || y < 2 || z < 2)
        return refuse("of which no side may be below 2");
    std::uint64_t const count = checked_size::saturating_product(x, y, z);
    if (count > std::numeric_limits<std::uint32_t>::max())
        return refuse("more than 32 bits can count");
    std::string const needed = "which take " + std::to_string(3 * count) + " numbers";
    // A number takes a character and a comma at the least.
    if (text.size() / 2 + 1 < 3 * count)
        return refuse(needed);

    // The bounding box says where the field lies in the world, which is no business of its texture.
    for (int i = 0; i < box_numbers && numbers.find(); ++i)
        numbers.take();
    field.texels.resize(count);
    for (UTILITYLIB::FLOAT16_4& texel : field.texels) {
        for (std::uint16_t* const half : {&texel.x, &texel.y, &texel.z}) {
            if (!numbers.find())
                return refuse(needed);
            *half = float_to_half(numbers.take_float());
        }
    }
    return field;
}
