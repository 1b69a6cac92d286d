// Layouts: Truevision TGA 2.0; Portable Network Graphics (third edition), section 11.2.1; ITU-T T.81 annex B for JPG;
// TIFF 6.0, section 2; Microsoft's DDS_HEADER.
#include "host/tool/memory_estimate.hpp"

#include "platform/checked_size.hpp"
#include "processor/host/paths.hpp"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace tool {

namespace {

// What a worker holds before it has looked at any image.
constexpr std::uint64_t bytes_of_a_worker = std::uint64_t{24} << 20;
// Measured as the peak of a worker, less the above, over square images of 2048 and 4096 texels a side with all mip
// levels: 15 to 23 with this project's encoders, up to 31 with nvtt, which works on floating-point colours.
constexpr std::uint64_t bytes_per_texel = 32;
// Sources that are no images become about as much again in memory, twice over while they are converted.
constexpr std::uint64_t bytes_per_other_byte = 3;

using SIDES = std::optional<IMAGE_SIDES>;

class HEADER {
public:
    explicit HEADER(QFile& file) : file_(file) {}

    bool has(qint64 offset, QByteArray const& bytes) { return at(offset, bytes.size()) == bytes; }
    std::uint64_t big_16(qint64 offset) { return qFromBigEndian<quint16>(padded(offset, 2).constData()); }
    std::uint64_t big_32(qint64 offset) { return qFromBigEndian<quint32>(padded(offset, 4).constData()); }
    std::uint64_t little_16(qint64 offset) { return qFromLittleEndian<quint16>(padded(offset, 2).constData()); }
    std::uint64_t little_32(qint64 offset) { return qFromLittleEndian<quint32>(padded(offset, 4).constData()); }
    int byte(qint64 offset) { return static_cast<unsigned char>(padded(offset, 1).at(0)); }
    qint64 size() const { return file_.size(); }

private:
    QByteArray at(qint64 offset, int count) { return file_.seek(offset) ? file_.read(count) : QByteArray(); }
    // Behind the end there are zeros.
    QByteArray padded(qint64 offset, int count) { return at(offset, count).leftJustified(count, '\0'); }

    QFile& file_;
};

SIDES jpg_sides(HEADER& header) {
    // Real files have a few dozen segments in front of the frame.
    constexpr int most_segments = 10000;
    qint64 at = 2;
    for (int i = 0; i < most_segments && at + 9 <= header.size(); ++i) {
        if (header.byte(at) != 0xff)
            return {};
        int const marker = header.byte(at + 1);
        // Frames are C0 to CF but for the tables DHT (C4), JPG (C8) and DAC (CC).
        if (marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc)
            return IMAGE_SIDES{header.big_16(at + 7), header.big_16(at + 5)};
        bool const is_filling = marker == 0xff;
        at += is_filling ? 1 : 2 + static_cast<qint64>(header.big_16(at + 2));
    }
    return {};
}

SIDES tif_sides(HEADER& header, bool is_big) {
    auto const word = [&](qint64 at) {
        return is_big ? header.big_16(at) : header.little_16(at);
    };
    auto const number = [&](qint64 at) {
        return is_big ? header.big_32(at) : header.little_32(at);
    };
    // With offsets of 64 bits; their lower halves are enough.
    bool const is_64 = word(2) == 43;
    auto const directory = static_cast<qint64>(number(is_64 ? (is_big ? 12 : 8) : 4));
    qint64 const first = directory + (is_64 ? 8 : 2);
    std::uint64_t const entries = word(is_64 && is_big ? directory + 6 : directory);
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    for (std::uint64_t i = 0; i < entries; ++i) {
        qint64 const entry = first + static_cast<qint64>(i) * (is_64 ? 20 : 12);
        constexpr std::uint64_t width_tag = 256;
        constexpr std::uint64_t height_tag = 257;
        constexpr std::uint64_t short_type = 3;
        qint64 const value = is_64 ? 12 : 8;
        std::uint64_t const tag = word(entry);
        if (tag == width_tag || tag == height_tag)
            (tag == width_tag ? width : height) =
                word(entry + 2) == short_type ? word(entry + value) : number(entry + value);
        if (tag > height_tag || entry > header.size())
            break;
    }
    return IMAGE_SIDES{width, height};
}

SIDES sides_of(HEADER header, bool is_tga) {
    if (is_tga)
        return IMAGE_SIDES{header.little_16(12), header.little_16(14)};
    if (header.has(0, QByteArrayLiteral("\x89PNG")))
        return IMAGE_SIDES{header.big_32(16), header.big_32(20)};
    if (header.has(0, QByteArrayLiteral("DDS ")))
        return IMAGE_SIDES{header.little_32(16), header.little_32(12),
                           std::max<std::uint64_t>(1, header.little_32(24))};
    if (header.has(0, QByteArrayLiteral("\xff\xd8")))
        return jpg_sides(header);
    if (header.has(0, QByteArrayLiteral("II*\0")) || header.has(0, QByteArrayLiteral("II+\0")))
        return tif_sides(header, false);
    if (header.has(0, QByteArrayLiteral("MM\0*")) || header.has(0, QByteArrayLiteral("MM\0+")))
        return tif_sides(header, true);
    return {};
}

}  // namespace

std::optional<IMAGE_SIDES> announced_sides(QString const& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() == 0)
        return {};
    return sides_of(HEADER(file), path.endsWith(QLatin1String(".tga"), Qt::CaseInsensitive));
}

std::optional<std::uint64_t> announced_texels(QString const& path) {
    SIDES const sides = announced_sides(path);
    if (!sides)
        return {};
    return checked_size::saturating_product(sides->width, sides->height, sides->depth);
}

std::uint64_t estimate_memory(PLANNED_ACTION const& planned) {
    // More than any machine has, and far from where sums run over.
    constexpr std::uint64_t most_texels = std::uint64_t{1} << 40;
    std::uint64_t bytes = bytes_of_a_worker;
    for (LOGICAL_PATH const& source : planned.sources) {
        QString const path = PATHS::physical_path(source);
        if (auto const texels = announced_texels(path))
            bytes += std::min(*texels, most_texels) * bytes_per_texel;
        else
            bytes += static_cast<std::uint64_t>(QFileInfo(path).size()) * bytes_per_other_byte;
    }
    return bytes;
}

}  // namespace tool
