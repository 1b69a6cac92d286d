// The layout is that of TIFF 6.0, section 2, and of the extension "BigTIFF" of the library that most programs read TIF
// files with: eight bytes for offsets and counts, and entries of twenty bytes in place of twelve.
#include "platform/image_loader/tif_directory.hpp"

#include <algorithm>

namespace IMAGE_LOADER {

namespace {

constexpr std::uint64_t type_long = 4;

/// Bytes of a number; 0 for types that are no unsigned whole numbers.
std::size_t bytes_of_type(std::uint64_t type) {
    switch (type) {
    case 1:
        return 1;
    case 3:
        return 2;
    case type_long:
        return 4;
    case 16:
        return 8;
    default:
        return 0;
    }
}

}  // namespace

TIF_DIRECTORY::TIF_DIRECTORY(std::span<std::uint8_t const> file)
    : file_(file),
      is_big_endian_(!file.empty() && file[0] == 'M'),
      is_64_(read(2, 2) == 43) {
    std::size_t const count_bytes = is_64_ ? 8 : 2;
    std::optional<std::uint64_t> const directory = is_64_ ? read(8, 8) : read(4, 4);
    std::optional<std::uint64_t> const entries = directory ? read(*directory, count_bytes) : std::nullopt;
    if (entries) {
        entries_at_ = static_cast<std::size_t>(*directory) + count_bytes;
        entry_count_ = std::min<std::uint64_t>(*entries, (file.size() - entries_at_) / entry_bytes());
    }
}

std::optional<std::uint64_t> TIF_DIRECTORY::read(std::uint64_t at, std::size_t bytes) const {
    if (at > file_.size() || bytes > file_.size() - at) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i) {
        value = value << 8 | file_[at + (is_big_endian_ ? i : bytes - 1 - i)];
    }
    return value;
}

void TIF_DIRECTORY::write(std::vector<std::uint8_t>& out, std::size_t at, std::uint64_t value,
                          std::size_t bytes) const {
    out.resize(std::max(out.size(), at + bytes));
    for (std::size_t i = 0; i < bytes; ++i) {
        out[at + (is_big_endian_ ? bytes - 1 - i : i)] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

TIF_DIRECTORY::FIELD TIF_DIRECTORY::field_of(std::size_t entry) const {
    std::size_t const word = is_64_ ? 8 : 4;
    FIELD field{*read(entry + 2, 2), *read(entry + 4, word), entry + 4 + word};
    // Numbers that do not fit into the entry stand where it points.
    std::size_t const bytes = bytes_of_type(field.type);
    if (bytes != 0 && field.count > word / bytes) {
        field.at = *read(field.at, word);
    }
    return field;
}

std::optional<TIF_DIRECTORY::FIELD> TIF_DIRECTORY::find(TIF_TAG tag) const {
    for (std::size_t i = 0; i < entry_count_; ++i) {
        std::size_t const entry = entries_at_ + i * entry_bytes();
        if (read(entry, 2) == static_cast<std::uint64_t>(tag)) {
            return field_of(entry);
        }
    }
    return std::nullopt;
}

std::optional<std::uint64_t> TIF_DIRECTORY::number(FIELD const& field, std::uint64_t index) const {
    std::size_t const bytes = bytes_of_type(field.type);
    if (bytes == 0 || index >= field.count || field.at > file_.size() || index > file_.size() / bytes) {
        return std::nullopt;
    }
    return read(field.at + index * bytes, bytes);
}

std::uint32_t TIF_DIRECTORY::number(TIF_TAG tag, std::uint32_t without_field) const {
    std::optional<FIELD> const field = find(tag);
    std::optional<std::uint64_t> const value = field ? number(*field, 0) : std::nullopt;
    return value ? static_cast<std::uint32_t>(std::min<std::uint64_t>(*value, UINT32_MAX)) : without_field;
}

std::vector<std::uint8_t> TIF_DIRECTORY::file_with(std::span<CHANGE const> changes) const {
    std::vector<std::vector<std::uint8_t>> entries;
    auto const tag_of = [&](std::vector<std::uint8_t> const& entry) {
        return is_big_endian_ ? entry[0] << 8 | entry[1] : entry[1] << 8 | entry[0];
    };
    // What points behind the end says nothing, and must not come to point into the new directory. Of fields with one
    // tag the first one counts.
    enum class FIRST : std::uint8_t { unseen, kept, dropped };
    std::vector<FIRST> first(std::size_t{1} << 16, FIRST::unseen);
    for (std::size_t i = 0; i < entry_count_; ++i) {
        std::size_t const at = entries_at_ + i * entry_bytes();
        FIRST& state = first[*read(at, 2)];
        if (state == FIRST::unseen) {
            FIELD const field = field_of(at);
            bool const says_nothing = bytes_of_type(field.type) != 0 && !number(field, 0);
            state = says_nothing ? FIRST::dropped : FIRST::kept;
        }
        if (state == FIRST::kept) {
            auto const entry = file_.subspan(at, entry_bytes());
            entries.emplace_back(entry.begin(), entry.end());
        }
    }
    std::size_t const word = is_64_ ? 8 : 4;
    for (CHANGE const& change : changes) {
        std::erase_if(entries, [&](auto const& entry) { return tag_of(entry) == static_cast<int>(change.tag); });
        if (change.number) {
            std::vector<std::uint8_t>& entry = entries.emplace_back(entry_bytes());
            write(entry, 0, static_cast<std::uint64_t>(change.tag), 2);
            write(entry, 2, type_long, 2);
            write(entry, 4, 1, word);
            write(entry, 4 + word, *change.number, 4);
        }
    }
    std::ranges::stable_sort(entries, {}, tag_of);

    std::vector<std::uint8_t> out;
    out.reserve(file_.size() + 32 + entries.size() * entry_bytes());
    out.assign(file_.begin(), file_.end());
    out.resize((out.size() + 7) / 8 * 8);
    write(out, word, out.size(), word);
    write(out, out.size(), entries.size(), is_64_ ? 8 : 2);
    for (auto const& entry : entries) {
        out.insert(out.end(), entry.begin(), entry.end());
    }
    write(out, out.size(), 0, word);
    return out;
}

}  // namespace IMAGE_LOADER
