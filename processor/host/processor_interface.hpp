// What a plug-in hands to the host: a processor looks at the known files and their rules, and says which actions they
// need. The order of the virtual operations is fixed.
#pragma once

#include "processor/host/export.hpp"
#include "processor/host/file_map.hpp"
#include "processor/host/physical_path.hpp"
#include "processor/host/rule_cache.hpp"

#include <QDateTime>
#include <QPair>
#include <QString>
#include <QVector>

class ACTION_INTERFACE;

class ZAB_SHARED_API PROCESSOR_INTERFACE {
public:
    PROCESSOR_INTERFACE();
    PROCESSOR_INTERFACE(PROCESSOR_INTERFACE const&) = delete;
    PROCESSOR_INTERFACE& operator=(PROCESSOR_INTERFACE const&) = delete;

    virtual ~PROCESSOR_INTERFACE();
    /// What the processor is called towards people.
    virtual QString get_name() = 0;
    /// Processors with a higher priority are asked first.
    virtual int priority() const;
    /// Logical folders that the processor reads; empty means all of them.
    virtual QVector<QString> get_affected_directories();
    /// Files that exist only by the processor's word, each with its time stamp.
    virtual QVector<QPair<PHYSICAL_PATH, QDateTime>> get_virtual_files(FILE_MAP const& files, RULE_CACHE const& rules);
    /// New actions in the order of their creation. The caller owns them.
    virtual QVector<ACTION_INTERFACE*> create_actions(FILE_MAP const& files, RULE_CACHE const& rules) = 0;

    /// The name given by setup_dc: the library's, where get_name() is the processor's.
    QString const& dc_name() const { return dc_name_; }

protected:
    /// Gives the processor its name; `length` counts its characters.
    void setup_dc(char const* name, int length);

private:
    QString dc_name_;
};
