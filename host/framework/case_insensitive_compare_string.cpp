#include "processor/host/case_insensitive_compare_string.hpp"

CASE_INSENSITIVE_COMPARE_STRING::CASE_INSENSITIVE_COMPARE_STRING(char const* text) : text_(QString::fromUtf8(text)) {
}

CASE_INSENSITIVE_COMPARE_STRING::~CASE_INSENSITIVE_COMPARE_STRING() = default;

bool CASE_INSENSITIVE_COMPARE_STRING::operator<(CASE_INSENSITIVE_COMPARE_STRING const& other) const {
    return text_.compare(other.text_, Qt::CaseInsensitive) < 0;
}
