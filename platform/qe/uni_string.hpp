// The engine's wide text, for paths that may hold characters that the local 8-bit encoding lacks. Thin on purpose: it
// marks the encoding, and std::wstring does the work.
#pragma once

#include <compare>
#include <string>
#include <string_view>
#include <utility>

namespace QE {

/// Text of wide characters. Owns its characters.
class UniString {
public:
    UniString() = default;
    UniString(wchar_t const* text) : text_(text != nullptr ? text : L"") {}
    UniString(std::wstring text) : text_(std::move(text)) {}
    explicit UniString(std::wstring_view text) : text_(text) {}

    wchar_t const* c_str() const { return text_.c_str(); }
    std::size_t length() const { return text_.size(); }
    bool empty() const { return text_.empty(); }
    std::wstring const& text() const { return text_; }

    friend bool operator==(UniString const&, UniString const&) = default;
    friend auto operator<=>(UniString const&, UniString const&) = default;

private:
    std::wstring text_;
};

}  // namespace QE
