// The one place that writes outputs. A file that is written is whole or not there at all: a reader, or a build that
// goes on after a crash, must never find half a texture under the name of a whole one. And nothing is ever written into
// a file that was there before: a fresh file takes the place of whatever bears the name, so that links of either kind
// keep what they lead to.
#pragma once

#include "platform/qe/output_root.hpp"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace QE {

/// How many names there are for the unfinished file of one target.
constexpr int most_unfinished_names = 16;

/// Where the bytes of `target` stand until they are whole: "<target>.part" in the same folder, or "<target>.1.part" and
/// so on where others have taken the names before. Of a name that leaves no room for that, its beginning and a hash, so
/// that the name always ends in ".part" and has at most 255 bytes.
std::filesystem::path unfinished_file(std::filesystem::path const& target, int number = 0);

/// What to do with a file that stands in the place of the target when it is whole.
enum class EARLIER_FILE : std::uint8_t { replaced, kept };

/// A target that is being written as its unfinished file, the first whose name nothing has: what stands there may be
/// anybody's, and is left alone. Unless it is committed, nothing of it stays.
class OUTPUT_FILE {
public:
    /// Nothing, with a cause, when no file can be made there, or the target is a folder.
    static std::optional<OUTPUT_FILE> open(std::filesystem::path const& target, std::string& cause);
    OUTPUT_FILE(OUTPUT_FILE const&) = delete;
    OUTPUT_FILE& operator=(OUTPUT_FILE const&) = delete;
    OUTPUT_FILE(OUTPUT_FILE&& other) noexcept;
    OUTPUT_FILE& operator=(OUTPUT_FILE&& other) = delete;
    ~OUTPUT_FILE();

    bool write(std::span<std::uint8_t const> bytes, std::string& cause);
    /// All that stands in the open file, from its beginning.
    bool write_all_of(int descriptor, std::string& cause);
    /// The file takes its place. False on failure: the target is as it was, and the unfinished file is gone.
    bool commit(std::string& cause, EARLIER_FILE earlier = EARLIER_FILE::replaced);

private:
    OUTPUT_FILE(OUTPUT_FOLDER folder, std::filesystem::path const& target);

    bool is_still_there() const;

    OUTPUT_FOLDER folder_;
    std::filesystem::path target_;
    std::string unfinished_name_;
    int descriptor_ = -1;
    std::uint64_t device_ = 0;
    std::uint64_t inode_ = 0;
};

/// Puts a file of these bytes into the place of `target`. False on failure: `cause` says why, `target` is as it was,
/// and nothing is left beside it.
bool replace_file(std::filesystem::path const& target, std::span<std::uint8_t const> bytes, std::string& cause,
                  EARLIER_FILE earlier = EARLIER_FILE::replaced);
/// The same with bytes that lie in several places, written one behind the other.
bool replace_file(std::filesystem::path const& target, std::span<std::span<std::uint8_t const> const> parts,
                  std::string& cause, EARLIER_FILE earlier = EARLIER_FILE::replaced);

/// A file that is there takes the place of `target`, also on another disk. False on failure: both are as they were.
bool move_file(std::filesystem::path const& file, std::filesystem::path const& target, std::string& cause);

}  // namespace QE
