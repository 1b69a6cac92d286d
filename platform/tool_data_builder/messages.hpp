// Where the tool-data builder library's messages go. The library knows nothing of those who use it; they say once where
// its messages are wanted.
#pragma once

#include <string>

namespace TOOLDATABUILDER {

using MESSAGE_HANDLER = void (*)(char const* message);

/// From here on every message of the library is given to `handler`, on the thread that caused it: one call for one line
/// in the local 8-bit encoding, without a line end. Null, as at the start: messages are dropped. One handler serves the
/// whole process and may be set from any thread; it is the handler's business to find the thread's receiver.
void set_message_handler(MESSAGE_HANDLER handler);

/// For the library itself.
void report(std::string const& message);

}  // namespace TOOLDATABUILDER
