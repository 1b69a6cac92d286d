// Where the pieces of a conversion report: one message, one line of the action that they work for.
#pragma once

#include <QString>

class OUTPUT_LINE_SINK {
public:
    virtual void add_output_line(QString line) = 0;

protected:
    ~OUTPUT_LINE_SINK() = default;
};
