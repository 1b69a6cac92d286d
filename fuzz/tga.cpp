// TGA files: header and texels of every coding.
#include "fuzz/fuzz_input.hpp"
#include "platform/image_loader/picture.hpp"
#include "platform/qe/read_pixels.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    fuzz::INPUT_FILE const input(bytes, size);
    QE::FileIn file{QE::String(input.path())};
    fuzz::require(file.is_open() && file.size() == size, "the file is open and has its size");

    QE::TGAHeader header;
    std::string cause;
    if (!header.read(file)) {
        fuzz::require(!header.cause().empty() && file.position() == 0, "a refused header says why");
        return 0;
    }
    std::optional<QE::IMAGE32> const image = QE::read_pixels(file, header, cause);
    if (!image) {
        fuzz::require(!cause.empty() && file.position() == QE::TGAHeader::byte_count, "refused texels say why");
        return 0;
    }
    fuzz::require(image->width == header.width() && image->height == header.height() &&
                      image->pixels.size() == std::size_t{4} * header.width() * header.height(),
                  "an image has the announced size");
    return 0;
}
