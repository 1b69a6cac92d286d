// The schemas of the rules that the host reads itself; they live as long as this object.
#pragma once

#include "processor/host/rule_schema.hpp"

namespace tool {

class HOST_SCHEMAS {
private:
    class EXPANSION : public RULE_SCHEMA {
    public:
        EXPANSION() : RULE_SCHEMA(QStringLiteral("Expansion"), QStringLiteral("What the files are shipped with")) {
            add_property(QStringLiteral("Name"),
                         QStringLiteral("Name of the expansion. Default: <empty> (=the core data)"));
            add_property(QStringLiteral("Released"),
                         QStringLiteral("If 'false' the files are never shipped. Default: true"));
        }
    };

    EXPANSION expansion_;
};

}  // namespace tool
