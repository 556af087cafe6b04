#include "support/arguments.hpp"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace bench {
namespace {

bool contains(const std::vector<std::string>& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

long to_number(const std::string& name, const std::string& text) {
  std::size_t used = 0;
  long value = -1;
  try {
    value = std::stol(text, &used);
  } catch (const std::exception&) { used = 0; }
  if (used == 0 || used != text.size() || value < 0) {
    throw std::invalid_argument("--" + name + " needs numbers, not \"" + text + "\"");
  }
  return value;
}

}  // namespace

Arguments::Arguments(int argc, char** argv, const std::vector<std::string>& names) {
  for (int i = 1; i < argc; i += 2) {
    const std::string option = argv[i];
    const std::string name = option.substr(0, 2) == "--" ? option.substr(2) : std::string();
    if (!contains(names, name)) { throw std::invalid_argument("unknown option \"" + option + "\""); }
    if (i + 1 == argc) { throw std::invalid_argument(option + " needs a value"); }
    values_[name] = argv[i + 1];
  }
}

std::vector<std::string> Arguments::list(const std::string& name, const std::string& fallback) const {
  const auto given = values_.find(name);
  std::istringstream text(given == values_.end() ? fallback : given->second);
  std::vector<std::string> elements;
  for (std::string element; std::getline(text, element, ',');) { elements.push_back(element); }
  return elements;
}

std::vector<std::string> Arguments::choice(const std::string& name, const std::string& fallback,
                                           const std::vector<std::string>& choices) const {
  std::vector<std::string> elements = list(name, fallback);
  for (const std::string& element : elements) {
    if (!contains(choices, element)) { throw std::invalid_argument("--" + name + ": unknown \"" + element + "\""); }
  }
  return elements;
}

std::vector<long> Arguments::numbers(const std::string& name, const std::string& fallback) const {
  std::vector<long> values;
  for (const std::string& element : list(name, fallback)) { values.push_back(to_number(name, element)); }
  return values;
}

long Arguments::number(const std::string& name, long fallback) const {
  const auto given = values_.find(name);
  return given == values_.end() ? fallback : to_number(name, given->second);
}

}  // namespace bench
