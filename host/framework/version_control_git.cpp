#include "host/framework/version_control_git.hpp"

#include "host/framework/run_command.hpp"

#include <QMutexLocker>

namespace framework {

namespace {

/// A path that git takes as it stands, whatever wild cards its name seems to hold.
QStringList with_file(QStringList arguments, PHYSICAL_PATH const& file) {
    arguments.prepend(QStringLiteral("--literal-pathspecs"));
    arguments << QStringLiteral("--") << file.text();
    return arguments;
}

}  // namespace

VERSION_CONTROL::FAILURE VERSION_CONTROL_GIT::git(QStringList const& arguments, PHYSICAL_PATH const& file,
                                                  char const* what) {
    QMutexLocker const lock(&mutex_);
    COMMAND_RESULT const result = run_command(QStringLiteral("git"), with_file(arguments, file), folder_);
    if (result.succeeded())
        return {};
    return QStringLiteral("git: failed to %1 %2: %3").arg(QLatin1String(what), file.text(), result.cause());
}

VERSION_CONTROL::FAILURE VERSION_CONTROL_GIT::add(PHYSICAL_PATH const& file) {
    return git({QStringLiteral("add")}, file, "add");
}

VERSION_CONTROL::FAILURE VERSION_CONTROL_GIT::remove(PHYSICAL_PATH const& file) {
    return git({QStringLiteral("rm"), QStringLiteral("--cached"), QStringLiteral("--quiet"),
                QStringLiteral("--ignore-unmatch")},
               file, "remove");
}

VERSION_CONTROL::FAILURE VERSION_CONTROL_GIT::revert(PHYSICAL_PATH const& file) {
    FAILURE const restored = git({QStringLiteral("restore"), QStringLiteral("--source=HEAD"),
                                  QStringLiteral("--staged"), QStringLiteral("--worktree")},
                                 file, "revert");
    // A file that HEAD does not hold has nothing to come back from: being forgotten is all that a revert can do for it.
    return restored ? remove(file) : restored;
}

}  // namespace framework
