// What the state keeps of an action comes back as it was, and bytes that are not whole are refused.
#include "host/tool/recorded_action.hpp"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace tool {
namespace {

using framework::RULE_READ;

RECORDED_ACTION example() {
    FILE_CONTENTS const contents{true, {{0x0123456789abcdef, 42}}, {7, 1'700'000'000'123'456'789, -5, 99}};
    RECORDED_ACTION action;
    action.name = QStringLiteral("Convert (ü.tga)");
    action.setting = 12;
    action.sources = {{QStringLiteral("<raw>/ü.tga"), contents}, {QStringLiteral("<raw>/none"), {}}};
    action.targets = {{QStringLiteral("<working>/ü.dds"), contents}};
    action.announced_targets = 1;
    action.files = {{QStringLiteral("<raw>/x"), true}};
    action.tables = {{QStringLiteral("list"), contents}};
    action.asset_changes = {{QStringLiteral("/w/a.agf"), {{"a", "f", "p"}}, {{"a", "b", "all", ""}}}};
    return action;
}

TEST(recorded_action, comes_back_as_it_was) {
    RECORDED_ACTION const action = example();
    auto const read = to_recorded_action(to_bytes(action));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->name, action.name);
    EXPECT_EQ(read->setting, 12);
    ASSERT_EQ(read->sources.size(), 2u);
    EXPECT_EQ(read->sources[0].path, action.sources[0].path);
    EXPECT_TRUE(read->sources[0].contents.hash == action.sources[0].contents.hash);
    EXPECT_TRUE(read->sources[0].contents.stamp == action.sources[0].contents.stamp);
    EXPECT_FALSE(read->sources[1].contents.exists);
    ASSERT_EQ(read->asset_changes.size(), 1u);
    EXPECT_EQ(read->asset_changes[0].dependencies[0].needs, QStringLiteral("b"));
    EXPECT_EQ(to_bytes(*read), to_bytes(action));
}

TEST(recorded_action, refuses_what_is_not_whole) {
    QByteArray const whole = to_bytes(example());
    for (int size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(to_recorded_action(whole.left(size))) << size;
    EXPECT_FALSE(to_recorded_action(whole + '\0'));
    QByteArray many = whole;
    // A count of two thousand million sources, in a record of some hundred bytes.
    many.replace(4 + example().name.toUtf8().size() + 1 + 8, 4, "\x7f\xff\xff\xff");
    EXPECT_FALSE(to_recorded_action(many));
}

TEST(recorded_action, keeps_the_values_that_rules_have_and_no_others) {
    QString const a = QStringLiteral("<raw>/a");
    for (QVariant const& value :
         {QVariant(), QVariant(true), QVariant(3), QVariant(qlonglong{1} << 40), QVariant(2.5), QVariant("text")}) {
        auto const read = to_action_setting(to_bytes(ACTION_SETTING{{}, "kind", {{a, "T", "x", value}}}));
        ASSERT_TRUE(read) << value.typeName();
        EXPECT_TRUE(framework::is_same_value(read->rules[0].value, value)) << value.typeName();
    }
    // Reading as many lists in one another would take a stack that no thread has.
    QVariant nested;
    for (int depth = 0; depth < 1000; ++depth)
        nested = QVariantList{nested};
    EXPECT_FALSE(to_action_setting(to_bytes(ACTION_SETTING{{}, "kind", {{a, "T", "x", nested}}})));
}

TEST(recorded_action, sources_that_answer_alike_share_an_entry) {
    QString const a = QStringLiteral("<raw>/a");
    QString const b = QStringLiteral("<raw>/b");
    std::vector<RULE_READ> const reads = {{{}, "Retail", "Retail", true},
                                          {a, "T", {}, true},
                                          {a, "T", "Size", 1},
                                          {b, "T", {}, true},
                                          {b, "T", "Size", "1"},
                                          {b, "T", "Only", 3},
                                          {"<raw>/other", "T", {}, false}};
    QStringList found;
    for (RULE_READ const& read : with_source_places(reads, {LOGICAL_PATH(a), LOGICAL_PATH(b)}))
        found += read.path + u' ' + read.property + u' ' + read.value.toString();
    EXPECT_EQ(found,
              QStringList({" Retail true", "#*  true", "#0 Size 1", "#1 Only 3", "#1 Size 1", "<raw>/other  false"}));
}

TEST(file_contents, a_stamp_is_taken_only_when_it_can_be_trusted) {
    QTemporaryDir const folder;
    QString const path = folder.filePath(QStringLiteral("file"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("one");
    file.close();
    FILE_CONTENTS const fresh = contents_of(path);
    ASSERT_TRUE(fresh.exists);
    FILE_STAMP const stamp = stamp_of(path);
    bool const is_still_fresh = !is_settled(stamp);
    EXPECT_FALSE(is_still_fresh && fresh.stamp.exists());
    while (time_until_settled(stamp) > 0) {
    }
    FILE_CONTENTS const settled = contents_of(path);
    EXPECT_TRUE(settled.hash == fresh.hash);
    EXPECT_TRUE(settled.stamp == stamp);
    // What is known of the stamp is believed, and the file not read.
    FILE_CONTENTS known{true, {{1, 2}}, stamp};
    EXPECT_TRUE(contents_of(path, known).hash == known.hash);
    EXPECT_FALSE(contents_of(folder.path()).exists);
}

}  // namespace
}  // namespace tool
