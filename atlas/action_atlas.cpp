#include "atlas/action_atlas.hpp"

#include "atlas/atlas_builder.hpp"
#include "atlas/atlas_index.hpp"
#include "atlas/atlas_messages.hpp"
#include "atlas/atlas_options.hpp"
#include "atlas/load_source_texture.hpp"
#include "atlas/native_file_path.hpp"
#include "dds/compress_image.hpp"
#include "dds/target_files.hpp"
#include "platform/image_loader/load_image_file.hpp"
#include "processor/host/paths.hpp"
#include "processor/host/working_file_refusal.hpp"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace {

constexpr int loading_progress = 500;
constexpr int whole_progress = 1000;

bool is_known(PHYSICAL_PATH const& path, FILE_MAP const& files) {
    return files.contains(PATHS::logical_path(path));
}

bool is_file(PHYSICAL_PATH const& path) {
    return QFileInfo(path.text()).isFile();
}

}  // namespace

/// One run of the action. What it has written is gone again when it ends without having finished; Targa files are gone
/// in any case.
class ACTION_ATLAS::RUN {
public:
    RUN(ACTION_ATLAS& action, FILE_MAP const& files) : action_(action), files_(files) {}
    RUN(RUN const&) = delete;
    RUN& operator=(RUN const&) = delete;

    ~RUN() {
        for (PHYSICAL_PATH const& file : targas_ + unfinished_)
            remove_target(file);
    }

    bool make_atlas() {
        remove_earlier_pages();
        std::optional<std::string> const index = save_pages();
        if (!index)
            return false;
        begin(action_.index_path(), unfinished_);
        if (!write_atlas_index(action_, action_.index_path(), *index)) {
            revert();
            return false;
        }
        if (!compress_pages())
            return false;
        for (PAGE const& page : pages_) {
            if (page.is_made)
                action_.add_to_perforce(page.path, files_, false, {});
            else
                action_.remove_from_perforce(page.path, files_);
        }
        action_.add_to_perforce(action_.index_path(), files_, false, {});
        if (action_.version_control_failed())
            return false;
        unfinished_.clear();
        return true;
    }

private:
    using SOURCES = std::vector<std::unique_ptr<ATLAS_SOURCE_TEXTURE>>;

    struct PAGE {
        PHYSICAL_PATH path;
        /// Else an earlier build left it.
        bool is_made;
    };

    // The host hears of every file before it is written: pages are not announced before the run, and a process that is
    // killed takes back nothing by itself.
    void begin(PHYSICAL_PATH const& file, QVector<PHYSICAL_PATH>& files) {
        action_.announce_working_file(file);
        files.append(file);
    }

    /// The atlas of before as version control has it. What it brings back stays; an index that it does not know goes,
    /// since the pages of that one are gone.
    void revert() {
        remove_target(action_.index_path());
        unfinished_.clear();
        for (int i = 0; i < page_count_; ++i)
            action_.revert_from_perforce(action_.page_path(i, ".dds"), files_);
        action_.revert_from_perforce(action_.index_path(), files_);
    }

    void remove_earlier_pages() {
        while (FILE_ENTRY const* const page = files_.value(PATHS::logical_path(old_page()))) {
            remove_target(page->physical_path);
            ++old_page_count_;
        }
        for (int i = 0;; ++i) {
            PHYSICAL_PATH const targa = action_.page_path(i, ".tga");
            if (!is_known(targa, files_) && !QFile::exists(targa))
                break;
            action_.remove_from_perforce(targa, files_);
            // Not every version control removes the file itself, and what stands there would pass for a new page.
            remove_target(targa);
        }
    }

    PHYSICAL_PATH old_page() const { return action_.page_path(old_page_count_, ".dds"); }

    PHYSICAL_PATH physical_path(LOGICAL_PATH const& source) const {
        FILE_ENTRY const* const entry = files_.value(source);
        return entry != nullptr ? entry->physical_path : PATHS::physical_path(source);
    }

