#include "host/framework/read_recorder.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <tuple>

namespace framework {

namespace {

thread_local READ_LISTENER* s_listener = nullptr;

template <typename ELEMENT, typename KEY>
void sort_and_keep_first(std::vector<ELEMENT>& elements, KEY const& key) {
    std::stable_sort(elements.begin(), elements.end(),
                     [&](ELEMENT const& left, ELEMENT const& right) { return key(left) < key(right); });
    elements.erase(std::unique(elements.begin(), elements.end(),
                               [&](ELEMENT const& left, ELEMENT const& right) { return key(left) == key(right); }),
                   elements.end());
}

void tidy(std::vector<RULE_READ>& reads) {
    sort_and_keep_first(reads, [](RULE_READ const& read) { return std::tie(read.path, read.rule, read.property); });
}

void tidy(std::vector<LOOK_UP>& look_ups) {
    sort_and_keep_first(look_ups, [](LOOK_UP const& look_up) { return std::tie(look_up.path); });
}

void tidy(std::vector<ORIGIN>& origins) {
    sort_and_keep_first(origins, [](ORIGIN const& origin) { return std::tie(origin.texture); });
}

}  // namespace

bool is_same_value(QVariant const& left, QVariant const& right) {
    if (left.userType() != right.userType())
        return false;
    // By their bits: a number that is none equals itself here, and the two zeros are two values.
    if (left.type() == QVariant::Double)
        return std::bit_cast<std::uint64_t>(left.toDouble()) == std::bit_cast<std::uint64_t>(right.toDouble());
    return left == right;
}

READ_LISTENER::READ_LISTENER() : former_(s_listener) {
    s_listener = this;
}

READ_LISTENER::~READ_LISTENER() {
    s_listener = former_;
}

READ_LISTENER* READ_LISTENER::current() {
    return s_listener;
}

void READ_RECORDER::rule_was_read(QString const& path, QString const& rule, QString const& property,
                                  QVariant const& value) {
    reads_.rules.push_back({path, rule, property, value});
    if (reads_.rules.size() < tidy_at_)
        return;
    tidy(reads_.rules);
    tidy_at_ = std::max<std::size_t>(4096, 2 * reads_.rules.size());
}

void READ_RECORDER::table_was_read(QString const& table) {
    if (!reads_.tables.contains(table))
        reads_.tables.append(table);
}

READS READ_RECORDER::take() {
    tidy(reads_.rules);
    tidy(reads_.files);
    tidy(reads_.textures);
    tidy(reads_.origins);
    reads_.tables.sort();
    return std::move(reads_);
}

void note_file_look_up(LOGICAL_PATH const& path, bool found) {
    if (s_listener)
        s_listener->file_was_looked_up(path, found);
}

void replay(std::vector<ASSET_CHANGE> const& changes, QTSHARED::ASSET_GRAPH& graph) {
    for (ASSET_CHANGE const& change : changes) {
        if (change.builder.isEmpty()) {
            for (auto const& fragment : change.fragments)
                graph.set_package(fragment.name, fragment.package);
            continue;
        }
        QTSHARED::ASSET_FRAGMENT_BUILDER builder(change.builder);
        for (auto const& fragment : change.fragments)
            builder.add_fragment(fragment.name, fragment.file, fragment.package);
        for (auto const& dependency : change.dependencies)
            builder.add_dependency(dependency.fragment, dependency.needs, dependency.kind, dependency.condition);
        QString error;
        // Its file was written when the action ran.
        if (graph.add(builder, error))
            graph.set_written(builder.id());
    }
}

}  // namespace framework
