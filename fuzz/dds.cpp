// DDS files: the header, where each picture lies, every texel format, and writing again what was read.
#include "fuzz/fuzz_input.hpp"
#include "platform/image_loader/convert.hpp"
#include "platform/image_loader/load_dds.hpp"

#include <vector>

namespace {

using namespace dds_container;

/// Large files are a matter of patience alone.
constexpr std::uint64_t most_pictures = 64;

void decode_all(std::span<std::uint8_t const> file, DDS_DESCRIPTION const& description) {
    std::uint64_t pictures = 0;
    std::uint64_t end = description.header_size();
    for (std::uint32_t element = 0; element < description.array_size; ++element) {
        for (std::uint32_t face = 0; face < description.face_count; ++face) {
            for (std::uint32_t level = 0; level < description.mip_count; ++level) {
                for (std::uint32_t slice = 0; slice < level_side(description.depth, level); ++slice) {
                    if (++pictures > most_pictures) {
                        return;
                    }
                    std::optional<DDS_SURFACE> const surface = find_surface(description, element, face, level, slice);
                    fuzz::require(surface && surface->offset == end && surface->size <= file.size() - end,
                                  "pictures lie one behind the other, inside the file");
                    end += surface->size;
                    std::vector<std::uint8_t> rgba(std::size_t{4} * surface->width * surface->height);
                    std::string cause;
                    fuzz::require(IMAGE_LOADER::decode_dds_surface(file, description, *surface, rgba, cause),
                                  "every picture of a sound file can be decoded");
                }
            }
        }
    }
}

void write_again(std::span<std::uint8_t const> file, DDS_DESCRIPTION const& description) {
    std::vector<std::span<std::uint8_t const>> levels;
    for (std::uint32_t element = 0; element < description.array_size && levels.size() < most_pictures; ++element) {
        for (std::uint32_t face = 0; face < description.face_count; ++face) {
            for (std::uint32_t level = 0; level < description.mip_count; ++level) {
                DDS_SURFACE const surface = *find_surface(description, element, face, level, 0);
                levels.push_back(file.subspan(surface.offset, surface.size * level_side(description.depth, level)));
            }
        }
    }
    std::string cause;
    std::optional<std::vector<std::uint8_t>> const written = write_dds(description, levels, cause);
    if (!written) {
        fuzz::require(!cause.empty(), "what is not written says why");
        return;
    }
    std::optional<DDS_DESCRIPTION> const again = read_dds(*written, cause);
    fuzz::require(again && again->format == description.format && again->width == description.width &&
                      again->height == description.height && again->depth == description.depth &&
                      again->mip_count == description.mip_count && again->array_size == description.array_size &&
                      again->face_count == description.face_count && again->masks == description.masks,
                  "what is written reads the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    std::span<std::uint8_t const> const file(bytes, size);
    std::string cause;
    std::optional<DDS_DESCRIPTION> const header = read_dds_header(file, cause);
    fuzz::require(header || !cause.empty(), "a refused header says why");
    IMAGE_LOADER::IMAGE::read_header(file);
    std::optional<DDS_DESCRIPTION> const description = read_dds(file, cause);
    if (!description) {
        return 0;
    }
    fuzz::require(header && payload_size(*description) <= size - description->header_size(),
                  "a sound file holds its payload");
    decode_all(file, *description);
    write_again(file, *description);

    IMAGE_LOADER::IMAGE const image(bytes, size);
    fuzz::require(image.valid() || !image.cause().empty(), "a refused image says why");
    if (image.valid()) {
        IMAGE_LOADER::IMAGE rgba(image.width(), image.height(), image.number_of_mips(), IMAGE_LOADER::TTF_R8G8B8A8,
                                 IMAGE_LOADER::IMAGE_FORMAT::memory);
        for (std::uint32_t level = 0; level < image.number_of_mips(); ++level) {
            fuzz::require(IMAGE_LOADER::convert(image, level, rgba, level, cause), "every image can be converted");
        }
    }
    return 0;
}
