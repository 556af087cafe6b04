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
  /// How many of them contain `text`, in whatever case.
  int count(std::string text) const {
    lower(text);
    int found = 0;
    for (std::string line : all()) {
      lower(line);
      found += line.find(text) != std::string::npos ? 1 : 0;
    }
    return found;
  }

 private:
  static void lower(std::string& text) {
    for (char& c : text) {
      if (c >= 'A' && c <= 'Z') { c = static_cast<char>(c - 'A' + 'a'); }
    }
  }

  support::LogRecorder recorder_;
};

}  // namespace behaviour
