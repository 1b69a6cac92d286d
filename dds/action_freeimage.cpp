#include "dds/action_freeimage.hpp"

#include "dds/conversion_name.hpp"
#include "dds/freeimage_bitmap.hpp"
#include "dds/freeimage_messages.hpp"

#include <QFile>

#include <utility>

namespace {

constexpr int progress_maximum = 1000;
constexpr unsigned jpeg_bits_per_texel = 24;

class LINES_OF_ACTION final : public OUTPUT_LINE_SINK {
public:
    explicit LINES_OF_ACTION(ACTION_FREEIMAGE& action) : action_(action) {}
    void add_output_line(QString line) override { action_.freeimage_output(line); }

private:
    ACTION_FREEIMAGE& action_;
};

}  // namespace

ACTION_FREEIMAGE::ACTION_FREEIMAGE(PHYSICAL_PATH const& source, QString format, PROCESSOR_INTERFACE& processor)
    : ACTION_CONVERT(source, processor),
      format_(std::move(format)) {
    set_progress_max(progress_maximum);
    set_target_extension(QLatin1Char('.') + format_);
}

QString ACTION_FREEIMAGE::get_name(bool detailed) {
    return conversion_name(logical_source(), detailed);
}

bool ACTION_FREEIMAGE::convert(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target, RULE_CACHE const&,
                               FILE_MAP const&) {
    LINES_OF_ACTION lines(*this);
    FREEIMAGE_MESSAGES const messages(lines);
    QByteArray const source_path = QFile::encodeName(source);
    FREE_IMAGE_FORMAT const source_format = FreeImage_GetFIFFromFilename(source_path.constData());
    if (source_format == FIF_UNKNOWN) {
        add_output_line(QStringLiteral("Unknown image file format: ") + source);
        return false;
    }
    QByteArray const sample_name = "a." + QFile::encodeName(format_);
    FREE_IMAGE_FORMAT const target_format = FreeImage_GetFIFFromFilename(sample_name.constData());
    if (target_format == FIF_UNKNOWN) {
        add_output_line(QStringLiteral("Unknown image file format: ") + format_);
        return false;
    }
    FREEIMAGE_BITMAP bitmap = load_freeimage_bitmap(source_format, source);
    if (!bitmap) {
        add_output_line(QStringLiteral("Failed to load ") + source);
        return false;
    }
    if (target_format == FIF_JPEG && FreeImage_GetBPP(bitmap.get()) != jpeg_bits_per_texel) {
        // Not all types of texels can be converted this way.
        if (FREEIMAGE_BITMAP converted{FreeImage_ConvertTo24Bits(bitmap.get())})
            bitmap = std::move(converted);
    }
    return save_freeimage_bitmap(lines, target_format, bitmap.get(), target);
}

void ACTION_FREEIMAGE::freeimage_output(QString const& message) {
    add_output_line(message);
}
