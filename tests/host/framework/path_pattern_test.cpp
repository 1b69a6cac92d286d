#include "host/framework/path_pattern.hpp"

#include <gtest/gtest.h>

namespace {

using framework::PATH_PATTERN;
using framework::PATH_PATTERNS;

struct MATCH_CASE {
    std::vector<char const*> patterns;
    std::vector<char const*> inside;
    std::vector<char const*> outside;
};

TEST(path_pattern, takes_in_what_the_form_says) {
    MATCH_CASE const cases[] = {
        // Without a slash a pattern is a name, at any depth.
        {{"*.tga"}, {"a.tga", "x/y/a.tga", ".tga"}, {"a.tgaa", "a.TGA", "tga"}},
        {{"ui"}, {"ui", "ui/a.tga", "x/ui/y/a.tga"}, {"gui/a.tga", "ui2"}},
        // With one in front or in the middle it is tied to the folder.
        {{"/*.tga"}, {"a.tga"}, {"x/a.tga"}},
        {{"x/*.tga"}, {"x/a.tga"}, {"a.tga", "y/x/a.tga", "x/y/a.tga"}},
        // A slash at the end asks for a folder, and does not tie.
        {{"ui/"}, {"ui/a.tga", "x/ui/a.tga"}, {"ui", "x/ui"}},
        {{"x/ui/"}, {"x/ui/a.tga"}, {"x/ui", "y/x/ui/a.tga"}},
        // Any number of sections, none included, where it stands between slashes or in front.
        {{"**/a.tga"}, {"a.tga", "x/y/a.tga"}, {"ba.tga"}},
        {{"x/**/a.tga"}, {"x/a.tga", "x/y/a.tga", "x/y/z/a.tga"}, {"a.tga", "y/x/a.tga"}},
        {{"x/**"}, {"x/a.tga", "x/y/z"}, {"x", "y/x/a"}},
        {{"**"}, {"a", "x/y"}, {}},
        {{"x/**/y/**/z"}, {"x/y/z", "x/1/y/2/3/z/file"}, {"x/z", "y/z"}},
        // Two stars that do not stand alone are one.
        {{"x**z"}, {"xyz", "a/xz"}, {"x/z"}},
        // Wildcards stay within a section.
        {{"a?c*"}, {"abc", "axcdd", "x/a.c"}, {"ac", "a/c", "abbc"}},
        {{"*a*b"}, {"ab", "xaxxb", "aab", "abab"}, {"aba", "ba"}},
        {{"[a-cx]1"}, {"a1", "b1", "x1"}, {"d1", "-1", "A1"}},
        {{"[!a-c]1"}, {"d1", "-1"}, {"a1", "1"}},
        {{"[^a]"}, {"b"}, {"a"}},
        {{"[]-]x"}, {"]x", "-x"}, {"ax"}},
        {{"[\\]a]x"}, {"]x", "ax"}, {"\\x"}},
        // A backslash takes its special meaning from what follows.
        {{"\\*.tga"}, {"*.tga"}, {"a.tga"}},
        {{"\\!a"}, {"!a"}, {"a"}},
        {{"a\\ b#"}, {"a b#"}, {"a b"}},
        // Characters are whole ones, beyond the basic plane too.
        {{"?.tga"}, {"\xF0\x9F\x8E\xA8.tga", "\xC3\xA4.tga"}, {"ab.tga", ".tga"}},
        {{"[\xC3\xA0-\xC3\xBC]"}, {"\xC3\xA4"}, {"a"}},
        // The last pattern that matches decides, below folders too.
        {{"*.tga", "!a.tga"}, {"b.tga"}, {"a.tga", "x/a.tga"}},
        {{"x/", "!x/y/", "x/y/a"}, {"x/b", "x/y/a"}, {"x/y/b"}},
        {{"!a.tga", "*.tga"}, {"a.tga"}, {}},
        {{"!a"}, {}, {"a", "b"}},
    };
    for (MATCH_CASE const& test : cases) {
        PATH_PATTERNS patterns;
        std::string shown;
        for (char const* text : test.patterns) {
            QString error;
            std::optional<PATH_PATTERN> pattern = PATH_PATTERN::parse(QString::fromUtf8(text), error);
            ASSERT_TRUE(pattern) << error.toStdString();
            patterns.add(std::move(*pattern));
            shown += std::string(text) + ' ';
        }
        for (char const* path : test.inside)
            EXPECT_TRUE(patterns.matches(QString::fromUtf8(path))) << shown << "should take in " << path;
        for (char const* path : test.outside)
            EXPECT_FALSE(patterns.matches(QString::fromUtf8(path))) << shown << "should leave out " << path;
    }
}

TEST(path_pattern, refuses_what_can_match_nothing) {
    struct {
        char const* pattern;
        char const* error;
    } const cases[] = {
        {"", "the pattern \"\" names nothing"},
        {"!", "the pattern \"!\" names nothing"},
        {"/", "the pattern \"/\" names nothing"},
        {"a\\", "the pattern \"a\\\" ends in a single backslash"},
        {"a[b", "the pattern \"a[b\" has a [ without its ]"},
        {"[]", "the pattern \"[]\" has a [ without its ]"},
        {"[a/b]", "the pattern \"[a/b]\" has a [ without its ]"},
        {"[a\\", "the pattern \"[a\\\" has a [ without its ]"},
        {"../a", "the pattern \"../a\" has a \".\" or \"..\" section, which no path has"},
        {"a/.", "the pattern \"a/.\" has a \".\" or \"..\" section, which no path has"},
    };
    for (auto const& test : cases) {
        QString error;
        EXPECT_FALSE(PATH_PATTERN::parse(QString::fromUtf8(test.pattern), error)) << test.pattern;
        EXPECT_EQ(error.toStdString(), test.error);
    }
}

}  // namespace
