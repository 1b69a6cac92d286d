#include "host/tool/file_identity.hpp"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace tool {

namespace {

std::int64_t nanoseconds(statx_timestamp const& time) {
    return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

FILE_IDENTITY identity(int folder, char const* path, int flags) {
    struct statx status = {};
    if (statx(folder, path, flags, STATX_BASIC_STATS | STATX_BTIME, &status) != 0 || !S_ISREG(status.stx_mode))
        return {};
    return {makedev(status.stx_dev_major, status.stx_dev_minor),
            status.stx_ino,
            (status.stx_mask & STATX_BTIME) != 0 ? nanoseconds(status.stx_btime) : 0,
            static_cast<std::int64_t>(status.stx_size),
            nanoseconds(status.stx_mtime),
            nanoseconds(status.stx_ctime)};
}

}  // namespace

FILE_IDENTITY identity_of(QString const& path) {
    return identity(AT_FDCWD, QFile::encodeName(path).constData(), AT_SYMLINK_NOFOLLOW);
}

FILE_IDENTITY identity_of(int descriptor) {
    return identity(descriptor, "", AT_EMPTY_PATH);
}

}  // namespace tool
