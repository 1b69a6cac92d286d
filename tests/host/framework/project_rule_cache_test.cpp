#include "host/framework/project_rule_cache.hpp"
#include "processor/host/rule_schema.hpp"
#include "tests/host/framework/messages.hpp"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace framework;

// A project whose files are given as text: the project file, then rule files by folder.
struct RULE_PROJECT {
    RULE_PROJECT(char const* project_text, std::vector<std::pair<char const*, char const*>> const& rule_files) {
        project = *load_project(folder.write("zab.toml", project_text), diagnostics);
        for (auto const& [name, text] : rule_files) {
            QString const below = QLatin1String(name);
            QString const path = QStringLiteral("raw_data/%1/zab_rules.toml").arg(below);
            files.push_back(read_rule_file(QDir::cleanPath(folder.write(path, text)), below, diagnostics));
        }
    }

    TEST_FOLDER folder;
    DIAGNOSTICS diagnostics;
    PROJECT project;
    std::vector<RULE_FILE> files;
};

// "property=value@file:line ..." in the order of the names; "-" when there is no such rule.
std::string resolved(RULE const& rule, TEST_FOLDER const& folder) {
    if (!rule.exists())
        return "-";
    QString text;
    for (RULE_VALUES::VALUE const& value : rule.values()->all())
        text += QStringLiteral("%1=%2@%3:%4 ")
                    .arg(value.property, value.value.toString(), QDir(folder.path()).relativeFilePath(value.file))
                    .arg(value.line);
    return text.trimmed().toStdString();
}

TEST(project_rule_cache, tables_are_laid_over_one_another) {
    RULE_PROJECT const given("[[rule]]\nname = \"Texture\"\nFormat = \"dxt1\"\nLevels = 3\n",
                             {{"", "[[rule]]\nname = \"Texture\"\nlevels = 4\n"
                                   "[[rule]]\nname = \"Texture\"\nmatch = \"ui/\"\nGamma = 2.5\n"},
                              // Given out of order, and relative to its own folder.
                              {"ui/hud", "[[rule]]\nname = \"Texture\"\nmatch = \"/*.png\"\nFormat = \"hud\"\n"
                                         "[[rule]]\nname = \"Atlas\"\nmatch = [\"*\", \"!big.png\"]\nPath = \"p\"\n"},
                              {"ui", "[[rule]]\nname = \"Texture\"\nFormat = \"rgba\"\nFlag = true\n"}});
    EXPECT_EQ(messages(given.diagnostics, given.folder), "");
    PROJECT_RULE_CACHE const cache(given.project, given.files);
    struct {
        char const* path;
        char const* rule;
        char const* expected;
    } const cases[] = {
        {"<raw>/a.tga", "Texture", "Format=dxt1@zab.toml:3 levels=4@raw_data/zab_rules.toml:3"},
        {"<raw>/x/y/none_such", "Texture", "Format=dxt1@zab.toml:3 levels=4@raw_data/zab_rules.toml:3"},
        {"<raw>/ui/a.tga", "Texture",
         "Flag=true@raw_data/ui/zab_rules.toml:4 Format=rgba@raw_data/ui/zab_rules.toml:3 "
         "Gamma=2.5@raw_data/zab_rules.toml:7 levels=4@raw_data/zab_rules.toml:3"},
        {"<raw>/ui/hud/a.png", "Texture",
         "Flag=true@raw_data/ui/zab_rules.toml:4 Format=hud@raw_data/ui/hud/zab_rules.toml:4 "
         "Gamma=2.5@raw_data/zab_rules.toml:7 levels=4@raw_data/zab_rules.toml:3"},
        {"<raw>/ui/hud/x/a.png", "Texture",
         "Flag=true@raw_data/ui/zab_rules.toml:4 Format=rgba@raw_data/ui/zab_rules.toml:3 "
         "Gamma=2.5@raw_data/zab_rules.toml:7 levels=4@raw_data/zab_rules.toml:3"},
        {"<raw>/ui/hud/x/a.png", "Atlas", "Path=p@raw_data/ui/hud/zab_rules.toml:8"},
        {"<raw>/ui/hud/big.png", "Atlas", "-"},
        {"<raw>/ui/a.png", "Atlas", "-"},
        {"<raw>/uihud/a.png", "Atlas", "-"},
        {"<working>/a.dds", "Texture", "-"},
        {"<raw>", "Texture", "-"},
        {"a.tga", "Texture", "-"},
        {"<raw>/a.tga", "texture", "-"},
    };
    // Twice: the second answer comes from what the first one left behind.
    for (int pass = 0; pass < 2; ++pass)
        for (auto const& test : cases)
            EXPECT_EQ(resolved(cache.get(LOGICAL_PATH(test.path), test.rule), given.folder), test.expected)
                << test.path << ' ' << test.rule;

    RULE const rule = cache.get(LOGICAL_PATH("<raw>/ui/a.tga"), "Texture");
    EXPECT_EQ(rule.value("LEVELS"), QVariant(4LL));
    EXPECT_EQ(rule.value("Gamma").type(), QVariant::Double);
    EXPECT_EQ(rule.value("flag").type(), QVariant::Bool);
    EXPECT_FALSE(rule.value("none").isValid());
    EXPECT_EQ(cache.matching_tables(LOGICAL_PATH("<raw>/ui/a.tga"), "Texture").size(), 4u);
}

TEST(project_rule_cache, global_rules_hold_one_property_of_their_own_name) {
    RULE_PROJECT const given("[global]\nRetail = true\n", {});
    PROJECT_RULE_CACHE const cache(given.project, {});
    EXPECT_EQ(cache.get_global("Retail").value("Retail"), QVariant(true));
    EXPECT_EQ(cache.get_global("retail").value("RETAIL"), QVariant(true));
    EXPECT_FALSE(cache.get_global("Other").exists());
}

