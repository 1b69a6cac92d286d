// Rule files: the TOML, the tables, their patterns, and resolving them for a path.
#include "fuzz/fuzz_input.hpp"
#include "host/framework/project_rule_cache.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    fuzz::INPUT_FILE const input(fuzz::grown_text(bytes, size));
    framework::DIAGNOSTICS diagnostics;
    framework::RULE_FILE file =
        framework::read_rule_file(QString::fromStdString(input.path()), QStringLiteral("walls"), diagnostics);
    for (framework::DIAGNOSTIC const& diagnostic : diagnostics) {
        fuzz::require(!diagnostic.text.isEmpty(), "a diagnostic says something");
    }
    std::size_t const tables = file.rules.size();
    framework::check_rule_names({file}, {}, diagnostics);

    framework::PROJECT const project;
    std::vector<framework::RULE_FILE> files;
    files.push_back(std::move(file));
    framework::PROJECT_RULE_CACHE const cache(project, std::move(files));
    for (QString const& name : cache.rule_names()) {
        fuzz::require(tables > 0 && !name.isEmpty(), "a rule has a name");
        for (char const* path : {"<raw>/walls/brick.tga", "<raw>/walls/a/b/c/brick_n.tga", "<raw>/other.tga"}) {
            RULE const rule = cache.get(LOGICAL_PATH(QLatin1String(path)), name);
            fuzz::require(!rule.value(QStringLiteral("TargetPath")).isValid() || rule.exists(),
                          "a rule with a value is one that exists");
        }
    }
    return 0;
}
