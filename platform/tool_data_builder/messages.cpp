#include "platform/tool_data_builder/messages.hpp"

#include <atomic>

namespace TOOLDATABUILDER {

namespace {

std::atomic<MESSAGE_HANDLER> current_handler = nullptr;

}  // namespace

void set_message_handler(MESSAGE_HANDLER handler) {
    current_handler = handler;
}

void report(std::string const& message) {
    if (MESSAGE_HANDLER const handler = current_handler) {
        handler(message.c_str());
    }
}

}  // namespace TOOLDATABUILDER
