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

}  // namespace

PHYSICAL_PATH PATHS::physical_path(LOGICAL_PATH const& path) {
    QString const& text = path;
    if (text.startsWith(raw_token))
        return PHYSICAL_PATH(roots().raw.text() + text.mid(raw_token.size()));
    if (text.startsWith(working_token))
        return PHYSICAL_PATH(roots().working.text() + text.mid(working_token.size()));
    return PHYSICAL_PATH(text);
}

LOGICAL_PATH PATHS::logical_path(PHYSICAL_PATH const& path) {
    if (QString const rest = below(path, roots().raw); !rest.isNull())
        return LOGICAL_PATH(raw_token + rest);
    if (QString const rest = below(path, roots().working); !rest.isNull())
        return LOGICAL_PATH(working_token + rest);
    return LOGICAL_PATH(path.text());
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
    // An empty {dir} leaves doubled or trailing separators behind.
    return path.isEmpty() ? path : QDir::cleanPath(path);
}

void PATHS::set_roots(PHYSICAL_PATH const& raw, PHYSICAL_PATH const& working) {
    roots() = {raw, working};
}
