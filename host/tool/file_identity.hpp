// Which file stands at a path: enough to tell it from any other that takes its place later, even one of the same name
// and number. What a build that was killed left is removed by this, and never by its name alone.
#pragma once

#include <QString>

#include <cstdint>

namespace tool {

/// Regular files alone have one; links are not followed.
struct FILE_IDENTITY {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    /// Nanoseconds since 1970, as all times here; 0 where the file system does not keep it.
    std::int64_t born = 0;
    /// -1: there is no such file.
    std::int64_t size = -1;
    std::int64_t modified = 0;
    /// When the file's entry last changed, a renaming included.
    std::int64_t changed = 0;

    bool exists() const { return size >= 0; }
    friend bool operator==(FILE_IDENTITY const&, FILE_IDENTITY const&) = default;
};

FILE_IDENTITY identity_of(QString const& path);
FILE_IDENTITY identity_of(int descriptor);

}  // namespace tool
