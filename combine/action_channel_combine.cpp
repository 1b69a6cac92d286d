#include "combine/action_channel_combine.hpp"

#include "combine/level_values.hpp"
#include "dds/freeimage_bitmap.hpp"
#include "dds/freeimage_messages.hpp"
#include "platform/checked_size.hpp"

#include <QDir>
#include <QFile>
#include <QSet>

#include <exception>
#include <new>
#include <span>

namespace {

constexpr int progress_maximum = 1000;
constexpr std::size_t alpha = 3;

using BITMAP = FREEIMAGE_BITMAP;
using PATHS_OF_CHANNELS = std::array<LOGICAL_PATH, ACTION_CHANNEL_COMBINE::channel_count>;

FREE_IMAGE_FORMAT format_of_name(QString const& path) {
    return FreeImage_GetFIFFromFilename(QFile::encodeName(path).constData());
}

/// One run: reports through the sink, and remembers whether anything went wrong.
class COMBINATION {
public:
    COMBINATION(OUTPUT_LINE_SINK& sink, PATHS_OF_CHANNELS const& sources) : sink_(sink), sources_(sources) {}

    bool failed() const { return failed_; }

    void fail(QString const& line) {
        sink_.add_output_line(line);
        failed_ = true;
    }

    void load(FILE_MAP const& files) {
        for (std::size_t channel = 0; channel < sources_.size(); ++channel) {
            if (!sources_[channel].is_empty())
                load(channel, files);
        }
    }

    /// All channels are taken over even after an error, so that every problem is told at once. Null when there is no
    /// memory for the image, or no source to give its size.
    BITMAP combine(RULE_CACHE const& rules) {
        bool const has_alpha = !sources_[alpha].is_empty();
        BITMAP output(
            FreeImage_Allocate(static_cast<int>(width_), static_cast<int>(height_), has_alpha ? 32 : 24, 0, 0, 0));
        for (std::size_t channel = 0; channel < sources_.size(); ++channel) {
            FIBITMAP* const bitmap = bitmaps_[channel].get();
            if (bitmap == nullptr)
                continue;
            // As many bytes as there are pixels, from the first one on: where rows are padded that takes padding for
            // pixels and leaves the last ones out. Deliberate.
            level_values(sink_, {FreeImage_GetBits(bitmap), checked_size::memory_size(width_, height_)},
                         sources_[channel], rules, failed_);
            if (!FreeImage_SetChannel(output.get(), bitmap, static_cast<FREE_IMAGE_COLOR_CHANNEL>(FICC_RED + channel)))
                fail(QStringLiteral("Failed to set channel: ") + sources_[channel]);
        }
        return output;
    }

private:
    void load(std::size_t channel, FILE_MAP const& files) {
        QString const& path = sources_[channel];
        BITMAP bitmap = clone_of_earlier(channel);
        if (!bitmap)
            bitmap = read(path, files);
        if (!bitmap)
            return;
        unsigned const width = FreeImage_GetWidth(bitmap.get());
        unsigned const height = FreeImage_GetHeight(bitmap.get());
        if ((width_ != 0 && width_ != width) || (height_ != 0 && height_ != height))
            fail(QStringLiteral("Source are of different size!"));
        width_ = width;
        height_ = height;
        bitmaps_[channel] = std::move(bitmap);
    }

    /// One file may serve several channels; it is decoded once.
    BITMAP clone_of_earlier(std::size_t channel) const {
        for (std::size_t earlier = 0; earlier < channel; ++earlier) {
            if (bitmaps_[earlier] && sources_[earlier] == sources_[channel])
                return BITMAP(FreeImage_Clone(bitmaps_[earlier].get()));
        }
        return nullptr;
    }

