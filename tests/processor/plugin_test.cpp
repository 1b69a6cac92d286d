// The library as a host meets it: read without loading, loaded, asked for its processors, unloaded.
#include "processor/host/action_interface.hpp"
#include "processor/host/image_database_entry.hpp"
#include "processor/host/plugin_interface.hpp"
#include "processor/host/processor_interface.hpp"
#include "processor/host/rule_schema.hpp"
#include "tests/support/test_rules.hpp"

#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>
#include <QProcess>

#include <gtest/gtest.h>

#include <memory>

namespace {

QStringList schema_names() {
    QStringList names;
    for (RULE_SCHEMA const* schema : RULE_SCHEMA::all())
        names.append(schema->name());
    return names;
}

TEST(plugin, metadata_is_read_without_loading) {
    QJsonObject const expected{{"IID", "qe.ZAB.Texture"},
                               {"className", "PLUGIN"},
                               {"version", 328448},
                               {"debug", false},
                               {"MetaData", QJsonObject()}};
    EXPECT_EQ(QPluginLoader(ZAB_TEST_PLUGIN).metaData(), expected);
}

TEST(plugin, metadata_members_stand_in_their_order) {
    QLibrary library(ZAB_TEST_PLUGIN);
    auto const query = reinterpret_cast<char const* (*)()>(library.resolve("qt_plugin_query_metadata"));
    ASSERT_NE(query, nullptr) << library.errorString().toStdString();
    QByteArray const block(query(), 160);
    library.unload();
    EXPECT_TRUE(block.startsWith("QTMETADATA  qbjs"));
    int position = 0;
    for (char const* key : {"IID", "className", "version", "debug", "MetaData"}) {
        int const found = block.indexOf(key, position);
        EXPECT_GE(found, position) << key;
        position = found;
    }
}

TEST(plugin, schemas_live_as_long_as_the_library) {
    EXPECT_EQ(schema_names(), QStringList());
    QPluginLoader loader(ZAB_TEST_PLUGIN);
    loader.setLoadHints({});  // by default unloading is only pretended
    ASSERT_TRUE(loader.load()) << loader.errorString().toStdString();
    EXPECT_EQ(schema_names(), (QStringList{"Atlas", "Texture", "TextureLevelling", "TextureOld"}));
    RULE_SCHEMA const* const texture = RULE_SCHEMA::all().at(1);
    EXPECT_STREQ(texture->metaObject()->className(), "TEXTURE_RULE_SCHEMA");
    EXPECT_EQ(texture->properties().size(), 21);
    EXPECT_EQ(texture->properties().at(13).description,
              QStringLiteral("Used for alpha test trees.  Is much slower to process but produces much better results.  "
                             "Alpha blending is obviously much better!"));
    EXPECT_TRUE(loader.unload());
    EXPECT_EQ(schema_names(), QStringList());
}

TEST(plugin, hands_out_new_processors_of_one_root_object) {
    QPluginLoader loader(ZAB_TEST_PLUGIN);
    QObject* const root = loader.instance();
    ASSERT_NE(root, nullptr) << loader.errorString().toStdString();
    QLibrary library(ZAB_TEST_PLUGIN);
    auto const instance = reinterpret_cast<QObject* (*)()>(library.resolve("qt_plugin_instance"));
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(instance(), root);
    EXPECT_EQ(root->qt_metacast("PLUGIN"), root);
    EXPECT_EQ(root->qt_metacast(nullptr), nullptr);
    EXPECT_EQ(root->qt_metacast("TEXTURE_PROCESSOR"), nullptr);
    auto* const plugin = qobject_cast<PLUGIN_INTERFACE*>(root);
    ASSERT_NE(plugin, nullptr);

    QVector<PROCESSOR_INTERFACE*> const first = plugin->create_processors();
    QVector<PROCESSOR_INTERFACE*> const second = plugin->create_processors();
    ASSERT_EQ(first.size(), 1);
    ASSERT_EQ(second.size(), 1);
    std::unique_ptr<PROCESSOR_INTERFACE> const one(first[0]);
    std::unique_ptr<PROCESSOR_INTERFACE> const other(second[0]);
    EXPECT_NE(one, other);
    for (auto const& processor : {one.get(), other.get()}) {
        EXPECT_EQ(processor->get_name(), QStringLiteral("Texture"));
        EXPECT_EQ(processor->dc_name(), QStringLiteral("ZAB_Texture"));
    }

    auto const create =
        reinterpret_cast<CREATE_IMAGE_DATABASE_ACTION*>(library.resolve(create_image_database_action_name));
    ASSERT_NE(create, nullptr);
    std::unique_ptr<ACTION_INTERFACE> const database(create(*one, "x"));
    EXPECT_EQ(database->get_name(true), "Save image info database for x expansion");
    database->set_error("set before");
    EXPECT_EQ(database->run({}, TEST_RULES()), ACTION_INTERFACE::STATUS_FAILED);
    EXPECT_EQ(database->output_lines(), QStringList("set before"));

    delete root;
    std::unique_ptr<QObject> const fresh(instance());
    EXPECT_NE(fresh, nullptr);
    library.unload();
}

TEST(plugin, exports_its_entry_points_and_nothing_else) {
    QProcess nm;
    nm.start(ZAB_TEST_NM, {"-D", "--defined-only", "--format=posix", ZAB_TEST_PLUGIN});
    ASSERT_TRUE(nm.waitForFinished());
    QStringList names;
    for (QByteArray const& line : nm.readAllStandardOutput().split('\n'))
        names.append(line.left(line.indexOf(' ')));
    names.removeAll("");
    names.sort();
    EXPECT_EQ(names, (QStringList{"qt_plugin_instance", "qt_plugin_query_metadata", "zab_create_image_database_action",
                                  "zab_limit_simd"}));
}

}  // namespace
