// A second opinion on a source that an action could not use. Actions answer with fixed texts that may mislead ("does
// not exist" for a file that is broken); this looks at the file itself.
#pragma once

#include <QString>

namespace tool {

/// Why the file cannot be read as the image that its name promises, in half a sentence; empty when it can, or when its
/// name promises no image.
QString why_unreadable(QString const& path);

}  // namespace tool
