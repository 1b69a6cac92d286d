#include "platform/image_loader/image_info_db.hpp"

#include "platform/image_loader/image_info_db_reader.hpp"
#include "platform/qe/native_path.hpp"
#include "platform/qe/replace_file.hpp"

#include <algorithm>
#include <limits>
#include <memory>

namespace IMAGE_LOADER {

namespace {

namespace layout = image_info_db_layout;

std::unique_ptr<IMAGE_INFO_DB>& process_database() {
    static std::unique_ptr<IMAGE_INFO_DB> database;
    return database;
}

/// The file in the making; it never leaves the size that it was given.
class FILE_BYTES {
public:
    explicit FILE_BYTES(std::size_t size) : bytes_(size) {}

    template <typename NUMBER>
    void put(NUMBER number) {
        std::memcpy(bytes_.data() + at_, &number, sizeof number);
        at_ += sizeof number;
    }
    void put(std::string_view text) {
        std::memcpy(bytes_.data() + at_, text.data(), text.size());
        at_ += text.size();
    }
    void move_to(std::size_t at) { at_ = at; }
    std::span<std::uint8_t const> bytes() const { return bytes_; }

private:
    std::vector<std::uint8_t> bytes_;
    std::size_t at_ = 0;
};

/// The surfaces of all images, each layout once: a game has thousands of textures and some dozens of layouts.
class SHARED_SURFACES {
public:
    std::uint32_t place(std::vector<IMAGE_SURFACE> const& surfaces) {
        std::vector<std::uint64_t> key;
        key.reserve(3 * surfaces.size());
        for (IMAGE_SURFACE const& surface : surfaces)
            key.insert(key.end(), {surface.offset, surface.bytes, surface.row_pitch});
        auto const [known, is_new] = places_.try_emplace(key, static_cast<std::uint32_t>(numbers_.size() / 3));
        if (is_new)
            numbers_.insert(numbers_.end(), key.begin(), key.end());
        return known->second;
    }

    std::vector<std::uint64_t> const& numbers() const { return numbers_; }

private:
    std::map<std::vector<std::uint64_t>, std::uint32_t> places_;
    std::vector<std::uint64_t> numbers_;
};

}  // namespace

IMAGE_INFO_DB& IMAGE_INFO_DB::inst() {
    if (!process_database())
        process_database() = std::make_unique<IMAGE_INFO_DB>();
    return *process_database();
}

void IMAGE_INFO_DB::destroy() {
    process_database().reset();
}

void IMAGE_INFO_DB::add_info(QE::FileName const& name, IMAGE_INFO const& info, std::uint32_t user_number) {
    records_.insert_or_assign(name.text(), RECORD{info, user_number});
}

bool IMAGE_INFO_DB::save(QE::UniString const& path, std::string& cause) const {
    SHARED_SURFACES surfaces;
    std::vector<std::uint32_t> first_surfaces;
    first_surfaces.reserve(records_.size());
    std::uint64_t name_bytes = 0;
    for (auto const& [name, record] : records_) {
        first_surfaces.push_back(surfaces.place(record.info.surfaces));
        name_bytes += name.size() + 1;
    }
    if (name_bytes > std::numeric_limits<std::uint32_t>::max()) {
        cause = "the names of the images take more than 4 GiB";
        return false;
    }

    std::size_t const surface_count = surfaces.numbers().size() / 3;
    std::size_t const size = layout::header_bytes + layout::image_bytes * records_.size() +
                             layout::surface_bytes * surface_count + name_bytes;
    FILE_BYTES file(size);
    file.put(layout::magic);
    file.put(layout::version);
    file.move_to(layout::checked_from);
    file.put(std::uint64_t{size});
    file.put(static_cast<std::uint32_t>(records_.size()));
    file.put(static_cast<std::uint32_t>(surface_count));
    file.put(name_bytes);
    file.move_to(layout::header_bytes);
    std::uint32_t name_at = 0;
    std::size_t place = 0;
    for (auto const& [name, record] : records_) {
        IMAGE_INFO const& info = record.info;
        for (std::uint32_t const number :
             {name_at, static_cast<std::uint32_t>(name.size()), info.width, info.height,
              static_cast<std::uint32_t>(info.texel_format), static_cast<std::uint32_t>(info.image_format),
              static_cast<std::uint32_t>(info.surfaces.size()), first_surfaces[place++], record.user_number, 0u})
            file.put(number);
        name_at += static_cast<std::uint32_t>(name.size() + 1);
    }
    for (std::uint64_t const number : surfaces.numbers())
        file.put(number);
    for (auto const& [name, record] : records_) {
        file.put(std::string_view(name));
        file.put(char{0});
    }
    file.move_to(layout::checksum_offset);
    file.put(layout::crc_32(std::as_bytes(file.bytes()).subspan(layout::checked_from)));

    try {
        return QE::replace_file(QE::native_path(path), file.bytes(), cause);
    } catch (std::bad_alloc const&) {
        throw;
    } catch (std::exception const& exception) {
        cause = exception.what();
        return false;
    }
}

}  // namespace IMAGE_LOADER
