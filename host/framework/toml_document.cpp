#include "host/framework/toml_document.hpp"

#include "host/framework/toml_key_depth.hpp"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <vector>

namespace framework {

namespace {

constexpr qint64 largest_file = 4 << 20;
/// Keys, those of a dotted key's tables among them, and elements of lists.
constexpr std::size_t most_values = 100'000;
/// In bytes: as long as the longest path.
constexpr std::size_t longest_text = 4096;
/// Each one may stand for a whole path.
constexpr int most_place_holders = 16;

int number(toml::source_index index) {
    return static_cast<int>(index);
}

struct MISPLACED {
    toml::source_region place;
    QString text;
};

std::optional<QString> beyond_bounds(std::string_view text) {
    if (text.size() > longest_text)
        return QStringLiteral("a text of %1 bytes; %2 are the most").arg(text.size()).arg(longest_text);
    QString const value = to_qstring(text);
    int const place_holders = value.count(QLatin1String("{dir}")) + value.count(QLatin1String("{name}"));
    if (place_holders > most_place_holders)
        return QStringLiteral("a text with %1 place holders; %2 are the most")
            .arg(place_holders)
            .arg(most_place_holders);
    return std::nullopt;
}

/// Something in the tree that is beyond a bound. Without recursion: nesting is bounded value by value and key by key,
/// but not as a whole.
std::optional<MISPLACED> find_beyond_bounds(toml::table const& document) {
    std::vector<toml::node const*> open = {&document};
    std::size_t values = 0;
    while (!open.empty()) {
        toml::node const& node = *open.back();
        open.pop_back();
        if (++values > most_values + 1)
            return MISPLACED{document.source(),
                             QStringLiteral("more than %1 keys and elements of lists").arg(most_values)};
        if (auto const* const text = node.as_string()) {
            if (std::optional<QString> const error = beyond_bounds(text->get()))
                return MISPLACED{node.source(), *error};
        } else if (auto const* const list = node.as_array()) {
            for (toml::node const& element : *list)
                open.push_back(&element);
        } else if (auto const* const table = node.as_table()) {
            for (auto const& [key, value] : *table) {
                if (std::optional<QString> const error = beyond_bounds(key.str()))
                    return MISPLACED{key.source(), *error};
                open.push_back(&value);
            }
        }
    }
    return std::nullopt;
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
        return fail(QStringLiteral("is larger than 4 MiB"));
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
        toml::table document = toml::parse(text);
        if (std::optional<MISPLACED> const found = find_beyond_bounds(document)) {
            TOML_REPORTER(path, diagnostics).error(found->place, found->text);
            return std::nullopt;
        }
        return document;
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
    QString const nearest = diagnostics_.is_full(DIAGNOSTIC::SEVERITY::warning) ? QString() : nearest_name(name, known);
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
