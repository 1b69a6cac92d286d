// Database tables from XML files, one table a file:
//
//     <table key="name">
//       <row name="north" pack_filename_extension="north_pack"/>
//     </table>
//
// The root's attribute `key` names the column that rows are found by; without it the column is "name".
#pragma once

#include "processor/host/nr_xml_query_interface.hpp"

#include <QHash>

namespace framework {

class ZAB_SHARED_API XML_TABLES : public NR_XML_QUERY_INTERFACE {
public:
    /// False with a line "path:line:column: error: text" when the file cannot be read, is not of this form, or has two
    /// rows of one key.
    bool load(QString const& table, QString const& file, QString& error);

    bool has_table(QString const& table) const override;
    QStringList keys(QString const& table) const override;
    QString value(QString const& table, QString const& key, QString const& column) const override;

private:
    struct TABLE {
        QStringList keys;
        /// Case-folded key → case-folded column → value.
        QHash<QString, QHash<QString, QString>> rows;
    };
    QHash<QString, TABLE> tables_;
    /// Of all files that were loaded.
    qint64 bytes_ = 0;
};

}  // namespace framework
