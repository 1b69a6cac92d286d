// Rule values as people read them.
#pragma once

#include <QVariant>

namespace tool {

/// The value as it would stand in a rule file.
QString as_written(QVariant const& value);

/// "from A to B". Plain words go without quotation marks where nobody can take them for anything else.
QString change_of_value(QVariant const& from, QVariant const& to);
QString shown_value(QVariant const& value);

}  // namespace tool
