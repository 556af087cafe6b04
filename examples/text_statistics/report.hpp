#pragma once

#include "work.hpp"

/// Prints the result as a table, beside the counts made without messaging.
void print_table(const Statistics& merged, const Statistics& direct);

/// Prints how many messages there were, and how fast.
void print_rates(const Result& result);
