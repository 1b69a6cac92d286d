#include "host/framework/project.hpp"
#include "tests/host/framework/messages.hpp"

#include <gtest/gtest.h>

namespace {

using namespace framework;

TEST(project, every_key_is_optional) {
    TEST_FOLDER const folder;
    DIAGNOSTICS found;
    std::optional<PROJECT> const project = load_project(folder.write("zab.toml"), found);
    EXPECT_EQ(messages(found, folder), "");
    ASSERT_TRUE(project);
    EXPECT_EQ(project->folder, folder.path());
    EXPECT_EQ(project->raw, folder.path("raw_data"));
    EXPECT_EQ(project->working, folder.path("working_data"));
    EXPECT_EQ(project->state_folder, folder.path(".zab"));
    EXPECT_FALSE(project->image_database);
    EXPECT_EQ(project->version_control, "none");
}

TEST(project, keys_become_settings) {
    TEST_FOLDER const folder;
    DIAGNOSTICS found;
    std::optional<PROJECT> const project = load_project(folder.write("zab.toml", R"(
        [roots]
        raw = "../art/./textures/"
        working = "/out//game/"
        [global]
        Retail = true
        Build = 7
        [tables]
        packs = "db/packs.xml"
        [image_database]
        enabled = true
        [version_control]
        kind = "git"
        [[rule]]
        name = "Texture"
    )"),
                                                        found);
    EXPECT_EQ(messages(found, folder), "");
    ASSERT_TRUE(project);
    EXPECT_EQ(project->raw, QDir::cleanPath(folder.path("../art/textures")));
    EXPECT_EQ(project->working, "/out/game");
    EXPECT_EQ(project->globals["retail"].value, QVariant(true));
    EXPECT_EQ(project->globals["build"].line, 7);
    EXPECT_EQ(project->tables["packs"], folder.path("db/packs.xml"));
    EXPECT_TRUE(project->image_database);
    EXPECT_EQ(project->version_control, "git");
    ASSERT_EQ(project->rules.rules.size(), 1u);
}

// Text of the project file to every message about it, and whether it is loaded all the same.
TEST(project, mistakes_are_told_by_line_and_column) {
    struct {
        char const* text;
        char const* messages;
        bool loads;
    } const cases[] = {
        {"[roots\n", "zab.toml:1:7: error: ", false},
        {"a = \n", "zab.toml:1:5: error: ", false},
        {"[roots]\nraw = \"a\"\nraw = \"b\"\n", "zab.toml:3:", false},
        {"x = \"\xFF\"\n", "zab.toml:1:", false},
        {"[root]\nraw = \"a\"\n", "zab.toml:1:2: warning: unknown key \"root\"; did you mean \"roots\"?\n", true},
        {"quite_else = 1\n", "zab.toml:1:1: warning: unknown key \"quite_else\"\n", true},
        {"[roots]\nRaw_Data = \"a\"\n", "zab.toml:2:1: warning: unknown key \"Raw_Data\"\n", true},
        {"roots = \"raw\"\n", "zab.toml:1:9: error: \"roots\" is a string; it is written as [roots]\n", false},
        {"[roots]\nraw = 3\nworking = \"\"\n",
         "zab.toml:2:7: error: \"raw\" holds an integer; it takes a path as a string\n"
         "zab.toml:3:11: error: \"working\" holds an empty string; it takes a path as a string\n",
         false},
        {"[global]\nRetail = []\n",
         "zab.toml:2:10: error: the global rule \"Retail\" holds an array; it takes a string, a number or a boolean\n",
         false},
        {"[global]\nRetail = 1\nRETAIL = 2\n",
         "zab.toml:3:1: error: the global rule \"RETAIL\" is set a second time; line 2 sets \"Retail\", and case does "
         "not count\n",
         false},
        {"[image_database]\nenabled = \"yes\"\n",
         "zab.toml:2:11: error: \"enabled\" holds a string; it takes true or false\n", false},
        {"[version_control]\nkind = \"svn\"\n",
         "zab.toml:2:8: error: \"kind\" holds \"svn\"; it takes \"none\", \"git\" or \"perforce\"\n", false},
        {"[rule]\nname = \"Texture\"\n",
         "zab.toml:1:1: error: \"rule\" is a table; rules are written as [[rule]], with two brackets\n", false},
        {"[roots]\nraw = \"/a/b\"\nworking = \"/a/b\"\n",
         "zab.toml:3:11: error: the raw root \"/a/b\" and the working root \"/a/b\" lie in one another; they must be "
         "apart\n",
         false},
        {"[roots]\nworking = \"/a/b\"\nraw = \"/a\"\n",
         "zab.toml:3:7: error: the raw root \"/a\" and the working root \"/a/b\" lie in one another; they must be "
         "apart\n",
         false},
        {"[roots]\nraw = \"/a\"\nworking = \"/ab\"\n", "", true},
    };
    for (auto const& test : cases) {
        TEST_FOLDER const folder;
        DIAGNOSTICS found;
        bool const loaded = load_project(folder.write("zab.toml", test.text), found).has_value();
        EXPECT_EQ(loaded, test.loads) << test.text;
        std::string const shown = messages(found, folder);
        // What the TOML library says about its syntax is its own affair; the place is not.
        if (std::string_view(test.messages).ends_with('\n') || *test.messages == 0)
            EXPECT_EQ(shown, test.messages);
        else
            EXPECT_TRUE(shown.starts_with(test.messages) && shown.size() > std::string_view(test.messages).size())
                << shown;
    }
}

TEST(project, is_found_in_the_nearest_folder_above) {
    TEST_FOLDER const folder;
    QString const outer = folder.write("zab.toml");
    QString const inner = folder.write("a/b/zab.toml");
    QDir().mkpath(folder.path("a/b/c/d"));
    EXPECT_EQ(find_project_file(folder.path("a/b/c/d")), inner);
    EXPECT_EQ(find_project_file(folder.path("a/b")), inner);
    EXPECT_EQ(find_project_file(folder.path("a")), outer);
}

}  // namespace
