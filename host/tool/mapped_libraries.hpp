// The libraries that a plug-in works with, directly or through others, and what tells one build of each from the next.
// A newer codec or encoder makes other bytes of the same sources, so its change is a change of the plug-in.
#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace tool {

struct MAPPED_LIBRARY {
    QString path;
    /// What the linker wrote into it; empty when it wrote nothing.
    QByteArray build_id;
};

/// Of a library that is loaded: those that it needs, sorted by name, without itself and without the C library's, which
/// comes with the system and changes with every repair of it.
std::vector<MAPPED_LIBRARY> libraries_of(QString const& library);

}  // namespace tool
