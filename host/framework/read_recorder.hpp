// What an action asks of the host while it runs, besides the contents of its sources: rule values, whether files are
// known, database tables, the asset graph. The next build compares the answers with those that it would give now, so
// that an action is built again when, and only when, it would be told something else.
#pragma once

#include "processor/host/asset_graph.hpp"
#include "processor/host/logical_path.hpp"

#include <QStringList>
#include <QVariant>

#include <cstddef>
#include <vector>

namespace framework {

/// Of one type and equal. QVariant's own comparison takes "1" for 1, and numbers that are nearly equal for equal.
ZAB_SHARED_API bool is_same_value(QVariant const& left, QVariant const& right);

struct RULE_READ {
    /// Logical; empty for a global rule.
    QString path;
    QString rule;
    /// Empty for the question whether the rule exists at all; the value is a bool then.
    QString property;
    /// Invalid when the property was not set.
    QVariant value;
};

/// The question whether something is known by this logical path, and the answer.
struct LOOK_UP {
    QString path;
    bool found = false;
};

/// The question what a texture is made from, and the answer: a logical path, or nothing.
struct ORIGIN {
    QString texture;
    QString made_from;
};

/// What an action did to the asset graph, in order. It is done again when the action itself need not run.
struct ASSET_CHANGE {
    /// Empty for a package that was set by itself: `fragments` then holds its fragment.
    QString builder;
    QVector<QTSHARED::ASSET_FRAGMENT_BUILDER::FRAGMENT> fragments;
    QVector<QTSHARED::ASSET_FRAGMENT_BUILDER::DEPENDENCY> dependencies;
};

struct READS {
    /// All sorted, each question once.
    std::vector<RULE_READ> rules;
    std::vector<LOOK_UP> files;
    std::vector<LOOK_UP> textures;
    std::vector<ORIGIN> origins;
    QStringList tables;

    std::vector<ASSET_CHANGE> asset_changes;
};

/// Hears of what is asked on its thread, from when it is made until it ends; a later one on the same thread takes its
/// place meanwhile. While there is none, asking costs one branch more.
class ZAB_SHARED_API READ_LISTENER {
public:
    READ_LISTENER(READ_LISTENER const&) = delete;
    READ_LISTENER& operator=(READ_LISTENER const&) = delete;

    static READ_LISTENER* current();

    virtual void rule_was_read(QString const& path, QString const& rule, QString const& property,
                               QVariant const& value) = 0;
    virtual void file_was_looked_up(QString const&, bool) {}
    virtual void texture_was_looked_up(QString const&, bool) {}
    virtual void origin_was_asked(QString const& /*texture*/, QString const& /*made_from*/) {}
    virtual void table_was_read(QString const&) {}
    virtual void asset_graph_was_changed(ASSET_CHANGE) {}

protected:
    READ_LISTENER();
    virtual ~READ_LISTENER();

private:
    READ_LISTENER* former_;
};

/// Keeps everything, for an action that runs.
class ZAB_SHARED_API READ_RECORDER : public READ_LISTENER {
public:
    READS take();

    void rule_was_read(QString const& path, QString const& rule, QString const& property,
                       QVariant const& value) override;
    void file_was_looked_up(QString const& path, bool found) override { reads_.files.push_back({path, found}); }
    void texture_was_looked_up(QString const& path, bool found) override { reads_.textures.push_back({path, found}); }
    void origin_was_asked(QString const& texture, QString const& made_from) override {
        reads_.origins.push_back({texture, made_from});
    }
    void table_was_read(QString const& table) override;
    void asset_graph_was_changed(ASSET_CHANGE change) override { reads_.asset_changes.push_back(std::move(change)); }

private:
    READS reads_;
    /// How many rule reads there may be until those that occur twice are thrown out.
    std::size_t tidy_at_ = 4096;
};

/// Hooks for FILE_MAP, whose look-ups are compiled into those who ask.
ZAB_SHARED_API void note_file_look_up(LOGICAL_PATH const& path, bool found);

/// Does to the graph what the action did.
ZAB_SHARED_API void replay(std::vector<ASSET_CHANGE> const& changes, QTSHARED::ASSET_GRAPH& graph);

}  // namespace framework
