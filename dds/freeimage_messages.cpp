#include "dds/freeimage_messages.hpp"

#include <FreeImage.h>

namespace {

OUTPUT_LINE_SINK* current_sink = nullptr;

void hand_on(FREE_IMAGE_FORMAT, char const* message) {
    current_sink->add_output_line(QString::fromLocal8Bit(message));
}

}  // namespace

FREEIMAGE_MESSAGES::FREEIMAGE_MESSAGES(OUTPUT_LINE_SINK& sink) {
    current_sink = &sink;
    FreeImage_SetOutputMessage(hand_on);
}

FREEIMAGE_MESSAGES::~FREEIMAGE_MESSAGES() {
    FreeImage_SetOutputMessage(nullptr);
    current_sink = nullptr;
}
