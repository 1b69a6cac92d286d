// TGA files as tests write them down.
#pragma once

#include <QByteArray>

#include <array>
#include <functional>

/// A true-colour TGA with the top row first; texels as blue, green, red, alpha.
inline QByteArray tga(int width, int height, std::function<std::array<int, 4>(int, int)> const& texel) {
    QByteArray bytes = QByteArray::fromHex("000002000000000000000000");
    for (int const side : {width, height})
        bytes.append(static_cast<char>(side % 256)).append(static_cast<char>(side / 256));
    bytes.append(char(32)).append(char(0x28));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int const channel : texel(x, y))
                bytes.append(static_cast<char>(channel));
        }
    }
    return bytes;
}
