// std::filesystem does the walking: it takes the kind of each entry from the folder itself where the file system tells,
// so that a million files cost no million questions, and it says why a folder cannot be read.
#include "host/framework/file_scan.hpp"

#include "host/framework/native_path.hpp"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <set>
#include <string>

namespace framework {

namespace {

namespace fs = std::filesystem;

constexpr std::array image_extensions = {".tga", ".tif", ".tiff", ".png", ".jpg", ".jpeg", ".dds", ".fga"};

bool has_image_name(QString const& name) {
    return std::any_of(image_extensions.begin(), image_extensions.end(), [&](char const* extension) {
        return name.endsWith(QLatin1String(extension), Qt::CaseInsensitive);
    });
}

bool is_below(std::string const& path, std::string const& folder) {
    return path == folder || folder == "/" || path.compare(0, folder.size() + 1, folder + '/') == 0;
}

class ROOT_WALK {
public:
    ROOT_WALK(QString const& root, bool collects_rules, SCANNED_FILES& files, DIAGNOSTICS& diagnostics)
        : root_(root),
          collects_rules_(collects_rules),
          files_(files),
          diagnostics_(diagnostics) {}

    /// The files' paths relative to the root, sorted.
    std::vector<QString> walk() {
        std::error_code failure;
        fs::path const root = native_path(root_);
        fs::path const real = fs::canonical(root, failure);
        if (failure) {
            add(DIAGNOSTIC::SEVERITY::error, root_, QStringLiteral("cannot be read: ") + text(failure));
        } else {
            real_folders_.push_back(real.string());
            walk_folder(root, QString());
        }
        std::sort(found_.begin(), found_.end());
        return std::move(found_);
    }

private:
    static QString text(std::error_code const& failure) { return QString::fromStdString(failure.message()); }

    void add(DIAGNOSTIC::SEVERITY severity, QString const& path, QString const& message) {
        diagnostics_.push_back({severity, path, 0, 0, message});
    }
    void warn(QString const& below, QString const& message) {
        add(DIAGNOSTIC::SEVERITY::warning, root_ + u'/' + below, message);
    }

    void walk_folder(fs::path const& folder, QString const& below) {
        std::error_code failure;
        std::vector<fs::directory_entry> entries;
        for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end; entry.increment(failure))
            entries.push_back(*entry);
        if (failure) {
            QString const path = below.isEmpty() ? root_ : root_ + u'/' + below;
            add(DIAGNOSTIC::SEVERITY::error, path, QStringLiteral("the folder cannot be read: ") + text(failure));
            return;
        }
        // The order decides through which of several links a folder is seen.
        std::sort(entries.begin(), entries.end());
        for (fs::directory_entry const& entry : entries)
            visit(entry, below);
    }

    void visit(fs::directory_entry const& entry, QString const& below) {
        std::string const bytes = entry.path().filename().string();
        if (bytes.front() == '.')
            return;
        QString const name = QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
        QString const path = below.isEmpty() ? name : below + u'/' + name;
        path_characters_ += path.size();
        if (path_characters_ > most_path_characters) {
            if (path_characters_ - path.size() <= most_path_characters)
                add(DIAGNOSTIC::SEVERITY::error, root_,
                    QStringLiteral("holds more than can be taken in: the paths in it have more than %1 characters")
                        .arg(most_path_characters));
            return;
        }
        if (name.toUtf8() != QByteArray::fromRawData(bytes.data(), static_cast<int>(bytes.size()))) {
            warn(path, QStringLiteral("the name is not valid UTF-8; left out"));
            return;
        }

        std::error_code failure;
        bool const is_link = entry.is_symlink(failure);
        // The folder told what kind of file it is; `status` would ask the file itself.
        if (!is_link && entry.is_regular_file(failure)) {
            add_file(path, name, below);
            return;
        }
        fs::file_status const status = entry.status(failure);
        if (fs::is_directory(status)) {
            if (has_image_name(name))
                warn(path, QStringLiteral("a folder with the name of an image; looked into as a folder"));
            if (is_link)
                walk_link(entry.path(), path);
            else
                walk_real_folder(entry.path(), path, bytes);
        } else if (fs::is_regular_file(status)) {
            add_file(path, name, below);
        } else if (status.type() == fs::file_type::not_found) {
            warn(path, QStringLiteral("a link that leads nowhere; left out"));
        } else if (failure) {
            warn(path, QStringLiteral("left out: ") + text(failure));
        }
    }

