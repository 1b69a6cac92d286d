// What stands in a file, as 128 bits (XXH3), and the stamp by which a file that was not touched is known again without
// being read. Contents decide; stamps save reading and nothing else.
#pragma once

#include <QDataStream>
#include <QHash>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>

namespace tool {

/// Taken from the file system. Two equal stamps of one path mean the same contents, if the stamp was settled: changed
/// so long before it was taken that no later change can bear the same time.
struct FILE_STAMP {
    /// -1: there is no such file, or no stamp is known.
    std::int64_t size = -1;
    /// Nanoseconds since 1970.
    std::int64_t modified = 0;
    /// When the file's entry last changed, which nobody can set back; where the file system does not keep that, a value
    /// that is never settled.
    std::int64_t changed = 0;
    std::uint64_t inode = 0;

    bool exists() const { return size >= 0; }
    friend bool operator==(FILE_STAMP const&, FILE_STAMP const&) = default;
};

struct CONTENT_HASH {
    std::array<std::uint64_t, 2> bits = {};

    friend bool operator==(CONTENT_HASH const&, CONTENT_HASH const&) = default;
};

/// What a file held when it was looked at.
struct FILE_CONTENTS {
    /// Regular files alone have contents.
    bool exists = false;
    CONTENT_HASH hash;
    /// No stamp while it was not settled: the file is read again then.
    FILE_STAMP stamp;
};

FILE_STAMP stamp_of(QString const& path);
/// Whether a file that changes from now on gets another stamp. Clocks of file systems are coarse.
bool is_settled(FILE_STAMP const& stamp);
/// Nanoseconds until the stamp is settled; 0 when it is, -1 when that is too far off to wait for.
std::int64_t time_until_settled(FILE_STAMP const& stamp);

CONTENT_HASH hash_of(QByteArray const& bytes);
/// Of the whole file. Nothing when it cannot be read.
std::optional<CONTENT_HASH> hash_of_open_file(int descriptor);

/// Reads the file if it must. `known` holds for the file if it has the file's stamp. Contents that cannot be read count
/// as none.
FILE_CONTENTS contents_of(QString const& path, FILE_CONTENTS const& known = {});

QDataStream& operator<<(QDataStream& stream, FILE_CONTENTS const& contents);
QDataStream& operator>>(QDataStream& stream, FILE_CONTENTS& contents);
QByteArray to_bytes(FILE_CONTENTS const& contents);
/// Bytes that are none count as no contents.
FILE_CONTENTS to_contents(QByteArray const& bytes);

}  // namespace tool