    std::vector<std::string> arguments() const {
        std::vector<std::string> arguments = {"",
                                              "-width",
                                              std::to_string(action_.width_),
                                              "-height",
                                              std::to_string(action_.height_),
                                              "-o",
                                              action_.base_.text().toLatin1().toStdString()};
        for (LOGICAL_PATH const& source : action_.sources_)
            arguments.push_back(physical_path(source).text().toLatin1().toStdString());
        return arguments;
    }

    /// Makes the pages as Targa files and gives the text of their index. Texels of sources and pages are gone when it
    /// returns: compressing needs its own.
    std::optional<std::string> save_pages() {
        // Sides that are no powers of two are reported here; pages are made all the same.
        ATLAS_OPTIONS const options(arguments());
        SOURCES sources;
        if (!load_sources(options, sources))
            return std::nullopt;
        auto const groups = group_by_format(sources);
        ATLAS_BUILDER builder(options);
        for (auto const& [format, group] : groups)
            builder.build_pages(group);
        builder.finalize_all();

        QString const& base = action_.base_;
        make_target_folder(base);
        for (auto const& pages : builder.groups())
            page_count_ = std::max(page_count_, static_cast<int>(pages.size()));
        for (int i = 0; i < page_count_; ++i) {
            begin(action_.page_path(i, ".tga"), targas_);
            // What stands there afterwards is a page that was saved.
            remove_target(action_.page_path(i, ".tga"));
        }
        builder.save_all(native_file_path(base));
        return atlas_index_text(groups, base.section(QLatin1Char('/'), -1).toLatin1().toStdString(),
                                options.is_set(ATLAS_OPTION::half_texel));
    }

    bool load_sources(ATLAS_OPTIONS const& options, SOURCES& sources) {
        bool const all_levels = !options.is_set(ATLAS_OPTION::no_mip_map);
        for (int i = 0; i < action_.sources_.size(); ++i) {
            if (action_.is_aborted())
                return false;
            // Opened by the path itself: its Latin-1 form need not be the name of a file.
            PHYSICAL_PATH const path = physical_path(action_.sources_[i]);
            std::string const name = path.text().toLatin1().toStdString();
            std::string cause;
            auto loaded = load_source_texture(native_file_path(path), all_levels, cause);
            if (LOAD_FAILURE const* const failure = std::get_if<LOAD_FAILURE>(&loaded)) {
                report_atlas_error(*failure == LOAD_FAILURE::cannot_load
                                       ? "Loading texture " + name + " failed."
                                       : "Texture " + name + " has unsupported format.");
                action_.add_output_line(QStringLiteral("Failed to load source texture: ") + path);
                return false;
            }
            sources.push_back(std::make_unique<ATLAS_SOURCE_TEXTURE>(name, std::move(std::get<PIXEL_BUFFER>(loaded))));
            action_.set_progress_value((i + 1) * loading_progress / action_.sources_.size());
        }
        return true;
    }

    /// A page that could not be saved is no failure: the builder has told of it, it goes out of version control if an
    /// earlier build had it, and the work goes on with the next as long as earlier builds had as many, else ends there.
    /// Whether an atlas with a page missing is of use is for the host to say, which reads the index.
    ///
    /// Pages are registered once all are there: one that cannot be compressed takes the others with it, and none of
    /// them must stay behind in version control.
    bool compress_pages() {
        for (int i = 0;; ++i) {
            PHYSICAL_PATH const page = action_.page_path(i, ".dds");
            PHYSICAL_PATH const targa = action_.page_path(i, ".tga");
            bool const is_saved = i < page_count_ && is_file(targa);
            if (!is_saved && i >= old_page_count_)
                return true;
            pages_.push_back({page, is_saved});
            if (!is_saved)
                continue;
            if (action_.is_aborted())
                return false;
            begin(page, unfinished_);
            if (!compress_page(targa, page)) {
                action_.add_output_line(QStringLiteral("Failed to compress ") + targa);
                return false;
            }
            remove_target(targa);
            action_.set_progress_value(loading_progress + (i + 1) * (whole_progress - loading_progress) / page_count_);
        }
    }

