#include "host/tool/target_guard.hpp"

#include "host/framework/native_path.hpp"

#include <QDir>
#include <QFileInfo>

#include <filesystem>
#include <list>
#include <string>
#include <system_error>

namespace tool {

namespace {

namespace fs = std::filesystem;

/// As many links as the Linux kernel follows in one path (path_resolution(7)).
constexpr int most_links = 40;

/// Where an absolute path leads when every link on the way is followed, those included that lead to what is not there
/// yet: whoever makes it goes the same way. Empty when links go round in a circle.
QString real_path(QString const& path) {
    auto const sections = [](fs::path const& of) {
        return std::list<fs::path>(of.begin(), of.end());
    };
    std::list<fs::path> left = sections(framework::native_path(path));
    fs::path real = "/";
    int links = 0;
    while (!left.empty()) {
        fs::path const section = std::move(left.front());
        left.pop_front();
        if (section.empty() || section == "." || section.is_absolute())
            continue;
        if (section == "..") {
            real = real.parent_path();
            continue;
        }
        std::error_code error;
        fs::path const next = real / section;
        if (!fs::is_symlink(next, error)) {
            real = next;
            continue;
        }
        fs::path const leads_to = fs::read_symlink(next, error);
        if (error || ++links > most_links)
            return {};
        if (leads_to.is_absolute())
            real = "/";
        left.splice(left.begin(), sections(leads_to));
    }
    return QString::fromStdString(real.string());
}

bool is_inside(QString const& path, QString const& folder) {
    return path.startsWith(folder.endsWith(u'/') ? folder : folder + u'/');
}

}  // namespace

TARGET_GUARD::TARGET_GUARD(QString const& working_root) : root_(working_root), real_root_(real_path(working_root)) {
}

QString TARGET_GUARD::refusal(QString const& path) {
    QString const clean = QDir::cleanPath(path);
    if (!is_inside(clean, root_))
        return QStringLiteral("the target \"%1\" lies outside the working root \"%2\"").arg(clean, root_);
    // The file itself may be a link: it is replaced, not followed. Its folders are followed. A ".." behind a link means
    // one thing to the system and another to the eye, so the path is looked at as it was given, too.
    for (QString const& folder : {QFileInfo(clean).path(), QFileInfo(path).path()}) {
        QString const& real = real_folder(folder);
        if (real.isEmpty() || real_root_.isEmpty())
            return QStringLiteral("the target \"%1\" lies behind links that go round in a circle").arg(clean);
        if (real != real_root_ && !is_inside(real, real_root_))
            return QStringLiteral("the target \"%1\" lies outside the working root \"%2\": a link leads to \"%3\"")
                .arg(clean, root_, real);
    }
    return {};
}

QString TARGET_GUARD::place(QString const& path) {
    QString const clean = QDir::cleanPath(path);
    int const slash = clean.lastIndexOf(u'/');
    return real_folder(clean.left(slash)) + clean.mid(slash);
}

QString const& TARGET_GUARD::real_folder(QString const& folder) {
    auto known = real_folders_.find(folder);
    if (known == real_folders_.end())
        known = real_folders_.insert(folder, real_path(folder));
    return *known;
}

}  // namespace tool
