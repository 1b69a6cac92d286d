// A name that is too long for an extension is cut, and told from others by its hash (FNV-1a, by G. Fowler, L. C. Noll
// and K.-P. Vo).
#include "platform/qe/replace_file.hpp"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace QE {

namespace {

constexpr mode_t by_the_users_mask = 0666;

std::string text_of(int error) {
    return std::generic_category().message(error);
}

/// Within one folder or from one to another. Zero, or the error.
int rename_file(int from_folder, char const* from, int to_folder, char const* to, EARLIER_FILE earlier) {
    if (earlier == EARLIER_FILE::kept) {
#ifdef RENAME_NOREPLACE
        if (renameat2(from_folder, from, to_folder, to, RENAME_NOREPLACE) == 0)
            return 0;
        if (errno != EINVAL && errno != ENOSYS)
            return errno;
#endif
        // No such call here: nearly as good.
        struct stat status = {};
        if (fstatat(to_folder, to, &status, AT_SYMLINK_NOFOLLOW) == 0)
            return EEXIST;
    }
    return renameat(from_folder, from, to_folder, to) == 0 ? 0 : errno;
}

}  // namespace

std::filesystem::path unfinished_file(std::filesystem::path const& target, int number) {
    std::string const extension = number == 0 ? ".part" : '.' + std::to_string(number) + ".part";
    constexpr std::size_t longest_name = 255;
    constexpr std::size_t hash_digits = 16;
    std::string name = target.filename().string();
    if (name.size() + extension.size() > longest_name) {
        std::uint64_t hash = 0xcbf29ce484222325;
        for (char const c : name)
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
        std::size_t kept = longest_name - extension.size() - hash_digits - 1;
        // Not in the middle of a UTF-8 character: such a name could not be listed by everybody.
        while (kept > 0 && (static_cast<unsigned char>(name[kept]) & 0xC0) == 0x80)
            --kept;
        name.resize(kept);
        name += '.';
        for (std::size_t i = hash_digits; i-- > 0;)
            name += "0123456789abcdef"[hash >> (4 * i) & 15];
    }
    return target.parent_path() / name.append(extension);
}

OUTPUT_FILE::OUTPUT_FILE(OUTPUT_FOLDER folder, std::filesystem::path const& target)
    : folder_(std::move(folder)),
      target_(target) {
}

OUTPUT_FILE::OUTPUT_FILE(OUTPUT_FILE&& other) noexcept
    : folder_(std::move(other.folder_)),
      target_(std::move(other.target_)),
      unfinished_name_(std::move(other.unfinished_name_)),
      descriptor_(std::exchange(other.descriptor_, -1)),
      device_(other.device_),
      inode_(other.inode_) {
}

std::optional<OUTPUT_FILE> OUTPUT_FILE::open(std::filesystem::path const& target, std::string& cause) {
    OUTPUT_FOLDER folder(target, cause);
    if (!folder.is_open())
        return std::nullopt;
    OUTPUT_FILE file(std::move(folder), target);
    int const in = file.folder_.descriptor();
    struct stat status = {};
    if (fstatat(in, target.filename().c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode)) {
        cause = text_of(EISDIR);
        return std::nullopt;
    }
    constexpr int flags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    errno = EEXIST;
    for (int number = 0; file.descriptor_ < 0 && errno == EEXIST && number < most_unfinished_names; ++number) {
        file.unfinished_name_ = unfinished_file(target, number).filename().string();
        file.descriptor_ = openat(in, file.unfinished_name_.c_str(), flags, by_the_users_mask);
    }
    if (file.descriptor_ < 0 || fstat(file.descriptor_, &status) != 0) {
        cause = errno == EEXIST ? file.unfinished_name_ + " is in the way" : text_of(errno);
        return std::nullopt;
    }
    file.device_ = status.st_dev;
    file.inode_ = status.st_ino;
    return file;
}

