#include "processor/host/paths.hpp"

#include <QDir>

namespace {

QString const raw_token = QStringLiteral("<raw>");
QString const working_token = QStringLiteral("<working>");

struct ROOTS {
    PHYSICAL_PATH raw;
    PHYSICAL_PATH working;
};

ROOTS& roots() {
    static ROOTS roots;
    return roots;
}

/// What follows `root` in `path`, its leading '/' included; null when the path does not lie at or below the root.
QString below(QString const& path, QString const& root) {
    if (root.isEmpty() || !path.startsWith(root))
        return {};
    if (path.size() == root.size())
        return QStringLiteral("");
    return path.at(root.size()) == QLatin1Char('/') ? path.mid(root.size()) : QString();
}

/// Whether there is no empty section but the first and the last, and none that is "." or "..". Nearly every path is
/// like that, and this is much quicker than Qt's way of making one so.
bool is_clean(QString const& path) {
    int const size = path.size();
    for (int begin = 0; begin < size;) {
        int const slash = path.indexOf(QLatin1Char('/'), begin);
        int const end = slash < 0 ? size : slash;
        QStringRef const section = path.midRef(begin, end - begin);
        if ((section.isEmpty() && begin > 0) || section == QLatin1String(".") || section == QLatin1String(".."))
            return false;
        begin = end + 1;
    }
    return true;
}

QString cleaned_path(QString const& path) {
    if (is_clean(path))
        return path;
    QString clean = QDir::cleanPath(path);
    if (path.endsWith(QLatin1Char('/')) && !clean.endsWith(QLatin1Char('/')))
        clean += QLatin1Char('/');
    return clean;
}

/// The path with its root in place of its token.
QString without_token(QString const& path) {
    if (QString const rest = below(path, raw_token); !rest.isNull())
        return roots().raw.text() + rest;
    if (QString const rest = below(path, working_token); !rest.isNull())
        return roots().working.text() + rest;
    return path;
}

/// A clean path with the token in place of the root that it lies below.
QString with_token(QString const& path) {
    if (QString const rest = below(path, roots().raw); !rest.isNull())
        return raw_token + rest;
    if (QString const rest = below(path, roots().working); !rest.isNull())
        return working_token + rest;
    return path;
}

}  // namespace

QString LOGICAL_PATH::cleaned(QString text) {
    if (is_clean(text))
        return text;
    // A ".." that climbs over the token would take it for a folder.
    QString const clean = cleaned_path(text);
    bool const keeps_token = !below(clean, raw_token).isNull() || !below(clean, working_token).isNull();
    return keeps_token ? clean : with_token(cleaned_path(without_token(text)));
}

PHYSICAL_PATH PATHS::physical_path(LOGICAL_PATH const& path) {
    return PHYSICAL_PATH(without_token(path));
}

LOGICAL_PATH PATHS::logical_path(PHYSICAL_PATH const& path) {
    return LOGICAL_PATH(with_token(cleaned_path(path)));
}

PHYSICAL_PATH PATHS::clean(PHYSICAL_PATH const& path) {
    return PHYSICAL_PATH(cleaned_path(path));
}

PHYSICAL_PATH const& PATHS::raw_data() {
    return roots().raw;
}

PHYSICAL_PATH const& PATHS::working_data() {
    return roots().working;
}

PHYSICAL_PATH const& PATHS::target_working_data(PHYSICAL_PATH const&) {
    return roots().working;
}

QString PATHS::relative_target_path_from_rule_path(RULE const& rule, QString const& property,
                                                   LOGICAL_PATH const& logical, PHYSICAL_PATH const& physical) {
    // Scanned once from left to right, so that a folder that is itself named "{name}" is not taken for a place holder.
    QString const value = rule.value(property).toString();
    QString const folder = logical.section(QLatin1Char('/'), 1, -2);
    QString const name = physical.section(QLatin1Char('/'), -1);
    QString const base_name = name.left(name.lastIndexOf(QLatin1Char('.')));
    QString path;
    for (int i = 0; i < value.size();) {
        if (value.midRef(i, 5) == QLatin1String("{dir}")) {
            path += folder;
            i += 5;
        } else if (value.midRef(i, 6) == QLatin1String("{name}")) {
            path += base_name;
            i += 6;
        } else {
            path += value.at(i++);
        }
    }
    QString const& root = target_working_data(physical);
    QString const target = QDir::cleanPath(root + QLatin1Char('/') + path);
    QString const rest = below(target, root);
    return rest.isNull() ? QDir(root).relativeFilePath(target) : rest.mid(1);
}

void PATHS::set_roots(PHYSICAL_PATH const& raw, PHYSICAL_PATH const& working) {
    roots() = {raw, working};
}
