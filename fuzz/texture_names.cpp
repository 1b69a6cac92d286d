// The lists in ".texture_array" files, whatever their coding.
#include "processor/texture_names.hpp"
#include "fuzz/fuzz_input.hpp"

#include <QBuffer>

namespace {

std::set<QString> names_in(QByteArray bytes) {
    QBuffer list(&bytes);
    list.open(QIODevice::ReadOnly);
    return read_texture_names(list);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    QByteArray const list = QByteArray::fromStdString(fuzz::grown_text(bytes, size));
    std::set<QString> const names = names_in(list);
    fuzz::require(names.size() <= static_cast<std::size_t>(list.size()), "every name takes at least a byte");
    // The empty line in front keeps the first name from being taken for a byte-order mark.
    QByteArray again = "\r\n";
    bool can_be_written = true;
    for (QString const& name : names) {
        fuzz::require(!name.isEmpty() && !name.contains(u'\n'), "a name is a line that is not empty");
        // Halves of a surrogate pair come out of UTF-16 and have no UTF-8.
        can_be_written = can_be_written && QString::fromUtf8(name.toUtf8()) == name;
        again += name.toUtf8() + "\r\n";
    }
    fuzz::require(!can_be_written || names_in(again) == names, "a list of the names holds them");
    return 0;
}
