#pragma once

#include <string>
#include <vector>

#include "support/log_recorder.hpp"

namespace behaviour {

/// The log lines of the DDS layer during its scope.
class LogLines {
 public:
  std::vector<std::string> all() const {
    std::vector<std::string> lines;
    for (const support::LogLine& line : recorder_.other_lines()) { lines.push_back(line.context + ": " + line.text); }
    return lines;
  }
  /// How many of them contain `text`.
  int count(const std::string& text) const {
    int found = 0;
    for (const std::string& line : all()) { found += line.find(text) != std::string::npos ? 1 : 0; }
    return found;
  }

 private:
  support::LogRecorder recorder_;
};

}  // namespace behaviour
