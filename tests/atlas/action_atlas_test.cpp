// The atlas action on a disk: what it announces, makes, registers and leaves behind.
#include "atlas/action_atlas.hpp"
#include "host/framework/version_control.hpp"
#include "processor/host/working_file_refusal.hpp"
#include "tests/combine/action_fixture.hpp"

namespace {

constexpr int succeeded = 2;
constexpr int failed = 4;

/// Has every file from before.
class RESTORING_VERSION_CONTROL : public framework::VERSION_CONTROL {
public:
    FAILURE prepare_write(PHYSICAL_PATH const&) override { return {}; }
    FAILURE add(PHYSICAL_PATH const&) override { return {}; }
    FAILURE remove(PHYSICAL_PATH const&) override { return {}; }
    FAILURE revert(PHYSICAL_PATH const& file) override {
        QFile(file.text()).open(QIODevice::WriteOnly);
        return {};
    }
};

class ATLAS : public ACTION_FIXTURE {
protected:
    ATLAS() : action(PHYSICAL_PATH(folder.path("out/ui/atlas")), 64, 32, processor) {}

    void source(QString const& name, std::array<int, 4> const& texel, int width = 32, int height = 32) {
        write(name, flat(texel, width, height));
        action.add_source(LOGICAL_PATH("<raw>/" + name));
    }
    /// A file of an earlier build, in the file table or only on the disk.
    void earlier(QString const& name, bool is_known = true) {
        folder.write("out/ui/" + name, "earlier");
        if (!is_known)
            return;
        entries.push_back(std::make_unique<FILE_ENTRY>(FILE_ENTRY{PHYSICAL_PATH(folder.path("out/ui/" + name)), {}}));
        files.insert(LOGICAL_PATH("<working>/ui/" + name), entries.back().get());
    }
    /// "+" for added, "-" for removed, "<" for reverted.
    QString registered() const {
        QStringList texts;
        for (auto const& file : action.registered_files()) {
            using KIND = ACTION_INTERFACE::REGISTERED_FILE::KIND;
            QString const mark = file.kind == KIND::added ? "+" : file.kind == KIND::removed ? "-" : "<";
            texts.append(mark + file.path.section('/', -1));
        }
        return texts.join(' ');
    }
    QString left_over() const {
        return QDir(folder.path("out/ui")).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot).join(' ');
    }
    QByteArray index() const {
        QFile file(folder.path("out/ui/atlas.tai"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QByteArray const text = file.readAll();
        return text.mid(text.indexOf("\n\n") + 2);
    }
    /// Runs, and gives what went to standard error.
    std::string run_atlas(int expected_status) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(run(action), expected_status);
        return QString::fromStdString(testing::internal::GetCapturedStderr())
            .replace(folder.path() + '/', "")
            .toStdString();
    }

    ACTION_ATLAS action;
    std::vector<std::unique_ptr<FILE_ENTRY>> entries;
};

TEST_F(ATLAS, pages_and_index) {
    source("red.tga", {0, 0, 255, 255});
    source("d/green.tga", {0, 255, 0, 255}, 16, 32);
    source("blue.tga", {255, 0, 0, 255}, 64, 32);
    EXPECT_EQ(run_atlas(succeeded), "");
    EXPECT_EQ(lines, "Saving file: out/ui/atlas.tai");
    EXPECT_EQ(registered(), "+atlas0.dds +atlas1.dds +atlas.tai");
    EXPECT_EQ(left_over(), "atlas.tai atlas0.dds atlas1.dds");
    EXPECT_EQ(index(), "blue.tga\t\tatlas0.dds, 0, 2D, 0.000000, 0.000000, 0.000000, 1.000000, 1.000000\n"
                       "red.tga\t\tatlas1.dds, 1, 2D, 0.000000, 0.000000, 0.000000, 0.500000, 1.000000\n"
                       "green.tga\t\tatlas1.dds, 1, 2D, 0.500000, 0.000000, 0.000000, 0.250000, 1.000000\n");
    std::string cause;
    auto const first = IMAGE_LOADER::describe(folder.path("out/ui/atlas0.dds").toStdString(), cause);
    EXPECT_EQ(first->format, "DXT1");
    EXPECT_EQ(first->mips, 7U);
    target = folder.path("out/ui/atlas1.dds");
    // What no source covers is transparent black.
    EXPECT_EQ(IMAGE_LOADER::describe(target.toStdString(), cause)->format, "DXT5");
    EXPECT_EQ(shown(31, 31), (std::array{255, 0, 0, 255}));
    EXPECT_EQ(shown(32, 0), (std::array{0, 255, 0, 255}));
    EXPECT_EQ(shown(63, 31), (std::array{0, 0, 0, 0}));
}

TEST_F(ATLAS, what_an_earlier_larger_build_left_goes_away) {
    for (char const* const name : {"atlas0.dds", "atlas1.dds", "atlas2.dds", "atlas0.tga", "atlas.tai"})
        earlier(name);
    earlier("atlas1.tga", false);
    earlier("atlas4.dds");
    source("a.tga", {1, 2, 3, 255});
    QVector<LOGICAL_PATH> sources;
    QVector<ACTION_INTERFACE::TARGET_FILE> targets;
    QDateTime newest;
    action.get_affected_files(sources, targets, newest, files, rules);
    QString announced;
    for (auto const& target_file : targets)
        announced += target_file.physical_path.section('/', -1) + (target_file.temporary ? "* " : " ");
    EXPECT_EQ(announced, "atlas0.dds atlas1.dds atlas2.dds atlas0.tga* atlas.tai ");
    EXPECT_EQ(targets.last().logical_path.text(), "<working>/ui/atlas.tai");
    EXPECT_EQ(sources, QVector{LOGICAL_PATH("<raw>/a.tga")});
    EXPECT_EQ(newest, QFileInfo(folder.path("raw/a.tga")).lastModified());
    EXPECT_EQ(action.get_name(true), "Create atlas");

    run_atlas(succeeded);
    EXPECT_EQ(registered(), "-atlas0.tga -atlas1.tga +atlas0.dds -atlas1.dds -atlas2.dds +atlas.tai");
    EXPECT_EQ(left_over(), "atlas.tai atlas0.dds atlas4.dds");
}

TEST_F(ATLAS, a_source_that_cannot_be_loaded) {
    source("a.tga", {1, 2, 3, 255});
    source("short.tga", {1, 2, 3, 255});
    folder.write("raw/short.tga", "too short");
    EXPECT_EQ(run_atlas(failed), "*** Error: Loading texture raw/short.tga failed.\n");
    EXPECT_EQ(lines, "Failed to load source texture: raw/short.tga");
    EXPECT_EQ(left_over(), "");
}

TEST_F(ATLAS, a_cube_map_is_of_no_use_and_a_cut_one_is_not_read) {
    QByteArray const cube = QByteArray::fromHex("444453207c000000071000000400000004000000")
                                .leftJustified(76, '\0')
                                .append(QByteArray::fromHex("200000000400000044585431"))
                                .leftJustified(108, '\0')
                                .append(QByteArray::fromHex("0810000000fe0000"))
                                .leftJustified(128 + 6 * 8, '\0');
    source("cube.dds", {});
    folder.write("raw/cube.dds", cube);
    EXPECT_EQ(run_atlas(failed), "*** Error: Texture raw/cube.dds has unsupported format.\n");
    folder.write("raw/cube.dds", cube.chopped(1));
    EXPECT_EQ(run_atlas(failed), "*** Error: Loading texture raw/cube.dds failed.\n");
}

TEST_F(ATLAS, an_index_that_cannot_be_written) {
    QDir().mkpath(folder.path("out/ui/atlas.tai/in_the_way"));
    source("a.tga", {1, 2, 3, 255}, 64, 32);
    source("b.tga", {1, 2, 3, 255}, 64, 32);
    earlier("atlas0.dds");
    RESTORING_VERSION_CONTROL restoring;
    framework::VERSION_CONTROL::set_current(&restoring);
    run_atlas(failed);
    framework::VERSION_CONTROL::set_current(nullptr);
    EXPECT_EQ(lines, "*** Error: Unable to open file \"out/ui/atlas.tai\" for writing!");
    EXPECT_EQ(registered(), "<atlas0.dds <atlas1.dds <atlas.tai");
    // What version control brings back stays.
    EXPECT_EQ(left_over(), "atlas.tai atlas0.dds atlas1.dds");
}

TEST_F(ATLAS, a_page_that_the_host_does_not_want) {
    source("a.tga", {1, 2, 3, 255});
    action.set_working_file_listener([](PHYSICAL_PATH const&) { throw WORKING_FILE_REFUSAL("the file is another's"); });
    run_atlas(failed);
    EXPECT_EQ(lines, "the file is another's");
    EXPECT_EQ(left_over(), "");
}

TEST_F(ATLAS, a_page_that_cannot_be_compressed) {
    source("a.tga", {1, 2, 3, 255}, 64, 32);
    source("b.tga", {1, 2, 3, 255}, 2, 2);
    run_atlas(failed);
    EXPECT_EQ(lines, "Saving file: out/ui/atlas.tai|Texture dimensions are invalid; Must be multiple of 4!!!|"
                     "Failed to compress out/ui/atlas1.tga");
    EXPECT_EQ(registered(), "");
    EXPECT_EQ(left_over(), "");
}

TEST_F(ATLAS, a_page_that_cannot_be_saved) {
    for (char const* const name : {"atlas0.dds", "atlas1.dds"})
        earlier(name);
    for (char const* const name : {"a.tga", "b.tga", "c.tga", "d.tga"})
        source(name, {1, 2, 3, 255}, 64, 32);
    for (char const* const page : {"1", "3"})
        QDir().mkpath(folder.path(QStringLiteral("out/ui/atlas%1.tga/in_the_way").arg(page)));
    EXPECT_EQ(run_atlas(succeeded), "*** Error: Unable to save atlas out/ui/atlas1.tga.\n"
                                    "*** Error: Unable to save atlas out/ui/atlas3.tga.\n");
    // As many as the earlier build had are looked at, and then as many as were saved.
    EXPECT_EQ(registered(), "+atlas0.dds -atlas1.dds +atlas2.dds +atlas.tai");
    EXPECT_EQ(left_over(), "atlas.tai atlas0.dds atlas1.tga atlas2.dds atlas3.tga");
}

TEST_F(ATLAS, a_source_without_a_place) {
    source("wide.tga", {1, 2, 3, 255}, 128, 4);
    source("a.tga", {1, 2, 3, 255});
    EXPECT_EQ(run_atlas(succeeded), "*** Error: Inserting texture raw/wide.tga into atlas failed.\n"
                                    "*** Error: Check that the texture has atlas-compatible dimensions.\n");
    // The page that was made for it takes what comes next.
    EXPECT_EQ(index(), "a.tga\t\tatlas0.dds, 0, 2D, 0.000000, 0.000000, 0.000000, 1.000000, 1.000000\n"
                       "wide.tga\t\twide.tga, -1, 2D, 0.000000, 0.000000, 0.000000, 1.000000, 1.000000\n");
}

TEST_F(ATLAS, names_are_latin_1_in_the_index) {
    source(QString::fromUtf8("caf\u00e9.tga"), {1, 2, 3, 255});
    source(QString::fromUtf8("\u0436.tga"), {1, 2, 3, 255});
    run_atlas(succeeded);
    EXPECT_TRUE(index().startsWith("caf\xe9.tga\t\t")) << index().toStdString();
    EXPECT_TRUE(index().contains("\n?.tga\t\t"));
}

}  // namespace
