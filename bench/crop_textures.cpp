// Cuts a square from the middle of each texture on a list and writes all squares into one file, 8 bits a channel in
// RGBA: the input of every encoder that is compared. With a folder for PNG files, each square also becomes one of
// those, for encoders that are programs of their own.
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image.h>
#include <stb_image_write.h>
#pragma GCC diagnostic pop

#include "bench/crop_side.hpp"

int main(int argc, char** argv) {
    if (argc < 4) {
        std::cerr << "usage: crop_textures LIST ROOT OUT.rgba [PNG_FOLDER]\n";
        return 2;
    }
    std::ifstream list(argv[1]);
    std::ofstream out(argv[3], std::ios::binary);
    std::filesystem::path const root = argv[2];
    int count = 0;
    for (std::string name; std::getline(list, name);) {
        if (name.empty() || name.front() == '#') {
            continue;
        }
        int width = 0;
        int height = 0;
        int channels = 0;
        std::unique_ptr<stbi_uc, void (*)(void*)> const image(
            stbi_load((root / name).c_str(), &width, &height, &channels, 4), stbi_image_free);
        if (image == nullptr || width < crop_side || height < crop_side) {
            std::cerr << name << ": not readable, or smaller than " << crop_side << '\n';
            return 1;
        }
        std::vector<char> square(crop_bytes);
        int const left = (width - crop_side) / 2;
        int const top = (height - crop_side) / 2;
        for (int y = 0; y < crop_side; ++y) {
            std::memcpy(&square[std::size_t(y) * crop_side * 4],
                        image.get() + (std::size_t(top + y) * width + left) * 4, crop_side * 4);
        }
        out.write(square.data(), static_cast<std::streamsize>(square.size()));
        if (argc > 4) {
            std::string const number = std::to_string(count);
            auto const png = std::filesystem::path(argv[4]) / (std::string(number.size() < 2, '0') + number + ".png");
            stbi_write_png(png.c_str(), crop_side, crop_side, 4, square.data(), crop_side * 4);
        }
        ++count;
    }
    return out.good() && count > 0 ? 0 : 1;
}
