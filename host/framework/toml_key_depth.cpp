#include "host/framework/toml_key_depth.hpp"

#include <algorithm>

namespace framework {

namespace {

/// The position behind a comment (at its line end) or a string (behind its closing quotes, or at the end of the text
/// or of a line that a string on one line runs into).
std::size_t skip_comment(std::string_view text, std::size_t at) {
    return std::min(text.find('\n', at), text.size());
}

std::size_t skip_string(std::string_view text, std::size_t at) {
    char const quote = text[at];
    std::string_view const opening = text.substr(at, 3);
    bool const is_long = opening.size() == 3 && opening[1] == quote && opening[2] == quote;
    at += is_long ? 3 : 1;
    while (at < text.size()) {
        if (text[at] == '\\' && quote == '"')
            ++at;
        else if (text[at] == '\n' && !is_long)
            return at;
        else if (text[at] == quote && (!is_long || text.substr(at, 3) == opening))
            return at + (is_long ? 3 : 1);
        ++at;
    }
    return text.size();
}

}  // namespace

std::optional<std::size_t> line_of_too_deep_key(std::string_view text) {
    std::size_t parts = 1;
    for (std::size_t at = 0; at < text.size();) {
        char const character = text[at];
        if (character == '#') {
            at = skip_comment(text, at);
            continue;
        }
        if (character == '"' || character == '\'') {
            at = skip_string(text, at);
            continue;
        }
        if (character == '.')
            ++parts;
        else if (std::string_view("=,{}[]\n").find(character) != std::string_view::npos)
            parts = 1;
        if (parts > most_key_parts)
            return static_cast<std::size_t>(std::count(text.begin(), text.begin() + static_cast<long>(at), '\n')) + 1;
        ++at;
    }
    return std::nullopt;
}

}  // namespace framework
