// Linux can be asked to stay below a folder (openat2, since 5.6), but then refuses every absolute link, also one that
// stays inside. Where it refuses, or is no such Linux, the open folder is asked where it lies: by going up from it,
// which no exchange of names on the way can mislead.
#include "platform/qe/output_root.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#ifdef __linux__
#include <linux/openat2.h>
#include <sys/syscall.h>
#endif
#include <unistd.h>

namespace QE {

namespace {

#ifdef O_PATH
constexpr int folder_flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
#else
constexpr int folder_flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
#endif

OUTPUT_ROOT& root() {
    static OUTPUT_ROOT root;
    return root;
}

std::string text_of(int error) {
    return std::generic_category().message(error);
}

/// The part of an absolute path behind the root and its '/'; null when the path does not lie below it.
char const* below_root(std::string const& path) {
    std::string const& text = root().path;
    bool const is_below =
        !text.empty() && path.size() > text.size() && path.starts_with(text) && path[text.size()] == '/';
    return is_below ? path.c_str() + text.size() + 1 : nullptr;
}

bool is_same(struct stat const& left, struct stat const& right) {
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

bool lies_in_root(int folder) {
    struct stat sought = {};
    struct stat here = {};
    if (fstat(root().descriptor, &sought) != 0 || fstat(folder, &here) != 0)
        return false;
    int at = folder;
    bool is_inside = is_same(here, sought);
    while (!is_inside) {
        struct stat const below = here;
        int const above = openat(at, "..", folder_flags);
        if (at != folder)
            close(at);
        at = above;
        if (at < 0 || fstat(at, &here) != 0 || is_same(here, below))
            break;
        is_inside = is_same(here, sought);
    }
    if (at >= 0 && at != folder)
        close(at);
    return is_inside;
}

/// Opens a folder by its path below the root. -1 and errno when it cannot be opened; EXDEV when it lies outside.
int open_below_root(char const* path) {
#ifdef SYS_openat2
    open_how how = {};
    how.flags = static_cast<std::uint64_t>(folder_flags);
    how.resolve = RESOLVE_BENEATH;
    long const beneath = syscall(SYS_openat2, root().descriptor, path, &how, sizeof how);
    if (beneath >= 0 || errno == ENOENT)
        return static_cast<int>(beneath);
#endif
    int const folder = openat(root().descriptor, path, folder_flags);
    if (folder < 0 || lies_in_root(folder))
        return folder;
    close(folder);
    errno = EXDEV;
    return -1;
}

std::string leads_outside() {
    return "a link leads outside '" + root().path + "'";
}

bool create_below_root(std::string const& rest, std::string& cause) {
    struct stat status = {};
    if (fstatat(root().descriptor, rest.c_str(), &status, 0) == 0) {
        cause = text_of(ENOTDIR);
        return S_ISDIR(status.st_mode);
    }
    int at = openat(root().descriptor, ".", folder_flags);
    for (std::size_t begin = 0; at >= 0 && begin < rest.size();) {
        std::size_t const end = std::min(rest.find('/', begin), rest.size());
        std::string const name = rest.substr(begin, end - begin);
        begin = end + 1;
        if (name.empty())
            continue;
        int next = openat(at, name.c_str(), folder_flags);
        if (next < 0 && errno == ENOENT) {
            if (!lies_in_root(at)) {
                cause = leads_outside();
                close(at);
                return false;
            }
            if (mkdirat(at, name.c_str(), 0777) == 0 || errno == EEXIST)
                next = openat(at, name.c_str(), folder_flags);
        }
        int const error = errno;
        close(at);
        errno = error;
        at = next;
    }
    if (at < 0) {
        cause = text_of(errno);
        return false;
    }
    close(at);
    return true;
}

}  // namespace

void set_output_root(OUTPUT_ROOT new_root) {
    root() = std::move(new_root);
}

OUTPUT_ROOT const& output_root() {
    return root();
}

OUTPUT_FOLDER::OUTPUT_FOLDER(std::filesystem::path const& file, std::string& cause) {
    std::filesystem::path const folder = file.parent_path();
    if (char const* const rest = below_root(file.native())) {
        std::string const inner = std::filesystem::path(rest).parent_path().native();
        descriptor_ = open_below_root(inner.empty() ? "." : inner.c_str());
        if (descriptor_ < 0 && errno == EXDEV) {
            cause = leads_outside();
            return;
        }
    } else {
        descriptor_ = open(folder.empty() ? "." : folder.c_str(), folder_flags);
    }
    if (descriptor_ < 0) {
        is_missing_ = errno == ENOENT;
        cause = text_of(errno);
    }
}

OUTPUT_FOLDER::OUTPUT_FOLDER(OUTPUT_FOLDER&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      is_missing_(other.is_missing_) {
}

OUTPUT_FOLDER::~OUTPUT_FOLDER() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

bool create_folders(std::filesystem::path const& folder, std::string& cause) {
    if (char const* const rest = below_root(folder.native()))
        return create_below_root(rest, cause);
    if (!root().path.empty() && folder.native() == root().path)
        return true;
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error || !std::filesystem::is_directory(folder, error)) {
        cause = error ? error.message() : text_of(ENOTDIR);
        return false;
    }
    return true;
}

bool remove_file(std::filesystem::path const& file, std::string& cause) {
    OUTPUT_FOLDER const folder(file, cause);
    if (!folder.is_open())
        return folder.is_missing();
    if (unlinkat(folder.descriptor(), file.filename().c_str(), 0) == 0 || errno == ENOENT)
        return true;
    cause = text_of(errno);
    return false;
}

bool remove_file(std::filesystem::path const& file) {
    std::string ignored;
    return remove_file(file, ignored);
}

}  // namespace QE
