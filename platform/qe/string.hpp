// The engine's 8-bit text: a path or a name in the local encoding of the file system. Thin on purpose: it marks which
// encoding a text is in, and everything else is done by std::string.
#pragma once

#include <compare>
#include <string>
#include <string_view>
#include <utility>

namespace QE {

/// Text of 8-bit units in the local encoding. Owns its characters.
class String {
public:
    String() = default;
    String(char const* text) : text_(text != nullptr ? text : "") {}
    String(std::string text) : text_(std::move(text)) {}
    explicit String(std::string_view text) : text_(text) {}

    char const* c_str() const { return text_.c_str(); }
    std::size_t length() const { return text_.size(); }
    bool empty() const { return text_.empty(); }
    std::string const& text() const { return text_; }

    friend bool operator==(String const&, String const&) = default;
    friend auto operator<=>(String const&, String const&) = default;

private:
    std::string text_;
};

}  // namespace QE
