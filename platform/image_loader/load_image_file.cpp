#include "platform/image_loader/load_image_file.hpp"

#include "platform/checked_size.hpp"
#include "platform/qe/read_pixels.hpp"

#include <cctype>
#include <fstream>
#include <new>
#include <utility>

namespace IMAGE_LOADER {

bool has_tga_extension(std::filesystem::path const& path) {
    std::string extension = path.extension().string();
    for (char& c : extension) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return extension == ".tga";
}

std::optional<QE::IMAGE32> load_tga_file(std::filesystem::path const& path, std::string& cause) {
    QE::FileIn file(QE::String(path.string()));
    if (!file.is_open()) {
        cause = "the file cannot be opened";
        return std::nullopt;
    }
    QE::TGAHeader header;
    if (!header.read(file)) {
        cause = header.cause();
        return std::nullopt;
    }
    return QE::read_pixels(file, header, cause);
}

std::optional<std::vector<std::uint8_t>> read_whole_file(std::filesystem::path const& path, std::string& cause) {
    QE::FileIn file(QE::String(path.string()));
    if (!file.is_open()) {
        cause = "the file cannot be opened";
        return std::nullopt;
    }
    if (file.size() > checked_size::most_file_bytes) {
        cause = "the file has " + std::to_string(file.size()) + " bytes, more than the " +
                std::to_string(checked_size::most_file_bytes) + " that an image file may have";
        return std::nullopt;
    }
    try {
        std::vector<std::uint8_t> bytes(file.size());
        if (!file.read(bytes)) {
            cause = "the file cannot be read";
            return std::nullopt;
        }
        return bytes;
    } catch (std::bad_alloc const&) {
        cause = "there is not enough memory for the " + std::to_string(file.size()) + " bytes of the file";
        return std::nullopt;
    }
}

IMAGE load_image_file(std::filesystem::path const& path, std::string& cause) {
    IMAGE image;
    if (has_tga_extension(path)) {
        std::optional<QE::IMAGE32> const tga = load_tga_file(path, cause);
        if (!tga) {
            return IMAGE::failed(cause);
        }
        image = IMAGE(tga->width, tga->height, 1, TTF_B8G8R8A8, IMAGE_FORMAT::tga);
        if (image.valid()) {
            std::copy(tga->pixels.begin(), tga->pixels.end(), image.level(0).begin());
        }
    } else {
        std::optional<std::vector<std::uint8_t>> const bytes = read_whole_file(path, cause);
        if (!bytes) {
            return IMAGE::failed(cause);
        }
        image = IMAGE(*bytes);
    }
    cause = image.cause();
    return image;
}

}  // namespace IMAGE_LOADER
