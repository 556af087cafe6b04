#include "report.hpp"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <utility>

namespace {

constexpr std::size_t most_frequent = 15;

template <class Name>
void print_row(const Name& name, std::uint64_t merged, std::uint64_t direct) {
  std::cout << "  " << std::left << std::setw(22) << name << std::right << std::setw(12) << merged << std::setw(12)
            << direct << '\n';
}

void print_heading(const char* name) {
  std::cout << '\n'
            << "  " << std::left << std::setw(22) << name << std::right << std::setw(12) << "by messages"
            << std::setw(12) << "directly" << '\n';
}

template <class Map>
std::uint64_t number_of(const Map& map, const typename Map::key_type& key) {
  const auto found = map.find(key);
  return found == map.end() ? 0 : found->second;
}

std::vector<std::pair<std::string, std::uint64_t>> most_frequent_words(const Statistics& statistics) {
  std::vector<std::pair<std::string, std::uint64_t>> words(statistics.frequencies.begin(),
                                                           statistics.frequencies.end());
  std::stable_sort(words.begin(), words.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
  words.resize(std::min(words.size(), most_frequent));
  return words;
}

}  // namespace

void print_table(const Statistics& merged, const Statistics& direct) {
  print_heading("");
  print_row("lines", merged.lines, direct.lines);
  print_row("words", merged.words, direct.words);
  print_row("letters", merged.letters, direct.letters);
  print_row("different words", merged.frequencies.size(), direct.frequencies.size());

  print_heading("words of length");
  for (const auto& [length, number] : merged.word_lengths) {
    print_row(length, number, number_of(direct.word_lengths, length));
  }

  print_heading("most frequent words");
  for (const auto& [word, number] : most_frequent_words(merged)) {
    print_row(word, number, number_of(direct.frequencies, word));
  }
}

void print_rates(const Result& result) {
  const double rate = result.seconds > 0 ? static_cast<double>(result.requests) / result.seconds : 0;
  std::cout << '\n'
            << result.requests << " requests, " << result.replies << " replies, " << std::fixed << std::setprecision(3)
            << result.seconds << " s, " << std::setprecision(0) << rate << " requests/s\n";
}
