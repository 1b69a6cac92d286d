#include "dds/freeimage_messages.hpp"

#include <FreeImage.h>

#include <mutex>
#include <set>
#include <string>

namespace {

/// Guards what follows and keeps the sink alive while it is told something.
std::mutex mutex;
OUTPUT_LINE_SINK* current_sink = nullptr;
std::set<std::string> said_of_file;

void hand_on(FREE_IMAGE_FORMAT, char const* message) {
    std::lock_guard const lock(mutex);
    if (current_sink != nullptr && said_of_file.insert(message).second)
        current_sink->add_output_line(QString::fromLocal8Bit(message));
}

}  // namespace

FREEIMAGE_MESSAGES::FREEIMAGE_MESSAGES(OUTPUT_LINE_SINK& sink) : sink_(sink) {
    std::lock_guard const lock(mutex);
    current_sink = &sink_;
    said_of_file.clear();
    FreeImage_SetOutputMessage(hand_on);
}

void FREEIMAGE_MESSAGES::begin_file() {
    std::lock_guard const lock(mutex);
    said_of_file.clear();
}

bool FREEIMAGE_MESSAGES::has_said_something() {
    std::lock_guard const lock(mutex);
    return !said_of_file.empty();
}

FREEIMAGE_MESSAGES::~FREEIMAGE_MESSAGES() {
    std::lock_guard const lock(mutex);
    // A conversion that started later has taken the place of this one.
    if (current_sink != &sink_)
        return;
    FreeImage_SetOutputMessage(nullptr);
    current_sink = nullptr;
}
