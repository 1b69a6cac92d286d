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
