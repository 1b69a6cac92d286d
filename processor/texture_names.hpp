// The list in a ".texture_array" file: one texture name a line.
#pragma once

#include <QString>

#include <set>

class QIODevice;

/// Every line that is not empty, once, as it stands: names are not trimmed. `list` is open for reading.
std::set<QString> read_texture_names(QIODevice& list);
