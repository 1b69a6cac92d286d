// Patterns are split into sections once, when they are read; a match then compares section by section. The form is that
// of the gitignore manual page.
#include "host/framework/path_pattern.hpp"

#include <algorithm>

namespace framework {

namespace {

// Whole code points, so that `?` and `[..]` take in one character and never half of one.
uint next_character(QStringView text, qsizetype& position) {
    QChar const first = text[position++];
    if (first.isHighSurrogate() && position < text.size() && text[position].isLowSurrogate())
        return QChar::surrogateToUcs4(first, text[position++]);
    return first.unicode();
}

// `position` stands behind the '[' of a set that is known to be closed, and afterwards behind its ']'.
bool set_contains(QStringView pattern, qsizetype& position, uint character) {
    bool const negated = pattern[position] == u'!' || pattern[position] == u'^';
    if (negated)
        ++position;
    bool found = false;
    // A ']' in the first place is a member.
    for (bool first = true; first || pattern[position] != u']'; first = false) {
        if (pattern[position] == u'\\')
            ++position;
        uint const low = next_character(pattern, position);
        uint high = low;
        if (pattern[position] == u'-' && pattern[position + 1] != u']') {
            ++position;
            if (pattern[position] == u'\\')
                ++position;
            high = next_character(pattern, position);
        }
        found = found || (character >= low && character <= high);
    }
    ++position;
    return found != negated;
}

// The position behind the set's ']', or nothing when it is never closed.
std::optional<int> end_of_set(QString const& text, int position) {
    if (position < text.size() && (text[position] == u'!' || text[position] == u'^'))
        ++position;
    for (bool first = true; position < text.size(); ++position, first = false) {
        if (text[position] == u'\\')
            ++position;
        else if (text[position] == u']' && !first)
            return position + 1;
        else if (text[position] == u'/')
            return std::nullopt;
    }
    return std::nullopt;
}

QString without_escapes(QStringView text) {
    QString plain;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\\')
            ++i;
        plain += text[i];
    }
    return plain;
}

bool matches_wildcards(QStringView pattern, QStringView name) {
    qsizetype at = 0;
    qsizetype in = 0;
    // Where to go on when the text behind the last '*' did not fit: one character later.
    qsizetype star = -1;
    qsizetype retry = 0;
    while (true) {
        if (at < pattern.size() && pattern[at] == u'*') {
            star = ++at;
            retry = in;
            continue;
        }
        if (in == name.size() && at == pattern.size())
            return true;
        bool fits = false;
        if (in < name.size() && at < pattern.size()) {
            uint const character = next_character(name, in);
            QChar const wanted = pattern[at];
            if (wanted == u'?') {
                ++at;
                fits = true;
            } else if (wanted == u'[') {
                fits = set_contains(pattern, ++at, character);
            } else {
                if (wanted == u'\\')
                    ++at;
                fits = next_character(pattern, at) == character;
            }
        }
        if (fits)
            continue;
        if (star < 0 || retry >= name.size())
            return false;
        next_character(name, retry);
        in = retry;
        at = star;
    }
}

}  // namespace

void split_path(QStringView path, std::vector<QStringView>& sections) {
    sections.clear();
    qsizetype begin = 0;
    for (qsizetype i = 0; i <= path.size(); ++i) {
        if (i < path.size() && path[i] != u'/')
            continue;
        if (i > begin)
            sections.push_back(path.mid(begin, i - begin));
        begin = i + 1;
    }
}

