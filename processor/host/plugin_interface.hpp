// What the root object of a plug-in library offers besides being a QObject: its processors.
#pragma once

#include <QVector>
#include <QtPlugin>

class PROCESSOR_INTERFACE;

class PLUGIN_INTERFACE {
public:
    /// New processors at every call. The caller owns them.
    virtual QVector<PROCESSOR_INTERFACE*> create_processors() = 0;

protected:
    /// A plug-in's root object is destroyed as the QObject that it is, never through this interface.
    ~PLUGIN_INTERFACE() = default;
};

Q_DECLARE_INTERFACE(PLUGIN_INTERFACE, "PLUGIN_INTERFACE")
