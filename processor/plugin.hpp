// The root object of the plug-in library: the host casts it to PLUGIN_INTERFACE and asks it for its processors.
#pragma once

#include "processor/host/plugin_interface.hpp"

#include <QObject>

class PLUGIN : public QObject, public PLUGIN_INTERFACE {
    Q_OBJECT
    Q_INTERFACES(PLUGIN_INTERFACE)

public:
    QVector<PROCESSOR_INTERFACE*> create_processors() override;
};
