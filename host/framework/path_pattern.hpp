// Patterns that choose paths, in the form of .gitignore: `*`, `?` and `[a-z]` within one section, `**` over any number
// of sections, a slash in front or in the middle ties the pattern to the folder that it is relative to, a slash at the
// end asks for a folder, `!` in front takes out what an earlier pattern took in, `\` takes the next character as it is.
//
// One thing differs: what `!` names comes out even when a folder above it was taken in as a whole. The form's own rule
// (no way back below an ignored folder) saves a version-control program from walking such folders, which a rule has no
// need of.
#pragma once

#include "processor/host/export.hpp"

#include <QString>
#include <QStringView>

#include <optional>
#include <vector>

namespace framework {

/// One pattern. Case counts.
class ZAB_SHARED_API PATH_PATTERN {
public:
    /// Nothing when the pattern is malformed; `error` then says how.
    static std::optional<PATH_PATTERN> parse(QString const& text, QString& error);

    /// Whether the pattern begins with `!`.
    bool takes_out() const { return takes_out_; }

    /// Whether the pattern names the file or a folder above it. `sections` are those of the file's path below the
    /// folder that the pattern is relative to; the last one is the file.
    bool matches(std::vector<QStringView> const& sections) const;

private:
    struct SECTION {
        QString text;
        /// No wildcard: `text` is what the name must be, with nothing escaped.
        bool literal = false;
        /// `**`: any number of sections.
        bool any_sections = false;
    };

    /// Whether the pattern's sections from `begin` to before `end`, with no `**` among them, are those from `start` on.
    bool run_matches(std::size_t begin, std::size_t end, std::vector<QStringView> const& sections,
                     std::size_t start) const;
    static bool matches_section(SECTION const& section, QStringView name);

    std::vector<SECTION> sections_;
    bool takes_out_ = false;
    bool folders_only_ = false;
};

/// Patterns in order, the last one that matches decides.
class ZAB_SHARED_API PATH_PATTERNS {
public:
    void add(PATH_PATTERN pattern) { patterns_.push_back(std::move(pattern)); }
    bool is_empty() const { return patterns_.empty(); }
    /// Whether some pattern takes files in.
    bool takes_in() const;

    bool matches(std::vector<QStringView> const& sections) const;
    /// The same for a path relative to the patterns' folder, '/' between its sections.
    bool matches(QStringView path) const;

private:
    std::vector<PATH_PATTERN> patterns_;
};

/// The sections of a path; views into it.
ZAB_SHARED_API void split_path(QStringView path, std::vector<QStringView>& sections);

}  // namespace framework
