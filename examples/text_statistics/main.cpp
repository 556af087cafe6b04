// Counts lines, words and letters of text files by request and reply: four threads, or so many processes, send
// paragraphs, a replier answers each with several replies, and the merged answers have to equal a count made without
// any messaging.

#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "processes.hpp"
#include "report.hpp"
#include "text.hpp"
#include "work.hpp"

namespace {

constexpr int exit_differs = 1;
constexpr int exit_failed = 2;

/// 0 stands for threads in place of processes.
int count_files(const std::vector<std::string>& files, std::size_t processes) {
  std::vector<std::string> paragraphs;
  Statistics direct;
  for (const std::string& file : files) {
    const std::string text = read_text(file);
    add(direct, count(text));
    for (std::string& paragraph : paragraphs_of(text)) { paragraphs.push_back(std::move(paragraph)); }
  }
  std::cout << "counting " << paragraphs.size() << " paragraphs of " << files.size() << " files" << std::endl;
  const Result result = processes > 0 ? count_by_processes(paragraphs, processes) : count_by_messaging(paragraphs);
  print_table(result.statistics, direct);
  print_rates(result);
  if (!(result.statistics == direct)) {
    std::cerr << "text_statistics: the merged replies differ from the direct count\n";
    return exit_differs;
  }
  std::cout << "the merged replies equal the direct count\n";
  return EXIT_SUCCESS;
}

/// Takes "--processes N" from the front of the arguments.
std::size_t take_processes(std::vector<std::string>& arguments) {
  constexpr int most = 100;
  if (arguments.empty() || arguments[0] != "--processes") { return 0; }
  const std::string text = arguments.size() > 1 ? arguments[1] : "";
  const bool is_number = !text.empty() && text.size() < 4 && text.find_first_not_of("0123456789") == std::string::npos;
  const int number = is_number ? std::stoi(text) : 0;
  if (number < 1 || number > most) {
    throw std::runtime_error("--processes needs a number from 1 to " + std::to_string(most));
  }
  arguments.erase(arguments.begin(), arguments.begin() + 2);
  return static_cast<std::size_t>(number);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::vector<std::string> files(argv + 1, argv + argc);
    const std::size_t processes = take_processes(files);
    return count_files(files.empty() ? default_files() : files, processes);
  } catch (const std::exception& fault) {
    std::cerr << "text_statistics: " << fault.what() << '\n';
    return exit_failed;
  }
}
