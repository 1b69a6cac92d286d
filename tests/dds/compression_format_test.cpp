#include "dds/compression_format.hpp"
#include "tests/dds/test_images.hpp"

#include <gtest/gtest.h>

namespace {

TEST(compression_format, every_name) {
    // With gamma correction a name has DXGI formats of its own, or (as_without) means what it means without.
    struct ROW {
        char const* name;
        int nvtt;
        int translucent_nvtt;
        unsigned dxgi;
        int gamma_dxgi;
        int gamma_translucent_dxgi;
        bool with_alpha;
    };
    constexpr int as_without = -1;
    ROW const rows[] = {
        {"l8", 0, 0, 0, as_without, as_without, false},
        {"rgb", 0, 0, 0, 29, 29, false},
        {"rgba", 0, 0, 0, 29, 29, true},
        {"dxt1", 1, 1, 0, 72, 72, false},
        {"dxt1a", 2, 2, 0, 72, 72, false},
        {"dxt3", 3, 3, 0, 75, 75, false},
        {"dxt5", 4, 4, 0, 78, 78, false},
        {"dxt5n", 5, 5, 0, as_without, as_without, false},
        {"dxt1_or_dxt3", 1, 3, 0, 72, 75, false},
        {"dxt1_or_dxt5", 1, 4, 0, 72, 78, false},
        {"dxt1_or_dxt1a", 1, 2, 0, 72, 72, false},
        {"bc7", 4, 4, 98, 99, 99, false},
        {"bc5n", 4, 4, 84, as_without, as_without, false},
        {"bc6", 4, 4, 95, as_without, as_without, false},
    };
    for (ROW const& row : rows) {
        for (bool const opaque : {true, false}) {
            for (bool const gamma : {false, true}) {
                auto const format = select_compression_format(row.name, opaque, gamma);
                ASSERT_TRUE(format) << row.name;
                int const gamma_dxgi = opaque ? row.gamma_dxgi : row.gamma_translucent_dxgi;
                bool const changes = gamma && gamma_dxgi != as_without;
                int const nvtt = changes ? 4 : opaque ? row.nvtt : row.translucent_nvtt;
                unsigned const dxgi = changes ? static_cast<unsigned>(gamma_dxgi) : row.dxgi;
                EXPECT_EQ(static_cast<int>(format->nvtt), nvtt) << row.name << opaque << gamma;
                EXPECT_EQ(static_cast<unsigned>(format->dxgi), dxgi) << row.name << opaque << gamma;
                EXPECT_EQ(format->uncompressed_with_alpha, row.with_alpha) << row.name;
                EXPECT_EQ(format->l8_name, row.name == std::string("l8") ? "l8" : "") << row.name;
                // Uncompressed with gamma correction stays with the rule's compressor.
                EXPECT_EQ(is_routed_to_d3d(format->dxgi), dxgi != 0 && dxgi != 29) << row.name;
            }
        }
    }
    for (char const* name : {"", "BC7", "dxt", "dxt2", "rgba "})
        EXPECT_FALSE(select_compression_format(name, true, false)) << name;
}

TEST(compression_format, only_the_choosing_names_look_at_alpha) {
    auto const image = [](std::uint8_t last_alpha) {
        return make_image(4, 4, [&](auto x, auto y, auto) {
            return TEXEL{0, 0, 0, x == 3 && y == 3 ? last_alpha : std::uint8_t{255}};
        });
    };
    for (char const* name : {"dxt1_or_dxt3", "dxt1_or_dxt5", "dxt1_or_dxt1a"}) {
        EXPECT_TRUE(is_fully_opaque(name, image(255))) << name;
        EXPECT_FALSE(is_fully_opaque(name, image(254))) << name;
    }
    for (char const* name : {"dxt1a", "dxt5", "rgba"})
        EXPECT_TRUE(is_fully_opaque(name, image(0))) << name;
}

}  // namespace
