#include "host/tool/rule_comparison.hpp"

#include "host/tool/rule_value_text.hpp"

namespace tool {

namespace {

QVariant answer(framework::RULE_READ const& read, RULE const& rule) {
    if (read.property.isEmpty())
        return rule.values() != nullptr;
    return rule.values() ? rule.values()->value(read.property) : QVariant();
}

QString place(QString const& file, int line) {
    return QStringLiteral(" (%1:%2)").arg(CONSOLE::shown(file)).arg(line);
}

}  // namespace

std::vector<RULE_COMPARISON::QUESTIONS>& RULE_COMPARISON::questions(std::int64_t number,
                                                                    ACTION_SETTING const& setting) {
    auto const [entry, is_new] = questions_.try_emplace(number);
    if (is_new) {
        // Sorted by path and rule.
        for (framework::RULE_READ const& read : setting.rules) {
            std::vector<QUESTIONS>& known = entry->second;
            if (known.empty() || known.back().path != read.path || known.back().rule != read.rule)
                known.push_back({read.path, read.rule, {}, {}});
            known.back().reads.push_back(&read);
        }
    }
    return entry->second;
}

std::optional<QString> RULE_COMPARISON::difference(RECORDED_ACTION const& action, ACTION_SETTING const& setting) {
    for (QUESTIONS& asked : questions(action.setting, setting)) {
        if (asked.path == every_source) {
            for (RECORDED_FILE const& source : action.sources)
                if (auto const found = difference(asked, LOGICAL_PATH(source.path)))
                    return found;
            continue;
        }
        QString path = asked.path;
        if (path.startsWith(u'#')) {
            std::size_t const source = path.mid(1).toUInt();
            if (source >= action.sources.size())
                return QStringLiteral("the build state is damaged");
            path = action.sources[source].path;
        }
        if (auto const found = difference(asked, LOGICAL_PATH(path)))
            return found;
    }
    return {};
}

std::optional<QString> RULE_COMPARISON::difference(QUESTIONS& questions, LOGICAL_PATH const& path) {
    RULE const rule =
        path.is_empty() ? session_.rules().get_global(questions.rule) : session_.rules().get(path, questions.rule);
    if (questions.alike == rule.values())
        return {};
    for (framework::RULE_READ const* const read : questions.reads)
        if (!framework::is_same_value(answer(*read, rule), read->value))
            return described(*read, rule, path);
    questions.alike = rule.values();
    return {};
}

QString RULE_COMPARISON::described(framework::RULE_READ const& read, RULE const& now, LOGICAL_PATH const& path) const {
    QString const global = path.is_empty() ? QStringLiteral("global ") : QString();
    if (read.property.isEmpty()) {
        if (!now.values())
            return QStringLiteral("%1rule %2 no longer applies").arg(global, read.rule);
        auto const tables = path.is_empty() ? std::vector<framework::RULE_TABLE const*>()
                                            : session_.rules().matching_tables(path, read.rule);
        return QStringLiteral("%1rule %2 applies now").arg(global, read.rule) +
               (tables.empty() ? QString() : place(tables.back()->file, tables.back()->line));
    }
    RULE_VALUES::VALUE const* const value = now.values() ? now.values()->find(read.property) : nullptr;
    if (!value)
        return QStringLiteral("%1rule value %2 is no longer set (it was %3)")
            .arg(global, read.property, shown_value(read.value));
    QString const change = read.value.isValid() ? QStringLiteral("changed ") + change_of_value(read.value, value->value)
                                                : QStringLiteral("was set to ") + shown_value(value->value);
    return QStringLiteral("%1rule value %2 %3").arg(global, read.property, change) + place(value->file, value->line);
}

}  // namespace tool
