// Git for real, in a repository of the test's own; Perforce through a command that plays its part and keeps a record of
// what it was asked, since no server is to be had.
#include "host/framework/run_command.hpp"
#include "host/framework/version_control.hpp"
#include "tests/host/framework/test_folder.hpp"

#include <gtest/gtest.h>

namespace {

using framework::VERSION_CONTROL;

QString git(TEST_FOLDER const& folder, QStringList const& arguments) {
    auto const result = framework::run_command("git", arguments, folder.path());
    EXPECT_TRUE(result.succeeded()) << result.cause().toStdString();
    return result.output.trimmed();
}

TEST(version_control, only_known_kinds) {
    EXPECT_NE(VERSION_CONTROL::make("none", {}), nullptr);
    EXPECT_EQ(VERSION_CONTROL::make("svn", {}), nullptr);
    EXPECT_FALSE(VERSION_CONTROL::current().add(PHYSICAL_PATH(QStringLiteral("/none"))));
}

TEST(version_control, git_stages_forgets_and_restores) {
    TEST_FOLDER const folder;
    git(folder, {"init", "-q"});
    // Names that a shell or git's wild cards would make something else of.
    PHYSICAL_PATH const kept(folder.write("out/-kept $(x) [a].dds", "committed"));
    git(folder, {"add", "."});
    git(folder, {"-c", "user.name=t", "-c", "user.email=t@t", "commit", "-qm", "x"});
    auto const version_control = VERSION_CONTROL::make("git", PHYSICAL_PATH(folder.path()));

    PHYSICAL_PATH const fresh(folder.write("out/*.dds", "new"));
    folder.write("out/bystander.dds", "not asked for");
    EXPECT_FALSE(version_control->add(fresh));
    EXPECT_EQ(git(folder, {"diff", "--cached", "--name-status"}), "A\tout/*.dds");
    EXPECT_FALSE(version_control->revert(fresh));
    EXPECT_EQ(git(folder, {"diff", "--cached", "--name-status"}), "");
    EXPECT_FALSE(version_control->remove(fresh));

    folder.write("out/-kept $(x) [a].dds", "changed");
    EXPECT_FALSE(version_control->add(kept));
    EXPECT_FALSE(version_control->revert(kept));
    QFile file(kept.text());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "committed");
    EXPECT_FALSE(version_control->remove(kept));
    EXPECT_EQ(git(folder, {"diff", "--cached", "--name-only"}), "out/-kept $(x) [a].dds");

    auto const failure = version_control->add(PHYSICAL_PATH(folder.path("out/none.dds")));
    ASSERT_TRUE(failure);
    EXPECT_TRUE(failure->startsWith("git: failed to add " + folder.path("out/none.dds") + ": "))
        << failure->toStdString();
}

TEST(version_control, perforce_opens_adds_and_deletes) {
    TEST_FOLDER const folder;
    folder.write("bin/p4", "#!/bin/sh\n"
                           "echo \"$*\" >>log\n"
                           "case \"$*\" in\n"
                           "*fstat*known*) echo 'info1: headAction edit' ;;\n"
                           "*fstat*gone*) echo 'info1: headAction move/delete' ;;\n"
                           "*add*locked*) echo 'error: locked by somebody' ;;\n"
                           "*add*endless*) exec yes ;;\n"
                           "esac\n"
                           "echo 'exit: 0'\n");
    QFile::setPermissions(folder.path("bin/p4"), QFile::ReadOwner | QFile::ExeOwner);
    QByteArray const path = qgetenv("PATH");
    qputenv("PATH", (folder.path("bin") + ':').toLocal8Bit() + path);
    auto const version_control = VERSION_CONTROL::make("perforce", PHYSICAL_PATH(folder.path()));
    auto const file = [&](char const* name) {
        return PHYSICAL_PATH(folder.path(QLatin1String(name)));
    };

    EXPECT_FALSE(version_control->add(file("known")));
    EXPECT_FALSE(version_control->add(file("gone@#")));
    EXPECT_FALSE(version_control->remove(file("known")));
    EXPECT_FALSE(version_control->remove(file("new")));
    EXPECT_FALSE(version_control->revert(file("50%")));
    EXPECT_FALSE(version_control->prepare_write(file("not there")));
    auto const failure = version_control->add(file("locked"));
    auto const endless = version_control->add(file("endless"));
    qputenv("PATH", path);
    ASSERT_TRUE(failure);
    EXPECT_EQ(*failure, "p4: failed to add " + folder.path("locked") + ": locked by somebody");
    EXPECT_EQ(endless, "p4: failed to add " + folder.path("endless") + ": its answer is longer than 16 MiB");

    QFile log(folder.path("log"));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(log.readAll()).replace(folder.path() + '/', ""),
              "-s fstat known\n-s edit known\n"
              "-s fstat gone%40%23\n-s add -f gone@#\n"
              "-s revert -k known\n-s fstat known\n-s delete -k known\n"
              "-s revert -k new\n-s fstat new\n"
              "-s revert 50%25\n"
              "-s fstat locked\n-s add -f locked\n"
              "-s fstat endless\n-s add -f endless\n");
}

}  // namespace
