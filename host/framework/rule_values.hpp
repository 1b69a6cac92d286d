// The properties of one resolved rule, each with the place that it was written at. Rules for many paths share one of
// these; it is never changed once a rule holds it.
#pragma once

#include "processor/host/export.hpp"

#include <QString>
#include <QVariant>

#include <vector>

class ZAB_SHARED_API RULE_VALUES {
public:
    struct VALUE {
        /// The property's name as it was written.
        QString property;
        /// A string, a 64-bit integer, a double or a bool.
        QVariant value;
        /// Where it was written: absolute path, line and column from 1.
        QString file;
        int line = 0;
        int column = 0;
    };

    RULE_VALUES() = default;
    /// Of several values of one property the last one holds.
    explicit RULE_VALUES(std::vector<VALUE> values);

    /// The value of the property, found without regard to case; an invalid variant when it is not set. The reference
    /// lives as long as this object (that to the invalid variant for ever).
    QVariant const& value(QString const& property) const;
    /// As `value`, with name and place; null when it is not set.
    VALUE const* find(QString const& property) const;

    /// Replaces the value of a property of the same name.
    void set(VALUE value);

    /// Sorted by name without regard to case.
    std::vector<VALUE> const& all() const { return values_; }

private:
    std::vector<VALUE> values_;
};
