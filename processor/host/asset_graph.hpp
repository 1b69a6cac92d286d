// The asset graph: which pieces of game data exist and which need which. Actions describe the fragment that they make
// with a builder; the host's graph takes it in, or refuses it with a reason.
#pragma once

#include "processor/host/export.hpp"

#include <QHash>
#include <QString>
#include <QVector>

#include <memory>
#include <vector>

class NR_XML_QUERY_INTERFACE;

namespace QTSHARED {

/// One fragment file in the making. `id` is the path of the file that it will be saved to.
class ZAB_SHARED_API ASSET_FRAGMENT_BUILDER {
public:
    struct FRAGMENT {
        QString name;
        QString file;
        QString package;
    };
    struct DEPENDENCY {
        QString fragment;
        QString needs;
        QString kind;
        QString condition;
    };

    explicit ASSET_FRAGMENT_BUILDER(QString const& id);
    ~ASSET_FRAGMENT_BUILDER();

    void add_fragment(QString name, QString const& file, QString const& package);
    void add_dependency(QString fragment, QString needs, QString const& kind, QString const& condition);

    QString const& id() const { return id_; }
    QVector<FRAGMENT> const& fragments() const { return fragments_; }
    QVector<DEPENDENCY> const& dependencies() const { return dependencies_; }

private:
    QString id_;
    QVector<FRAGMENT> fragments_;
    QVector<DEPENDENCY> dependencies_;
};

/// The host's graph. Its operations may be called from several threads.
class ZAB_SHARED_API ASSET_GRAPH {
public:
    /// One change, to be made again in another process's copy of the graph: a builder that was added, or, where `id` is
    /// empty, a package that was set for the first fragment.
    struct CHANGE {
        QString id;
        QVector<ASSET_FRAGMENT_BUILDER::FRAGMENT> fragments;
        QVector<ASSET_FRAGMENT_BUILDER::DEPENDENCY> dependencies;
    };

    ASSET_GRAPH();
    ASSET_GRAPH(ASSET_GRAPH const&) = delete;
    ASSET_GRAPH& operator=(ASSET_GRAPH const&) = delete;
    ~ASSET_GRAPH();

    /// Takes the builder's fragments in; those of an earlier builder with the same id are replaced. A fragment name
    /// that another id already holds, an empty name, or a dependency of a fragment that the builder does not hold is
    /// refused: `error` then says why and the graph stays as it was.
    bool add(ASSET_FRAGMENT_BUILDER const& builder, QString& error);

    /// A known texture: one that exists below the working data root or that an action makes, which then says what it is
    /// made from. Host only.
    void add_texture(QString const& logical_path, QString const& made_from = {});
    bool has_texture(QString const& logical_path) const;
    /// The logical path of the first source of the action that makes the texture; empty when none does.
    QString made_from(QString const& logical_path) const;

    /// The builders that were added and of which nobody has written the file yet, each handed out once, in the order of
    /// their ids. Host only.
    std::vector<ASSET_FRAGMENT_BUILDER> take_unwritten();
    /// The file of the builder with this id has been written. Host only.
    void set_written(QString const& id);

    /// The fragment's package by its name; fragments that no builder holds are not listed.
    QHash<QString, QString> packages() const;
    void set_package(QString const& fragment, QString const& package);

    /// What `add` and `set_package` changed since the last call, in order. Host only.
    QVector<CHANGE> take_changes();
    /// Makes a change that another copy of the graph took; it does not count as one of this copy's. Host only.
    bool repeat(CHANGE const& change, QString& error);

private:
    bool take_in(CHANGE const& change, QString& error);

    struct STATE;
    std::unique_ptr<STATE> state_;
};

}  // namespace QTSHARED

/// Which package (expansion) each referenced fragment belongs to.
class ZAB_SHARED_API AGF_DEPENDENCY_BUILDER {
public:
    static void add_referenced_fragment(QString const& fragment, QString const& package,
                                        NR_XML_QUERY_INTERFACE* database, QTSHARED::ASSET_GRAPH* graph);
    /// The reference stays valid until the next call on the same thread.
    static QHash<QString, QString> const& get_asset_fragment_packages(NR_XML_QUERY_INTERFACE* database,
                                                                      QTSHARED::ASSET_GRAPH* graph);
};
