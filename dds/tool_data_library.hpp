// What an action needs in order to work with the tool-data builder library: its texts, and its messages.
#pragma once

#include "platform/qe/uni_string.hpp"
#include "processor/host/action_tdb.hpp"

#include <QString>

QE::UniString wide(QString const& text);

/// From here on, what the library says on this thread becomes lines of the action.
void receive_tool_data_messages(ACTION_TDB& action);
