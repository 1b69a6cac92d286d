// The rules of a project, resolved per path. For one path and one rule name, every table that matches is laid over the
// former ones, property by property: the project file's first, then those of each folder's rule file from the raw root
// down, each file from top to bottom.
#pragma once

#include "host/framework/project.hpp"
#include "processor/host/rule_cache.hpp"

#include <memory>

namespace framework {

/// Rules apply to paths below "<raw>", whether or not a file exists there, and to no others. Everything is read when
/// the cache is made; afterwards any number of threads may ask.
class ZAB_SHARED_API PROJECT_RULE_CACHE : public RULE_CACHE {
public:
    /// `files` in any order, one for each folder that has rules.
    PROJECT_RULE_CACHE(PROJECT const& project, std::vector<RULE_FILE> files);
    PROJECT_RULE_CACHE(PROJECT_RULE_CACHE const&) = delete;
    PROJECT_RULE_CACHE& operator=(PROJECT_RULE_CACHE const&) = delete;
    ~PROJECT_RULE_CACHE() override;

    RULE get(LOGICAL_PATH const& path, QString const& rule_name) const override;
    RULE get_global(QString const& rule_name) const override;

    /// Every name that some rule table bears, sorted.
    std::vector<QString> rule_names() const;
    /// The tables that `get` lays over one another for this path, the undermost first. Borrowed from the cache.
    std::vector<RULE_TABLE const*> matching_tables(LOGICAL_PATH const& path, QString const& rule_name) const;
    /// All files, the project's first.
    std::vector<RULE_FILE> const& files() const;

private:
    struct STATE;
    std::unique_ptr<STATE> state_;
};

}  // namespace framework
