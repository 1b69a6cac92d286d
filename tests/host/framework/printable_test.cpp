#include "host/framework/printable.hpp"

#include <gtest/gtest.h>

namespace {

TEST(printable, keeps_text_in_its_line) {
    struct CASE {
        char16_t const* text;
        char16_t const* shown;
    };
    for (CASE const& c : {CASE{u"walls/br\u00fcck\u58c1 \U0001F9F1\\n", u"walls/br\u00fcck\u58c1 \U0001F9F1\\n"},
                          CASE{u"a\nb\r\tc", u"a\\nb\\r\\tc"}, CASE{u"\x1b[2J\x7f\x9b", u"\\x1b[2J\\x7f\\x9b"},
                          CASE{u"\u202egnp\u2066\u2028", u"\\u202egnp\\u2066\\u2028"}})
        EXPECT_EQ(framework::printable(QString::fromUtf16(c.text)), QString::fromUtf16(c.shown));
    // Half a character would be none at all in UTF-8.
    EXPECT_EQ(framework::printable(QString(QChar(0xd83e)) + u'x' + QChar(0xddf1)), QStringLiteral("\\ud83ex\\uddf1"));
}

}  // namespace
