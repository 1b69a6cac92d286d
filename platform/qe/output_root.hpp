// The folder that a program's outputs stay in. Its owner opens it once; from then on files at paths below it are
// reached from the open folder, and never outside it: a folder that somebody exchanges for a link meanwhile leads
// nowhere. Without a root, and for other paths, a path is what the system takes it for.
#pragma once

#include <filesystem>
#include <string>

namespace QE {

struct OUTPUT_ROOT {
    /// Absolute, without '/' at its end; paths are below it by their text. Empty: no root.
    std::string path;
    /// The open folder. Borrowed.
    int descriptor = -1;
    /// Told of every file that is whole and about to take its place, by the path of that place and a descriptor to read
    /// it with; or null.
    void (*written)(char const* target, int descriptor) = nullptr;
};

/// For this process and this copy of the code: a library that links it has its own. Before any output is written.
void set_output_root(OUTPUT_ROOT root);
OUTPUT_ROOT const& output_root();

/// The open folder of a file that is to be written or removed. Names are looked up in it, so that nobody can put
/// another folder in its place any more.
class OUTPUT_FOLDER {
public:
    /// Not open, with a cause, when there is no such folder or it lies outside the root.
    OUTPUT_FOLDER(std::filesystem::path const& file, std::string& cause);
    OUTPUT_FOLDER(OUTPUT_FOLDER const&) = delete;
    OUTPUT_FOLDER& operator=(OUTPUT_FOLDER const&) = delete;
    OUTPUT_FOLDER(OUTPUT_FOLDER&& other) noexcept;
    OUTPUT_FOLDER& operator=(OUTPUT_FOLDER&& other) = delete;
    ~OUTPUT_FOLDER();

    bool is_open() const { return descriptor_ >= 0; }
    /// It is not open because there is no such folder.
    bool is_missing() const { return is_missing_; }
    int descriptor() const { return descriptor_; }

private:
    int descriptor_ = -1;
    bool is_missing_ = false;
};

/// Makes the folder and those above it that are missing. True when it is there.
bool create_folders(std::filesystem::path const& folder, std::string& cause);

/// Removes the file, or the link, that stands there. True when nothing stands there any more.
bool remove_file(std::filesystem::path const& file, std::string& cause);
bool remove_file(std::filesystem::path const& file);

}  // namespace QE
