// Questions to the host's database tables: rows found by key, values by column.
#pragma once

#include "processor/host/export.hpp"

#include <QString>
#include <QStringList>

class ZAB_SHARED_API NR_XML_QUERY_INTERFACE {
public:
    virtual ~NR_XML_QUERY_INTERFACE();

    virtual bool has_table(QString const& table) const = 0;
    /// Keys in the order of the table's rows.
    virtual QStringList keys(QString const& table) const = 0;
    /// Empty when table, row or column do not exist. Keys and columns are found without regard to case.
    virtual QString value(QString const& table, QString const& key, QString const& column) const = 0;
};
