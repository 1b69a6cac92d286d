// A binary file opened for reading. It knows its size from the start, so that readers can hold what a header announces
// against what the file holds before they take memory for it.
#pragma once

#include "platform/qe/string.hpp"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <span>
#include <vector>

namespace QE {

class FileIn {
public:
    FileIn() = default;
    /// Opens the regular file at a path in the local 8-bit encoding. Folders, pipes and devices count as not open.
    explicit FileIn(String const& path);

    bool is_open() const { return file_.is_open(); }
    /// Bytes of the file when it was opened; 0 when it is not open.
    std::uint64_t size() const { return size_; }
    std::uint64_t position() const { return position_; }
    /// Bytes from the position to the end.
    std::uint64_t remaining() const { return size_ - position_; }

    /// Fills all of `bytes` and moves behind them. False when the file does not hold so many more bytes or the system
    /// reports an error; the position then stays where it was.
    bool read(std::span<std::uint8_t> bytes);
    /// False, and no move, for a position behind the end.
    bool seek(std::uint64_t position);

private:
    static constexpr std::size_t buffer_bytes = 65536;

    std::vector<char> buffer_;
    std::ifstream file_;
    std::uint64_t size_ = 0;
    std::uint64_t position_ = 0;
};

}  // namespace QE
