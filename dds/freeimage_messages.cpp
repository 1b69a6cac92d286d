#include "dds/freeimage_messages.hpp"

#include <FreeImage.h>

#include <mutex>

namespace {

/// Guards the pointer and keeps the sink alive while it is told something.
std::mutex mutex;
OUTPUT_LINE_SINK* current_sink = nullptr;

void hand_on(FREE_IMAGE_FORMAT, char const* message) {
    std::lock_guard const lock(mutex);
    if (current_sink != nullptr)
        current_sink->add_output_line(QString::fromLocal8Bit(message));
}

}  // namespace

FREEIMAGE_MESSAGES::FREEIMAGE_MESSAGES(OUTPUT_LINE_SINK& sink) : sink_(sink) {
    std::lock_guard const lock(mutex);
    current_sink = &sink_;
    FreeImage_SetOutputMessage(hand_on);
}

FREEIMAGE_MESSAGES::~FREEIMAGE_MESSAGES() {
    std::lock_guard const lock(mutex);
    // A conversion that started later has taken the place of this one.
    if (current_sink != &sink_)
        return;
    FreeImage_SetOutputMessage(nullptr);
    current_sink = nullptr;
}