std::optional<PATH_PATTERN> PATH_PATTERN::parse(QString const& text, QString& error) {
    PATH_PATTERN pattern;
    int begin = 0;
    if (text.startsWith(u'!')) {
        pattern.takes_out_ = true;
        begin = 1;
    }
    bool tied = false;
    bool wildcard = false;
    int section_begin = begin;
    auto const end_section = [&](int end) {
        QString const section = text.mid(section_begin, end - section_begin);
        if (section == QLatin1String(".") || section == QLatin1String(".."))
            return false;
        if (section == QLatin1String("**"))
            pattern.sections_.push_back({section, false, true});
        else if (!section.isEmpty())
            pattern.sections_.push_back({wildcard ? section : without_escapes(section), !wildcard, false});
        wildcard = false;
        section_begin = end + 1;
        return true;
    };

    int position = begin;
    while (position < text.size()) {
        QChar const character = text[position];
        if (character == u'\\') {
            if (position + 1 == text.size()) {
                error = QStringLiteral("the pattern \"%1\" ends in a single backslash").arg(text);
                return std::nullopt;
            }
            position += 2;
        } else if (character == u'[') {
            std::optional<int> const end = end_of_set(text, position + 1);
            if (!end) {
                error = QStringLiteral("the pattern \"%1\" has a [ without its ]").arg(text);
                return std::nullopt;
            }
            wildcard = true;
            position = *end;
        } else if (character == u'/') {
            bool const last = position + 1 == text.size();
            tied = tied || !last;
            pattern.folders_only_ = last;
            if (!end_section(position)) {
                error = QStringLiteral("the pattern \"%1\" has a \".\" or \"..\" section, which no path has").arg(text);
                return std::nullopt;
            }
            ++position;
        } else {
            wildcard = wildcard || character == u'*' || character == u'?';
            ++position;
        }
    }
    if (!end_section(static_cast<int>(text.size()))) {
        error = QStringLiteral("the pattern \"%1\" has a \".\" or \"..\" section, which no path has").arg(text);
        return std::nullopt;
    }
    if (pattern.sections_.empty()) {
        error = QStringLiteral("the pattern \"%1\" names nothing").arg(text);
        return std::nullopt;
    }
    if (!tied)
        pattern.sections_.insert(pattern.sections_.begin(), {QStringLiteral("**"), false, true});
    return pattern;
}

bool PATH_PATTERN::matches_section(SECTION const& section, QStringView name) {
    return section.literal ? QStringView(section.text) == name : matches_wildcards(section.text, name);
}

bool PATH_PATTERN::run_matches(std::size_t begin, std::size_t end, std::vector<QStringView> const& sections,
                               std::size_t start) const {
    if (end - begin > sections.size() - start)
        return false;
    for (std::size_t i = begin; i < end; ++i)
        if (!matches_section(sections_[i], sections[start + i - begin]))
            return false;
    return true;
}

// What stands between two `**` is taken where it first fits: the rest of the pattern may begin anywhere behind it, and
// nothing has to reach the path's end, so no later place could do better. Nothing is ever tried twice.
bool PATH_PATTERN::matches(std::vector<QStringView> const& sections) const {
    std::size_t at = 0;
    bool anywhere = false;
    for (std::size_t begin = 0; begin < sections_.size();) {
        if (sections_[begin].any_sections) {
            anywhere = true;
            ++begin;
            continue;
        }
        std::size_t end = begin + 1;
        while (end < sections_.size() && !sections_[end].any_sections)
            ++end;
        while (!run_matches(begin, end, sections, at)) {
            if (!anywhere || at == sections.size())
                return false;
            ++at;
        }
        at += end - begin;
        begin = end;
        anywhere = false;
    }
    // At the end `**` means everything inside, so at least one section; a slash at the end asks for one more.
    return at + (anywhere ? 1 : 0) + (folders_only_ ? 1 : 0) <= sections.size();
}

bool PATH_PATTERNS::takes_in() const {
    return std::any_of(patterns_.begin(), patterns_.end(),
                       [](PATH_PATTERN const& pattern) { return !pattern.takes_out(); });
}

bool PATH_PATTERNS::matches(std::vector<QStringView> const& sections) const {
    for (auto pattern = patterns_.rbegin(); pattern != patterns_.rend(); ++pattern)
        if (pattern->matches(sections))
            return !pattern->takes_out();
    return false;
}

bool PATH_PATTERNS::matches(QStringView path) const {
    std::vector<QStringView> sections;
    split_path(path, sections);
    return matches(sections);
}

}  // namespace framework
