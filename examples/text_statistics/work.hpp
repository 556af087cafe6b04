#pragma once

#include <string>
#include <vector>

#include "statistics.hpp"

struct Result {
  Statistics statistics;
  long requests = 0;
  long replies = 0;
  double seconds = 0;
};

/// Has a replier count the words of the paragraphs, which four threads send to it: two that share a requester and two
/// that have one of their own. Prints how far it is to the standard output.
Result count_by_messaging(const std::vector<std::string>& paragraphs);
