#include "dds/texture_rules.hpp"
#include "tests/dds/test_images.hpp"
#include "tests/support/test_rules.hpp"

#include <gtest/gtest.h>

namespace {

LOGICAL_PATH const path(QStringLiteral("<raw>/a.tga"));

TEXTURE_RULES read(TEST_RULES::PROPERTIES properties) {
    TEST_SINK sink;
    TEST_RULES rules;
    rules.add("", "Texture", properties);
    TEXTURE_RULES record;
    EXPECT_TRUE(read_texture_rules(sink, rules, path, record));
    EXPECT_EQ(sink.lines, QStringList());
    return record;
}

TEST(texture_rules, a_rule_without_properties_gives_the_defaults) {
    TEXTURE_RULES const record = read({});
    EXPECT_EQ(record.compressor, COMPRESSOR_TYPE::NVIDIA);
    EXPECT_TRUE(record.mipmaps);
    EXPECT_FALSE(record.normal_map || record.parallax_map || record.need_gamma_correction ||
                 record.premultiplied_alpha || record.use_hq_one_bit_alpha || record.fastest_quality);
    EXPECT_EQ(record.compression_format, "dxt1");
    EXPECT_FLOAT_EQ(record.average_grey, 0.005F);
    EXPECT_EQ(record.min_alpha, 5);
    EXPECT_EQ(record.max_alpha, 250);
    EXPECT_EQ(record.mip_filter, "box");
    EXPECT_EQ(record.drop_mips, 0);
    EXPECT_EQ(record.max_size, 65536);
}

TEST(texture_rules, values_are_converted_not_judged) {
    EXPECT_FALSE(read({{"Mipmaps", false}}).mipmaps);
    EXPECT_FALSE(read({{"mipmaps", "FALSE"}}).mipmaps);
    EXPECT_FALSE(read({{"Mipmaps", "0"}}).mipmaps);
    EXPECT_FALSE(read({{"Mipmaps", ""}}).mipmaps);
    EXPECT_TRUE(read({{"Mipmaps", "no"}}).mipmaps);
    EXPECT_EQ(read({{"CompressionFormat", "DXT5"}}).compression_format, "dxt5");
    EXPECT_EQ(read({{"CompressionFormat", ""}}).compression_format, "");
    EXPECT_EQ(read({{"MinAlpha", "x"}}).min_alpha, 0);
    EXPECT_FLOAT_EQ(read({{"AverageGrey", "0.5"}}).average_grey, 0.5F);
    EXPECT_EQ(read({{"DropMips", "abc"}}).drop_mips, 0);
    EXPECT_EQ(read({{"DropMips", 2}}).drop_mips, 2);
    EXPECT_EQ(read({{"MaxSize", 512}}).max_size, 512);
    EXPECT_EQ(read({{"MaxSize", 0}}).max_size, 65536);
    EXPECT_EQ(read({{"MaxSize", -3}}).max_size, 65536);
    EXPECT_EQ(read({{"MaxSize", 4294967300LL}}).max_size, 65536);
    EXPECT_EQ(read({{"DropMips", -4294967295LL}}).drop_mips, 0);
    EXPECT_EQ(read({{"Compressor", "ATI"}}).compressor, COMPRESSOR_TYPE::ATI);
    EXPECT_EQ(read({{"Compressor", ""}}).compressor, COMPRESSOR_TYPE::NVIDIA);
}

TEST(texture_rules, the_mip_filter_is_tested_by_one_name_and_read_by_another) {
    EXPECT_EQ(read({{"MipMapFilterType", "kaiser"}}).mip_filter, "");
    EXPECT_EQ(read({{"MipmMapFilterType", "kaiser"}}).mip_filter, "box");
    EXPECT_EQ(read({{"MipMapFilterType", "x"}, {"MipmMapFilterType", "Kaiser"}}).mip_filter, "kaiser");
}

TEST(texture_rules, failures_are_reported) {
    TEST_SINK sink;
    TEXTURE_RULES record;
    EXPECT_FALSE(read_texture_rules(sink, TEST_RULES(), path, record));
    EXPECT_FALSE(read_texture_rules(sink, TEST_RULES().add("", "Texture", {{"Compressor", "D3D"}}), path, record));
    EXPECT_EQ(sink.lines, (QStringList{"Failed to read Texture2 Rules !", "Unknown compressor type: d3d"}));
}

}  // namespace
