#include "processor/host/asset_graph.hpp"

#include "host/framework/read_recorder.hpp"

#include <QMutex>
#include <QMutexLocker>
#include <QSet>

#include <map>
#include <utility>

namespace QTSHARED {

ASSET_FRAGMENT_BUILDER::ASSET_FRAGMENT_BUILDER(QString const& id) : id_(id) {
}

ASSET_FRAGMENT_BUILDER::~ASSET_FRAGMENT_BUILDER() = default;

void ASSET_FRAGMENT_BUILDER::add_fragment(QString name, QString const& file, QString const& package) {
    fragments_.append({std::move(name), file, package});
}

void ASSET_FRAGMENT_BUILDER::add_dependency(QString fragment, QString needs, QString const& kind,
                                            QString const& condition) {
    dependencies_.append({std::move(fragment), std::move(needs), kind, condition});
}

struct ASSET_GRAPH::STATE {
    mutable QMutex mutex;
    /// Fragment name → id of the builder that holds it.
    QHash<QString, QString> owners;
    QHash<QString, QString> packages;
    /// Texture → what it is made from.
    QHash<QString, QString> textures;
    std::map<QString, ASSET_FRAGMENT_BUILDER> unwritten;
    QVector<CHANGE> changes;
};

ASSET_GRAPH::ASSET_GRAPH() : state_(std::make_unique<STATE>()) {
}

ASSET_GRAPH::~ASSET_GRAPH() = default;

bool ASSET_GRAPH::add(ASSET_FRAGMENT_BUILDER const& builder, QString& error) {
    CHANGE const change = {builder.id(), builder.fragments(), builder.dependencies()};
    QMutexLocker const lock(&state_->mutex);
    if (!take_in(change, error))
        return false;
    state_->changes.append(change);
    // Only where it is added first: a copy of the graph that repeats the change must not write the file again.
    state_->unwritten.insert_or_assign(builder.id(), builder);
    return true;
}

bool ASSET_GRAPH::repeat(CHANGE const& change, QString& error) {
    QMutexLocker const lock(&state_->mutex);
    if (!change.id.isEmpty())
        return take_in(change, error);
    for (auto const& fragment : change.fragments)
        state_->packages.insert(fragment.name, fragment.package);
    return true;
}

QVector<ASSET_GRAPH::CHANGE> ASSET_GRAPH::take_changes() {
    QMutexLocker const lock(&state_->mutex);
    return std::exchange(state_->changes, {});
}

bool ASSET_GRAPH::take_in(CHANGE const& change, QString& error) {
    QSet<QString> names;
    for (auto const& fragment : change.fragments) {
        if (fragment.name.isEmpty()) {
            error = QStringLiteral("%1: an asset-graph fragment has no name").arg(change.id);
            return false;
        }
        auto const owner = state_->owners.constFind(fragment.name);
        if (owner != state_->owners.constEnd() && *owner != change.id) {
            error = QStringLiteral("%1: the asset-graph fragment '%2' already stands in %3")
                        .arg(change.id, fragment.name, *owner);
            return false;
        }
        names.insert(fragment.name);
    }
    for (auto const& dependency : change.dependencies) {
        if (!names.contains(dependency.fragment)) {
            error = QStringLiteral("%1: a dependency on '%2' belongs to the unknown fragment '%3'")
                        .arg(change.id, dependency.needs, dependency.fragment);
            return false;
        }
    }
    for (auto owner = state_->owners.begin(); owner != state_->owners.end();) {
        if (*owner == change.id) {
            state_->packages.remove(owner.key());
            owner = state_->owners.erase(owner);
        } else {
            ++owner;
        }
    }
    for (auto const& fragment : change.fragments) {
        state_->owners.insert(fragment.name, change.id);
        state_->packages.insert(fragment.name, fragment.package);
    }
    if (auto* const listener = framework::READ_LISTENER::current())
        listener->asset_graph_was_changed({change.id, change.fragments, change.dependencies});
    return true;
}

void ASSET_GRAPH::add_texture(QString const& logical_path, QString const& made_from) {
    QMutexLocker const lock(&state_->mutex);
    state_->textures.insert(logical_path, made_from);
}

QString ASSET_GRAPH::made_from(QString const& logical_path) const {
    QMutexLocker const lock(&state_->mutex);
    QString const source = state_->textures.value(logical_path);
    if (auto* const listener = framework::READ_LISTENER::current())
        listener->origin_was_asked(logical_path, source);
    return source;
}

std::vector<ASSET_FRAGMENT_BUILDER> ASSET_GRAPH::take_unwritten() {
    QMutexLocker const lock(&state_->mutex);
    std::vector<ASSET_FRAGMENT_BUILDER> builders;
    for (auto const& [id, builder] : state_->unwritten)
        builders.push_back(builder);
    state_->unwritten.clear();
    return builders;
}

void ASSET_GRAPH::set_written(QString const& id) {
    QMutexLocker const lock(&state_->mutex);
    state_->unwritten.erase(id);
}

bool ASSET_GRAPH::has_texture(QString const& logical_path) const {
    QMutexLocker const lock(&state_->mutex);
    bool const found = state_->textures.contains(logical_path);
    if (auto* const listener = framework::READ_LISTENER::current())
        listener->texture_was_looked_up(logical_path, found);
    return found;
}

QHash<QString, QString> ASSET_GRAPH::packages() const {
    QMutexLocker const lock(&state_->mutex);
    return state_->packages;
}

void ASSET_GRAPH::set_package(QString const& fragment, QString const& package) {
    QMutexLocker const lock(&state_->mutex);
    state_->packages.insert(fragment, package);
    state_->changes.append({{}, {{fragment, {}, package}}, {}});
    if (auto* const listener = framework::READ_LISTENER::current())
        listener->asset_graph_was_changed({{}, {{fragment, {}, package}}, {}});
}

}  // namespace QTSHARED

void AGF_DEPENDENCY_BUILDER::add_referenced_fragment(QString const& fragment, QString const& package,
                                                     NR_XML_QUERY_INTERFACE*, QTSHARED::ASSET_GRAPH* graph) {
    if (graph != nullptr)
        graph->set_package(fragment, package);
}

QHash<QString, QString> const& AGF_DEPENDENCY_BUILDER::get_asset_fragment_packages(NR_XML_QUERY_INTERFACE*,
                                                                                   QTSHARED::ASSET_GRAPH* graph) {
    static thread_local QHash<QString, QString> packages;
    packages = graph != nullptr ? graph->packages() : QHash<QString, QString>();
    return packages;
}
