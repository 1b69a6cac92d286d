// The two data roots, and the way between logical and physical paths. The host sets the roots before anything else is
// done; afterwards they are only read, from any thread.
#pragma once

#include "processor/host/export.hpp"
#include "processor/host/logical_path.hpp"
#include "processor/host/physical_path.hpp"
#include "processor/host/rule.hpp"

class ZAB_SHARED_API PATHS {
public:
    /// A path without a root token comes back as it is.
    static PHYSICAL_PATH physical_path(LOGICAL_PATH const& path);
    /// Of any spelling. A path outside both roots comes back without a token.
    static LOGICAL_PATH logical_path(PHYSICAL_PATH const& path);

    static PHYSICAL_PATH const& raw_data();
    static PHYSICAL_PATH const& working_data();
    /// The working data root that targets made from this source belong to.
    static PHYSICAL_PATH const& target_working_data(PHYSICAL_PATH const& source);

    /// The same file without doubled slashes, "." and "..". A slash at the end stays, as in logical paths.
    static PHYSICAL_PATH clean(PHYSICAL_PATH const& path);

    /// The named property's value as a clean path relative to the working data root, whether or not it begins with a
    /// slash; one that leads outside begins with "..". "{dir}" in it becomes the source's folder below its root and
    /// "{name}" its file name without the extension.
    static QString relative_target_path_from_rule_path(RULE const& rule, QString const& property,
                                                       LOGICAL_PATH const& logical, PHYSICAL_PATH const& physical);

    /// Absolute folders, '/' between sections, none at the end. Host only.
    static void set_roots(PHYSICAL_PATH const& raw, PHYSICAL_PATH const& working);
};
