// Rules as a test writes them down: by suffix of the path and name of the rule.
#pragma once

#include "host/framework/rule_values.hpp"
#include "processor/host/rule_cache.hpp"

#include <initializer_list>
#include <utility>
#include <vector>

class TEST_RULES : public RULE_CACHE {
public:
    using PROPERTIES = std::initializer_list<std::pair<char const*, QVariant>>;

    /// The rule applies to every path that ends with `suffix`; the last fitting one counts.
    TEST_RULES& add(char const* suffix, char const* name, PROPERTIES properties) {
        auto values = std::make_shared<RULE_VALUES>();
        for (auto const& [property, value] : properties)
            values->set({QLatin1String(property), value, {}, 0, 0});
        rules_.push_back({QLatin1String(suffix), QLatin1String(name), RULE(values)});
        return *this;
    }

    RULE get(LOGICAL_PATH const& path, QString const& rule_name) const override {
        for (auto rule = rules_.rbegin(); rule != rules_.rend(); ++rule) {
            if (rule->name == rule_name && path.text().endsWith(rule->suffix))
                return rule->rule;
        }
        return {};
    }
    RULE get_global(QString const&) const override { return {}; }

private:
    struct ENTRY {
        QString suffix;
        QString name;
        RULE rule;
    };
    std::vector<ENTRY> rules_;
};
