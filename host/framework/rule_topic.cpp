#include "processor/host/rule_cache.hpp"

namespace {

thread_local char const* s_topic = "";

}  // namespace

RULE_TOPIC::RULE_TOPIC(char const* name) : former_(s_topic) {
    s_topic = name;
}

RULE_TOPIC::~RULE_TOPIC() {
    s_topic = former_;
}

char const* RULE_TOPIC::current() {
    return s_topic;
}
