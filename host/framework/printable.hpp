// Text that others made (file names above all, which may hold anything but '/') as part of a line for people: a name
// must not begin a line of its own, move the cursor or turn the text round.
#pragma once

#include "processor/host/export.hpp"

#include <QString>

namespace framework {

/// Line ends and tabs become \n, \r and \t, every other control character \x1b, and characters that separate lines or
/// set the direction of text \u202e. All others stay, the backslash too.
ZAB_SHARED_API QString printable(QString const& text);

}  // namespace framework
