#include "platform/qe/load_tga.hpp"

#include "platform/qe/read_pixels.hpp"

namespace QE {

std::optional<IMAGE32> load_tga(String const& path, std::string& cause) {
    FileIn file(path);
    if (!file.is_open()) {
        cause = "the file cannot be opened";
        return std::nullopt;
    }
    TGAHeader header;
    if (!header.read(file)) {
        cause = header.cause();
        return std::nullopt;
    }
    return read_pixels(file, header, cause);
}

}  // namespace QE
