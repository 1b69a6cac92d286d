// What is read of PNG, JPG, TIF and TGA files before the decoder sees them. The first four bytes are the announced
// sides.
#include "fuzz/fuzz_input.hpp"
#include "platform/image_loader/coded_file_bounds.hpp"
#include "platform/image_loader/tga_is_whole.hpp"
#include "platform/image_loader/tif_for_freeimage.hpp"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    using IMAGE_LOADER::IMAGE_FORMAT;
    if (size < 4) {
        return 0;
    }
    std::uint32_t const width = static_cast<std::uint32_t>(bytes[0] | bytes[1] << 8);
    std::uint32_t const height = static_cast<std::uint32_t>(bytes[2] | bytes[3] << 8);
    std::vector<std::uint8_t> const file(bytes + 4, bytes + size);
    IMAGE_LOADER::tif_is_whole(file);
    IMAGE_LOADER::TIF_LAYOUT const layout = IMAGE_LOADER::read_tif_layout(file);
    IMAGE_LOADER::TIF_FOR_FREEIMAGE const tif(file);
    fuzz::require(IMAGE_LOADER::read_tif_layout(tif.file()).photometric == layout.photometric,
                  "a copy with other fields says the rest as before");
    IMAGE_LOADER::jpg_is_whole(file);
    IMAGE_LOADER::tga_is_whole(file);
    for (IMAGE_FORMAT const format : {IMAGE_FORMAT::png, IMAGE_FORMAT::jpg, IMAGE_FORMAT::tif}) {
        fuzz::require(IMAGE_LOADER::can_hold_texels(file, format, 0, height), "nothing fits into any file");
        fuzz::require(IMAGE_LOADER::can_hold_texels(file, format, width, height) ||
                          !IMAGE_LOADER::can_hold_texels(file, format, width, 65535),
                      "more texels do not fit where fewer did not");
    }
    return 0;
}
