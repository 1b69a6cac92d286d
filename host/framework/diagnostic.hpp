// Messages about files that people write: project file, rule files, names on disk. They are values, collected while a
// reader goes on as far as it can, so that one run tells of every mistake and not of the first one alone.
#pragma once

#include "processor/host/export.hpp"

#include <QString>

#include <array>
#include <cstddef>
#include <vector>

namespace framework {

struct DIAGNOSTIC {
    enum class SEVERITY { warning, error };

    SEVERITY severity = SEVERITY::error;
    /// The file that the message is about, as an absolute path.
    QString path;
    /// Both count from 1; 0 means that the message is about the file as a whole.
    int line = 0;
    int column = 0;
    QString text;
};

/// The first messages of each severity, in the order in which they were found, and a count of the others: a file of
/// nothing but mistakes has millions of them, and nobody reads beyond the first screens.
class ZAB_SHARED_API DIAGNOSTICS {
public:
    /// How many of one severity are kept.
    static constexpr std::size_t most_kept = 100;

    void push_back(DIAGNOSTIC diagnostic);
    void append(DIAGNOSTICS const& others);

    /// Whether another message of this severity would only be counted, so that its text need not be made.
    bool is_full(DIAGNOSTIC::SEVERITY severity) const { return count(severity) >= most_kept; }
    /// How many were found, kept or not.
    std::size_t count(DIAGNOSTIC::SEVERITY severity) const { return counts_[static_cast<std::size_t>(severity)]; }

    std::vector<DIAGNOSTIC>::const_iterator begin() const { return kept_.begin(); }
    std::vector<DIAGNOSTIC>::const_iterator end() const { return kept_.end(); }

private:
    std::vector<DIAGNOSTIC> kept_;
    std::array<std::size_t, 2> counts_ = {};
};

/// "path:line:column: error: text", the form that editors jump from. `shown_path` stands for the path.
ZAB_SHARED_API QString format(DIAGNOSTIC const& diagnostic, QString const& shown_path);
inline QString format(DIAGNOSTIC const& diagnostic) {
    return format(diagnostic, diagnostic.path);
}

inline bool has_errors(DIAGNOSTICS const& diagnostics) {
    return diagnostics.count(DIAGNOSTIC::SEVERITY::error) > 0;
}

/// The candidate that a person most likely meant by `word`: the one the fewest single-letter changes away (case does
/// not count), the first of equals. Empty when none is near enough to be a slip of the fingers.
ZAB_SHARED_API QString nearest_name(QString const& word, std::vector<QString> const& candidates);

}  // namespace framework
