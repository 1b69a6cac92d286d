#include "host/framework/version_control.hpp"
#include "processor/action_texture_array.hpp"
#include "processor/host/asset_graph.hpp"
#include "processor/host/paths.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/no_processor.hpp"
#include "tests/support/test_rules.hpp"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

class REFUSING_VERSION_CONTROL : public framework::VERSION_CONTROL {
public:
    FAILURE prepare_write(PHYSICAL_PATH const&) override { return {}; }
    FAILURE add(PHYSICAL_PATH const&) override { return {}; }
    FAILURE remove(PHYSICAL_PATH const&) override { return QStringLiteral("somebody holds it"); }
    FAILURE revert(PHYSICAL_PATH const&) override { return {}; }
};

class action_texture_array : public testing::Test {
protected:
    action_texture_array() {
        PATHS::set_roots(PHYSICAL_PATH(folder.path("raw")), PHYSICAL_PATH(folder.path("out")));
        ACTION_INTERFACE::s_asset_graph = &graph;
        for (char const* name : {"t/a", "t/b", "t/ a", "t/\xC3\xA4"})
            graph.add_texture(QStringLiteral("<working>/%1.dds").arg(QString::fromUtf8(name)));
    }
    ~action_texture_array() override { ACTION_INTERFACE::s_asset_graph = nullptr; }

    void know(QString const& name) {
        entries.push_back(std::make_unique<FILE_ENTRY>(FILE_ENTRY{PHYSICAL_PATH(folder.path("raw/" + name)), {}}));
        files.insert(LOGICAL_PATH("<raw>/" + name), entries.back().get());
    }
    /// The announced targets; "?" behind those that will be gone.
    QString run(QString const& file) {
        ACTION_TEXTURE_ARRAY action(PHYSICAL_PATH(folder.path("raw/" + file)), processor);
        EXPECT_EQ(action.get_name(false), "Asset Graph");
        EXPECT_EQ(action.get_name(true), "Asset Graph (" + file.section('/', -1) + ')');
        QVector<LOGICAL_PATH> sources;
        QVector<ACTION_INTERFACE::TARGET_FILE> targets;
        QDateTime newest;
        action.get_affected_files(sources, targets, newest, files, rules);
        EXPECT_EQ(sources.value(0).text(), "<raw>/" + file);
        status = action.run(files, rules);
        lines = action.output_lines().join('|').replace(folder.path() + '/', "");
        QStringList names;
        for (auto const& target : qAsConst(targets))
            names += target.logical_path.text().mid(6) + (target.temporary ? "?" : "");
        return names.join(' ');
    }
    /// What the fragment file says that the array needs.
    QString needs(QString const& file) const {
        QFile in(folder.path("raw/" + file));
        if (!in.open(QIODevice::ReadOnly))
            return "-";
        QStringList found;
        QRegularExpression const dependency("<dependency fragment=\"([^\"]*)\" kind=\"all\"/>");
        auto matches = dependency.globalMatch(QString::fromUtf8(in.readAll()));
        while (matches.hasNext())
            found += matches.next().captured(1);
        return found.join('|');
    }

    TEST_FOLDER folder;
    NO_PROCESSOR processor;
    FILE_MAP files;
    TEST_RULES rules;
    QTSHARED::ASSET_GRAPH graph;
    int status = 0;
    QString lines;

private:
    std::vector<std::unique_ptr<FILE_ENTRY>> entries;
};

TEST_F(action_texture_array, dependencies) {
    struct CASE {
        char const* list;
        char const* needs;
    };
    CASE const cases[] = {
        {"", ""},
        {"\n\n", ""},
        {"t/b\nt/a\nt/b\n\nt/none\nt/a.dds", "t/a.dds|t/b.dds"},
        {"t/a\r\nt/b\r\n", "t/a.dds|t/b.dds"},
        {"t/ a\n t/a\nt/a \n", "t/ a.dds"},
        {"../t/a\n<working>/t/a\n", ""},
        {"/t/a\n./t//a\nt/a\n../out/t/b\n", "t/b.dds|t/a.dds"},
        {"t/\xC3\xA4", "t/\xC3\xA4.dds"},
    };
    for (CASE const& c : cases) {
        folder.write("raw/d/x.y.texture_array", c.list);
        EXPECT_EQ(run("d/x.y.texture_array"), "d/x.y.texture_array.agf");
        EXPECT_EQ(status, ACTION_INTERFACE::STATUS_SUCCEEDED) << lines.toStdString();
        EXPECT_EQ(needs("d/x.y.texture_array.agf").toStdString(), c.needs) << c.list;
    }
    EXPECT_EQ(graph.packages(), (QHash<QString, QString>{{"d/x.y.texture_array", ""}}));
}

TEST_F(action_texture_array, an_error_set_before_is_all_that_happens) {
    ACTION_TEXTURE_ARRAY action(PHYSICAL_PATH(folder.write("raw/x.texture_array")), processor);
    action.set_error("set before");
    EXPECT_EQ(action.run(files, rules), ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_EQ(action.output_lines(), QStringList("set before"));
    EXPECT_FALSE(QFile::exists(folder.path("raw/x.texture_array.agf")));
}

TEST_F(action_texture_array, legacy_fragments) {
    for (char const* name : {"x.agf", "x.texture_array", "y.agf", "y.dds", "y.texture_array"}) {
        folder.write(QStringLiteral("raw/") + name);
        know(name);
    }
    EXPECT_EQ(run("x.texture_array"), "x.agf? x.texture_array.agf");
    EXPECT_EQ(run("y.texture_array"), "y.texture_array.agf");
    EXPECT_EQ(QDir(folder.path("raw")).entryList({"*.agf"}, QDir::Files).join(' '),
              "x.texture_array.agf y.agf y.texture_array.agf");
}

TEST_F(action_texture_array, failures_leave_legacy_fragments) {
    folder.write("raw/x.agf");
    know("x.agf");
    run("x.texture_array");
    EXPECT_EQ(status, ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_EQ(lines, "Failed to open file: raw/x.texture_array");

    QTSHARED::ASSET_FRAGMENT_BUILDER other("/elsewhere.agf");
    other.add_fragment("x.texture_array", "/x", "");
    QString error;
    ASSERT_TRUE(graph.add(other, error));
    folder.write("raw/x.texture_array", "t/a");
    run("x.texture_array");
    EXPECT_EQ(status, ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_EQ(lines,
              "raw/x.texture_array.agf: the asset-graph fragment 'x.texture_array' already stands in /elsewhere.agf");
    EXPECT_TRUE(QFile::exists(folder.path("raw/x.agf")));

    folder.write("raw/z.agf");
    know("z.agf");
    folder.write("raw/z.texture_array", "t/a");
    REFUSING_VERSION_CONTROL refusing;
    framework::VERSION_CONTROL::set_current(&refusing);
    run("z.texture_array");
    framework::VERSION_CONTROL::set_current(nullptr);
    // The action has done its part; the host sees that version control has not.
    EXPECT_EQ(status, ACTION_INTERFACE::STATUS_SUCCEEDED);
    EXPECT_EQ(lines, "somebody holds it");
    EXPECT_FALSE(QFile::exists(folder.path("raw/z.agf")));
}

TEST_F(action_texture_array, lists_that_cannot_be_read) {
    folder.write("raw/x.texture_array", QByteArray((16 << 20) + 1, '\n'));
    run("x.texture_array");
    EXPECT_EQ(status, ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_EQ(lines, "Failed to read file: raw/x.texture_array: it is larger than 16 MiB");
    EXPECT_EQ(needs("x.texture_array.agf"), "-");
}

}  // namespace
