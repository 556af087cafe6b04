// Counts lines, words and letters of text files by request and reply: four threads send paragraphs, a replier answers
// each with several replies, and the merged answers have to equal a count made without any messaging.

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "report.hpp"
#include "text.hpp"
#include "work.hpp"

namespace {

constexpr int exit_differs = 1;
constexpr int exit_failed = 2;

int count_files(const std::vector<std::string>& files) {
  std::vector<std::string> paragraphs;
  Statistics direct;
  for (const std::string& file : files) {
    const std::string text = read_text(file);
    add(direct, count(text));
    for (std::string& paragraph : paragraphs_of(text)) { paragraphs.push_back(std::move(paragraph)); }
  }
  std::cout << "counting " << paragraphs.size() << " paragraphs of " << files.size() << " files" << std::endl;
  const Result result = count_by_messaging(paragraphs);
  print_table(result.statistics, direct);
  print_rates(result);
  if (!(result.statistics == direct)) {
    std::cerr << "text_statistics: the merged replies differ from the direct count\n";
    return exit_differs;
  }
  std::cout << "the merged replies equal the direct count\n";
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::vector<std::string> given(argv + 1, argv + argc);
    return count_files(given.empty() ? default_files() : given);
  } catch (const std::exception& fault) {
    std::cerr << "text_statistics: " << fault.what() << '\n';
    return exit_failed;
  }
}
