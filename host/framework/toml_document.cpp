#include "host/framework/toml_document.hpp"

#include "host/framework/toml_key_depth.hpp"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace framework {

namespace {

constexpr qint64 largest_file = 16 << 20;

int number(toml::source_index index) {
    return static_cast<int>(index);
}

}  // namespace

std::optional<toml::table> read_toml(QString const& path, DIAGNOSTICS& diagnostics) {
    auto const fail = [&](QString const& text) {
        diagnostics.push_back({DIAGNOSTIC::SEVERITY::error, path, 0, 0, text});
        return std::nullopt;
    };
    QFileInfo const info(path);
    if (info.isDir())
        return fail(QStringLiteral("is a folder, where a file is expected"));
    // Pipes and devices have no end that could be waited for.
    if (info.exists() && !info.isFile())
        return fail(QStringLiteral("is no regular file"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("cannot be read: ") + file.errorString());
    if (file.size() > largest_file)
        return fail(QStringLiteral("is larger than 16 MiB"));
    QByteArray const bytes = file.read(file.size());
    if (file.error() != QFileDevice::NoError)
        return fail(QStringLiteral("cannot be read: ") + file.errorString());
    std::string_view const text(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    if (std::optional<std::size_t> const line = line_of_too_deep_key(text)) {
        diagnostics.push_back({DIAGNOSTIC::SEVERITY::error, path, static_cast<int>(*line), 1,
                               QStringLiteral("a key of more than %1 parts").arg(most_key_parts)});
        return std::nullopt;
    }

    // The library, as it is built, tells of mistakes by throwing.
    try {
        return toml::parse(text);
    } catch (toml::parse_error const& error) {
        diagnostics.push_back({DIAGNOSTIC::SEVERITY::error, path, number(error.source().begin.line),
                               number(error.source().begin.column), to_qstring(error.description())});
        return std::nullopt;
    }
}

void TOML_REPORTER::add(DIAGNOSTIC::SEVERITY severity, toml::source_region const& place, QString const& text) {
    diagnostics_.push_back({severity, path_, number(place.begin.line), number(place.begin.column), text});
}

void TOML_REPORTER::unknown_key(toml::key const& key, std::vector<QString> const& known) {
    QString const name = to_qstring(key.str());
    QString const nearest = nearest_name(name, known);
    warning(key.source(), QStringLiteral("unknown key \"%1\"").arg(name) +
                              (nearest.isEmpty() ? QString() : QStringLiteral("; did you mean \"%1\"?").arg(nearest)));
}

QString type_name(toml::node const& node) {
    switch (node.type()) {
    case toml::node_type::string:
        return QStringLiteral("a string");
    case toml::node_type::integer:
        return QStringLiteral("an integer");
    case toml::node_type::floating_point:
        return QStringLiteral("a float");
    case toml::node_type::boolean:
        return QStringLiteral("a boolean");
    case toml::node_type::array:
        return QStringLiteral("an array");
    case toml::node_type::table:
        return QStringLiteral("a table");
    case toml::node_type::date:
    case toml::node_type::time:
    case toml::node_type::date_time:
        return QStringLiteral("a date or time");
    default:
        return QStringLiteral("nothing");
    }
}

QVariant scalar_value(toml::node const& node) {
    if (auto const* text = node.as_string())
        return to_qstring(text->get());
    if (auto const* integer = node.as_integer())
        return QVariant(static_cast<qlonglong>(integer->get()));
    if (auto const* real = node.as_floating_point())
        return QVariant(real->get());
    if (auto const* boolean = node.as_boolean())
        return QVariant(boolean->get());
    return {};
}

std::vector<std::pair<toml::key const*, toml::node const*>> in_written_order(toml::table const& table) {
    std::vector<std::pair<toml::key const*, toml::node const*>> entries;
    for (auto const& [key, node] : table)
        entries.emplace_back(&key, &node);
    std::stable_sort(entries.begin(), entries.end(), [](auto const& left, auto const& right) {
        return left.first->source().begin < right.first->source().begin;
    });
    return entries;
}

}  // namespace framework
