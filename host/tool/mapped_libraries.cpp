// See elf(5) for the tables and notes, and dl_iterate_phdr(3).
#include "host/tool/mapped_libraries.hpp"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>
#include <string_view>

#include <elf.h>
#include <link.h>

namespace tool {

namespace {

struct OBJECT {
    MAPPED_LIBRARY library;
    std::string_view name;
    std::vector<std::string_view> needs;
    bool is_taken = false;
};

constexpr std::string_view parts_of_c_library[] = {"libc.so",  "libm.so",  "libdl.so",     "libpthread.so",
                                                   "librt.so", "ld-linux", "libresolv.so", "libutil.so"};

QByteArray build_id(char const* notes, std::size_t size) {
    auto const padded = [](std::size_t bytes) {
        return (bytes + 3) / 4 * 4;
    };
    while (size >= sizeof(ElfW(Nhdr))) {
        ElfW(Nhdr) head;
        std::memcpy(&head, notes, sizeof head);
        std::size_t const length = sizeof head + padded(head.n_namesz) + padded(head.n_descsz);
        if (length > size)
            break;
        char const* const name = notes + sizeof head;
        if (head.n_type == NT_GNU_BUILD_ID && std::string_view(name, head.n_namesz) == std::string_view("GNU", 4))
            return QByteArray(name + padded(head.n_namesz), static_cast<int>(head.n_descsz));
        notes += length;
        size -= length;
    }
    return {};
}

void read_dynamic_section(ElfW(Dyn) const* entry, ElfW(Addr) base, OBJECT& object) {
    char const* strings = nullptr;
    std::vector<ElfW(Xword)> needs;
    ElfW(Xword) name = 0;
    for (; entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == DT_NEEDED)
            needs.push_back(entry->d_un.d_val);
        else if (entry->d_tag == DT_SONAME)
            name = entry->d_un.d_val;
        // The loader has added the base where the section can be written.
        else if (entry->d_tag == DT_STRTAB)
            strings =
                reinterpret_cast<char const*>(entry->d_un.d_ptr < base ? entry->d_un.d_ptr + base : entry->d_un.d_ptr);
    }
    if (!strings)
        return;
    for (ElfW(Xword) const place : needs)
        object.needs.emplace_back(strings + place);
    if (name != 0)
        object.name = strings + name;
}

int add_object(dl_phdr_info* info, std::size_t, void* data) {
    OBJECT object;
    object.library.path = QFile::decodeName(info->dlpi_name);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        ElfW(Phdr) const& header = info->dlpi_phdr[i];
        auto const* const start = reinterpret_cast<char const*>(info->dlpi_addr + header.p_vaddr);
        if (header.p_type == PT_DYNAMIC)
            read_dynamic_section(reinterpret_cast<ElfW(Dyn) const*>(start), info->dlpi_addr, object);
        else if (header.p_type == PT_NOTE && object.library.build_id.isEmpty())
            object.library.build_id = build_id(start, header.p_memsz);
    }
    static_cast<std::vector<OBJECT>*>(data)->push_back(std::move(object));
    return 0;
}

bool is_of_c_library(std::string_view name) {
    return std::any_of(std::begin(parts_of_c_library), std::end(parts_of_c_library),
                       [&](std::string_view part) { return name.starts_with(part); });
}

}  // namespace

std::vector<MAPPED_LIBRARY> libraries_of(QString const& library) {
    std::vector<OBJECT> objects;
    dl_iterate_phdr(&add_object, &objects);
    QString const own = QFileInfo(library).canonicalFilePath();
    std::vector<std::string_view> wanted;
    for (OBJECT& object : objects) {
        if (!object.library.path.isEmpty() && QFileInfo(object.library.path).canonicalFilePath() == own) {
            object.is_taken = true;
            wanted = object.needs;
        }
    }
    std::vector<OBJECT const*> found;
    while (!wanted.empty()) {
        std::string_view const name = wanted.back();
        wanted.pop_back();
        for (OBJECT& object : objects) {
            if (object.is_taken || object.name != name || is_of_c_library(name))
                continue;
            object.is_taken = true;
            found.push_back(&object);
            wanted.insert(wanted.end(), object.needs.begin(), object.needs.end());
        }
    }
    std::sort(found.begin(), found.end(),
              [](OBJECT const* left, OBJECT const* right) { return left->name < right->name; });
    std::vector<MAPPED_LIBRARY> libraries;
    for (OBJECT const* const object : found)
        libraries.push_back(object->library);
    return libraries;
}

}  // namespace tool
