// Answers which rule applies to a path. The host owns the one that a build uses and hands it to every operation that
// may read rules.
#pragma once

#include "processor/host/export.hpp"
#include "processor/host/logical_path.hpp"
#include "processor/host/rule.hpp"

class ZAB_SHARED_API RULE_CACHE {
public:
    virtual ~RULE_CACHE();

    /// The rule of that name that applies to the path. Check `exists()` before reading values.
    virtual RULE get(LOGICAL_PATH const& path, QString const& rule_name) const = 0;

    /// A rule that holds for the whole project; its one property bears the rule's own name.
    virtual RULE get_global(QString const& rule_name) const = 0;
};

/// What a processor decides on while one of these is alive. The rules of a file that it reads under a topic count as
/// read for those actions alone that it makes under a topic of the same name, so that a file's atlas rule, say, does
/// not put the conversion of the same file out of date. Without one, the topic has an empty name.
class ZAB_SHARED_API RULE_TOPIC {
public:
    /// A text that lives for ever.
    explicit RULE_TOPIC(char const* name);
    RULE_TOPIC(RULE_TOPIC const&) = delete;
    RULE_TOPIC& operator=(RULE_TOPIC const&) = delete;
    ~RULE_TOPIC();

    /// Of this thread.
    static char const* current();

private:
    char const* former_;
};
