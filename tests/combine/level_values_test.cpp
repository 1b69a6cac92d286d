#include "combine/level_values.hpp"

#include "tests/dds/test_images.hpp"
#include "tests/support/test_rules.hpp"

#include <gtest/gtest.h>

namespace {

using VALUES = std::vector<std::uint8_t>;

struct CASE {
    TEST_RULES::PROPERTIES properties;
    VALUES values;
    VALUES levelled;  ///< as `values` where there is a line
    char const* line;
};

TEST(level_values, ranges_and_refusals) {
    char const* const input_order = "Texture levelling: Input min is higher than max!";
    char const* const output_order = "Texture levelling: Output min is higher than max!";
    CASE const cases[] = {
        {{}, {0, 7, 255}, {0, 7, 255}, ""},
        {{{"InputMin", 0}, {"InputMax", "255"}, {"OutputMin", 0}, {"OutputMax", 255}}, {9, 255}, {9, 255}, ""},
        {{{"InputMin", -1}, {"InputMax", -1}}, {40, 120, 200}, {0, 127, 255}, ""},
        {{{"InputMin", "-1"}}, {55, 255}, {0, 255}, ""},
        {{{"InputMax", -1}}, {0, 100, 200}, {0, 127, 255}, ""},
        {{{"OutputMax", 128}}, {0, 128, 255}, {0, 64, 128}, ""},
        {{{"OutputMin", 100}, {"OutputMax", 101}}, {0, 127, 129, 255}, {100, 100, 101, 101}, ""},
        {{{"InputMin", 100}, {"InputMax", 150}}, {0, 100, 125, 150, 255}, {0, 0, 127, 255, 255}, ""},
        // The whole range found by itself is the whole range: no change, and no test of the input's order.
        {{{"InputMin", -1}, {"InputMax", -1}}, {0, 3, 255}, {0, 3, 255}, ""},
        {{{"InputMin", -2}}, {1}, {}, "Error in TextureLevelling rule: InputMin value is out of bounds!"},
        {{{"InputMax", 256}}, {1}, {}, "Error in TextureLevelling rule: InputMax value is out of bounds!"},
        {{{"InputMin", qlonglong{4294967296}}},
         {1},
         {},
         "Error in TextureLevelling rule: InputMin value is out of bounds!"},
        {{{"OutputMin", -1}}, {1}, {}, "Error in TextureLevelling rule: OutputMin value is out of bounds!"},
        {{{"OutputMax", "dark"}}, {1}, {}, "Error in TextureLevelling rule: OutputMax is not a number!"},
        {{{"InputMin", ""}, {"InputMax", 999}}, {1}, {}, "Error in TextureLevelling rule: InputMin is not a number!"},
        {{{"InputMin", 100}, {"InputMax", 100}}, {1}, {}, input_order},
        {{{"InputMin", -1}, {"InputMax", -1}}, {9, 9}, {}, input_order},
        {{{"InputMin", 200}, {"InputMax", 100}, {"OutputMin", 9}, {"OutputMax", 3}}, {1}, {}, input_order},
        {{{"OutputMin", 200}, {"OutputMax", 100}}, {1}, {}, output_order},
        {{{"OutputMin", 7}, {"OutputMax", 7}}, {1}, {}, output_order},
    };
    LOGICAL_PATH const path(QStringLiteral("<raw>/a.tif"));
    for (CASE const& c : cases) {
        TEST_SINK sink;
        VALUES values = c.values;
        bool failed = false;
        level_values(sink, values, path, TEST_RULES().add("a.tif", "TextureLevelling", c.properties), failed);
        EXPECT_EQ(sink.lines.join('|'), c.line);
        EXPECT_EQ(failed, *c.line != 0) << c.line;
        EXPECT_EQ(values, failed ? c.values : c.levelled) << c.line;
    }
}

TEST(level_values, without_a_rule_an_earlier_failure_stays) {
    TEST_SINK sink;
    VALUES values = {1, 2};
    bool failed = true;
    level_values(sink, values, LOGICAL_PATH(QStringLiteral("<raw>/b.tif")),
                 TEST_RULES().add("a.tif", "TextureLevelling", {{"InputMin", "x"}}), failed);
    EXPECT_TRUE(failed);
    EXPECT_TRUE(sink.lines.isEmpty());
    EXPECT_EQ(values, (VALUES{1, 2}));
}

}  // namespace
