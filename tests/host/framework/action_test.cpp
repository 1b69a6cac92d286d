// The host's share of an action: where its target lies, how it runs, and that its virtual operations keep their slots.
#include "host/framework/version_control.hpp"
#include "processor/host/action_convert.hpp"
#include "processor/host/action_error.hpp"
#include "processor/host/paths.hpp"
#include "processor/host/processor_interface.hpp"
#include "tests/host/framework/test_folder.hpp"
#include "tests/support/test_rules.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

namespace {

class NO_PROCESSOR : public PROCESSOR_INTERFACE {
public:
    QString get_name() override { return {}; }
    QVector<ACTION_INTERFACE*> create_actions(FILE_MAP const&, RULE_CACHE const&) override { return {}; }
};

NO_PROCESSOR processor;

/// Converts by writing what the test says.
class TEST_CONVERT : public ACTION_CONVERT {
public:
    using ACTION_CONVERT::ACTION_CONVERT;

    QString get_name(bool) override { return QStringLiteral("test"); }
    bool convert(PHYSICAL_PATH const&, PHYSICAL_PATH const& target, RULE_CACHE const&, FILE_MAP const&) override {
        if (writes) {
            QFile file(target.text());
            if (file.open(QIODevice::WriteOnly))
                file.write("new");
        }
        if (throws)
            throw std::runtime_error("from below");
        return succeeds;
    }

