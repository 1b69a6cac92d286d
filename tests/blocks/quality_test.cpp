// Holds every encoder to the quality that it has: quality_floors.csv lists the PSNR for each image, format and effort,
// and no change may fall below by more than a hundredth of a decibel. Where one is meant to,
//   ZAB_WRITE_QUALITY_FLOORS=tests/blocks/quality_floors.csv build/release/bin/quality_test
// writes the list anew.
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "blocks/decode.hpp"
#include "blocks/decode_bc6h.hpp"
#include "blocks/encode.hpp"
#include "quality_images.hpp"

namespace {

using namespace blocks;

struct WATCHED {
    char const* name;
    FORMAT format;
    std::array<double, 4> counted;  ///< 1 for the channels that the format codes
    bool one_bit_alpha = false;
};

constexpr WATCHED watched_formats[] = {
    {"bc1", FORMAT::bc1, {1, 1, 1, 0}},        {"bc1 alpha", FORMAT::bc1, {1, 1, 1, 1}, true},
    {"bc2", FORMAT::bc2, {1, 1, 1, 1}},        {"bc3", FORMAT::bc3, {1, 1, 1, 1}},
    {"bc4", FORMAT::bc4_unorm, {1, 0, 0, 0}},  {"bc4 signed", FORMAT::bc4_snorm, {1, 0, 0, 0}},
    {"bc5", FORMAT::bc5_unorm, {1, 1, 0, 0}},  {"bc5 signed", FORMAT::bc5_snorm, {1, 1, 0, 0}},
    {"bc6h", FORMAT::bc6h_uf16, {1, 1, 1, 0}}, {"bc7", FORMAT::bc7, {1, 1, 1, 1}},
};

constexpr std::pair<char const*, EFFORT> efforts[] = {
    {"fast", EFFORT::fast}, {"normal", EFFORT::normal}, {"best", EFFORT::best}};

double psnr(double squared_error, double values, double peak) {
    // An image without error counts as one with a single error of 1.
    return 10 * std::log10(peak * peak * values / std::max(squared_error, 1.0));
}

/// PSNR of the channels that count. With one-bit alpha the image's own alpha is made such, and only the colours of
/// opaque texels count.
double quality(checks::BYTES image, WATCHED const& watched, EFFORT effort) {
    ENCODE_OPTIONS const options = {.effort = effort, .one_bit_alpha = watched.one_bit_alpha};
    std::vector<std::uint8_t> code(encoded_bytes(watched.format, image.width, image.height).value());
    EXPECT_TRUE(encode_image(watched.format, image.view(), options, 1, code));
    checks::BYTES decoded(image.width, image.height);
    EXPECT_TRUE(decode_image_rgba8(watched.format, code, image.width, image.height, decoded.texels));
    double error = 0, values = 0;
    for (std::size_t i = 0; i < image.texels.size(); i += 4) {
        if (watched.one_bit_alpha)
            image.texels[i + 3] = image.texels[i + 3] < options.alpha_threshold ? 0 : 255;
        bool const hidden = watched.one_bit_alpha && image.texels[i + 3] == 0;
        for (std::size_t c = hidden ? 3 : 0; c < 4; ++c) {
            double const difference = image.texels[i + c] - decoded.texels[i + c];
            error += difference * difference * watched.counted[c];
            values += watched.counted[c];
        }
    }
    return psnr(error, values, 255);
}

/// The same between the bit patterns of halves.
double quality(checks::HALVES const& image, WATCHED const& watched, EFFORT effort) {
    std::vector<std::uint8_t> code(encoded_bytes(watched.format, image.width, image.height).value());
    EXPECT_TRUE(encode_image(watched.format, image.view(), {.effort = effort}, 1, code));
    double error = 0, values = 0;
    std::uint32_t const across = blocks_across(image.width);
    for (std::uint32_t block = 0; block < code.size() / 16; ++block) {
        std::uint16_t rgb[16][3];
        decode_bc6h(&code[block * 16], false, rgb);
        for (std::uint32_t t = 0; t < 16; ++t)
            for (std::size_t c = 0; c < 3; ++c) {
                double const difference =
                    image.at(block % across * 4 + t % 4, block / across * 4 + t / 4)[c] - rgb[t][c];
                error += difference * difference;
                ++values;
            }
    }
    return psnr(error, values, 0x7BFF);
}

/// "image,format,effort" and the PSNR.
std::map<std::string, double> read_floors() {
    std::map<std::string, double> floors;
    std::ifstream file(QUALITY_FLOORS);
    for (std::string line; std::getline(file, line);) {
        auto const comma = line.rfind(',');
        if (comma != std::string::npos)
            floors[line.substr(0, comma)] = std::strtod(line.c_str() + comma + 1, nullptr);
    }
    return floors;
}

class QUALITY : public testing::Test {
protected:
    template <class IMAGE>
    void measure(char const* image_name, IMAGE const& image, WATCHED const& watched) {
        double before = 0;
        for (auto const& [effort_name, effort] : efforts) {
            std::string const row = std::string(image_name) + ',' + watched.name + ',' + effort_name;
            double const reached = quality(image, watched, effort);
            // The searches weigh errors by estimates here and there; a hair less is no fault.
            EXPECT_GE(reached, before - 0.01) << row;
            before = reached;
            std::ostringstream number;
            number.precision(3);
            number << std::fixed << reached;
            table_ += row + ',' + number.str() + '\n';
            if (std::getenv(write_to) != nullptr)
                continue;
            auto const floor = floors_.find(row);
            ASSERT_NE(floor, floors_.end()) << row << " is not in " << QUALITY_FLOORS;
            EXPECT_GE(reached, floor->second - 0.01) << row;
        }
    }

    void TearDown() override {
        if (char const* const path = std::getenv(write_to))
            std::ofstream(path) << table_;
    }

    static constexpr char const* write_to = "ZAB_WRITE_QUALITY_FLOORS";
    std::map<std::string, double> const floors_ = read_floors();
    std::string table_ = "image,format,effort,PSNR\n";
};

TEST_F(QUALITY, is_not_lost) {
    std::pair<char const*, checks::BYTES> const images[] = {{"sky", checks::sky_image()},
                                                            {"stone", checks::stone_image()},
                                                            {"lettering", checks::lettering_image()},
                                                            {"normals", checks::normals_image()},
                                                            {"leaves", checks::leaves_image()},
                                                            {"packed", checks::packed_image()}};
    for (auto const& [name, image] : images)
        for (WATCHED const& watched : watched_formats)
            measure(name, image, watched);
    measure("lamps", checks::lamps_image(), watched_formats[8]);
}

}  // namespace
