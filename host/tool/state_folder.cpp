#include "host/tool/state_folder.hpp"

#include "host/tool/console.hpp"

#include <QFile>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr char const* file_names[] = {"lock",         "running",      "state.db",         "state.db-wal",
                                      "state.db-shm", "state.db.old", "state.db-journal", "state.db.new"};

QByteArray path_in(QString const& folder, char const* name) {
    return QFile::encodeName(folder) + '/' + name;
}

}  // namespace

std::optional<QString> why_no_state_folder(QString const& folder) {
    struct stat status = {};
    if (lstat(QFile::encodeName(folder).constData(), &status) != 0)
        return {};
    QString const advice = QStringLiteral("the build state lies in %1, which is no %2; remove it");
    if (!S_ISDIR(status.st_mode))
        return advice.arg(CONSOLE::shown(folder), QStringLiteral("real folder"));
    for (char const* const name : file_names) {
        QByteArray const path = path_in(folder, name);
        if (lstat(path.constData(), &status) == 0 && !S_ISREG(status.st_mode))
            return advice.arg(CONSOLE::shown(QFile::decodeName(path)), QStringLiteral("regular file"));
    }
    return {};
}

bool make_state_folder(QString const& folder) {
    return mkdir(QFile::encodeName(folder).constData(), 0755) == 0 || errno == EEXIST;
}

bool unshare_state(QString const& folder) {
    QByteArray const copy = path_in(folder, "state.db.new");
    for (char const* const name : {"state.db", "state.db-wal", "state.db-shm"}) {
        QByteArray const path = path_in(folder, name);
        struct stat status = {};
        if (lstat(path.constData(), &status) != 0 || status.st_nlink < 2)
            continue;
        unlink(copy.constData());
        std::error_code error;
        std::filesystem::copy_file(path.constData(), copy.constData(), error);
        if (!error)
            std::filesystem::rename(copy.constData(), path.constData(), error);
        if (error) {
            errno = error.value();
            return false;
        }
    }
    return true;
}

int open_state_file(QString const& folder, char const* name, int flags) {
    int const file = open(path_in(folder, name).constData(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0644);
    struct stat status = {};
    if (file < 0 || (fstat(file, &status) == 0 && S_ISREG(status.st_mode)))
        return file;
    close(file);
    errno = EINVAL;
    return -1;
}

}  // namespace tool
