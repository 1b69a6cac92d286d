// The host's record of one file that it knows. The host creates and owns the entries; processors and actions read them.
#pragma once

#include "processor/host/physical_path.hpp"

#include <QVector>

class ACTION_INTERFACE;

struct FILE_ENTRY {
    PHYSICAL_PATH physical_path;
    /// The actions that make this file, filled by the host once it knows all actions. Borrowed.
    QVector<ACTION_INTERFACE*> producers;
};
