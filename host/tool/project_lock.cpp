#include "host/tool/project_lock.hpp"

#include "host/tool/build_journal.hpp"
#include "host/tool/interrupt.hpp"
#include "host/tool/state_folder.hpp"
#include "host/tool/target_guard.hpp"

#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr int milliseconds_between_tries = 100;

QString cause() {
    return QString::fromLocal8Bit(std::strerror(errno));
}

// Whether the path still leads to the open file: whoever cleans the project removes the folder with the lock in it.
bool is_same_file(int descriptor, QByteArray const& path) {
    struct stat opened = {};
    struct stat named = {};
    return fstat(descriptor, &opened) == 0 && stat(path.constData(), &named) == 0 && opened.st_ino == named.st_ino &&
           opened.st_dev == named.st_dev;
}

// Writing to a file that has a second name would change somebody else's: a copy of the project that shares its files
// with it, or whatever a stranger linked there.
bool has_other_names(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && status.st_nlink > 1;
}

// "(process 123)", as the holder wrote it.
QString holder(int descriptor) {
    char text[32] = {};
    ssize_t const count = pread(descriptor, text, sizeof text - 1, 0);
    int const number = count > 0 ? QByteArray(text).trimmed().toInt() : 0;
    return number > 0 ? QStringLiteral(" (process %1)").arg(number) : QString();
}

}  // namespace

PROJECT_LOCK::~PROJECT_LOCK() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

EXIT_CODE PROJECT_LOCK::acquire(QString const& state_folder, bool waits, CONSOLE& console) {
    QByteArray const path = QFile::encodeName(state_folder + QStringLiteral("/lock"));
    INTERRUPT interrupt;
    bool said = false;
    while (true) {
        if (descriptor_ < 0) {
            bool const has_folder = make_state_folder(state_folder);
            if (has_folder)
                descriptor_ = open_state_file(state_folder, "lock", O_RDWR | O_CREAT);
            // Whoever cleaned the project may have taken the folder away between the two.
            if (has_folder && descriptor_ < 0 && errno == ENOENT)
                continue;
            if (descriptor_ < 0) {
                console.error(QStringLiteral("the build state cannot be kept in %1: %2")
                                  .arg(CONSOLE::shown(state_folder), cause()));
                return EXIT_CODE::environment;
            }
        }
        if (flock(descriptor_, LOCK_EX | LOCK_NB) == 0) {
            if (is_same_file(descriptor_, path)) {
                if (!has_other_names(descriptor_))
                    break;
                unlink(path.constData());
            }
        } else if (errno == EWOULDBLOCK) {
            if (!waits) {
                console.error(QStringLiteral("another build of this project is running") + holder(descriptor_));
                return EXIT_CODE::environment;
            }
            if (!said)
                console.message(QStringLiteral("zab: waiting for another build of this project to end") +
                                holder(descriptor_));
            said = true;
            if (interrupt.wait(milliseconds_between_tries))
                return EXIT_CODE::interrupted;
        } else if (errno != EINTR) {
            console.error(QStringLiteral("the build state in %1 cannot be locked: %2")
                              .arg(CONSOLE::shown(state_folder), cause()));
            return EXIT_CODE::environment;
        }
        if (!is_same_file(descriptor_, path)) {
            close(descriptor_);
            descriptor_ = -1;
        }
    }
    QByteArray const number = QByteArray::number(static_cast<qint64>(getpid())) + '\n';
    // For people alone: a lock without a number locks as well.
    if (ftruncate(descriptor_, 0) != 0 ||
        pwrite(descriptor_, number.constData(), static_cast<std::size_t>(number.size()), 0) != number.size())
        console.warning(
            QStringLiteral("the lock in %1 does not name this process: %2").arg(CONSOLE::shown(state_folder), cause()));
    return EXIT_CODE::success;
}

EXIT_CODE open_exclusively(CONTEXT& context, BUILD_SESSION& session, bool waits, PROJECT_LOCK& lock) {
    if (EXIT_CODE const code = session.open_project(); code != EXIT_CODE::success)
        return code;
    framework::PROJECT const& project = session.project();
    if (EXIT_CODE const code = lock.acquire(project.state_folder, waits, context.console); code != EXIT_CODE::success)
        return code;
    if (!unshare_state(project.state_folder)) {
        context.console.error(QStringLiteral("the build state cannot be kept in %1: %2")
                                  .arg(CONSOLE::shown(project.state_folder), cause()));
        return EXIT_CODE::environment;
    }
    BUILD_JOURNAL::LEFT_OVER const left = BUILD_JOURNAL::left_over(project.state_folder);
    if (left.is_foreign)
        context.console.warning(
            QStringLiteral("%1/running is no journal of a build that ran here; it is taken away unread")
                .arg(CONSOLE::shown(project.state_folder)));
    // Links may have changed since the journal was written.
    TARGET_GUARD working(project.working);
    TARGET_GUARD raw(project.raw);
    for (UNFINISHED_ACTION action : left.actions) {
        std::erase_if(action.files, [&](FILE_AT_RISK const& file) {
            return !working.refusal(file.path).isEmpty() && !raw.refusal(file.path).isEmpty();
        });
        remove_unfinished_files(action, left.last_sign_of_life);
    }
    BUILD_JOURNAL::forget_left_over(project.state_folder);
    return EXIT_CODE::success;
}

}  // namespace tool
