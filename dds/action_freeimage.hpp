// The conversion of an image into another ordinary image format, for rules whose "Format" is not "dds". FreeImage reads
// and writes; what it has to say becomes lines of the action.
#pragma once

#include "processor/host/action_convert.hpp"

class ACTION_FREEIMAGE : public ACTION_CONVERT {
public:
    /// `format` is a file extension without its dot, and becomes the target's.
    ACTION_FREEIMAGE(PHYSICAL_PATH const& source, QString format, PROCESSOR_INTERFACE& processor);

    QString get_name(bool detailed) override;
    /// FreeImage has one receiver of messages for the whole process: of two conversions at a time, one gets the
    /// messages of both.
    bool convert(PHYSICAL_PATH const& source, PHYSICAL_PATH const& target, RULE_CACHE const& rules,
                 FILE_MAP const& files) override;
    /// Takes one of FreeImage's messages.
    void freeimage_output(QString const& message);

private:
    QString format_;
};
