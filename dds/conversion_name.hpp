// What the actions that turn one image into one image are called in lists and reports.
#pragma once

#include "processor/host/logical_path.hpp"

#include <QString>

/// "Convert texture"; detailed, with the logical path behind its root token.
inline QString conversion_name(LOGICAL_PATH const& source, bool detailed) {
    QString const name = QStringLiteral("Convert texture");
    return detailed ? name + QStringLiteral(" (") + source.section(QLatin1Char('/'), 1, -1) + QLatin1Char(')') : name;
}
