// From the engine's wide text to a path of this system. The standard library's own way asks the C locale, which knows
// no letters beyond ASCII; names on disk here are UTF-8.
#pragma once

#include "platform/qe/uni_string.hpp"

#include <filesystem>
#include <string>

namespace QE {

/// Throws std::exception for text that is not Unicode (half a surrogate pair, above all).
inline std::filesystem::path native_path(UniString const& text) {
#ifdef _WIN32
    return std::filesystem::path(text.text());
#else
    static_assert(sizeof(wchar_t) == sizeof(char32_t));
    return std::filesystem::path(std::u32string(text.text().begin(), text.text().end()));
#endif
}

}  // namespace QE
