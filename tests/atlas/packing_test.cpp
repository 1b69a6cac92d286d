// Where textures land: the packer that ships against the plain rule, and the rule's own peculiarities.
#include "atlas/atlas_builder.hpp"
#include "tests/atlas/plain_packer.hpp"
#include "tests/atlas/textures.hpp"

#include <gtest/gtest.h>

#include <random>

namespace {

struct PACKING {
    char const* what;
    PAGE_EXTENTS page;
    std::int32_t least_exponent;
    std::int32_t greatest_exponent;
    int count;
    bool any_size = false;  ///< sides that are no powers of two, and no order
};

/// The builder's pages for these sizes, place by place and page by page.
void expect_as_plain(PACKING const& packing, std::uint32_t seed) {
    SCOPED_TRACE(std::string(packing.what) + ", seed " + std::to_string(seed));
    std::mt19937 random(seed);
    auto const side = [&] {
        std::uint32_t const span = static_cast<std::uint32_t>(packing.greatest_exponent - packing.least_exponent) + 1;
        std::uint32_t const power = 1U << (static_cast<std::uint32_t>(packing.least_exponent) + random() % span);
        return packing.any_size ? power + random() % power : power;
    };
    TEXTURES sources;
    for (int i = 0; i < packing.count; ++i) {
        std::uint32_t const width = side();
        sources.push_back(texture(std::to_string(i), width, side(), D3D_FORMAT::l8));
    }
    ATLAS_GROUP group;
    if (packing.any_size) {
        for (auto const& source : sources)
            group.push_back(source.get());
    } else {
        group = group_by_format(sources).at(D3D_FORMAT::l8);
    }
    std::vector<PAGE_EXTENTS> sizes;
    for (ATLAS_SOURCE_TEXTURE const* const source : group)
        sizes.push_back({source->width(), source->height()});
    std::vector<PLAIN_PACKER> plain_pages;
    std::vector<PLAIN_PLACE> const plain = pack_plainly(sizes, packing.page, plain_pages);

    testing::internal::CaptureStderr();
    ATLAS_OPTIONS const options = options_of({"-width", std::to_string(packing.page.width), "-height",
                                              std::to_string(packing.page.height), "-o", "out/p", "source"});
    testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    ATLAS_BUILDER builder(options);
    builder.build_pages(group);
    std::string const messages = testing::internal::GetCapturedStderr();
    int unplaced = 0;
    for (std::size_t i = 0; i < group.size(); ++i) {
        ATLAS_REGION const& region = group[i]->region();
        PLAIN_PLACE const place = {group[i]->page() != nullptr ? group[i]->page()->page_index() : -1,
                                   {region.left, region.left + region.width, region.top, region.top + region.height}};
        ASSERT_EQ(place, plain[i]) << "texture " << i;
        unplaced += place.first < 0 ? 1 : 0;
    }
    EXPECT_EQ(std::count(messages.begin(), messages.end(), '\n'), 2 * unplaced);

    testing::internal::CaptureStderr();
    builder.finalize_all();
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(builder.groups()[0].size(), plain_pages.size());
    for (std::size_t i = 0; i < plain_pages.size(); ++i) {
        PAGE_EXTENTS const extents = {builder.groups()[0][i]->width(), builder.groups()[0][i]->height()};
        // A page that took nothing stays as it was made.
        EXPECT_EQ(extents, plain_pages[i].is_empty() ? packing.page : plain_pages[i].shrunk_extents()) << "page " << i;
    }
}

TEST(atlas_packing, lands_where_the_plain_rule_puts_it) {
    PACKING const packings[] = {
        {"mixed sizes", {256, 256}, 2, 6, 300},
        {"extreme shapes, which overlap", {128, 64}, 0, 7, 200},
        {"one page", {512, 512}, 3, 5, 100},
        {"sides of the page that are no powers of two", {200, 75}, 1, 6, 150},
        {"any size in any order", {300, 170}, 0, 6, 150, true},
        {"taller and wider than the page", {32, 32}, 3, 6, 60},
    };
    for (PACKING const& packing : packings) {
        for (std::uint32_t seed = 0; seed < 25; ++seed)
            expect_as_plain(packing, seed);
    }
}

struct INSERTION {
    PAGE_EXTENTS size;
    std::optional<std::pair<std::int32_t, std::int32_t>> place;  ///< left, top
};

TEST(atlas_packing, places_by_hand) {
    struct CASE {
        char const* what;
        PAGE_EXTENTS page;
        std::vector<INSERTION> insertions;
        PAGE_EXTENTS shrunk;
    };
    CASE const cases[] = {
        {"side by side", {512, 256}, {{{256, 256}, {{0, 0}}}, {{256, 256}, {{256, 0}}}}, {512, 256}},
        {"one alone", {4096, 4096}, {{{128, 64}, {{0, 0}}}}, {128, 64}},
        {"too wide, too high", {64, 64}, {{{128, 16}, {}}, {{16, 128}, {}}, {{64, 64}, {{0, 0}}}}, {64, 64}},
        {"no texels left over", {64, 64}, {{{64, 32}, {{0, 0}}}, {{64, 32}, {{0, 32}}}, {{1, 1}, {}}}, {64, 64}},
        {"on its own grid only", {96, 64}, {{{32, 64}, {{0, 0}}}, {{64, 32}, {}}, {{32, 32}, {{32, 0}}}}, {96, 64}},
        // The tall one reaches over the square's upper and lower edge, so none of its own corners is covered.
        {"an enclosed rectangle is missed",
         {64, 64},
         {{{64, 16}, {{0, 0}}}, {{16, 16}, {{0, 16}}}, {{16, 64}, {}}, {{8, 32}, {{0, 32}}}, {{32, 8}, {{32, 16}}}},
         {64, 64}},
        {"and covered", {32, 16}, {{{10, 10}, {{0, 0}}}, {{3, 3}, {{12, 0}}}, {{11, 5}, {{11, 0}}}}, {32, 16}},
    };
    for (CASE const& test : cases) {
        SCOPED_TRACE(test.what);
        ATLAS_PACKER_2D packer(test.page.width, test.page.height);
        for (INSERTION const& insertion : test.insertions) {
            auto const place = packer.insert(insertion.size.width, insertion.size.height);
            ASSERT_EQ(place.has_value(), insertion.place.has_value());
            if (place) {
                EXPECT_EQ(std::pair(place->left, place->top), *insertion.place);
            }
        }
        EXPECT_EQ(packer.shrunk_extents(), test.shrunk);
    }
}

TEST(atlas_packing, order_of_packing) {
    TEXTURES sources;
    sources.push_back(texture("a", 16, 64, D3D_FORMAT::l8));
    sources.push_back(texture("b", 32, 32, D3D_FORMAT::a8b8g8r8));
    sources.push_back(texture("c", 64, 16, D3D_FORMAT::l8));
    sources.push_back(texture("d", 8, 8, D3D_FORMAT::l8));
    sources.push_back(texture("e", 64, 16, D3D_FORMAT::l8));
    sources.push_back(texture("f", 64, 64, D3D_FORMAT::l8));
    std::string order;
    for (auto const& [format, group] : group_by_format(sources)) {
        for (ATLAS_SOURCE_TEXTURE const* const source : group)
            order += source->file_name();
        order += '|';
    }
    EXPECT_EQ(order, "b|fcead|");
}

}  // namespace
