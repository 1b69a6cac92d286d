// Headers word by word, and what is read out of them; files written and read again.
#include "platform/dds_container/dds_container.hpp"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using namespace dds_container;
using BYTES = std::vector<std::uint8_t>;
using WORDS = std::vector<std::pair<std::size_t, std::uint32_t>>;

// Where the words of a header stand, and what some of them mean.
constexpr std::size_t flags = 8, height = 12, width = 16, depth = 24, mips = 28, pf_flags = 80, code = 84, bits = 88,
                      red = 92, green = 96, blue = 100, alpha = 104, caps_2 = 112, dxgi = 128, dimension = 132,
                      misc = 136, array_size = 140;
constexpr std::uint32_t has_code = 0x4, is_rgb = 0x40, has_alpha = 0x1, is_alpha = 0x2, is_luminance = 0x20000;
constexpr std::uint32_t dxt1 = 0x31545844, dxt5 = 0x35545844, dx10 = 0x30315844;

void put(BYTES& file, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        file[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

BYTES header(WORDS const& words, std::size_t payload = 0) {
    bool extended = false;
    for (auto const& [at, value] : words) {
        extended = extended || (at == code && value == dx10);
    }
    BYTES file((extended ? 148 : 128) + payload);
    put(file, 0, 0x20534444);
    put(file, 4, 124);
    for (auto const& [at, value] : words) {
        put(file, at, value);
    }
    return file;
}

WORDS with(WORDS words, WORDS const& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

WORDS const sides_8 = {{width, 8}, {height, 8}};
WORDS const dxt1_8 = with(sides_8, {{pf_flags, has_code}, {code, dxt1}});
WORDS const dx10_8 = with(sides_8, {{pf_flags, has_code}, {code, dx10}, {dimension, 3}, {array_size, 1}});

TEST(dds_header, is_read_as_files_in_the_wild_fill_it) {
    struct CASE {
        char const* name;
        WORDS words;
        std::uint32_t mips, depth, faces, elements;
        DXGI format;
        std::uint64_t payload;
        bool has_alpha;
    };
    static CASE const cases[] = {
        {"one level, count 0, no flags", dxt1_8, 1, 1, 1, 1, DXGI::bc1_unorm, 32, true},
        {"a chain", with(dxt1_8, {{mips, 4}}), 4, 1, 1, 1, DXGI::bc1_unorm, 32 + 8 + 8 + 8, true},
        {"sides that are no multiple of 4",
         {{width, 5}, {height, 9}, {pf_flags, has_code}, {code, dxt5}},
         1,
         1,
         1,
         1,
         DXGI::bc3_unorm,
         2 * 3 * 16,
         true},
        {"a code without its flag", with(sides_8, {{code, dxt1}}), 1, 1, 1, 1, DXGI::bc1_unorm, 32, true},
        {"depth without a volume", with(dxt1_8, {{depth, 9}}), 1, 1, 1, 1, DXGI::bc1_unorm, 32, true},
        {"a volume of few flags",
         {{flags, 0x800000},
          {caps_2, 0x200000},
          {width, 4},
          {height, 2},
          {depth, 3},
          {pf_flags, has_code},
          {code, 113}},
         1,
         3,
         1,
         1,
         DXGI::r16g16b16a16_float,
         4 * 2 * 3 * 8,
         true},
        {"a volume with a chain",
         {{caps_2, 0x200000}, {width, 2}, {height, 2}, {depth, 8}, {mips, 4}, {pf_flags, has_code}, {code, 114}},
         4,
         8,
         1,
         1,
         DXGI::r32_float,
         (4 * 8 + 4 + 2 + 1) * 4,
         false},
        {"a volume of depth 0", with(dxt1_8, {{caps_2, 0x200000}}), 1, 1, 1, 1, DXGI::bc1_unorm, 32, true},
        {"a cube map", with(dxt1_8, {{caps_2, 0xfe00}, {mips, 2}}), 2, 1, 6, 1, DXGI::bc1_unorm, 6 * 40, true},
        {"a cube map of two faces", with(dxt1_8, {{caps_2, 0x0e00}}), 1, 1, 2, 1, DXGI::bc1_unorm, 2 * 32, true},
        {"an array of cube maps", with(dx10_8, {{dxgi, 98}, {misc, 4}, {array_size, 3}}), 1, 1, 6, 3, DXGI::bc7_unorm,
         18 * 64, true},
        {"an extended volume", with(dx10_8, {{dxgi, 28}, {dimension, 4}, {depth, 2}}), 1, 2, 1, 1, DXGI::r8g8b8a8_unorm,
         512, true},
        {"typeless", with(dx10_8, {{dxgi, 90}}), 1, 1, 1, 1, DXGI::b8g8r8a8_unorm, 256, true},
        {"one dimension", with(dx10_8, {{dxgi, 61}, {dimension, 2}}), 1, 1, 1, 1, DXGI::r8_unorm, 8, false},
    };
    for (CASE const& c : cases) {
        SCOPED_TRACE(c.name);
        std::string cause;
        auto const d = read_dds(header(c.words, c.payload), cause);
        ASSERT_TRUE(d) << cause;
        EXPECT_EQ(d->mip_count, c.mips);
        EXPECT_EQ(d->depth, c.depth);
        EXPECT_EQ(d->face_count, c.faces);
        EXPECT_EQ(d->array_size, c.elements);
        EXPECT_EQ(d->format, c.format);
        EXPECT_EQ(d->has_alpha, c.has_alpha);
        EXPECT_EQ(payload_size(*d), c.payload);
        EXPECT_FALSE(read_dds(header(c.words, c.payload - 1), cause)) << "one byte is missing";
    }
}

TEST(dds_header, tells_legacy_texels_apart) {
    struct CASE {
        WORDS words;
        DXGI format;
        PIXEL_MASKS masks;
        std::uint32_t bytes;
    };
    static CASE const cases[] = {
        {{{pf_flags, is_rgb | has_alpha},
          {bits, 32},
          {red, 0xff0000},
          {green, 0xff00},
          {blue, 0xff},
          {alpha, 0xff000000}},
         DXGI::b8g8r8a8_unorm,
         {32, 0xff0000, 0xff00, 0xff, 0xff000000},
         4},
        {{{pf_flags, is_rgb}, {bits, 32}, {red, 0xff0000}, {green, 0xff00}, {blue, 0xff}, {alpha, 0xff000000}},
         DXGI::b8g8r8x8_unorm,
         {32, 0xff0000, 0xff00, 0xff, 0},
         4},
        {{{pf_flags, is_rgb}, {bits, 24}, {red, 0xff0000}, {green, 0xff00}, {blue, 0xff}},
         DXGI::unknown,
         {24, 0xff0000, 0xff00, 0xff, 0},
         3},
        {{{pf_flags, is_rgb}, {bits, 16}, {red, 0xf800}, {green, 0x7e0}, {blue, 0x1f}},
         DXGI::b5g6r5_unorm,
         {16, 0xf800, 0x7e0, 0x1f, 0},
         2},
        {{{pf_flags, is_luminance}, {bits, 8}, {red, 0xff}, {green, 0xff}, {blue, 0xff}},
         DXGI::unknown,
         {8, 0xff, 0, 0, 0, true},
         1},
        {{{pf_flags, is_luminance | has_alpha}, {bits, 16}, {red, 0xff}, {alpha, 0xff00}},
         DXGI::unknown,
         {16, 0xff, 0, 0, 0xff00, true},
         2},
        {{{pf_flags, is_alpha}, {bits, 8}, {alpha, 0xff}}, DXGI::a8_unorm, {8, 0, 0, 0, 0xff}, 1},
    };
    for (CASE const& c : cases) {
        std::string cause;
        auto const d = read_dds_header(header(with(sides_8, c.words)), cause);
        ASSERT_TRUE(d) << cause;
        EXPECT_EQ(d->format, c.format);
        EXPECT_EQ(d->masks, c.masks);
        EXPECT_EQ(d->bytes_per_texel, c.bytes);
        EXPECT_EQ(d->has_alpha, c.masks.alpha != 0);
        EXPECT_EQ(d->four_cc, "");
    }
}

TEST(dds_header, is_refused_with_its_reason) {
    struct CASE {
        BYTES file;
        char const* cause;
    };
    static CASE const cases[] = {
        {{'D', 'D', 'S'}, "this is not a DDS file"},
        {BYTES(128, 'D'), "this is not a DDS file"},
        {{}, "this is not a DDS file"},
        {[] {
             BYTES file = header(dxt1_8);
             file.resize(127);
             return file;
         }(),
         "the file ends after 127 of the 128 bytes of its DDS header"},
        {[] {
             BYTES file = header(dx10_8);
             file.resize(147);
             return file;
         }(),
         "the file ends after 147 of the 148 bytes of its DDS header"},
        {header(with(dxt1_8, {{4, 32}})), "the DDS header gives its size as 32 bytes, not 124"},
        {header(with(dxt1_8, {{width, 0}})), "the header announces 0 x 8 texels"},
        {header(with(dxt1_8, {{width, 65537}})),
         "the header announces 65537 x 8 texels; a side may have at most 65536"},
        {header(with(dxt1_8, {{width, 0xffffffff}, {height, 0xffffffff}})),
         "the header announces 4294967295 x 4294967295 texels; a side may have at most 65536"},
        {header(with(dxt1_8, {{width, 65536}, {height, 4097}})),
         "the header announces 65536 x 4097 texels, more than the 268435456 that a surface may have"},
        {header(with(dxt1_8, {{caps_2, 0x200000}, {width, 65536}, {height, 65536}, {depth, 65536}})),
         "the header announces 65536 x 65536 x 65536 texels, more than the 268435456 that a surface may have"},
        {header(with(dxt1_8, {{mips, 5}})), "the header announces 5 mip levels, but 8 x 8 texels have at most 4"},
        {header(with(dxt1_8, {{mips, 0xffffffff}})),
         "the header announces 4294967295 mip levels, but 8 x 8 texels have at most 4"},
        {header(with(dxt1_8, {{caps_2, 0x200200}})), "the header announces a volume that is a cube map or an array"},
        {header(with(sides_8, {{pf_flags, has_code}, {code, 0x59565955}})),
         "texels of the code UYVY are not supported"},
        {header(with(sides_8, {{pf_flags, is_rgb}, {bits, 12}, {red, 0xf}})), "texels of 12 bits are not supported"},
        {header(with(sides_8, {{pf_flags, is_rgb}, {bits, 8}, {red, 0xf00}})),
         "the channel masks do not fit into texels of 8 bits"},
        {header(with(sides_8, {{pf_flags, is_rgb}, {bits, 16}})),
         "the channel masks do not fit into texels of 16 bits"},
        {header(with(sides_8, {{pf_flags, is_rgb}, {bits, 16}, {red, 0x5}})),
         "channel masks with gaps are not supported"},
        {header(with(dx10_8, {{dxgi, 100}})), "texels of the DXGI format 100 are not supported"},
        {header(with(dx10_8, {{dxgi, 28}, {dimension, 1}})), "the header announces the resource dimension 1"},
        {header(with(dx10_8, {{dxgi, 28}, {array_size, 0}})), "the header announces an array of no elements"},
        {header(with(dx10_8, {{dxgi, 2}, {width, 16384}, {height, 16384}, {misc, 4}, {array_size, 0xffffffff}}), 10),
         "the header announces 16384 x 16384 texels, 1 mip levels and 25769803770 surfaces (18446744073709551615 "
         "bytes), but only 10 bytes follow"},
    };
    for (CASE const& c : cases) {
        std::string cause;
        EXPECT_FALSE(read_dds(c.file, cause));
        EXPECT_EQ(cause, c.cause);
    }
}

TEST(dds_surface, lies_element_by_element_face_by_face_level_by_level_slice_by_slice) {
    std::string cause;
    auto const cubes =
        read_dds_header(header(with(dx10_8, {{dxgi, 71}, {misc, 4}, {array_size, 2}, {mips, 2}})), cause);
    ASSERT_TRUE(cubes) << cause;
    auto const level = find_surface(*cubes, 1, 2, 1, 0);
    ASSERT_TRUE(level);
    EXPECT_EQ(level->offset, 148u + (6 + 2) * 40 + 32);
    EXPECT_EQ(level->size, 8u);
    EXPECT_EQ(level->width, 4u);
    EXPECT_FALSE(find_surface(*cubes, 2, 0, 0, 0));
    EXPECT_FALSE(find_surface(*cubes, 0, 6, 0, 0));
    EXPECT_FALSE(find_surface(*cubes, 0, 0, 2, 0));
    EXPECT_FALSE(find_surface(*cubes, 0, 0, 0, 1));

    auto const volume = read_dds_header(
        header({{caps_2, 0x200000}, {width, 6}, {height, 2}, {depth, 4}, {mips, 2}, {pf_flags, has_code}, {code, 113}}),
        cause);
    ASSERT_TRUE(volume) << cause;
    auto const slice = find_surface(*volume, 0, 0, 1, 1);
    ASSERT_TRUE(slice);
    EXPECT_EQ(slice->offset, 128u + 6 * 2 * 4 * 8 + 3 * 8);
    EXPECT_EQ(slice->row_pitch, 24u);
    EXPECT_EQ(slice->width, 3u);
    EXPECT_EQ(slice->height, 1u);
    EXPECT_FALSE(find_surface(*volume, 0, 0, 1, 2));
}

TEST(dds_writing, is_undone_by_reading) {
    struct CASE {
        char const* name;
        DDS_DESCRIPTION description;
        std::vector<std::size_t> sizes;
    };
    auto const make = [](HEADER_KIND kind, std::uint32_t side, std::uint32_t levels, DXGI format) {
        DDS_DESCRIPTION d;
        d.header_kind = kind;
        d.width = d.height = side;
        d.mip_count = levels;
        d.format = format;
        return d;
    };
    DDS_DESCRIPTION cube = make(HEADER_KIND::legacy, 4, 1, DXGI::bc3_unorm);
    cube.is_cube = true;
    cube.face_count = 6;
    DDS_DESCRIPTION volume = make(HEADER_KIND::dx10, 2, 2, DXGI::r16g16b16a16_float);
    volume.is_volume = true;
    volume.depth = 4;
    DDS_DESCRIPTION array = make(HEADER_KIND::dx10, 4, 1, DXGI::bc7_unorm_srgb);
    array.array_size = 2;
    array.is_premultiplied = true;
    DDS_DESCRIPTION grey = make(HEADER_KIND::legacy, 3, 1, DXGI::unknown);
    grey.masks = {8, 0xff, 0, 0, 0, true};
    DDS_DESCRIPTION premultiplied = make(HEADER_KIND::legacy, 4, 1, DXGI::bc2_unorm);
    premultiplied.is_premultiplied = true;
    static CASE const cases[] = {
        {"a chain", make(HEADER_KIND::legacy, 8, 4, DXGI::bc1_unorm), {32, 8, 8, 8}},
        {"masks by number", make(HEADER_KIND::legacy, 2, 1, DXGI::b8g8r8a8_unorm), {16}},
        {"signed masks", make(HEADER_KIND::legacy, 2, 1, DXGI::r8g8_snorm), {8}},
        {"numeric code", make(HEADER_KIND::legacy, 1, 1, DXGI::r32g32b32a32_float), {16}},
        {"luminance", grey, {9}},
        {"DXT2", premultiplied, {16}},
        {"a cube map", cube, {16, 16, 16, 16, 16, 16}},
        {"a volume", volume, {128, 16}},
        {"an array", array, {16, 16}},
    };
    for (CASE const& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<BYTES> levels;
        BYTES payload;
        for (std::size_t const size : c.sizes) {
            levels.emplace_back(size, static_cast<std::uint8_t>(levels.size() + 1));
            payload.insert(payload.end(), levels.back().begin(), levels.back().end());
        }
        std::vector<std::span<std::uint8_t const>> const surfaces(levels.begin(), levels.end());
        std::string cause;
        auto const file = write_dds(c.description, surfaces, cause);
        ASSERT_TRUE(file) << cause;
        auto const d = read_dds(*file, cause);
        ASSERT_TRUE(d) << cause;
        EXPECT_EQ(d->header_kind, c.description.header_kind);
        EXPECT_EQ(d->width, c.description.width);
        EXPECT_EQ(d->depth, c.description.depth);
        EXPECT_EQ(d->mip_count, c.description.mip_count);
        EXPECT_EQ(d->array_size, c.description.array_size);
        EXPECT_EQ(d->is_cube, c.description.is_cube);
        EXPECT_EQ(d->is_volume, c.description.is_volume);
        EXPECT_EQ(d->format, c.description.format);
        EXPECT_EQ(d->is_premultiplied, c.description.is_premultiplied);
        EXPECT_EQ(d->masks.is_luminance, c.description.masks.is_luminance);
        EXPECT_EQ(BYTES(file->begin() + static_cast<std::ptrdiff_t>(d->header_size()), file->end()), payload);
    }
}

TEST(dds_writing, refuses_what_the_header_cannot_say) {
    std::string cause;
    BYTES const block(16);
    std::vector<std::span<std::uint8_t const>> const one = {block};
    DDS_DESCRIPTION d;
    d.width = d.height = 4;
    d.format = DXGI::bc7_unorm;
    EXPECT_FALSE(write_dds(d, one, cause));
    EXPECT_EQ(cause, "a legacy header cannot hold BC7_UNORM texels");
    d.header_kind = HEADER_KIND::dx10;
    EXPECT_TRUE(write_dds(d, one, cause));
    d.mip_count = 2;
    EXPECT_FALSE(write_dds(d, one, cause));
    EXPECT_EQ(cause, "the description asks for 1 surfaces of 2 levels, but 1 levels were given");
    d.mip_count = 1;
    d.width = 5;
    EXPECT_FALSE(write_dds(d, one, cause));
    EXPECT_EQ(cause, "level 0 takes 32 bytes, but 16 were given");
}

}  // namespace
