// What an action asked of the host, as the host heard it.
#include "host/framework/read_recorder.hpp"

#include "host/framework/project_rule_cache.hpp"
#include "host/framework/rule_questions.hpp"
#include "processor/host/file_map.hpp"

#include <gtest/gtest.h>

namespace framework {
namespace {

PROJECT project() {
    PROJECT project;
    project.globals[QStringLiteral("retail")] = {"Retail", false, "zab.toml", 1, 1};
    RULE_TABLE table;
    table.name = QStringLiteral("Texture");
    table.values = {{"MaxSize", 512, "zab.toml", 3, 1}};
    project.rules.rules = {table};
    return project;
}

QStringList texts(std::vector<RULE_READ> const& reads) {
    QStringList texts;
    for (RULE_READ const& read : reads)
        texts += QStringLiteral("%1 %2 %3 = %4").arg(read.path, read.rule, read.property, read.value.toString());
    return texts;
}

TEST(read_recorder, keeps_each_question_once_with_its_answer) {
    PROJECT_RULE_CACHE const rules(project(), {});
    LOGICAL_PATH const path(QStringLiteral("<raw>/a.tga"));
    RULE const before = rules.get(path, QStringLiteral("Texture"));
    FILE_MAP files;
    FILE_ENTRY entry;
    files.insert(path, &entry);
    files.set_look_up_hook(&note_file_look_up);
    QTSHARED::ASSET_GRAPH graph;

    READ_RECORDER recorder;
    for (int i = 0; i < 10000; ++i)
        before.value(QStringLiteral("MaxSize"));
    RULE copy;
    copy = before;
    copy.value(QStringLiteral("DropMips"));
    rules.get(path, QStringLiteral("Atlas")).exists();
    rules.get_global(QStringLiteral("Retail")).value(QStringLiteral("Retail"));
    {
        // Whoever listens meanwhile hears it alone.
        READ_RECORDER other;
        before.exists();
        EXPECT_EQ(texts(other.take().rules), QStringList("<raw>/a.tga Texture  = true"));
    }
    files.contains(path);
    files.value(LOGICAL_PATH(QStringLiteral("<raw>/b.tga")));
    QTSHARED::ASSET_FRAGMENT_BUILDER builder(QStringLiteral("/w/a.agf"));
    builder.add_fragment(QStringLiteral("a"), {}, QStringLiteral("north"));
    QString error;
    EXPECT_TRUE(graph.add(builder, error));
    graph.has_texture(QStringLiteral("<working>/a.dds"));

    READS const reads = recorder.take();
    EXPECT_EQ(texts(reads.rules),
              QStringList({" Retail Retail = false", "<raw>/a.tga Atlas  = false",
                           "<raw>/a.tga Texture DropMips = ", "<raw>/a.tga Texture MaxSize = 512"}));
    ASSERT_EQ(reads.files.size(), 2u);
    EXPECT_TRUE(reads.files[0].found);
    EXPECT_FALSE(reads.files[1].found);
    ASSERT_EQ(reads.textures.size(), 1u);

    QTSHARED::ASSET_GRAPH again;
    replay(reads.asset_changes, again);
    EXPECT_EQ(again.packages(), graph.packages());
}

TEST(rule_questions, are_kept_by_topic) {
    PROJECT_RULE_CACHE const rules(project(), {});
    RULE_QUESTION_RECORDER recorder;
    for (char const* const name : {"<raw>/a.tga", "<raw>/b.tga"}) {
        RULE const rule = rules.get(LOGICAL_PATH(QLatin1String(name)), QStringLiteral("Texture"));
        rule.exists();
        RULE_TOPIC const topic("atlas");
        rule.value(QStringLiteral("Width"));
    }
    RULE_QUESTIONS const questions = recorder.take();
    ASSERT_EQ(questions.by_topic.size(), 2u);
    ASSERT_EQ(questions.by_topic.at("").size(), 1u);
    EXPECT_EQ(questions.by_topic.at("")[0].property, QString());
    ASSERT_EQ(questions.by_topic.at("atlas").size(), 1u);
    EXPECT_EQ(questions.by_topic.at("atlas")[0].property, QStringLiteral("Width"));
}

TEST(same_value, is_of_one_type_and_equal) {
    EXPECT_TRUE(is_same_value(0.25, 0.25));
    EXPECT_FALSE(is_same_value(0.25, 0.25000000000001));
    EXPECT_FALSE(is_same_value(qlonglong(1), QStringLiteral("1")));
    EXPECT_FALSE(is_same_value(QVariant(), QString()));
    EXPECT_TRUE(is_same_value(QVariant(), QVariant()));
}

}  // namespace
}  // namespace framework
