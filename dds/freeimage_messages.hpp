// FreeImage tells its users about problems through one function for the whole process. While an object of this class
// exists, that function gives what it is told to one sink.
#pragma once

#include "dds/output_line_sink.hpp"

class FREEIMAGE_MESSAGES {
public:
    /// Every message becomes one line; what is said again of the same file is left out, since a file is read in steps
    /// that say the same. Of two objects at a time both give their messages to the later one's sink.
    explicit FREEIMAGE_MESSAGES(OUTPUT_LINE_SINK& sink);
    FREEIMAGE_MESSAGES(FREEIMAGE_MESSAGES const&) = delete;
    FREEIMAGE_MESSAGES& operator=(FREEIMAGE_MESSAGES const&) = delete;
    ~FREEIMAGE_MESSAGES();

    /// What FreeImage says from here on is about another file.
    static void begin_file();
    /// About that file.
    static bool has_said_something();

private:
    OUTPUT_LINE_SINK& sink_;
};
