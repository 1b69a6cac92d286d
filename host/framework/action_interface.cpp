#include "processor/host/action_interface.hpp"

#include "host/framework/asset_fragment_file.hpp"
#include "host/framework/version_control.hpp"
#include "processor/host/asset_graph.hpp"
#include "processor/host/working_file_refusal.hpp"

#include <array>

QTSHARED::ASSET_GRAPH* ACTION_INTERFACE::s_asset_graph = nullptr;
NR_XML_QUERY_INTERFACE* ACTION_INTERFACE::s_database = nullptr;

// Here, so that everybody catches one and the same type.
WORKING_FILE_REFUSAL::~WORKING_FILE_REFUSAL() = default;

ACTION_INTERFACE::ACTION_INTERFACE(PROCESSOR_INTERFACE& processor)
    : processor_(processor),
      rule_topic_(RULE_TOPIC::current()) {
}

// A copy is the same work, not the same run: it starts without lines, registered files or progress, and nobody listens.
ACTION_INTERFACE::ACTION_INTERFACE(ACTION_INTERFACE const& other)
    : processor_(other.processor_),
      rule_topic_(other.rule_topic_),
      error_(other.error_),
      dependencies_(other.dependencies_),
      unlisted_sources_(other.unlisted_sources_),
      progress_max_(other.progress_max()) {
}

ACTION_INTERFACE::~ACTION_INTERFACE() = default;

void ACTION_INTERFACE::abort() {
    aborted_ = true;
}

void ACTION_INTERFACE::reset() {
    lines_.clear();
    registered_.clear();
    version_control_failed_ = false;
    progress_ = 0;
    aborted_ = false;
}

bool ACTION_INTERFACE::ignore_assert(QString const&) const {
    return false;
}

void ACTION_INTERFACE::add_external_dependencies(FILE_MAP const&, RULE_CACHE const&) {
}

bool ACTION_INTERFACE::auto_fail_if_dependency_failed() const {
    return true;
}

bool ACTION_INTERFACE::auto_fail_if_asserts_occured() const {
    return true;
}

// What a failed action made is gone; bringing back the version submitted last would pass it off as built.
bool ACTION_INTERFACE::revert_target_files_if_failed() const {
    return false;
}

void ACTION_INTERFACE::add_dependency(ACTION_INTERFACE& other, bool optional) {
    dependencies_.append({&other, optional});
}

void ACTION_INTERFACE::set_error(QString const& message) {
    error_ = message;
}

void ACTION_INTERFACE::set_progress_max(int maximum) {
    progress_max_ = maximum;
}

void ACTION_INTERFACE::note_version_control(std::optional<QString> const& failure) {
    if (!failure)
        return;
    version_control_failed_ = true;
    add_output_line(*failure);
}

void ACTION_INTERFACE::add_to_perforce(PHYSICAL_PATH const& file, FILE_MAP const&, bool, QString const&) {
    registered_.append({file, REGISTERED_FILE::KIND::added});
    note_version_control(framework::VERSION_CONTROL::current().add(file));
}

void ACTION_INTERFACE::remove_from_perforce(PHYSICAL_PATH const& file, FILE_MAP const&) {
    registered_.append({file, REGISTERED_FILE::KIND::removed});
    note_version_control(framework::VERSION_CONTROL::current().remove(file));
}

void ACTION_INTERFACE::revert_from_perforce(PHYSICAL_PATH const& file, FILE_MAP const&) {
    registered_.append({file, REGISTERED_FILE::KIND::reverted});
    note_version_control(framework::VERSION_CONTROL::current().revert(file));
}

bool ACTION_INTERFACE::add_to_asset_graph_and_save(QTSHARED::ASSET_FRAGMENT_BUILDER const& builder,
                                                   FILE_MAP const& files, RULE_CACHE const&) {
    if (s_asset_graph == nullptr) {
        add_output_line(QStringLiteral("There is no asset graph to add %1 to").arg(builder.id()));
        return false;
    }
    QString error;
    if (!s_asset_graph->add(builder, error) || !framework::save_asset_fragment_file(builder, error)) {
        add_output_line(error);
        return false;
    }
    s_asset_graph->set_written(builder.id());
    add_to_perforce(PHYSICAL_PATH(builder.id()), files, false, {});
    return !version_control_failed_;
}

QString ACTION_INTERFACE::asset_fragment_id(LOGICAL_PATH const& path, RULE_CACHE const&) {
    bool const is_working_file = path.text().startsWith(QLatin1String("<working>/"));
    if (s_asset_graph == nullptr || !is_working_file || !s_asset_graph->has_texture(path))
        return {};
    return path.section(QLatin1Char('/'), 1, -1);
}

// What is shipped with a target is decided where its sources lie. A target that no action makes, or whose source has no
// say, is looked up as though it stood at its place in the raw folder.
bool ACTION_INTERFACE::is_file_ever_released(LOGICAL_PATH const& path, RULE_CACHE const& rules, QString* expansion,
                                             bool) {
    QLatin1String const working("<working>/");
    std::array<RULE, 2> found;
    QString const name = QStringLiteral("Expansion");
    if (path.text().startsWith(working)) {
        QString const source = s_asset_graph != nullptr ? s_asset_graph->made_from(path) : QString();
        if (!source.isEmpty())
            found[0] = rules.get(LOGICAL_PATH(source), name);
        found[1] = rules.get(LOGICAL_PATH(QStringLiteral("<raw>/") + path.text().mid(working.size())), name);
    } else {
        found[0] = rules.get(path, name);
    }
    auto const value = [&](QString const& property) {
        QVariant const& first = found[0].value(property);
        return first.isValid() ? first : found[1].value(property);
    };
    if (expansion != nullptr) {
        // Expansions are told apart in what is shipped; any other build has everything in one place.
        QString const retail = QStringLiteral("Retail");
        bool const is_retail = rules.get_global(retail).value(retail).toBool();
        *expansion = is_retail ? value(QStringLiteral("Name")).toString() : QString();
    }
    QVariant const released = value(QStringLiteral("Released"));
    return !released.isValid() || released.toBool();
}

void ACTION_INTERFACE::add_output_line(QString const& line) {
    lines_.append(line);
    if (listener_)
        listener_(line);
}

void ACTION_INTERFACE::announce_working_file(PHYSICAL_PATH const& file) {
    if (working_file_listener_)
        working_file_listener_(file);
}
