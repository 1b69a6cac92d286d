// A field that is sampled with wrapping addresses must meet itself at its ends.
#pragma once

#include "fga/vector_field.hpp"

/// Makes the last plane, row and column of every axis a copy of the first. Every dimension is at least 2.
void wrap_vector_field(VECTOR_FIELD& field);
