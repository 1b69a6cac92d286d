// What the atlas builder tells people goes to standard error, in two forms of its own, beside the lines of the action
// that runs it. Every message takes this way.
#pragma once

#include <string>

/// "*** Error: <message>" and a line end. Texts of the builder are Latin-1; they are shown in the local encoding.
void report_atlas_error(std::string const& message);

/// "Warning: <message>" and a line end.
void report_atlas_warning(std::string const& message);

/// The text as it is.
void print_atlas_text(std::string const& text);
