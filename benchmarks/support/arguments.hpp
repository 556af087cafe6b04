#pragma once

#include <map>
#include <string>
#include <vector>

namespace bench {

/// The command line of a benchmark: pairs of "--name value", where a value may be a list separated by commas. Anything
/// else throws `std::invalid_argument`, whose text names the fault.
class Arguments {
 public:
  /// Each of `names` may be given, without its dashes.
  Arguments(int argc, char** argv, const std::vector<std::string>& names);

  /// The elements given for `name`, or those of `fallback`.
  std::vector<std::string> list(const std::string& name, const std::string& fallback) const;
  /// The same, where each element is one of `choices`.
  std::vector<std::string> choice(const std::string& name, const std::string& fallback,
                                  const std::vector<std::string>& choices) const;
  /// The same, where each element is a number that is not negative.
  std::vector<long> numbers(const std::string& name, const std::string& fallback) const;
  /// The single number given for `name`, or `fallback`.
  long number(const std::string& name, long fallback) const;

 private:
  std::map<std::string, std::string> values_;
};

}  // namespace bench
