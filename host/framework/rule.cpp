#include "processor/host/rule.hpp"

#include "host/framework/rule_values.hpp"

RULE::RULE() = default;

RULE::RULE(std::shared_ptr<RULE_VALUES const> values) : values_(std::move(values)) {
}

RULE::RULE(RULE const& other) = default;
RULE& RULE::operator=(RULE const& other) = default;
RULE::~RULE() = default;

QVariant const& RULE::value(QString const& property) const {
    static QVariant const unset;
    return values_ ? values_->value(property) : unset;
}
