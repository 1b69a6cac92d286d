// A table that is wrong in one place is left out as a whole: half of a rule could build something that nobody asked
// for.
#include "host/framework/rule_tables.hpp"

namespace framework {

namespace {

bool add_pattern(toml::node const& node, RULE_TABLE& rule, TOML_REPORTER& reporter) {
    auto const* const text = node.as_string();
    if (!text) {
        reporter.error(node.source(),
                       QStringLiteral("\"match\" holds %1; it takes one pattern or a list of patterns, as strings")
                           .arg(type_name(node)));
        return false;
    }
    QString error;
    std::optional<PATH_PATTERN> pattern = PATH_PATTERN::parse(to_qstring(text->get()), error);
    if (!pattern) {
        reporter.error(node.source(), error);
        return false;
    }
    rule.match.add(std::move(*pattern));
    return true;
}

bool read_match(toml::key const& key, toml::node const& node, RULE_TABLE& rule, TOML_REPORTER& reporter) {
    bool sound = true;
    if (auto const* const list = node.as_array()) {
        if (list->empty()) {
            reporter.error(key.source(),
                           QStringLiteral("\"match\" is an empty list; without \"match\" the rule applies "
                                          "to every path"));
            return false;
        }
        for (toml::node const& element : *list)
            sound = add_pattern(element, rule, reporter) && sound;
    } else {
        sound = add_pattern(node, rule, reporter);
    }
    if (sound && !rule.match.takes_in())
        reporter.warning(key.source(),
                         QStringLiteral("\"match\" only takes paths out, so the rule applies to none; begin "
                                        "the list with \"*\""));
    return sound;
}

/// A rule's values stand in a sorted row, each put in its place one by one.
constexpr std::size_t most_properties = 1000;

std::optional<RULE_TABLE> read_rule_table(toml::table const& table, TOML_REPORTER& reporter) {
    if (table.size() > most_properties) {
        reporter.error(table.source(), QStringLiteral("a rule of more than %1 properties").arg(most_properties));
        return std::nullopt;
    }
    RULE_TABLE rule;
    rule.file = reporter.path();
    bool sound = true;
    bool named = false;
    RULE_VALUES seen;
    for (auto const& [key, node] : in_written_order(table)) {
        QString const property = to_qstring(key->str());
        int const line = static_cast<int>(key->source().begin.line);
        int const column = static_cast<int>(key->source().begin.column);
        if (property == QLatin1String("name")) {
            named = true;
            auto const* const text = node->as_string();
            if (!text || text->get().empty()) {
                reporter.error(node->source(), QStringLiteral("\"name\" holds %1; it takes the rule's name as a string")
                                                   .arg(text ? QStringLiteral("an empty string") : type_name(*node)));
                sound = false;
                continue;
            }
            rule.name = to_qstring(text->get());
            rule.line = line;
            rule.column = column;
        } else if (property == QLatin1String("match")) {
            sound = read_match(*key, *node, rule, reporter) && sound;
        } else if (QVariant value = scalar_value(*node); !value.isValid()) {
            reporter.error(node->source(),
                           QStringLiteral("the property \"%1\" holds %2; it takes a string, a number or a boolean")
                               .arg(property, type_name(*node)));
            sound = false;
        } else if (RULE_VALUES::VALUE const* const other = seen.find(property)) {
            reporter.error(key->source(),
                           QStringLiteral("the property \"%1\" is set a second time; line %2 sets \"%3\", "
                                          "and case does not count")
                               .arg(property, QString::number(other->line), other->property));
            sound = false;
        } else {
            rule.values.push_back({property, std::move(value), reporter.path(), line, column});
            seen.set(rule.values.back());
        }
    }
    if (!named)
        reporter.error(table.source(), QStringLiteral("a rule without a \"name\""));
    return sound && named ? std::optional(std::move(rule)) : std::nullopt;
}

}  // namespace

std::vector<RULE_TABLE> read_rule_tables(toml::node const& node, TOML_REPORTER& reporter) {
    std::vector<RULE_TABLE> rules;
    auto const* const list = node.as_array();
    if (!list) {
        reporter.error(
            node.source(),
            QStringLiteral("\"rule\" is %1; rules are written as [[rule]], with two brackets").arg(type_name(node)));
        return rules;
    }
    for (toml::node const& element : *list) {
        auto const* const table = element.as_table();
        if (!table) {
            reporter.error(
                element.source(),
                QStringLiteral("\"rule\" holds %1; rules are written as [[rule]] tables").arg(type_name(element)));
            continue;
        }
        if (std::optional<RULE_TABLE> rule = read_rule_table(*table, reporter))
            rules.push_back(std::move(*rule));
    }
    return rules;
}

}  // namespace framework
