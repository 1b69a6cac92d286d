// The asset graph with its files, and the tables that it is read beside.
#include "host/framework/asset_fragment_file.hpp"
#include "host/framework/xml_tables.hpp"
#include "processor/host/action_error.hpp"
#include "processor/host/asset_graph.hpp"
#include "processor/host/case_insensitive_compare_string.hpp"
#include "processor/host/paths.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/no_processor.hpp"
#include "tests/support/test_rules.hpp"

#include <QTextCodec>

#include <gtest/gtest.h>

namespace {

using QTSHARED::ASSET_FRAGMENT_BUILDER;
using QTSHARED::ASSET_GRAPH;

TEST(asset_graph, refuses_what_does_not_fit_and_stays_as_it_was) {
    ASSET_GRAPH graph;
    ASSET_FRAGMENT_BUILDER first("/a.agf");
    first.add_fragment("x", "/x", "pack");
    QString error;
    ASSERT_TRUE(graph.add(first, error));

    ASSET_FRAGMENT_BUILDER second("/b.agf");
    second.add_fragment("y", "/y", "");
    second.add_fragment("x", "/x", "");
    EXPECT_FALSE(graph.add(second, error));
    EXPECT_EQ(error, "/b.agf: the asset-graph fragment 'x' already stands in /a.agf");
    ASSET_FRAGMENT_BUILDER nameless("/c.agf");
    nameless.add_fragment("", "/x", "");
    EXPECT_FALSE(graph.add(nameless, error));
    EXPECT_EQ(error, "/c.agf: an asset-graph fragment has no name");
    ASSET_FRAGMENT_BUILDER stray("/d.agf");
    stray.add_dependency("z", "x", "all", "");
    EXPECT_FALSE(graph.add(stray, error));
    EXPECT_EQ(error, "/d.agf: a dependency on 'x' belongs to the unknown fragment 'z'");
    EXPECT_EQ(graph.packages(), (QHash<QString, QString>{{"x", "pack"}}));

    // The same file again, with another fragment: the former one is free.
    ASSET_FRAGMENT_BUILDER again("/a.agf");
    again.add_fragment("w", "/w", "");
    ASSERT_TRUE(graph.add(again, error));
    EXPECT_TRUE(graph.add(second, error)) << error.toStdString();
    AGF_DEPENDENCY_BUILDER::add_referenced_fragment("img_db__core", "core", nullptr, &graph);
    EXPECT_EQ(AGF_DEPENDENCY_BUILDER::get_asset_fragment_packages(nullptr, &graph).value("img_db__core"), "core");
}

TEST(asset_graph, files_hold_logical_paths) {
    TEST_FOLDER const folder;
    PATHS::set_roots(PHYSICAL_PATH(folder.path("raw")), PHYSICAL_PATH(folder.path("out")));
    ASSET_FRAGMENT_BUILDER builder(folder.path("x.texture_array.agf"));
    builder.add_fragment("d/x <&>", folder.path("raw/d/x.texture_array"), "");
    builder.add_dependency("d/x <&>", "textures/a.dds", "all", "");
    QString error;
    ASSERT_TRUE(framework::save_asset_fragment_file(builder, error)) << error.toStdString();
    QFile file(builder.id());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().toStdString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<asset_fragments>\n"
              "    <fragment name=\"d/x &lt;&amp;&gt;\" file=\"&lt;raw&gt;/d/x.texture_array\">\n"
              "        <dependency fragment=\"textures/a.dds\" kind=\"all\"/>\n"
              "    </fragment>\n"
              "</asset_fragments>\n");
    EXPECT_FALSE(framework::save_asset_fragment_file(ASSET_FRAGMENT_BUILDER(folder.path("none/x.agf")), error));
    EXPECT_TRUE(error.startsWith("Failed to write '" + folder.path("none/x.agf") + "': ")) << error.toStdString();
}

TEST(asset_graph, fragments_are_written_once_by_whoever_comes_first) {
    TEST_FOLDER const folder;
    PATHS::set_roots(PHYSICAL_PATH(folder.path("raw")), PHYSICAL_PATH(folder.path("out")));
    ASSET_GRAPH graph;
    ACTION_INTERFACE::s_asset_graph = &graph;
    NO_PROCESSOR processor;
    ACTION_ERROR action("name", "error", processor);
    FILE_MAP const files;
    TEST_RULES const rules;
    ASSET_FRAGMENT_BUILDER saved(folder.path("saved.agf"));
    EXPECT_TRUE(action.add_to_asset_graph_and_save(saved, files, rules));
    ASSET_FRAGMENT_BUILDER added(folder.path("added.agf"));
    QString error;
    EXPECT_TRUE(graph.add(added, error));
    EXPECT_TRUE(QFile::remove(saved.id()));
    EXPECT_TRUE(framework::save_added_fragments(graph, action, files, error));
    EXPECT_TRUE(QFile::remove(added.id()));
    EXPECT_FALSE(QFile::exists(saved.id()));
    ASSERT_EQ(action.registered_files().size(), 2);
    EXPECT_EQ(action.registered_files()[1].path.text(), added.id());
    EXPECT_TRUE(framework::save_added_fragments(graph, action, files, error));
    EXPECT_FALSE(QFile::exists(added.id()));
    ACTION_INTERFACE::s_asset_graph = nullptr;
}