    bool writes = true;
    bool throws = false;
    bool succeeds = true;
};

TEST(action_convert, target_from_the_source) {
    PATHS::set_roots(PHYSICAL_PATH(QStringLiteral("/raw")), PHYSICAL_PATH(QStringLiteral("/out")));
    struct {
        char const* source;
        char const* target;
    } const cases[] = {
        {"/raw/a.tga", "/out/a.tga"},
        {"/raw/d/e/a.b.c.PNG", "/out/d/e/a.b.c.PNG"},
        // A stem is no file name: what follows its last dot is not an extension.
        {"/raw/d/rock.v2", "/out/d/rock.v2"},
        {"/raw/.tga", "/out/.tga"},
        {"/out/blend.jpg", "/out/blend.jpg"},
    };
    for (auto const& c : cases)
        EXPECT_EQ(TEST_CONVERT(PHYSICAL_PATH(QLatin1String(c.source)), processor).get_target().text(), c.target);

    TEST_CONVERT action(PHYSICAL_PATH(QStringLiteral("/raw/d/rock.v2")), processor);
    action.set_target_extension("_gloss_map.dds");
    EXPECT_EQ(action.get_target().text(), "/out/d/rock.v2_gloss_map.dds");
    action.set_target_path(PHYSICAL_PATH(QStringLiteral("/out/t//")));
    EXPECT_EQ(action.get_target().text(), "/out/t/rock.v2_gloss_map.dds");
    action.set_target_base_name("x.y");
    EXPECT_EQ(action.get_target().text(), "/out/t/x.y_gloss_map.dds");
    action.set_target_filename("m.n_mask.dds");
    EXPECT_EQ(action.get_target().text(), "/out/t/m.n_mask.dds");
    action.set_target(PHYSICAL_PATH(QStringLiteral("/w/a.b_ab.tga")));
    action.set_target_extension(".dds");
    EXPECT_EQ(TEST_CONVERT(action).get_target().text(), "/w/a.b_ab.dds");
}

TEST(paths, one_file_has_one_logical_path) {
    PATHS::set_roots(PHYSICAL_PATH(QStringLiteral("/p/raw")), PHYSICAL_PATH(QStringLiteral("/p/out")));
    struct {
        char const* spelling;
        char const* physical;
        char const* logical;
    } const cases[] = {
        {"<working>/t/a", "/p/out/t/a", "<working>/t/a"},
        {"<working>//t/./x//../a", "/p/out//t/./x//../a", "<working>/t/a"},
        {"<raw>/../out/t/a", "/p/raw/../out/t/a", "<working>/t/a"},
        {"<working>/../../p/raw/.", "/p/out/../raw/.", "<raw>"},
        {"<working>/../outing/a", "/p/outing/a", "/p/outing/a"},
        // The stem of a file whose name is all suffix.
        {"<raw>/d//", "/p/raw/d//", "<raw>/d/"},
        {"<raw>/", "/p/raw/", "<raw>/"},
        {"<rawest>/a", "<rawest>/a", "<rawest>/a"},
        {"", "", ""},
    };
    for (auto const& c : cases) {
        LOGICAL_PATH const made{QLatin1String(c.spelling)};
        EXPECT_EQ(made.text(), c.logical) << c.spelling;
        EXPECT_EQ(PATHS::logical_path(PHYSICAL_PATH(QLatin1String(c.physical))).text(), c.logical) << c.physical;
        EXPECT_EQ(PATHS::logical_path(PATHS::physical_path(made)).text(), c.logical);
    }

    LOGICAL_PATH const source{QStringLiteral("<raw>/a.tga")};
    PHYSICAL_PATH const file = PATHS::physical_path(source);
    for (auto const& [value, path] :
         std::initializer_list<std::pair<char const*, char const*>>{{"", ""},
                                                                    {"/", ""},
                                                                    {".", ""},
                                                                    {"/t", "t"},
                                                                    {"t/", "t"},
                                                                    {"{dir}/t", "t"},
                                                                    {"../out/t", "t"},
                                                                    {"t/../../up", "../up"},
                                                                    {"/../outing", "../outing"},
                                                                    {"../raw/{name}", "../raw/a"}}) {
        TEST_RULES rules;
        rules.add("", "R", {{"P", value}});
        EXPECT_EQ(PATHS::relative_target_path_from_rule_path(rules.get(source, "R"), "P", source, file), path) << value;
    }
}

TEST(action_convert, no_earlier_target_survives_a_run) {
    TEST_FOLDER const folder;
    PATHS::set_roots(PHYSICAL_PATH(folder.path("raw")), PHYSICAL_PATH(folder.path("out")));
    struct CASE {
        bool writes, throws, succeeds;
        char const* error;
        int status;
        char const* lines;
        bool leaves_target;
    };
    CASE const cases[] = {
        {true, false, true, "", 2, "", true},
        {false, false, true, "", 2, "", false},
        {true, false, false, "", 4, "", false},
        {true, true, false, "", 4, "Unexpected error: from below", false},
        {true, false, true, "set before", 4, "set before", true},
    };
    for (CASE const& c : cases) {
        QString const earlier = folder.write("out/d/a.tga", "earlier");
        TEST_CONVERT action(PHYSICAL_PATH(folder.path("raw/d/a.tga")), processor);
        action.writes = c.writes;
        action.throws = c.throws;
        action.succeeds = c.succeeds;
        action.set_error(c.error);
        EXPECT_EQ(action.run({}, TEST_RULES()), c.status);
        EXPECT_EQ(action.output_lines().join('|'), c.lines);
        EXPECT_EQ(QFile::exists(earlier), c.leaves_target) << c.lines;
    }
    folder.write("out/blocked");
    TEST_CONVERT action(PHYSICAL_PATH(folder.path("raw/blocked/a.tga")), processor);
    EXPECT_EQ(action.run({}, TEST_RULES()), 4);
    EXPECT_EQ(action.output_lines().join('|'), "Failed to create the folder '" + folder.path("out/blocked") + "'");
}

TEST(action_convert, a_target_that_version_control_refuses_is_a_failure) {
    class REFUSING : public framework::VERSION_CONTROL {
        FAILURE prepare_write(PHYSICAL_PATH const&) override { return {}; }
        FAILURE add(PHYSICAL_PATH const&) override { return QStringLiteral("no"); }
        FAILURE remove(PHYSICAL_PATH const&) override { return {}; }
        FAILURE revert(PHYSICAL_PATH const&) override { return {}; }
    } refusing;
    TEST_FOLDER const folder;
    PATHS::set_roots(PHYSICAL_PATH(folder.path("raw")), PHYSICAL_PATH(folder.path("out")));
    framework::VERSION_CONTROL::set_current(&refusing);
    TEST_CONVERT action(PHYSICAL_PATH(folder.path("raw/a.tga")), processor);
    EXPECT_EQ(action.run({}, TEST_RULES()), 4);
    framework::VERSION_CONTROL::set_current(nullptr);
    EXPECT_EQ(action.output_lines(), QStringList("no"));
    action.reset();
    EXPECT_EQ(action.run({}, TEST_RULES()), 2);
}

TEST(action_tdb, messages_of_the_library_become_lines) {
    TEST_CONVERT action(PHYSICAL_PATH(QStringLiteral("/raw/a")), processor);
    EXPECT_EQ(ACTION_TDB::tdb_output(), nullptr);
    action.set_up_tdb_output();
    {
        TEST_CONVERT other(PHYSICAL_PATH(QStringLiteral("/raw/b")), processor);
        ACTION_TDB::tdb_output()->output("one ", PROGRESS_CALLBACK::OUTPUT_NORMAL);
        ACTION_TDB::tdb_output()->output_line("line", PROGRESS_CALLBACK::OUTPUT_NORMAL);
        EXPECT_EQ(action.output_lines(), QStringList("one line"));
        other.set_up_tdb_output();
    }
    EXPECT_EQ(ACTION_TDB::tdb_output(), nullptr);
}

TEST(action_error, fails_with_its_message) {
    ACTION_ERROR action("Create atlas", "why", processor);
    action.add_source_file(LOGICAL_PATH(QStringLiteral("<raw>/a.tga")));
    QVector<LOGICAL_PATH> sources;
    QVector<ACTION_INTERFACE::TARGET_FILE> targets;
    QDateTime newest;
    action.get_affected_files(sources, targets, newest, {}, TEST_RULES());
    EXPECT_EQ(sources, QVector{LOGICAL_PATH(QStringLiteral("<raw>/a.tga"))});
    EXPECT_TRUE(targets.isEmpty());
    EXPECT_EQ(action.run({}, TEST_RULES()), 4);
    EXPECT_EQ(action.output_lines(), QStringList("why"));
}

#if defined(__GXX_ABI_VERSION) && defined(__x86_64__)
/// The slot of a virtual operation, counted from the first: in this ABI a pointer to it holds 1 + its place in bytes.
template <typename OPERATION>
std::size_t slot_of(OPERATION operation) {
    std::size_t value = 0;
    static_assert(sizeof operation >= sizeof value);
    std::memcpy(&value, &operation, sizeof value);
    return (value - 1) / sizeof(void*);
}

TEST(contract, virtual_operations_keep_their_slots) {
    // The destructor is number 0 of the order and takes two places here.
    std::size_t const action[] = {
        slot_of(&ACTION_CONVERT::abort),
        slot_of(&ACTION_CONVERT::reset),
        slot_of(&ACTION_INTERFACE::ignore_assert),
        slot_of(&ACTION_INTERFACE::get_name),
        slot_of(&ACTION_CONVERT::get_affected_files),
        slot_of(&ACTION_INTERFACE::add_external_dependencies),
        slot_of(&ACTION_CONVERT::run),
        slot_of(&ACTION_INTERFACE::auto_fail_if_dependency_failed),
        slot_of(&ACTION_INTERFACE::auto_fail_if_asserts_occured),
        slot_of(&ACTION_INTERFACE::revert_target_files_if_failed),
        slot_of(&ACTION_CONVERT::get_source_files),
        slot_of(&ACTION_CONVERT::is_target_temporary),
        slot_of(&ACTION_CONVERT::is_target_binary),
        slot_of(&ACTION_CONVERT::convert),
    };
    for (std::size_t i = 0; i < std::size(action); ++i)
        EXPECT_EQ(action[i], i + 2);

    std::size_t const progress[] = {slot_of(&PROGRESS_CALLBACK::set_progress),
                                    slot_of(&PROGRESS_CALLBACK::add_progress), slot_of(&PROGRESS_CALLBACK::aborted),
                                    slot_of(&PROGRESS_CALLBACK::output), slot_of(&PROGRESS_CALLBACK::output_line)};
    for (std::size_t i = 0; i < std::size(progress); ++i)
        EXPECT_EQ(progress[i], i + 2);

    std::size_t const of_processor[] = {
        slot_of(&PROCESSOR_INTERFACE::get_name), slot_of(&PROCESSOR_INTERFACE::priority),
        slot_of(&PROCESSOR_INTERFACE::get_affected_directories), slot_of(&PROCESSOR_INTERFACE::get_virtual_files),
        slot_of(&PROCESSOR_INTERFACE::create_actions)};
    for (std::size_t i = 0; i < std::size(of_processor); ++i)
        EXPECT_EQ(of_processor[i], i + 2);
}
#endif

}  // namespace
