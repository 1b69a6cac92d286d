// The folder `.zab` and what may stand in it. A project may come from a stranger, and its `.zab` with it: a link there
// would lead the tool to write over some other file, a pipe would hang it. So nothing but regular files of known names
// in a real folder is opened, and none of them is made readable for more people than the user's umask says, nor
// writable for anybody else.
#pragma once

#include <QString>

#include <optional>

namespace tool {

/// Why the folder, as it stands there, cannot be this program's own; nothing when it can, or when there is none.
std::optional<QString> why_no_state_folder(QString const& folder);

/// Makes the folder if it is not there. False, with errno, when that fails.
bool make_state_folder(QString const& folder);

/// Gives the database files of their own where they have second names, as in a copy of a project that shares its files
/// with the original. Under the project's lock, before the database is opened. False, with errno, when that fails.
bool unshare_state(QString const& folder);

/// Opens a file of the folder as open(2) does, never through a link and without waiting for the other end of a pipe.
/// -1, with errno, when it cannot be opened or is no regular file (EINVAL).
int open_state_file(QString const& folder, char const* name, int flags);

}  // namespace tool
