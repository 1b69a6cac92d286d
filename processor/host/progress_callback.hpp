// How long-running library code reports progress and text, and learns that it should stop.
#pragma once

#include "processor/host/export.hpp"

class ZAB_SHARED_API PROGRESS_CALLBACK {
public:
    enum OUTPUT_LEVEL { OUTPUT_ERROR, OUTPUT_WARNING, OUTPUT_NORMAL, OUTPUT_VERBOSE };

    virtual ~PROGRESS_CALLBACK();
    virtual void set_progress(int progress) = 0;
    virtual void add_progress(int progress) = 0;
    virtual bool aborted() = 0;
    /// Text without a line end; what follows goes on the same line.
    virtual void output(char const* text, OUTPUT_LEVEL level) = 0;
    virtual void output_line(char const* text, OUTPUT_LEVEL level) = 0;
};
