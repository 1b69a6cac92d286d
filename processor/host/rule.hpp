// A named set of properties, resolved for one path. Rules are values: copying one is cheap and shares the properties.
#pragma once

#include "processor/host/export.hpp"

#include <QString>
#include <QVariant>

#include <memory>

class RULE_VALUES;

class ZAB_SHARED_API RULE {
public:
    /// A rule that was not found.
    RULE();
    explicit RULE(std::shared_ptr<RULE_VALUES const> values);
    /// The answer to the question for the rule `name` at `path` (a logical path; empty for a global rule). Null values:
    /// none was found. What is read from it, and from its copies, is recorded for the action that runs on the thread.
    RULE(std::shared_ptr<RULE_VALUES const> values, QString path, QString name);
    RULE(RULE const& other);
    RULE& operator=(RULE const& other);
    ~RULE();

    /// False when no rule of the asked name applies to the path.
    bool exists() const;

    /// The property's value; an invalid variant when it is not set or the rule does not exist. Names are found without
    /// regard to case. The reference lives as long as this rule or a copy of it.
    QVariant const& value(QString const& property) const;

    /// Where the values come from, for those who explain them; null when the rule does not exist.
    RULE_VALUES const* values() const { return values_.get(); }

private:
    std::shared_ptr<RULE_VALUES const> values_;
    QString path_;
    QString name_;
};
