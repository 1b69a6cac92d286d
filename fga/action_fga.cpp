#include "fga/action_fga.hpp"

#include "fga/read_vector_field.hpp"
#include "fga/wrap_vector_field.hpp"
#include "platform/checked_size.hpp"
#include "platform/qe/native_path.hpp"
#include "platform/qe/replace_file.hpp"

#include <QFile>
#include <QtEndian>

#include <array>
#include <memory>
#include <new>
#include <optional>
#include <string>

namespace {

/// The header of a volume without levels. Only the depth flag is set, of all that say which fields count: readers of
/// these textures go by the caps.
std::array<std::uint8_t, 128> volume_header(UTILITYLIB::VECTOR_3c const& size) {
    std::array<std::uint8_t, 128> header{};
    auto const put = [&](std::size_t offset, std::uint32_t value) {
        qToLittleEndian(value, header.data() + offset);
    };
    constexpr std::uint32_t depth_flag = 0x00800000;
    constexpr std::uint32_t four_cc_flag = 4;
    constexpr std::uint32_t a16b16g16r16f = 113;
    constexpr std::uint32_t complex_caps = 8;
    constexpr std::uint32_t volume_caps = 0x00200000;
    put(0, 0x20534444);  // "DDS "
    put(4, 124);
    put(8, depth_flag);
    put(12, size.y);
    put(16, size.x);
    put(24, size.z);
    put(76, 32);
    put(80, four_cc_flag);
    put(84, a16b16g16r16f);
    put(108, complex_caps);
    put(112, volume_caps);
    return header;
}

struct TEXT {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
};

/// The whole of an open file; nothing, and `cause`, when it is too large or cannot be read. Throws std::bad_alloc.
std::optional<TEXT> read_text(QFile& file, std::string& cause) {
    auto const size = static_cast<std::uint64_t>(file.size());
    if (size > checked_size::most_file_bytes) {
        cause = "it is larger than 8 GiB";
        return std::nullopt;
    }
    TEXT text = {std::make_unique_for_overwrite<char[]>(checked_size::memory_size(size)), 0};
    while (text.size < size) {
        qint64 const read = file.read(text.bytes.get() + text.size, static_cast<qint64>(size - text.size));
        if (read <= 0) {
            cause = "it cannot be read to its end";
            return std::nullopt;
        }
        text.size += static_cast<std::size_t>(read);
    }
    return text;
}

}  // namespace

ACTION_FGA::ACTION_FGA(PHYSICAL_PATH const& source, PROCESSOR_INTERFACE& processor)
    : ACTION_CONVERT(source, processor) {
    set_target_extension(QStringLiteral(".dds"));
}

QString ACTION_FGA::get_name(bool detailed) {
    QString const name = QStringLiteral("Convert FGA");
    return detailed ? name + QStringLiteral(" (") + logical_source().section(QLatin1Char('/'), -1) + QLatin1Char(')')
                    : name;
}

void ACTION_FGA::get_source_files(QVector<LOGICAL_PATH>& sources, FILE_MAP const&) {
    sources.append(logical_source());
}

bool ACTION_FGA::convert(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target, RULE_CACHE const&, FILE_MAP const&) {
    std::optional<VECTOR_FIELD> field;
    std::string cause;
    try {
        QFile file(source.text());
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return false;
        if (std::optional<TEXT> const text = read_text(file, cause))
            field = read_vector_field({text->bytes.get(), text->size}, cause);
    } catch (std::bad_alloc const&) {
        cause = "there is not enough memory";
    }
    if (!field) {
        add_output_line(QStringLiteral("Failed to read '%1': %2").arg(source.text(), QString::fromStdString(cause)));
        return false;
    }
    wrap_vector_field(*field);
    return write_dds_file_nomip_fmt_rgba16(target, field->texels, field->size);
}

bool ACTION_FGA::write_dds_file_nomip_fmt_rgba16(PHYSICAL_PATH const& path,
                                                 std::vector<UTILITYLIB::FLOAT16_4> const& texels,
                                                 UTILITYLIB::VECTOR_3c const& size) {
    std::string cause;
    std::optional<QE::OUTPUT_FILE> file = QE::OUTPUT_FILE::open(QE::native_path(path.text().toStdWString()), cause);
    // A target that cannot be opened is no failure of the conversion.
    if (!file)
        return true;
    std::array<std::uint8_t, 128> const header = volume_header(size);
    static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "halves are written as they stand in memory");
    std::span const halves(reinterpret_cast<std::uint8_t const*>(texels.data()),
                           texels.size() * sizeof(UTILITYLIB::FLOAT16_4));
    if (file->write(header, cause) && file->write(halves, cause) && file->commit(cause))
        return true;
    add_output_line(QStringLiteral("Failed to write '%1': %2").arg(path.text(), QString::fromLocal8Bit(cause.c_str())));
    return false;
}
