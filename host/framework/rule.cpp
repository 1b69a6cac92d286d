#include "processor/host/rule.hpp"

#include "host/framework/read_recorder.hpp"
#include "host/framework/rule_values.hpp"

using framework::READ_LISTENER;

RULE::RULE() = default;

RULE::RULE(std::shared_ptr<RULE_VALUES const> values) : values_(std::move(values)) {
}

RULE::RULE(std::shared_ptr<RULE_VALUES const> values, QString path, QString name)
    : values_(std::move(values)),
      path_(std::move(path)),
      name_(std::move(name)) {
}

RULE::RULE(RULE const& other) = default;
RULE& RULE::operator=(RULE const& other) = default;
RULE::~RULE() = default;

bool RULE::exists() const {
    bool const exists = values_ != nullptr;
    if (READ_LISTENER* const listener = READ_LISTENER::current(); listener && !name_.isEmpty())
        listener->rule_was_read(path_, name_, {}, exists);
    return exists;
}

QVariant const& RULE::value(QString const& property) const {
    static QVariant const unset;
    QVariant const& value = values_ ? values_->value(property) : unset;
    if (READ_LISTENER* const listener = READ_LISTENER::current(); listener && !name_.isEmpty())
        listener->rule_was_read(path_, name_, property, value);
    return value;
}
