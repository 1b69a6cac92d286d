#include "host/tool/change_times.hpp"

#include <QFile>

#include <algorithm>
#include <iterator>
#include <map>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace tool {

namespace {

// Kinds that this header does not name everywhere.
constexpr unsigned long xfs = 0x58465342;
constexpr unsigned long zfs = 0x2fc12fc1;
constexpr unsigned long keeping[] = {EXT4_SUPER_MAGIC,     xfs, zfs, BTRFS_SUPER_MAGIC, TMPFS_MAGIC, F2FS_SUPER_MAGIC,
                                     OVERLAYFS_SUPER_MAGIC};

std::map<dev_t, bool>& known() {
    static std::map<dev_t, bool> devices;
    return devices;
}

// A file without a name, or where the file system has none such, one that is taken away at once.
int open_probe(QByteArray const& folder) {
    int file = open(folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (file < 0) {
        QByteArray const path = folder + "/.zab-probe-" + QByteArray::number(getpid());
        file = open(path.constData(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (file >= 0)
            unlink(path.constData());
    }
    return file;
}

}  // namespace

void learn_change_times(QString const& folder) {
    QByteArray const path = QFile::encodeName(folder);
    struct stat status = {};
    if (stat(path.constData(), &status) != 0 || known().contains(status.st_dev))
        return;
    dev_t const device = status.st_dev;
    int const file = open_probe(path);
    if (file < 0)
        return;
    constexpr time_t long_ago = 1'000'000'000;
    timespec const times[] = {{long_ago, 0}, {long_ago, 0}};
    bool const is_set = futimens(file, times) == 0 && fstat(file, &status) == 0 && status.st_mtim.tv_sec == long_ago;
    known()[device] = is_set && status.st_ctim.tv_sec != long_ago;
    close(file);
}

bool keeps_change_times(dev_t device, char const* path) {
    auto const found = known().find(device);
    if (found != known().end())
        return found->second;
    struct statfs status = {};
    bool const keeps = statfs(path, &status) == 0 &&
                       std::find(std::begin(keeping), std::end(keeping), static_cast<unsigned long>(status.f_type)) !=
                           std::end(keeping);
    return known()[device] = keeps;
}

}  // namespace tool
