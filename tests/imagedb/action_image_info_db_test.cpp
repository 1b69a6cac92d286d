#include "host/framework/xml_tables.hpp"
#include "imagedb/action_image_info_db.hpp"
#include "platform/image_loader/image_info_db_reader.hpp"
#include "processor/host/asset_graph.hpp"
#include "processor/host/paths.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/no_processor.hpp"
#include "tests/support/test_rules.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

/// A DDS header with so many bytes behind it.
QByteArray dds(char const* four_cc, int side, int payload, quint32 dxgi = 0) {
    std::vector<quint32> words(32, 0);
    words[0] = 0x20534444;
    words[1] = 124;
    words[2] = 0x1007;
    words[3] = words[4] = static_cast<quint32>(side);
    words[19] = 32;
    words[20] = 4;
    memcpy(&words[21], four_cc, 4);
    words[27] = 0x1000;
    if (dxgi != 0)
        words.insert(words.end(), {dxgi, 3, 0, 1, 0});
    return QByteArray(reinterpret_cast<char const*>(words.data()), static_cast<int>(4 * words.size())) +
           QByteArray(payload, '\0');
}

class RETAIL_RULES : public TEST_RULES {
public:
    RULE get_global(QString const& name) const override {
        trouble();
        if (!is_retail || name != QLatin1String("Retail"))
            return {};
        auto values = std::make_shared<RULE_VALUES>();
        values->set({name, true, {}, 0, 0});
        return RULE(values);
    }
    bool is_retail = false;
    std::function<void()> trouble = [] {
    };
};

class action_image_info_db : public testing::Test {
protected:
    action_image_info_db() {
        PATHS::set_roots(PHYSICAL_PATH(folder.path("raw")), PHYSICAL_PATH(folder.path("out")));
        ACTION_INTERFACE::s_asset_graph = &graph;
        ACTION_INTERFACE::s_database = &tables;
        QString error;
        EXPECT_TRUE(tables.load(
            "texc_expansions", folder.write("t.xml", "<table><row name='North' pack_filename_extension='np'/></table>"),
            error));
        QDir().mkpath(folder.path("out"));
    }
    ~action_image_info_db() override {
        ACTION_INTERFACE::s_asset_graph = nullptr;
        ACTION_INTERFACE::s_database = nullptr;
    }

    void write(QString const& name, QByteArray const& contents) {
        folder.write("out/" + name, contents);
        know(name);
    }
    void know(QString const& name) {
        entries.push_back(std::make_unique<FILE_ENTRY>(FILE_ENTRY{PHYSICAL_PATH(folder.path("out/" + name)), {}}));
        files.insert(LOGICAL_PATH("<working>/" + name), entries.back().get());
    }

    /// The database's records, "name width x height format mips" each; "-" without a database.
    QString run(QString const& expansion, QString const& file) {
        ACTION_IMAGE_INFO_DB action(processor, expansion);
        EXPECT_EQ(action.progress_max(), 100000);
        QVector<LOGICAL_PATH> sources;
        QVector<ACTION_INTERFACE::TARGET_FILE> targets;
        QDateTime newest;
        action.get_affected_files(sources, targets, newest, files, rules);
        EXPECT_EQ(targets.value(0).physical_path.text(), folder.path("out/" + file));
        EXPECT_EQ(targets.value(0).logical_path.text(), "<working>/" + file);
        EXPECT_EQ(action.run(files, rules), ACTION_INTERFACE::STATUS_SUCCEEDED);
        EXPECT_EQ(action.output_lines(), QStringList());
        // What was written is registered, and nothing else.
        EXPECT_EQ(action.registered_files().size(), QFile::exists(folder.path("out/" + file)) ? 1 : 0);
        for (auto const& registered : action.registered_files())
            EXPECT_EQ(registered.path.text(), folder.path("out/" + file));
        QFile in(folder.path("out/" + file));
        if (!in.open(QIODevice::ReadOnly))
            return "-";
        QByteArray const bytes = in.readAll();
        IMAGE_LOADER::IMAGE_INFO_DB_READER reader;
        char const* const cause =
            reader.open(std::as_bytes(std::span(bytes.constData(), static_cast<std::size_t>(bytes.size()))));
        EXPECT_EQ(cause, nullptr);
        QStringList records;
        for (std::uint32_t i = 0; i < reader.size(); ++i) {
            auto const image = reader.image(i);
            records += QStringLiteral("%1 %2x%3 %4 %5")
                           .arg(QString::fromStdString(std::string(image.name)))
                           .arg(image.width)
                           .arg(image.height)
                           .arg(image.texel_format)
                           .arg(image.number_of_mips);
        }
        return records.join('|');
    }

    TEST_FOLDER folder;
    NO_PROCESSOR processor;
    FILE_MAP files;
    RETAIL_RULES rules;
    QTSHARED::ASSET_GRAPH graph;
    framework::XML_TABLES tables;
    std::vector<std::unique_ptr<FILE_ENTRY>> entries;
};