OUTPUT_FILE::~OUTPUT_FILE() {
    if (descriptor_ < 0)
        return;
    if (is_still_there())
        unlinkat(folder_.descriptor(), unfinished_name_.c_str(), 0);
    close(descriptor_);
}

/// Somebody else may have put another file there meanwhile.
bool OUTPUT_FILE::is_still_there() const {
    struct stat status = {};
    return fstatat(folder_.descriptor(), unfinished_name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           status.st_dev == device_ && status.st_ino == inode_;
}

bool OUTPUT_FILE::write(std::span<std::uint8_t const> bytes, std::string& cause) {
    while (!bytes.empty()) {
        ssize_t const count = ::write(descriptor_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            cause = count == 0 ? "the file cannot be written" : text_of(errno);
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool OUTPUT_FILE::write_all_of(int descriptor, std::string& cause) {
    constexpr std::size_t piece = 256 * 1024;
    auto const buffer = std::make_unique_for_overwrite<std::uint8_t[]>(piece);
    for (off_t at = 0;;) {
        ssize_t const count = ::pread(descriptor, buffer.get(), piece, at);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            cause = text_of(errno);
        if (count <= 0)
            return count == 0;
        if (!write({buffer.get(), static_cast<std::size_t>(count)}, cause))
            return false;
        at += count;
    }
}

bool OUTPUT_FILE::commit(std::string& cause, EARLIER_FILE earlier) {
    if (output_root().written != nullptr)
        output_root().written(target_.c_str(), descriptor_);
    int const in = folder_.descriptor();
    bool const is_own = is_still_there();
    // Some disks tell only now that something did not arrive.
    int error = close(std::exchange(descriptor_, -1)) == 0 ? 0 : errno;
    if (error == 0 && is_own)
        error = rename_file(in, unfinished_name_.c_str(), in, target_.filename().c_str(), earlier);
    if (error == 0 && is_own)
        return true;
    if (is_own)
        unlinkat(in, unfinished_name_.c_str(), 0);
    cause = is_own ? text_of(error) : "somebody has taken the unfinished file away";
    return false;
}

bool replace_file(std::filesystem::path const& target, std::span<std::uint8_t const> bytes, std::string& cause,
                  EARLIER_FILE earlier) {
    return replace_file(target, std::span<std::span<std::uint8_t const> const>(&bytes, 1), cause, earlier);
}

bool replace_file(std::filesystem::path const& target, std::span<std::span<std::uint8_t const> const> parts,
                  std::string& cause, EARLIER_FILE earlier) {
    std::optional<OUTPUT_FILE> file = OUTPUT_FILE::open(target, cause);
    if (!file)
        return false;
    for (std::span<std::uint8_t const> const bytes : parts)
        if (!file->write(bytes, cause))
            return false;
    return file->commit(cause, earlier);
}

bool move_file(std::filesystem::path const& file, std::filesystem::path const& target, std::string& cause) {
    OUTPUT_FOLDER const from(file, cause);
    if (!from.is_open())
        return false;
    OUTPUT_FOLDER const to(target, cause);
    if (!to.is_open())
        return false;
    int const bytes = openat(from.descriptor(), file.filename().c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (bytes < 0) {
        cause = text_of(errno);
        return false;
    }
    if (output_root().written != nullptr)
        output_root().written(target.c_str(), bytes);
    int error = rename_file(from.descriptor(), file.filename().c_str(), to.descriptor(), target.filename().c_str(),
                            EARLIER_FILE::replaced);
    bool is_moved = error == 0;
    if (error == EXDEV) {
        std::optional<OUTPUT_FILE> copy = OUTPUT_FILE::open(target, cause);
        is_moved = copy && copy->write_all_of(bytes, cause) && copy->commit(cause) && remove_file(file, cause);
    } else if (!is_moved) {
        cause = text_of(error);
    }
    close(bytes);
    return is_moved;
}

}  // namespace QE
