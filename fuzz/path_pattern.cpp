// Path patterns: the pattern, a line end, the path that it is tried on; both no longer than where they come from takes
// them.
#include "host/framework/path_pattern.hpp"
#include "fuzz/fuzz_input.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, std::size_t size) {
    constexpr int longest = 4096;
    QString const text = QString::fromStdString(fuzz::grown_text(bytes, size));
    QString const path = text.section(u'\n', 1, 1).left(longest);
    QString error;
    std::optional<framework::PATH_PATTERN> pattern =
        framework::PATH_PATTERN::parse(text.section(u'\n', 0, 0).left(longest), error);
    fuzz::require(pattern || !error.isEmpty(), "a refused pattern says why");
    if (!pattern) {
        return 0;
    }
    bool const takes_out = pattern->takes_out();
    std::vector<QStringView> sections;
    framework::split_path(path, sections);
    bool const matches = pattern->matches(sections);

    framework::PATH_PATTERNS patterns;
    patterns.add(std::move(*pattern));
    fuzz::require(patterns.matches(path) == (matches && !takes_out), "a list of one says what its pattern says");
    return 0;
}
