// The text form of diagnostics, and the search for the name that was meant (edit distance after Damerau and
// Levenshtein, with neighbouring letters swapped counted as one change).
#include "host/framework/diagnostic.hpp"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace framework {

QString format(DIAGNOSTIC const& diagnostic, QString const& shown_path) {
    QString text = shown_path;
    if (diagnostic.line > 0)
        text += QStringLiteral(":%1:%2").arg(diagnostic.line).arg(diagnostic.column);
    text += diagnostic.severity == DIAGNOSTIC::SEVERITY::error ? QStringLiteral(": error: ")
                                                               : QStringLiteral(": warning: ");
    return text + diagnostic.text;
}

void DIAGNOSTICS::push_back(DIAGNOSTIC diagnostic) {
    DIAGNOSTIC::SEVERITY const severity = diagnostic.severity;
    if (!is_full(severity))
        kept_.push_back(std::move(diagnostic));
    ++counts_[static_cast<std::size_t>(severity)];
}

void DIAGNOSTICS::append(DIAGNOSTICS const& others) {
    std::array<std::size_t, 2> sums = counts_;
    for (std::size_t i = 0; i < sums.size(); ++i)
        sums[i] += others.counts_[i];
    for (DIAGNOSTIC const& diagnostic : others)
        push_back(diagnostic);
    counts_ = sums;
}

namespace {

std::size_t edit_distance(QString const& left, QString const& right) {
    std::size_t const width = static_cast<std::size_t>(right.size()) + 1;
    std::vector<std::size_t> before_last(width);
    std::vector<std::size_t> last(width);
    std::vector<std::size_t> row(width);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (int y = 1; y <= left.size(); ++y) {
        row[0] = static_cast<std::size_t>(y);
        for (int x = 1; x <= right.size(); ++x) {
            auto const at = static_cast<std::size_t>(x);
            bool const same = left[y - 1] == right[x - 1];
            row[at] = std::min({last[at] + 1, row[at - 1] + 1, last[at - 1] + (same ? 0 : 1)});
            if (y > 1 && x > 1 && left[y - 1] == right[x - 2] && left[y - 2] == right[x - 1])
                row[at] = std::min(row[at], before_last[at - 2] + 1);
        }
        std::swap(before_last, last);
        std::swap(last, row);
    }
    return last.back();
}

}  // namespace

QString nearest_name(QString const& word, std::vector<QString> const& candidates) {
    QString const folded = word.toCaseFolded();
    // A third of the letters wrong is still a slip; more is another word.
    std::size_t best = static_cast<std::size_t>(std::max(1, word.size() / 3)) + 1;
    QString nearest;
    for (QString const& candidate : candidates) {
        // Every letter too many is a change of its own: only words of about one length are worth the table.
        if (static_cast<std::size_t>(std::abs(candidate.size() - word.size())) >= best)
            continue;
        std::size_t const distance = edit_distance(folded, candidate.toCaseFolded());
        if (distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

}  // namespace framework