TEST(project_rule_cache, many_threads_get_the_same_rules) {
    RULE_PROJECT const given("[[rule]]\nname = \"T\"\nmatch = \"*7*\"\nA = 7\n[[rule]]\nname = \"T\"\nmatch = "
                             "\"*3*\"\nB = 3\n",
                             {});
    PROJECT_RULE_CACHE const cache(given.project, {});
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                QString const name = QString::number(i);
                RULE const rule = cache.get(LOGICAL_PATH("<raw>/" + name), "T");
                wrong += rule.value("A").isValid() != name.contains('7');
                wrong += rule.value("B").isValid() != name.contains('3');
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(rule_files, mistakes_are_told_by_line_and_column) {
    struct {
        char const* text;
        char const* messages;
        std::size_t rules;
    } const cases[] = {
        {"[[rule]]\nname = \"T\"\nA = [1]\nB = {c = 1}\nD = 2020-01-01\n",
         "raw_data/zab_rules.toml:3:5: error: the property \"A\" holds an array; it takes a string, a number or a "
         "boolean\n"
         "raw_data/zab_rules.toml:4:5: error: the property \"B\" holds a table; it takes a string, a number or a "
         "boolean\n"
         "raw_data/zab_rules.toml:5:5: error: the property \"D\" holds a date or time; it takes a string, a number or "
         "a boolean\n",
         0},
        {"[[rule]]\nA = 1\n[[rule]]\nname = \"T\"\n", "raw_data/zab_rules.toml:1:1: error: a rule without a \"name\"\n",
         1},
        {"[[rule]]\nname = 3\n",
         "raw_data/zab_rules.toml:2:8: error: \"name\" holds an integer; it takes the rule's name as a string\n", 0},
        {"[[rule]]\nname = \"T\"\nmatch = 3\n",
         "raw_data/zab_rules.toml:3:9: error: \"match\" holds an integer; it takes one pattern or a list of patterns, "
         "as strings\n",
         0},
        {"[[rule]]\nname = \"T\"\nmatch = [\"a\", true]\n",
         "raw_data/zab_rules.toml:3:15: error: \"match\" holds a boolean; it takes one pattern or a list of patterns, "
         "as strings\n",
         0},
        {"[[rule]]\nname = \"T\"\nmatch = []\n",
         "raw_data/zab_rules.toml:3:1: error: \"match\" is an empty list; without \"match\" the rule applies to every "
         "path\n",
         0},
        {"[[rule]]\nname = \"T\"\nmatch = \"a[\"\n",
         "raw_data/zab_rules.toml:3:9: error: the pattern \"a[\" has a [ without its ]\n", 0},
        {"[[rule]]\nname = \"T\"\nmatch = \"!a\"\n",
         "raw_data/zab_rules.toml:3:1: warning: \"match\" only takes paths out, so the rule applies to none; begin the "
         "list with \"*\"\n",
         1},
        {"[[rule]]\nname = \"T\"\nFormat = 1\nformat = 2\n",
         "raw_data/zab_rules.toml:4:1: error: the property \"format\" is set a second time; line 3 sets \"Format\", "
         "and case does not count\n",
         0},
        {"[[rules]]\nname = \"T\"\n",
         "raw_data/zab_rules.toml:1:3: warning: unknown key \"rules\"; did you mean \"rule\"?\n", 0},
        {"rule = [1]\n",
         "raw_data/zab_rules.toml:1:9: error: \"rule\" holds an integer; rules are written as [[rule]] "
         "tables\n",
         0},
    };
    for (auto const& test : cases) {
        RULE_PROJECT const given("", {{"", test.text}});
        EXPECT_EQ(messages(given.diagnostics, given.folder), test.messages);
        EXPECT_EQ(given.files.front().rules.size(), test.rules) << test.text;
    }
}

struct TEXTURE_SCHEMA : RULE_SCHEMA {
    TEXTURE_SCHEMA() : RULE_SCHEMA("Texture", "") {
        add_property("TargetPath", "");
        add_property("CompressionFormat", "");
    }
};

TEST(rule_files, undeclared_names_are_told_with_the_nearest_declared_one) {
    TEXTURE_SCHEMA const schema;
    RULE_PROJECT const given("", {{"", "[[rule]]\nname = \"Texture\"\ntargetpath = \"a\"\nCompresionFormat = \"b\"\n"
                                       "Whatever = 1\nMatch = \"*\"\n[[rule]]\nname = \"texture\"\n"
                                       "[[rule]]\nname = \"Sound\"\nA = 1\n"}});
    DIAGNOSTICS found;
    check_rule_names(given.files, {&schema}, found);
    EXPECT_EQ(messages(found, given.folder),
              "raw_data/zab_rules.toml:4:1: warning: the rule \"Texture\" declares no property \"CompresionFormat\"; "
              "did you mean \"CompressionFormat\"?\n"
              "raw_data/zab_rules.toml:5:1: warning: the rule \"Texture\" declares no property \"Whatever\"\n"
              "raw_data/zab_rules.toml:6:1: warning: the rule \"Texture\" declares no property \"Match\"; did you mean "
              "\"match\"?\n"
              "raw_data/zab_rules.toml:8:1: warning: no schema declares a rule \"texture\"; did you mean "
              "\"Texture\"?\n"
              "raw_data/zab_rules.toml:10:1: warning: no schema declares a rule \"Sound\"\n");
}

}  // namespace
