#pragma once

#include <sstream>
#include <string>

namespace bench {

/// One JSON object on one line, built field by field. Names and texts are the program's own and need no escaping.
class JsonLine {
 public:
  JsonLine& text(const char* name, const std::string& value);
  JsonLine& count(const char* name, long value);
  JsonLine& figure(const char* name, double value, int decimals = 3);
  /// Writes the object to the standard output, at once.
  void print() const;

 private:
  std::ostream& begin(const char* name);

  std::ostringstream fields_;
};

}  // namespace bench
