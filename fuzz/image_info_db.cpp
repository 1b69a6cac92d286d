// Image-information databases: as they are, and with a header and a checksum that are mended, since no fuzzer guesses a
// checksum and a stranger just makes one.
#include "fuzz/fuzz_input.hpp"
#include "platform/image_loader/image_info_db_reader.hpp"

#include <vector>

namespace {

using namespace IMAGE_LOADER;
namespace layout = image_info_db_layout;

template <typename NUMBER>
void put(std::vector<std::byte>& file, std::size_t at, NUMBER number) {
    std::memcpy(file.data() + at, &number, sizeof number);
}

void mend(std::vector<std::byte>& file) {
    if (file.size() < layout::header_bytes)
        return;
    std::memcpy(file.data(), layout::magic.data(), layout::magic.size());
    put(file, 8, layout::version);
    put(file, 16, std::uint64_t{file.size()});
    put(file, layout::checksum_offset, layout::crc_32(std::span(file).subspan(layout::checked_from)));
}

bool lies_in(std::span<std::byte const> file, std::string_view name) {
    auto const* const first = reinterpret_cast<char const*>(file.data());
    // The 0 behind a name belongs to the file as well.
    return name.data() >= first && name.data() + name.size() < first + file.size();
}

void look_up_all(IMAGE_INFO_DB_READER const& database, std::span<std::byte const> file) {
    for (std::uint32_t place = 0; place < database.size(); ++place) {
        IMAGE_INFO_RECORD const image = database.image(place);
        fuzz::require(lies_in(file, image.name) && image.name.size() <= layout::most_name_bytes &&
                          image.name.data()[image.name.size()] == '\0',
                      "a name lies in the file, and a 0 behind it");
        fuzz::require(place == 0 || database.image(place - 1).name < image.name, "names ascend");
        std::optional<IMAGE_INFO_RECORD> const found = database.find(image.name);
        fuzz::require(found && found->name.data() == image.name.data() && found->width == image.width &&
                          found->first_surface == image.first_surface,
                      "every image is found by its name");
        std::string const longer = std::string(image.name) + '\x01';
        bool const is_next = place + 1 < database.size() && database.image(place + 1).name == longer;
        fuzz::require(is_next || !database.find(longer) || database.find(longer)->name == longer,
                      "a name that is not there is not found");
        fuzz::require(image.number_of_mips <= layout::most_mips, "an image has no more mips than there are sizes");
        for (std::uint32_t level = 0; level < image.number_of_mips; ++level)
            database.surface(image, level);
    }
}

void open(std::vector<std::byte> const& file) {
    IMAGE_INFO_DB_READER database;
    char const* const cause = database.open(file);
    fuzz::require(cause == nullptr || (*cause != '\0' && database.size() == 0 && !database.find("")),
                  "a refused database says why and is empty");
    look_up_all(database, file);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    auto const* const first = reinterpret_cast<std::byte const*>(bytes);
    std::vector<std::byte> file(first, first + size);
    open(file);
    mend(file);
    open(file);
    return 0;
}
