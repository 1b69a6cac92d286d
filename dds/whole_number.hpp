// Rule values as whole numbers of 32 bits. A variant's own conversion cuts the upper bits off, so that 4294967300 would
// be 4; what does not fit counts as 0 instead, like everything else that cannot be converted.
#pragma once

#include <QVariant>

#include <cstdint>
#include <limits>

inline std::int32_t whole_number(QVariant const& value) {
    using LIMITS = std::numeric_limits<std::int32_t>;
    double const number = value.toDouble();
    return number >= LIMITS::min() && number <= LIMITS::max() ? value.toInt() : 0;
}
