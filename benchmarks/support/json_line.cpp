#include "support/json_line.hpp"

#include <iomanip>
#include <iostream>

namespace bench {

std::ostream& JsonLine::begin(const char* name) {
  if (fields_.tellp() > 0) { fields_ << ','; }
  return fields_ << '"' << name << "\":";
}

JsonLine& JsonLine::text(const char* name, const std::string& value) {
  begin(name) << '"' << value << '"';
  return *this;
}

JsonLine& JsonLine::count(const char* name, long value) {
  begin(name) << value;
  return *this;
}

JsonLine& JsonLine::figure(const char* name, double value, int decimals) {
  begin(name) << std::fixed << std::setprecision(decimals) << value;
  return *this;
}

void JsonLine::print() const { std::cout << '{' << fields_.str() << '}' << std::endl; }

}  // namespace bench
