// The reader of `[[rule]]` tables, shared by project file and rule files. Internal to the framework.
#pragma once

#include "host/framework/rule_files.hpp"
#include "host/framework/toml_document.hpp"

namespace framework {

/// The tables of the value that stands behind the key `rule`.
std::vector<RULE_TABLE> read_rule_tables(toml::node const& node, TOML_REPORTER& reporter);

}  // namespace framework
