// Project files.
#include "fuzz/fuzz_input.hpp"
#include "host/framework/project.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    fuzz::INPUT_FILE const input(fuzz::grown_text(bytes, size));
    framework::DIAGNOSTICS diagnostics;
    std::optional<framework::PROJECT> const project =
        framework::load_project(QString::fromStdString(input.path()), diagnostics);
    fuzz::require(project.has_value() != framework::has_errors(diagnostics), "a project is refused with an error");
    if (project) {
        fuzz::require(project->raw.startsWith(u'/') && project->working.startsWith(u'/') &&
                          project->raw != project->working,
                      "roots are absolute and apart");
    }
    return 0;
}