TEST_F(action_image_info_db, which_files_are_recorded) {
    write("b/short.dds", dds("DXT1", 4, 8));
    write("a.dds", dds("DX10", 8, 64, 98));
    write("upper.DDS", dds("DXT5", 8, 64));
    write("truncated.dds", dds("DXT5", 64, 0));
    write("below_header.dds", dds("DXT1", 4, 0).left(127));
    write("below_dx10_header.dds", dds("DX10", 8, 0, 98).left(147));
    write("empty.dds", {});
    write("picture.dds", "\x89PNG....");
    write("a.dds.txt", dds("DXT1", 4, 8));
    know("never_made.dds");
    entries.push_back(std::make_unique<FILE_ENTRY>(FILE_ENTRY{PHYSICAL_PATH(folder.path("out/a.dds")), {}}));
    files.insert(LOGICAL_PATH("<raw>/a.dds"), entries.back().get());
    EXPECT_EQ(run({}, "img_db.bin"), "a.dds 8x8 48 1|b/short.dds 4x4 9 1|truncated.dds 64x64 11 1|upper.DDS 8x8 11 1");
    EXPECT_TRUE(graph.packages().isEmpty());

    ACTION_IMAGE_INFO_DB action(processor, {});
    QVector<LOGICAL_PATH> sources;
    QVector<ACTION_INTERFACE::TARGET_FILE> targets;
    QDateTime newest;
    action.get_affected_files(sources, targets, newest, files, rules);
    QStringList listed;
    for (LOGICAL_PATH const& source : qAsConst(sources))
        listed += source.text().mid(10);
    EXPECT_EQ(listed.join(' '),
              "b/short.dds a.dds truncated.dds below_header.dds below_dx10_header.dds empty.dds picture.dds "
              "never_made.dds");
}

TEST_F(action_image_info_db, expansions_of_a_retail_project) {
    rules.add("north/a.tga", "Expansion", {{"Name", "North"}})
        .add("secret.tga", "Expansion", {{"Name", "North"}, {"Released", false}})
        .add("<raw>/hand.dds", "Expansion", {{"Name", "North"}});
    for (auto const& [texture, source] : {std::pair("textures/a.dds", "<raw>/north/a.tga"),
                                          {"textures/secret.dds", "<raw>/secret.tga"},
                                          {"textures/b.dds", "<raw>/b.tga"}}) {
        write(texture, dds("DXT1", 4, 8));
        graph.add_texture(QStringLiteral("<working>/") + texture, source);
    }
    write("hand.dds", dds("DXT1", 4, 8));
    EXPECT_EQ(run({}, "img_db.bin"), "hand.dds 4x4 9 1|textures/a.dds 4x4 9 1|textures/b.dds 4x4 9 1");

    rules.is_retail = true;
    EXPECT_EQ(run({}, "img_db__core.bin"), "textures/b.dds 4x4 9 1");
    EXPECT_EQ(run("North", "img_db__np.bin"), "hand.dds 4x4 9 1|textures/a.dds 4x4 9 1");
    EXPECT_EQ(graph.packages(), (QHash<QString, QString>{{"img_db__core", ""}, {"img_db__np", "North"}}));
    auto const builders = graph.take_unwritten();
    ASSERT_EQ(builders.size(), 2u);
    EXPECT_EQ(builders[1].id(), folder.path("out/img_db__np.agf"));
    EXPECT_EQ(builders[1].fragments().value(0).file, folder.path("out/img_db__np.bin"));

    // Nothing left: the earlier file goes, and the fragment is not declared again.
    QFile::remove(folder.path("out/textures/b.dds"));
    EXPECT_EQ(run({}, "img_db__core.bin"), "-");
    EXPECT_EQ(run("No row", "img_db__core.bin"), "-");
    EXPECT_TRUE(graph.take_unwritten().empty());
}

TEST_F(action_image_info_db, nothing_gets_through) {
    write("a.dds", dds("DXT1", 4, 8));
    std::pair<std::function<void()>, QStringList> const troubles[] = {
        {[] { throw std::bad_alloc(); }, {"Not enough memory"}},
        {[] { throw std::runtime_error("no table"); }, {"Unexpected error: no table"}},
        {[] { throw 1; }, {}},
    };
    for (auto const& [trouble, lines] : troubles) {
        rules.trouble = trouble;
        ACTION_IMAGE_INFO_DB action(processor, {});
        EXPECT_EQ(action.run(files, rules), ACTION_INTERFACE::STATUS_SUCCEEDED);
        EXPECT_EQ(action.output_lines(), lines);
        EXPECT_TRUE(action.registered_files().isEmpty());
    }
}

TEST_F(action_image_info_db, names_asserts_and_producers) {
    ACTION_IMAGE_INFO_DB core(processor, {});
    ACTION_IMAGE_INFO_DB north(processor, "North");
    EXPECT_EQ(core.get_name(true), "Save image info database");
    EXPECT_EQ(north.get_name(false), "Save image info database");
    EXPECT_EQ(north.get_name(true), "Save image info database for North expansion");
    for (char const* text :
         {"in IMAGE_LOADER::IMAGE::get_surface_dimensions: x", "format != TTF_NUM_FORMATS", "undefined format 3"})
        EXPECT_TRUE(core.ignore_assert(text)) << text;
    for (char const* text : {"Undefined format", "format != TTF_NUM", ""})
        EXPECT_FALSE(core.ignore_assert(text)) << text;

    for (char const* name : {"one.dds", "two.dds", "none.dds", "UPPER.DDS"})
        know(name);
    entries[0]->producers = {&north};
    entries[1]->producers = {&north, &core};
    entries[3]->producers = {&core};
    ACTION_IMAGE_INFO_DB action(processor, {});
    action.add_external_dependencies(files, rules);
    ASSERT_EQ(action.dependencies().size(), 1);
    EXPECT_EQ(action.dependencies()[0].action, &north);
    EXPECT_FALSE(action.dependencies()[0].optional);
}

}  // namespace