    bool compress_page(PHYSICAL_PATH const& targa, PHYSICAL_PATH const& page) {
        std::string cause;
        IMAGE_LOADER::IMAGE image = IMAGE_LOADER::load_image_file(native_file_path(targa), cause);
        TEXTURE_RULES rules;
        rules.compression_format = QStringLiteral("dxt1_or_dxt5");
        return image.valid() && compress_image(action_, rules, false, image, page);
    }

    ACTION_ATLAS& action_;
    FILE_MAP const& files_;
    int old_page_count_ = 0;
    int page_count_ = 0;
    std::vector<PAGE> pages_;
    QVector<PHYSICAL_PATH> targas_;
    QVector<PHYSICAL_PATH> unfinished_;
};

ACTION_ATLAS::ACTION_ATLAS(PHYSICAL_PATH const& base, std::int32_t width, std::int32_t height,
                           PROCESSOR_INTERFACE& processor)
    : ACTION_CONVERT(base, processor),
      base_(base),
      width_(width),
      height_(height) {
    set_progress_max(whole_progress);
    set_target_base_name(base.section(QLatin1Char('/'), -1));
    set_target_extension(QStringLiteral(".tai"));
}

QString ACTION_ATLAS::get_name(bool) {
    return QStringLiteral("Create atlas");
}

void ACTION_ATLAS::get_source_files(QVector<LOGICAL_PATH>& sources, FILE_MAP const&) {
    sources += sources_;
}

void ACTION_ATLAS::get_affected_files(QVector<LOGICAL_PATH>& sources, QVector<TARGET_FILE>& targets, QDateTime& newest,
                                      FILE_MAP const& files, RULE_CACHE const&) {
    sources += sources_;
    for (LOGICAL_PATH const& source : qAsConst(sources_)) {
        if (FILE_ENTRY const* const entry = files.value(source)) {
            QDateTime const modified = QFileInfo(entry->physical_path.text()).lastModified();
            newest = newest.isValid() ? std::max(newest, modified) : modified;
        }
    }
    auto const add_known_pages = [&](char const* extension, bool is_temporary) {
        for (int i = 0; is_known(page_path(i, extension), files); ++i) {
            PHYSICAL_PATH const page = page_path(i, extension);
            targets.append({page, PATHS::logical_path(page), is_temporary});
        }
    };
    add_known_pages(".dds", false);
    add_known_pages(".tga", true);
    targets.append({index_path(), PATHS::logical_path(index_path()), false});
}

ACTION_INTERFACE::STATUS ACTION_ATLAS::run(FILE_MAP const& files, RULE_CACHE const&) {
    if (!error().isEmpty()) {
        add_output_line(error());
        return STATUS_FAILED;
    }
    bool is_made = false;
    try {
        is_made = RUN(*this, files).make_atlas();
    } catch (std::bad_alloc const&) {
        add_output_line(QStringLiteral("Not enough memory"));
    } catch (WORKING_FILE_REFUSAL const& refusal) {
        add_output_line(QString::fromUtf8(refusal.what()));
    } catch (std::exception const& exception) {
        add_output_line(QStringLiteral("Unexpected error: ") + QString::fromLocal8Bit(exception.what()));
    }
    return is_made && !version_control_failed() ? STATUS_SUCCEEDED : STATUS_FAILED;
}

PHYSICAL_PATH ACTION_ATLAS::page_path(int index, char const* extension) const {
    return PHYSICAL_PATH(base_.text() + QString::number(index) + QLatin1String(extension));
}

PHYSICAL_PATH ACTION_ATLAS::index_path() const {
    return PHYSICAL_PATH(base_.text() + QLatin1String(".tai"));
}
