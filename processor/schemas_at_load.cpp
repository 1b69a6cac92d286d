// The four rule schemas as global objects: they are known to the host from the moment that the library is loaded until
// it is unloaded. Nothing depends on the order in which they are made.
#include "processor/atlas_rule_schema.hpp"
#include "processor/texture_levelling_rule_schema.hpp"
#include "processor/texture_old_rule_schema.hpp"
#include "processor/texture_rule_schema.hpp"

namespace {

TEXTURE_RULE_SCHEMA const texture_rule_schema;
TEXTURE_OLD_RULE_SCHEMA const texture_old_rule_schema;
ATLAS_RULE_SCHEMA const atlas_rule_schema;
TEXTURE_LEVELLING_RULE_SCHEMA const texture_levelling_rule_schema;

}  // namespace
