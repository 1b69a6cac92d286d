#include "host/framework/version_control_git.hpp"

#include "host/framework/run_command.hpp"

#include <QMutexLocker>

#include <cerrno>

#include <unistd.h>

namespace framework {

namespace {

/// A path that git takes as it stands, whatever wild cards its name seems to hold.
QStringList with_file(QStringList arguments, PHYSICAL_PATH const& file) {
    arguments.prepend(QStringLiteral("--literal-pathspecs"));
    arguments << QStringLiteral("--") << file.text();
    return arguments;
}

class PROCESS_LOCK {
public:
    explicit PROCESS_LOCK(std::FILE* file) : descriptor_(file ? fileno(file) : -1) { set(F_LOCK); }
    PROCESS_LOCK(PROCESS_LOCK const&) = delete;
    PROCESS_LOCK& operator=(PROCESS_LOCK const&) = delete;
    ~PROCESS_LOCK() { set(F_ULOCK); }

private:
    // Without the lock git itself refuses the second of two commands, which is reported.
    void set(int command) const {
        while (descriptor_ >= 0 && lockf(descriptor_, command, 0) != 0 && errno == EINTR)
            continue;
    }

    int descriptor_;
};

}  // namespace

VERSION_CONTROL_GIT::VERSION_CONTROL_GIT(PHYSICAL_PATH const& folder) : folder_(folder), lock_file_(std::tmpfile()) {
}

VERSION_CONTROL::FAILURE VERSION_CONTROL_GIT::git(QStringList const& arguments, PHYSICAL_PATH const& file,
                                                  char const* what) {
    QMutexLocker const thread_lock(&mutex_);
    PROCESS_LOCK const process_lock(lock_file_.get());
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
