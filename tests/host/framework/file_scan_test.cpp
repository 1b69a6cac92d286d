#include "host/framework/file_scan.hpp"
#include "tests/host/framework/messages.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

using namespace framework;

struct SCAN {
    explicit SCAN(TEST_FOLDER const& folder) {
        PROJECT project;
        project.raw = folder.path("raw");
        project.working = folder.path("working");
        scan_files(project, files, diagnostics);
    }

    std::string listing() const {
        QString text;
        for (auto const& [path, entry] : files.map)
            text += path.text() + u' ';
        return text.trimmed().toStdString();
    }

    SCANNED_FILES files;
    DIAGNOSTICS diagnostics;
};

TEST(file_scan, lists_both_roots_sorted_without_dots_and_rule_files) {
    TEST_FOLDER const folder;
    for (char const* file :
         {"raw/b.tga", "raw/a/z.tga", "raw/a.b/c.tga", "raw/.git/x.tga", "raw/.hidden.tga", "raw/zab_rules.toml",
          "raw/a/zab_rules.toml", "working/textures/b.dds", "working/zab_rules.toml", "raw/\xC3\xA4.tga"})
        folder.write(QString::fromUtf8(file));
    SCAN const scan(folder);
    EXPECT_EQ(messages(scan.diagnostics, folder), "");
    EXPECT_EQ(scan.listing(), "<raw>/a.b/c.tga <raw>/a/z.tga <raw>/b.tga <raw>/\xC3\xA4.tga <working>/textures/b.dds "
                              "<working>/zab_rules.toml");
    EXPECT_EQ(scan.files.map.value(LOGICAL_PATH("<raw>/a/z.tga"))->physical_path.text(), folder.path("raw/a/z.tga"));
    ASSERT_EQ(scan.files.rule_files.size(), 2u);
    EXPECT_EQ(scan.files.rule_files[0].folder, "");
    EXPECT_EQ(scan.files.rule_files[1].folder, "a");
    EXPECT_EQ(scan.files.rule_files[1].path, folder.path("raw/a/zab_rules.toml"));
}

TEST(file_scan, follows_each_link_once_and_never_in_circles) {
    TEST_FOLDER const folder;
    folder.write("raw/a/x.tga");
    folder.write("outside/o.tga");
    QFile::link(folder.path("raw"), folder.path("raw/a/loop"));
    QFile::link(folder.path("outside"), folder.path("raw/a/out1"));
    QFile::link(folder.path("outside"), folder.path("raw/b"));
    QFile::link(folder.path("raw/a"), folder.path("outside/back"));
    QFile::link("nowhere", folder.path("raw/broken.tga"));
    QFile::link("a/x.tga", folder.path("raw/linked.tga"));
    SCAN const scan(folder);
    EXPECT_EQ(scan.listing(), "<raw>/a/out1/o.tga <raw>/a/x.tga <raw>/linked.tga");
    EXPECT_EQ(messages(scan.diagnostics, folder),
              "raw/a/loop: warning: a link to a folder that it lies in; left out\n"
              "raw/a/out1/back: warning: a link to a folder that it lies in; left out\n"
              "raw/b: warning: a link to a folder that \"a/out1\" links to already; left out\n"
              "raw/broken.tga: warning: a link that leads nowhere; left out\n");
}

TEST(file_scan, tells_of_what_it_cannot_list) {
    TEST_FOLDER const folder;
    folder.write("raw/x.tga/inner.png");
    std::string const bad = (folder.path("raw") + "/caf").toStdString() + "\xE9.tga";
    FILE* const file = fopen(bad.c_str(), "w");
    ASSERT_NE(file, nullptr);
    fclose(file);
    SCAN const scan(folder);
    std::remove(bad.c_str());
    EXPECT_EQ(scan.listing(), "<raw>/x.tga/inner.png");
    EXPECT_EQ(messages(scan.diagnostics, folder),
              "raw/caf\xEF\xBF\xBD.tga: warning: the name is not valid UTF-8; left out\n"
              "raw/x.tga: warning: a folder with the name of an image; looked into as a folder\n");
}

// Everyone's eyes but root's, whom permissions do not stop. Where root cannot become another it stays root.
class ORDINARY_USER {
public:
    ORDINARY_USER() : user_(geteuid()) {
        if (user_ == 0 && seteuid(65534) != 0)
            qWarning("cannot become an ordinary user");
    }
    ~ORDINARY_USER() {
        if (seteuid(user_) != 0)
            qFatal("cannot become root again");
    }

private:
    uid_t user_;
};

TEST(file_scan, names_roots_and_folders_that_cannot_be_read) {
    TEST_FOLDER const folder;
    EXPECT_EQ(messages(SCAN(folder).diagnostics, folder), "raw: error: the raw data folder does not exist\n");
    folder.write("raw");
    EXPECT_EQ(messages(SCAN(folder).diagnostics, folder), "raw: error: the raw data folder is not a folder\n");

    TEST_FOLDER const closed;
    closed.write("raw/shut/a.tga");
    closed.write("raw/b.tga");
    auto const all = static_cast<QFileDevice::Permissions>(0x7777);
    QFile::setPermissions(closed.path(), all);
    QFile::setPermissions(closed.path("raw"), all);
    QFile::setPermissions(closed.path("raw/shut"), QFileDevice::Permissions());
    std::optional<ORDINARY_USER> user(std::in_place);
    bool const is_ordinary = geteuid() != 0 && euidaccess(QFile::encodeName(closed.path("raw")), R_OK | X_OK) == 0;
    SCAN const scan(closed);
    user.reset();
    QFile::setPermissions(closed.path("raw/shut"), all);
    if (!is_ordinary)
        GTEST_SKIP() << "root cannot become an ordinary user who comes to the folder of temporary files";
    EXPECT_EQ(scan.listing(), "<raw>/b.tga");
    EXPECT_EQ(messages(scan.diagnostics, closed), "raw/shut: error: the folder cannot be read: Permission denied\n");
}

}  // namespace
