// The key functions of the contract's pure interfaces: their type information lives here, once, for all libraries.
#include "processor/host/nr_xml_query_interface.hpp"
#include "processor/host/progress_callback.hpp"
#include "processor/host/rule_cache.hpp"

RULE_CACHE::~RULE_CACHE() = default;
PROGRESS_CALLBACK::~PROGRESS_CALLBACK() = default;
NR_XML_QUERY_INTERFACE::~NR_XML_QUERY_INTERFACE() = default;
