// A key whose order does not know case, for tables that people fill by hand.
#pragma once

#include "processor/host/export.hpp"

#include <QString>

class ZAB_SHARED_API CASE_INSENSITIVE_COMPARE_STRING {
public:
    /// UTF-8.
    CASE_INSENSITIVE_COMPARE_STRING(char const* text);
    ~CASE_INSENSITIVE_COMPARE_STRING();

    bool operator<(CASE_INSENSITIVE_COMPARE_STRING const& other) const;
    QString const& text() const { return text_; }

private:
    QString text_;
};
