// A file that is there while a test needs it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <span>
#include <string>

namespace platform_test {

/// A path of its own in the system's temporary folder; what stands there is removed at the end.
class TEMPORARY_FILE {
public:
    explicit TEMPORARY_FILE(std::string const& extension) {
        std::random_device random;
        path_ = std::filesystem::temp_directory_path() /
                ("zab_test_" + std::to_string(random()) + std::to_string(random()) + extension);
    }
    TEMPORARY_FILE(std::string const& extension, std::span<std::uint8_t const> bytes) : TEMPORARY_FILE(extension) {
        std::ofstream file(path_, std::ios::binary);
        file.write(reinterpret_cast<char const*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    TEMPORARY_FILE(TEMPORARY_FILE const&) = delete;
    TEMPORARY_FILE& operator=(TEMPORARY_FILE const&) = delete;
    ~TEMPORARY_FILE() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    std::filesystem::path const& path() const { return path_; }

private:
    std::filesystem::path path_;
};

}  // namespace platform_test
