// Reading a TOML file into toml++'s tree, with every mistake as a diagnostic and no exception, and small questions to
// the tree that the readers of project and rule files share. Internal to the framework: it is the only header that
// knows toml++. The language: https://toml.io/en/v1.0.0
#pragma once

#include "host/framework/diagnostic.hpp"

#include <toml++/toml.h>

#include <QVariant>

#include <optional>
#include <string_view>

namespace framework {

/// The parsed file; nothing when it cannot be read, is not TOML or is beyond a bound, which a diagnostic then tells.
/// The bounds (docs/robustness.md) are far above what people write, and keep all that is done with the parts of a file
/// short.
std::optional<toml::table> read_toml(QString const& path, DIAGNOSTICS& diagnostics);

/// Reports about one file.
class TOML_REPORTER {
public:
    TOML_REPORTER(QString path, DIAGNOSTICS& diagnostics) : path_(std::move(path)), diagnostics_(diagnostics) {}

    void error(toml::source_region const& place, QString const& text) { add(DIAGNOSTIC::SEVERITY::error, place, text); }
    void warning(toml::source_region const& place, QString const& text) {
        add(DIAGNOSTIC::SEVERITY::warning, place, text);
    }
    /// The warning about a key that its table does not know.
    void unknown_key(toml::key const& key, std::vector<QString> const& known);

    QString const& path() const { return path_; }

private:
    void add(DIAGNOSTIC::SEVERITY severity, toml::source_region const& place, QString const& text);

    QString path_;
    DIAGNOSTICS& diagnostics_;
};

inline QString to_qstring(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

/// "a string", "a table", ... as messages name a node's type.
QString type_name(toml::node const& node);

/// A string, integer, float or boolean; an invalid variant for every other type.
QVariant scalar_value(toml::node const& node);

/// The key's and its value's `toml::node` in the order in which they were written, which the tree itself does not keep.
std::vector<std::pair<toml::key const*, toml::node const*>> in_written_order(toml::table const& table);

}  // namespace framework
