#include "platform/qe/file_in.hpp"

#include <filesystem>
#include <system_error>

namespace QE {

FileIn::FileIn(String const& path) {
    // A folder can be opened like a file on some systems and then has an absurd size.
    std::error_code error;
    std::filesystem::path const native(path.text());
    if (!std::filesystem::is_regular_file(native, error) || error) {
        return;
    }
    // Rows are read one by one: few calls to the system for many of them. It holds for files opened from now on.
    buffer_.resize(buffer_bytes);
    file_.rdbuf()->pubsetbuf(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    file_.open(native, std::ios::binary);
    if (!file_.is_open()) {
        return;
    }
    file_.seekg(0, std::ios::end);
    std::streamoff const end = file_.tellg();
    file_.seekg(0);
    if (end < 0 || !file_) {
        file_.close();
        return;
    }
    size_ = static_cast<std::uint64_t>(end);
}

bool FileIn::read(std::span<std::uint8_t> bytes) {
    if (!is_open() || bytes.size() > remaining()) {
        return false;
    }
    file_.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file_) {
        seek(position_);
        return false;
    }
    position_ += bytes.size();
    return true;
}

bool FileIn::seek(std::uint64_t position) {
    if (!is_open() || position > size_) {
        return false;
    }
    // Any move makes the stream forget what it has read ahead.
    if (position == position_ && file_.good()) {
        return true;
    }
    file_.clear();
    file_.seekg(static_cast<std::streamoff>(position));
    if (!file_) {
        return false;
    }
    position_ = position;
    return true;
}

}  // namespace QE
