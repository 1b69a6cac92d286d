// Journals of builds that were cut off, by a kill or with the machine.
#include "fuzz/fuzz_input.hpp"
#include "host/tool/journal_lines.hpp"

#include <QBuffer>

namespace {

using namespace tool;

std::vector<UNFINISHED_ACTION> actions_in(QByteArray bytes) {
    QBuffer journal(&bytes);
    journal.open(QIODevice::ReadOnly);
    return read_journal(journal).actions;
}

/// Halves of a surrogate pair, which JSON can name and UTF-8 cannot.
bool has_utf_8(QString const& text) {
    return QString::fromUtf8(text.toUtf8()) == text;
}

}  // namespace

// Qt's reader of JSON loses what a key holds that stands in an object twice, some bytes for each. The name is the leak
// sanitizer's.
extern "C" __attribute__((visibility("default"))) char const* __lsan_default_suppressions();

extern "C" char const* __lsan_default_suppressions() {
    return "leak:libQt5Core\n";
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    std::vector<UNFINISHED_ACTION> const actions =
        actions_in(QByteArray(reinterpret_cast<char const*>(bytes), static_cast<int>(size)));
    QByteArray again;
    QByteArray ends;
    bool can_be_written = true;
    for (UNFINISHED_ACTION const& action : actions) {
        fuzz::require(action.started >= 0 && action.started <= qint64{1} << 53, "an action started at some time");
        for (FILE_AT_RISK const& file : action.files) {
            fuzz::require(!file.path.isEmpty(), "a file has a name");
            can_be_written = can_be_written && has_utf_8(file.path);
        }
        int const number = ends.count('\n') + 1;
        again += journal_line(JOURNAL_EVENT::started, number, action.files, action.started);
        ends += journal_line(JOURNAL_EVENT::ended, number, {});
    }
    if (!can_be_written || actions.empty())
        return 0;
    fuzz::require(actions_in(again) == actions, "what is running reads the same again");
    fuzz::require(actions_in(again + ends).empty(), "nothing runs when all has ended");
    // Without its line end a line is still whole; with one byte less it is not.
    again.chop(2);
    fuzz::require(actions_in(again) == std::vector(actions.begin(), actions.end() - 1),
                  "an action whose line was cut off had not started");
    return 0;
}