    BITMAP read(QString const& path, FILE_MAP const& files) {
        if (unreadable_.contains(path)) {
            fail(QStringLiteral("Failed to load: ") + path);
            return nullptr;
        }
        FREE_IMAGE_FORMAT const format = format_of_name(path);
        if (format == FIF_UNKNOWN) {
            fail(QStringLiteral("Unknown image file format: ") + path);
            return nullptr;
        }
        FILE_ENTRY const* const entry = files.value(LOGICAL_PATH(path));
        if (entry == nullptr) {
            fail(QStringLiteral("Source file not found: ") + path);
            return nullptr;
        }
        BITMAP const loaded = load_freeimage_bitmap(format, entry->physical_path);
        if (!loaded) {
            unreadable_.insert(path);
            fail(QStringLiteral("Failed to load: ") + path);
            return nullptr;
        }
        BITMAP grey(FreeImage_ConvertTo8Bits(loaded.get()));
        if (!grey)
            fail(QStringLiteral("Failed to convert to 8 bit: ") + path);
        return grey;
    }

    OUTPUT_LINE_SINK& sink_;
    PATHS_OF_CHANNELS const& sources_;
    std::array<BITMAP, ACTION_CHANNEL_COMBINE::channel_count> bitmaps_;
    /// Told for each channel, and not read again: FreeImage would say its part once more.
    QSet<QString> unreadable_;
    unsigned width_ = 0;
    unsigned height_ = 0;
    bool failed_ = false;
};

}  // namespace

ACTION_CHANNEL_COMBINE::ACTION_CHANNEL_COMBINE(PHYSICAL_PATH const& target, PROCESSOR_INTERFACE& processor)
    : ACTION_CONVERT(target, processor) {
    set_progress_max(progress_maximum);
}

void ACTION_CHANNEL_COMBINE::set_channel_source(std::size_t channel, LOGICAL_PATH const& source) {
    sources_.at(channel) = source;
}

QString ACTION_CHANNEL_COMBINE::get_name(bool detailed) {
    QString const name = QStringLiteral("Convert texture");
    return detailed ? name + QStringLiteral(" (") + get_target() + QLatin1Char(')') : name;
}

void ACTION_CHANNEL_COMBINE::get_source_files(QVector<LOGICAL_PATH>& sources, FILE_MAP const&) {
    for (LOGICAL_PATH const& source : sources_) {
        if (!source.is_empty())
            sources.append(source);
    }
}

ACTION_INTERFACE::STATUS ACTION_CHANNEL_COMBINE::run(FILE_MAP const& files, RULE_CACHE const& rules) {
    if (!error().isEmpty()) {
        add_output_line(error());
        return STATUS_FAILED;
    }
    PHYSICAL_PATH const target = get_target();
    bool combined = false;
    try {
        combined = combine_to(target, files, rules);
    } catch (std::bad_alloc const&) {
        add_output_line(QStringLiteral("Not enough memory"));
    } catch (std::exception const& exception) {
        add_output_line(QStringLiteral("Unexpected error: ") + QString::fromLocal8Bit(exception.what()));
    }
    if (!combined)
        return STATUS_FAILED;
    add_to_perforce(target, files, false, {});
    if (version_control_failed())
        return STATUS_FAILED;
    set_progress_value(progress_max());
    return STATUS_SUCCEEDED;
}

bool ACTION_CHANNEL_COMBINE::combine_to(PHYSICAL_PATH const& target, FILE_MAP const& files, RULE_CACHE const& rules) {
    FREE_IMAGE_FORMAT const format = format_of_name(target);
    if (format == FIF_UNKNOWN) {
        add_output_line(QStringLiteral("Unknown image file format: ") + target);
        return false;
    }
    FREEIMAGE_MESSAGES const messages(*this);
    COMBINATION combination(*this, sources_);
    combination.load(files);
    if (format == FIF_JPEG && !sources_[alpha].is_empty())
        combination.fail(QStringLiteral("Jpeg doesn't support alpha channel!"));
    if (combination.failed())
        return false;
    BITMAP const output = combination.combine(rules);
    if (combination.failed())
        return false;
    QDir().mkpath(target.section(QLatin1Char('/'), 0, -2));
    if (!save_freeimage_bitmap(*this, format, output.get(), target))
        combination.fail(QStringLiteral("Failed to save: ") + target);
    return !combination.failed();
}
