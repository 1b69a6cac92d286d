// A sorted vector searched by halving: rules hold a few dozen properties, look-ups are by far the most frequent thing
// that a build asks of its rules, and this way they make no folded copy of the name.
#include "host/framework/rule_values.hpp"

#include <algorithm>

namespace {

bool name_before(RULE_VALUES::VALUE const& value, QString const& property) {
    return value.property.compare(property, Qt::CaseInsensitive) < 0;
}

bool same_name(QString const& left, QString const& right) {
    return left.compare(right, Qt::CaseInsensitive) == 0;
}

}  // namespace

RULE_VALUES::RULE_VALUES(std::vector<VALUE> values) {
    std::stable_sort(values.begin(), values.end(),
                     [](VALUE const& left, VALUE const& right) { return name_before(left, right.property); });
    for (VALUE& value : values) {
        if (!values_.empty() && same_name(values_.back().property, value.property))
            values_.back() = std::move(value);
        else
            values_.push_back(std::move(value));
    }
}

QVariant const& RULE_VALUES::value(QString const& property) const {
    static QVariant const unset;
    VALUE const* const found = find(property);
    return found ? found->value : unset;
}

RULE_VALUES::VALUE const* RULE_VALUES::find(QString const& property) const {
    auto const place = std::lower_bound(values_.begin(), values_.end(), property, name_before);
    return place != values_.end() && same_name(place->property, property) ? &*place : nullptr;
}

void RULE_VALUES::set(VALUE value) {
    auto const place = std::lower_bound(values_.begin(), values_.end(), value.property, name_before);
    if (place != values_.end() && same_name(place->property, value.property))
        *place = std::move(value);
    else
        values_.insert(place, std::move(value));
}
