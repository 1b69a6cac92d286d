// The problem with stamps: a file that is written twice within one tick of the file system's clock bears the same stamp
// both times. Whoever looks between the two must not trust what he sees; git calls such an entry "racily clean".
#include "host/tool/file_contents.hpp"

#include "host/tool/change_times.hpp"

#include <QFile>

#include <limits>
#include <memory>
#include <vector>

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

namespace tool {

namespace {

constexpr std::int64_t second = 1'000'000'000;
// Linux stamps files with the time of the last timer tick, at most 10 ms old.
constexpr std::int64_t fine_grain = 20'000'000;
// File systems without parts of a second: their clocks go in steps of one or two seconds.
constexpr std::int64_t coarse_grain = 2 * second;

// Of a file whose stamp is never settled, because nothing in it is safe from being set back.
constexpr std::int64_t no_change_time = std::numeric_limits<std::int64_t>::min();

std::int64_t nanoseconds(timespec const& time) {
    return time.tv_sec * second + time.tv_nsec;
}

FILE_STAMP to_stamp(struct stat const& status, char const* path) {
    if (!S_ISREG(status.st_mode))
        return {};
    bool const has_change_time = keeps_change_times(status.st_dev, path);
    return {status.st_size, nanoseconds(status.st_mtim), has_change_time ? nanoseconds(status.st_ctim) : no_change_time,
            status.st_ino};
}

}  // namespace

CONTENT_HASH hash_of(QByteArray const& bytes) {
    XXH128_hash_t const result = XXH3_128bits(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    return {{result.low64, result.high64}};
}

std::optional<CONTENT_HASH> hash_of_open_file(int descriptor) {
    std::unique_ptr<XXH3_state_t, XXH_errorcode (*)(XXH3_state_t*)> const state(XXH3_createState(), XXH3_freeState);
    if (!state)
        return {};
    XXH3_128bits_reset(state.get());
    // Kept, since taking and clearing it costs more than reading a small file.
    thread_local std::vector<char> buffer(256 * 1024);
    for (off_t at = 0;;) {
        ssize_t const count = ::pread(descriptor, buffer.data(), buffer.size(), at);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return {};
        if (count == 0)
            break;
        XXH3_128bits_update(state.get(), buffer.data(), static_cast<std::size_t>(count));
        at += count;
    }
    XXH128_hash_t const result = XXH3_128bits_digest(state.get());
    return CONTENT_HASH{{result.low64, result.high64}};
}

FILE_STAMP stamp_of(QString const& path) {
    struct stat status = {};
    QByteArray const name = QFile::encodeName(path);
    return ::stat(name.constData(), &status) == 0 ? to_stamp(status, name.constData()) : FILE_STAMP();
}

std::int64_t time_until_settled(FILE_STAMP const& stamp) {
    if (stamp.changed == no_change_time)
        return -1;
    timespec clock = {};
    clock_gettime(CLOCK_REALTIME, &clock);
    bool const is_coarse = stamp.changed % second == 0;
    std::int64_t const left = stamp.changed + (is_coarse ? coarse_grain : fine_grain) - nanoseconds(clock);
    if (left <= 0)
        return 0;
    return left <= fine_grain ? left : -1;
}

bool is_settled(FILE_STAMP const& stamp) {
    return time_until_settled(stamp) == 0;
}

FILE_CONTENTS contents_of(QString const& path, FILE_CONTENTS const& known) {
    FILE_STAMP const before = stamp_of(path);
    if (!before.exists())
        return {};
    if (known.exists && known.stamp == before)
        return known;
    FILE_CONTENTS contents;
    bool const was_settled = is_settled(before);
    QByteArray const name = QFile::encodeName(path);
    int const file = ::open(name.constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return {};
    std::optional<CONTENT_HASH> const hash = hash_of_open_file(file);
    contents.exists = hash.has_value();
    contents.hash = hash.value_or(CONTENT_HASH());
    // Written while it was read: the next look reads it again.
    struct stat status = {};
    if (was_settled && ::fstat(file, &status) == 0 && to_stamp(status, name.constData()) == before)
        contents.stamp = before;
    ::close(file);
    return contents.exists ? contents : FILE_CONTENTS();
}

QDataStream& operator<<(QDataStream& stream, FILE_CONTENTS const& contents) {
    stream << contents.exists;
    if (!contents.exists)
        return stream;
    stream << static_cast<quint64>(contents.hash.bits[0]) << static_cast<quint64>(contents.hash.bits[1]);
    return stream << static_cast<qint64>(contents.stamp.size) << static_cast<qint64>(contents.stamp.modified)
                  << static_cast<qint64>(contents.stamp.changed) << static_cast<quint64>(contents.stamp.inode);
}

QDataStream& operator>>(QDataStream& stream, FILE_CONTENTS& contents) {
    contents = {};
    stream >> contents.exists;
    if (!contents.exists)
        return stream;
    quint64 low = 0;
    quint64 high = 0;
    qint64 size = 0;
    qint64 modified = 0;
    qint64 changed = 0;
    quint64 inode = 0;
    stream >> low >> high >> size >> modified >> changed >> inode;
    contents.hash.bits = {low, high};
    contents.stamp = {size, modified, changed, inode};
    return stream;
}

QByteArray to_bytes(FILE_CONTENTS const& contents) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << contents;
    return bytes;
}

FILE_CONTENTS to_contents(QByteArray const& bytes) {
    QDataStream stream(bytes);
    FILE_CONTENTS contents;
    stream >> contents;
    return stream.status() == QDataStream::Ok ? contents : FILE_CONTENTS();
}

}  // namespace tool
