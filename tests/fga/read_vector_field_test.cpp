#include "fga/float_to_half.hpp"
#include "fga/read_vector_field.hpp"

#include <QString>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

std::optional<VECTOR_FIELD> read(std::string const& text, std::string* cause = nullptr) {
    std::string ignored;
    return read_vector_field({text.data(), text.size()}, cause ? *cause : ignored);
}

/// The half of the one number under test, which stands first of a field of 8 vectors.
int half_of(std::string const& number) {
    std::string text = "2,2,2,0,0,0,1,1,1," + number;
    for (int i = 1; i < 24; ++i)
        text += ",5";
    auto const field = read(text);
    return field ? field->texels[0].x : -1;
}

/// As part of a whole text, where a byte-order mark is not dropped. A number ends at its comma.
int half_by_qt(std::string const& number) {
    bool is_read = false;
    float const value = QString::fromStdString("," + number).section(',', 1, 1).toFloat(&is_read);
    return float_to_half(is_read ? value : 0);
}

TEST(read_vector_field, numbers_read_as_qt_reads_them) {
    for (char const* number : {"0",
                               "-0",
                               "1",
                               "-1",
                               "0.5",
                               "-0.333333",
                               "12.",
                               ".5",
                               "-.5",
                               "+3",
                               "+-3",
                               "1e3",
                               "1E-3",
                               "1e",
                               "1e+",
                               "2e+2",
                               "0x10",
                               "1 2",
                               "1.2.3",
                               "\n 7 \r\n",
                               "\t-7",
                               "- 7",
                               "abc",
                               "-",
                               ".",
                               "inf",
                               "-inf",
                               "nan",
                               "INF",
                               "1e39",
                               "-1e39",
                               "1e-50",
                               "1e-40",
                               "1e400",
                               "3.4028236e38",
                               "0.1234567890123456789",
                               "123456789012345678901234567890",
                               "0.00000000000000000000000000000000000000000000000001",
                               "9007199254740993",
                               "16777217",
                               "65519.999999999999",
                               "65520.00000000000001",
                               "1.00048828125",
                               "1.000488281250000000000000000001",
                               "\xC2\xA0"
                               "4",
                               "\xD9\xA3",
                               "1f",
                               "1d",
                               "infinity",
                               "1,",
                               "\xEF\xBB\xBF"
                               "4",
                               "\xC3",
                               "1_000",
                               "1'000",
                               "00012.50",
                               "-000",
                               "1e0000000001"})
        EXPECT_EQ(half_of(number), half_by_qt(number)) << '\'' << number << '\'';
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        double const value =
            std::ldexp(static_cast<double>(random()) - 2147483648.0, static_cast<int>(random() % 80) - 60);
        char text[64];
        char const* const formats[] = {"%.6f", "%g", "%.17g", "%.25f", "%e", "%.0f"};
        std::snprintf(text, sizeof text, formats[i % 6], value);
        ASSERT_EQ(half_of(text), half_by_qt(text)) << text;
    }
}

TEST(read_vector_field, tokens) {
    // Line breaks part nothing; what is empty between commas is no number, and what is blank is one.
    auto const field = read("\xEF\xBB\xBF 2,\n2,2,,,0,0,0,1,1,1,\n1,2\n3,4,,,5, ,7" + std::string(24, ',') +
                            "8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26");
    ASSERT_TRUE(field);
    std::vector<float> const expected = {1, 0, 4, 5, 0, 7, 8, 9};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        UTILITYLIB::FLOAT16_4 const& texel = field->texels[i / 3];
        std::uint16_t const halves[] = {texel.x, texel.y, texel.z};
        EXPECT_EQ(halves[i % 3], float_to_half(expected[i])) << i;
    }
    EXPECT_EQ(field->texels.back().w, 0);
}

TEST(read_vector_field, refusals) {
    std::string numbers = "0,0,0,1,1,1";
    for (int i = 0; i < 23; ++i)
        numbers += ",1";
    struct CASE {
        std::string text;
        char const* cause;
    };
    CASE const cases[] = {
        {"2,2,2," + numbers, "it announces 2 x 2 x 2 vectors, which take 24 numbers, and holds 23 numbers for them"},
        {"1,2,2," + numbers,
         "it announces 1 x 2 x 2 vectors, of which no side may be below 2, and holds 23 numbers for them"},
        {"2,2,-2," + numbers,
         "it announces 2 x 2 x 0 vectors, of which no side may be below 2, and holds 23 numbers for them"},
        {"2.0,2,2," + numbers,
         "it announces 0 x 2 x 2 vectors, of which no side may be below 2, and holds 23 numbers for them"},
        {"65536,65536,2," + numbers,
         "it announces 65536 x 65536 x 2 vectors, more than 32 bits can count, and holds 23 numbers for them"},
        {"4294967295,4294967295,4294967295," + numbers,
         "it announces 4294967295 x 4294967295 x 4294967295 vectors, more than 32 bits can count, and holds 23 numbers "
         "for them"},
        {"1024,1024,4095," + numbers,
         "it announces 1024 x 1024 x 4095 vectors, which take 12881756160 numbers, and holds 23 numbers for them"},
        {"", "it announces 0 x 0 x 0 vectors, of which no side may be below 2, and holds 0 numbers for them"},
        {"3,3,3,1", "it announces 3 x 3 x 3 vectors, which take 81 numbers, and holds 0 numbers for them"},
    };
    for (CASE const& c : cases) {
        std::string cause;
        EXPECT_FALSE(read(c.text, &cause));
        EXPECT_EQ(cause, c.cause);
    }
    EXPECT_TRUE(read("2,2,2," + numbers + ",1"));
    EXPECT_TRUE(read("2,2,2," + numbers + ",1,2,3,4"));
}

}  // namespace