// Where a path's expansion is decided. Rules go by the end of the path.
TEST(asset_graph, textures_with_their_ids_and_expansions) {
    class RULES : public TEST_RULES {
    public:
        RULE get_global(QString const& name) const override {
            return is_retail ? get(LOGICAL_PATH("global"), name) : RULE();
        }
        bool is_retail = true;
    } rules;
    rules.add("global", "Retail", {{"Retail", true}})
        .add("<raw>/n.tga", "Expansion", {{"Name", "North"}})
        .add("<raw>/n_hidden.tga", "Expansion", {{"Name", "North"}, {"Released", false}})
        .add("<raw>/t/made.dds", "Expansion", {{"Name", "South"}, {"Released", false}})
        .add("<raw>/t/found.dds", "Expansion", {{"Name", "South"}});
    ASSET_GRAPH graph;
    graph.add_texture("<working>/t/made.dds", "<raw>/n.tga");
    graph.add_texture("<working>/t/hidden.dds", "<raw>/n_hidden.tga");
    graph.add_texture("<working>/t/found.dds");
    struct {
        char const* path;
        char const* id;
        char const* expansion;
        bool released;
    } const cases[] = {
        // The source's own values, and for what it leaves open those of the target's place.
        {"<working>/t/made.dds", "t/made.dds", "North", false},
        {"<working>/t/hidden.dds", "t/hidden.dds", "North", false},
        {"<working>/t/found.dds", "t/found.dds", "South", true},
        {"<working>/t/unknown.dds", "", "", true},
        {"<raw>/n.tga", "", "North", true},
    };
    for (bool const is_retail : {true, false}) {
        rules.is_retail = is_retail;
        ACTION_INTERFACE::s_asset_graph = &graph;
        for (auto const& c : cases) {
            LOGICAL_PATH const path{QString(c.path)};
            QString expansion = "?";
            EXPECT_EQ(ACTION_INTERFACE::asset_fragment_id(path, rules), c.id) << c.path;
            EXPECT_EQ(ACTION_INTERFACE::is_file_ever_released(path, rules, &expansion, false), c.released) << c.path;
            EXPECT_EQ(expansion, is_retail ? c.expansion : "") << c.path;
        }
        ACTION_INTERFACE::s_asset_graph = nullptr;
    }
}

TEST(xml_tables, rows_by_key) {
    TEST_FOLDER const folder;
    framework::XML_TABLES tables;
    QString error;
    ASSERT_TRUE(tables.load(
        "t", folder.write("t.xml", "<table key=\"Id\"><row id=\"North\" Pack=\"n\"/><row ID=\"b\"/></table>"), error))
        << error.toStdString();
    EXPECT_TRUE(tables.has_table("t"));
    EXPECT_EQ(tables.keys("t"), (QStringList{"North", "b"}));
    EXPECT_EQ(tables.value("t", "NORTH", "pack"), "n");
    EXPECT_EQ(tables.value("t", "b", "pack"), "");
    EXPECT_EQ(tables.value("u", "b", "pack"), "");
    char const* const codings[] = {"UTF-16", "ISO-8859-1"};
    for (char const* coding : codings) {
        QString const text =
            QStringLiteral("<?xml version=\"1.0\" encoding=\"%1\"?><z:table xmlns:z=\"z\"><row xmlns:name="
                           "\"no\" z:name=\"\u00e4\"/></z:table>");
        QByteArray const bytes = QTextCodec::codecForName(coding)->fromUnicode(text.arg(coding));
        EXPECT_TRUE(tables.load(coding, folder.write("coded.xml", bytes), error)) << error.toStdString();
        EXPECT_EQ(tables.keys(coding), QStringList("\u00e4"));
    }

    struct {
        QByteArray text;
        char const* message;
    } const cases[] = {
        {QByteArray("<table/>").leftJustified((16 << 20) + 1), "is larger than 16 MiB"},
        {"<rows/>", "the root element is not 'table'"},
        {"<table><row/></table>", "a row without a value for its key 'name'"},
        {"<table>\n<row name='a'/>\n<row name='A'/></table>", "a second row for 'A'"},
        {"<table><line name='a'/></table>", "a table holds rows, not 'line'"},
        {"<table><row name='a'></table>", "mismatch"},
        {"<?xml version='1.0' encoding='x'?><table/>", "Encoding x is unsupported"},
        {"<table>\n" + QByteArray(5000, ' ') + "\xff</table>", ":2:5001: error: bytes that are no letter"},
        {"<!DOCTYPE table><table/>", ":1:1: error: a table has no document type declaration"},
        {"<table>\n<!-- <a = --><row" + QByteArray(" a='='").repeated(257) + "/></table>",
         ":2:14: error: an element of more than 256 attributes"},
        {"<table><row name='a'>" + QByteArray("<a>").repeated(64) + "</row></table>", "more than 64 elements"},
        {"<table><row name='" + QByteArray(4097, 'a') + "'/></table>", "a key of 4097 characters; 4096 are the most"},
    };
    for (auto const& c : cases) {
        QString const path = folder.write("bad.xml", c.text);
        EXPECT_FALSE(tables.load("bad", path, error)) << c.message;
        EXPECT_TRUE(error.startsWith(path + ':') && error.contains(c.message)) << error.toStdString();
    }
    EXPECT_FALSE(tables.has_table("bad"));
    QString const large = folder.write("large.xml", QByteArray("<table/>").leftJustified(16 << 20));
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(tables.load(QString::number(i), large, error), i < 3) << i;
    EXPECT_EQ(error, large + ": error: is one table too many; all together may have 64 MiB");
}

TEST(case_insensitive_compare_string, order) {
    EXPECT_FALSE(CASE_INSENSITIVE_COMPARE_STRING("ab") < CASE_INSENSITIVE_COMPARE_STRING("AB"));
    EXPECT_TRUE(CASE_INSENSITIVE_COMPARE_STRING("AB") < CASE_INSENSITIVE_COMPARE_STRING("ac"));
}

}  // namespace
