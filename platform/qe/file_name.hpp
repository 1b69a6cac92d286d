// The engine's name of a file in a database: 8-bit text in the local encoding of the file system, '/' between sections.
// Names that differ in case are different names.
#pragma once

#include <compare>
#include <string>
#include <utility>

namespace QE {

class FileName {
public:
    FileName() = default;
    explicit FileName(std::string text) : text_(std::move(text)) {}

    std::string const& text() const { return text_; }

    friend bool operator==(FileName const&, FileName const&) = default;
    friend auto operator<=>(FileName const&, FileName const&) = default;

private:
    std::string text_;
};

}  // namespace QE
