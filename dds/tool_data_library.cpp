#include "dds/tool_data_library.hpp"

#include "platform/tool_data_builder/messages.hpp"

namespace {

void hand_on(char const* message) {
    if (PROGRESS_CALLBACK* const receiver = ACTION_TDB::tdb_output())
        receiver->output_line(message, PROGRESS_CALLBACK::OUTPUT_NORMAL);
}

}  // namespace

QE::UniString wide(QString const& text) {
    return text.toStdWString();
}

void receive_tool_data_messages(ACTION_TDB& action) {
    TOOLDATABUILDER::set_message_handler(hand_on);
    action.set_up_tdb_output();
}
