// Files that take their place whole, under names of any length that a folder can hold.
#include "platform/qe/replace_file.hpp"

#include "tests/platform/temporary_file.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

TEST(replace_file, takes_names_of_every_length) {
    platform_test::TEMPORARY_FILE const folder("");
    std::filesystem::create_directory(folder.path());
    std::string umlauts;
    while (umlauts.size() < 254)
        umlauts += "\xC3\xA4";
    std::vector<std::string> const names = {
        "a",     std::string(250, 'a'), std::string(251, 'a'), std::string(255, 'a'), std::string(254, 'a') + 'b',
        umlauts, umlauts + 'a',         'a' + umlauts};
    for (std::string const& name : names) {
        std::string const unfinished = QE::unfinished_file(folder.path() / name).filename().string();
        EXPECT_LE(unfinished.size(), 255U) << name;
        EXPECT_TRUE(unfinished.ends_with(".part")) << unfinished;
        if (name.size() <= 250) {
            EXPECT_EQ(unfinished, name + ".part");
        }
        // No character is cut in two.
        EXPECT_EQ(std::count(unfinished.begin(), unfinished.end(), '\xC3'),
                  std::count(unfinished.begin(), unfinished.end(), '\xA4'));
        for (std::string const& other : names)
            EXPECT_EQ(unfinished == QE::unfinished_file(other), name == other) << name << ' ' << other;
        for (std::uint8_t const byte : {1, 2}) {
            std::string cause;
            ASSERT_TRUE(QE::replace_file(folder.path() / name, std::span(&byte, 1), cause)) << name << cause;
            EXPECT_EQ(std::ifstream(folder.path() / name).get(), byte);
            EXPECT_FALSE(std::filesystem::exists(folder.path() / unfinished));
        }
    }
    std::filesystem::remove_all(folder.path());
}

TEST(replace_file, two_who_write_one_target_never_mix) {
    platform_test::TEMPORARY_FILE const target(".dds");
    std::vector<std::uint8_t> const first(100000, 1);
    std::vector<std::uint8_t> const second(100000, 2);
    std::string cause;
    {
        auto one = QE::OUTPUT_FILE::open(target.path(), cause);
        ASSERT_TRUE(one && one->write(first, cause)) << cause;
        auto other = QE::OUTPUT_FILE::open(target.path(), cause);
        ASSERT_TRUE(other && other->write(std::span(second).first(4), cause)) << cause;
        ASSERT_TRUE(one->commit(cause)) << cause;
        EXPECT_EQ(std::filesystem::file_size(target.path()), first.size());
        ASSERT_TRUE(other->commit(cause)) << cause;
        auto robbed = QE::OUTPUT_FILE::open(target.path(), cause);
        ASSERT_TRUE(robbed && std::filesystem::remove(QE::unfinished_file(target.path())));
        EXPECT_FALSE(robbed->commit(cause));
    }
    EXPECT_EQ(std::filesystem::file_size(target.path()), 4U);
    EXPECT_FALSE(QE::replace_file(target.path(), second, cause, QE::EARLIER_FILE::kept));
    EXPECT_EQ(std::filesystem::file_size(target.path()), 4U);
    for (int number = 0; number < 2; ++number)
        EXPECT_FALSE(std::filesystem::exists(QE::unfinished_file(target.path(), number)));
}

TEST(replace_file, what_has_the_unfinished_files_name_stays) {
    platform_test::TEMPORARY_FILE const target(".dds");
    std::vector<std::filesystem::path> names;
    for (int number = 0; number < QE::most_unfinished_names; ++number)
        names.push_back(QE::unfinished_file(target.path(), number));
    std::filesystem::create_directory(names[0]);
    std::filesystem::create_symlink("nowhere", names[1]);
    std::uint8_t const byte = 7;
    std::string cause;
    ASSERT_TRUE(QE::replace_file(target.path(), std::span(&byte, 1), cause)) << cause;
    for (std::size_t i = 2; i < names.size(); ++i)
        std::ofstream(names[i]) << "mine";
    EXPECT_FALSE(QE::replace_file(target.path(), std::span(&byte, 1), cause));
    EXPECT_TRUE(cause.ends_with(".15.part is in the way")) << cause;
    EXPECT_EQ(std::filesystem::read_symlink(names[1]), "nowhere");
    for (std::filesystem::path const& name : names)
        EXPECT_TRUE(std::filesystem::remove(name)) << name;
}

}  // namespace
