#include "processor/host/rule_schema.hpp"

#include <QMutex>
#include <QMutexLocker>

#include <algorithm>

namespace {

struct REGISTRY {
    QMutex mutex;
    QVector<RULE_SCHEMA const*> schemas;
};

/// Made on first use: schemas are global objects of other libraries, whose constructors may run before this library's.
REGISTRY& registry() {
    static REGISTRY registry;
    return registry;
}

}  // namespace

RULE_SCHEMA::RULE_SCHEMA(QString const& name, QString const& description) : name_(name), description_(description) {
    QMutexLocker const lock(&registry().mutex);
    registry().schemas.append(this);
}

RULE_SCHEMA::~RULE_SCHEMA() {
    QMutexLocker const lock(&registry().mutex);
    registry().schemas.removeOne(this);
}

void RULE_SCHEMA::add_property(QString const& name, QString const& description) {
    properties_.append({name, description});
}

QVector<RULE_SCHEMA const*> RULE_SCHEMA::all() {
    QVector<RULE_SCHEMA const*> schemas;
    {
        QMutexLocker const lock(&registry().mutex);
        schemas = registry().schemas;
    }
    std::stable_sort(schemas.begin(), schemas.end(),
                     [](RULE_SCHEMA const* a, RULE_SCHEMA const* b) { return a->name() < b->name(); });
    return schemas;
}