    void add_file(QString const& path, QString const& name, QString const& below) {
        if (collects_rules_ && name == QLatin1String(rule_file_name))
            files_.rule_files.push_back({root_ + u'/' + path, below});
        else
            found_.push_back(path);
    }

    void walk_real_folder(fs::path const& folder, QString const& path, std::string const& name) {
        real_folders_.back().append("/").append(name);
        walk_folder(folder, path);
        real_folders_.back().resize(real_folders_.back().size() - name.size() - 1);
    }

    void walk_link(fs::path const& link, QString const& path) {
        std::error_code failure;
        std::string const real = fs::canonical(link, failure).string();
        if (failure) {
            warn(path, QStringLiteral("left out: ") + text(failure));
            return;
        }
        bool const inside_itself = std::any_of(real_folders_.begin(), real_folders_.end(),
                                               [&](std::string const& folder) { return is_below(folder, real); });
        if (inside_itself) {
            warn(path, QStringLiteral("a link to a folder that it lies in; left out"));
            return;
        }
        auto const [first, is_new] = linked_.emplace(real, path);
        if (!is_new) {
            warn(path, QStringLiteral("a link to a folder that \"%1\" links to already; left out").arg(first->second));
            return;
        }
        real_folders_.push_back(real);
        walk_folder(link, path);
        real_folders_.pop_back();
    }

    /// A thousand links into a thousand folders that lie in one another show a million paths.
    static constexpr qint64 most_path_characters = 512 << 20;

    QString root_;
    bool collects_rules_;
    SCANNED_FILES& files_;
    DIAGNOSTICS& diagnostics_;
    std::vector<QString> found_;
    /// Of all files and folders that were met.
    qint64 path_characters_ = 0;
    /// The real path of the folder being walked, and below it those of the folders that links were followed from.
    std::vector<std::string> real_folders_;
    /// Real folders that were reached through a link, with the link's path.
    std::map<std::string, QString> linked_;
};

}  // namespace

void scan_files(PROJECT const& project, SCANNED_FILES& files, DIAGNOSTICS& diagnostics) {
    struct ROOT {
        QString path;
        QLatin1String token;
        bool is_raw;
    };
    for (ROOT const& root : {ROOT{project.raw, QLatin1String("<raw>/"), true},
                             ROOT{project.working, QLatin1String("<working>/"), false}}) {
        QFileInfo const info(root.path);
        if (!info.exists()) {
            if (root.is_raw)
                diagnostics.push_back({DIAGNOSTIC::SEVERITY::error, root.path, 0, 0,
                                       QStringLiteral("the raw data folder does not exist")});
            continue;
        }
        if (!info.isDir()) {
            diagnostics.push_back({DIAGNOSTIC::SEVERITY::error, root.path, 0, 0,
                                   QStringLiteral("the %1 data folder is not a folder")
                                       .arg(root.is_raw ? QStringLiteral("raw") : QStringLiteral("working"))});
            continue;
        }
        std::vector<QString> const found = ROOT_WALK(root.path, root.is_raw, files, diagnostics).walk();
        files.map.reserve(files.map.size() + static_cast<int>(found.size()));
        for (QString const& path : found) {
            files.entries.push_back({PHYSICAL_PATH(root.path + u'/' + path), {}});
            files.map.insert(LOGICAL_PATH(root.token + path), &files.entries.back());
        }
    }
    std::sort(files.rule_files.begin(), files.rule_files.end(),
              [](FOUND_RULE_FILE const& left, FOUND_RULE_FILE const& right) { return left.folder < right.folder; });
}

void scan_made_files(PROJECT const& project, SCANNED_FILES& files) {
    if (QFileInfo(project.working).isDir()) {
        DIAGNOSTICS told_before;
        for (QString const& path : ROOT_WALK(project.working, false, files, told_before).walk()) {
            LOGICAL_PATH const logical(QStringLiteral("<working>/") + path);
            if (files.map.contains(logical))
                continue;
            files.entries.push_back({PHYSICAL_PATH(project.working + u'/' + path), {}});
            files.map.insert(logical, &files.entries.back());
        }
    }
    files.map.sort();
}

}  // namespace framework
