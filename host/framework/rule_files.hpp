// Rules as people write them: the `[[rule]]` tables of one file, read and checked but not yet applied to any path.
#pragma once

#include "host/framework/diagnostic.hpp"
#include "host/framework/path_pattern.hpp"
#include "host/framework/rule_values.hpp"

class RULE_SCHEMA;

namespace framework {

/// One `[[rule]]` table.
struct RULE_TABLE {
    QString name;
    /// Relative to the folder that the file's rules apply to. Empty: every path of that folder and below.
    PATH_PATTERNS match;
    /// In the order in which they were written.
    std::vector<RULE_VALUES::VALUE> values;
    /// Where the table's name was written.
    QString file;
    int line = 0;
    int column = 0;
};

struct RULE_FILE {
    /// Absolute.
    QString path;
    /// The folder whose paths the rules apply to, relative to the raw data root; empty for the root itself.
    QString folder;
    /// From top to bottom.
    std::vector<RULE_TABLE> rules;
};

/// The name that rule files bear.
inline constexpr char const* rule_file_name = "zab_rules.toml";

/// Reads a folder's rule file. What is wrong in it goes to `diagnostics`; the tables that are sound are returned all
/// the same.
ZAB_SHARED_API RULE_FILE read_rule_file(QString const& path, QString const& folder, DIAGNOSTICS& diagnostics);

/// Warns about rules that no schema declares, and about properties that their schema does not declare, with the nearest
/// declared name. Such rules and properties are kept: a plug-in may well read what its schemas do not mention.
ZAB_SHARED_API void check_rule_names(std::vector<RULE_FILE> const& files, QVector<RULE_SCHEMA const*> const& schemas,
                                     DIAGNOSTICS& diagnostics);

}  // namespace framework
