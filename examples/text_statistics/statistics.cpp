#include "statistics.hpp"

#include <cctype>
#include <sstream>
#include <stdexcept>

namespace {

constexpr const char* totals_name = "totals";
constexpr const char* word_lengths_name = "word-lengths";
constexpr const char* frequencies_name = "frequencies";

bool is_letter(char c) {
  const auto octet = static_cast<unsigned char>(c);
  return octet >= 0x80 || std::isalpha(octet) != 0;
}

void add_word(Statistics& statistics, const std::string& word) {
  if (word.empty()) { return; }
  ++statistics.words;
  statistics.letters += word.size();
  ++statistics.word_lengths[word.size()];
  ++statistics.frequencies[word];
}

void count_words(Statistics& statistics, const std::string& line) {
  std::string word;
  for (const char c : line) {
    if (is_letter(c)) {
      word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    } else {
      add_word(statistics, word);
      word.clear();
    }
  }
  add_word(statistics, word);
}

template <class Map>
void write(std::ostream& out, const Map& map) {
  for (const auto& [key, number] : map) { out << ' ' << key << ' ' << number; }
}

template <class Map>
void read(std::istream& in, Map& map) {
  typename Map::key_type key;
  std::uint64_t number = 0;
  while (in >> key >> number) { map[key] += number; }
}

void read_totals(std::istream& in, Statistics& sum) {
  Statistics part;
  if (!(in >> part.lines >> part.words >> part.letters)) { throw std::runtime_error("a reply without its totals"); }
  add(sum, part);
}

}  // namespace

bool operator==(const Statistics& a, const Statistics& b) {
  return a.lines == b.lines && a.words == b.words && a.letters == b.letters && a.word_lengths == b.word_lengths &&
         a.frequencies == b.frequencies;
}

Statistics count(const std::string& text) {
  Statistics statistics;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.find_first_not_of(" \t\r\f\v") != std::string::npos) { ++statistics.lines; }
    count_words(statistics, line);
  }
  return statistics;
}

std::string to_reply(const Statistics& statistics, Kind kind) {
  std::ostringstream reply;
  switch (kind) {
    case Kind::totals:
      reply << totals_name << ' ' << statistics.lines << ' ' << statistics.words << ' ' << statistics.letters;
      break;
    case Kind::word_lengths:
      reply << word_lengths_name;
      write(reply, statistics.word_lengths);
      break;
    case Kind::frequencies:
      reply << frequencies_name;
      write(reply, statistics.frequencies);
      break;
  }
  return reply.str();
}

void add_reply(Statistics& sum, const std::string& reply) {
  std::istringstream in(reply);
  std::string kind;
  in >> kind;
  if (kind == totals_name) {
    read_totals(in, sum);
  } else if (kind == word_lengths_name) {
    read(in, sum.word_lengths);
  } else if (kind == frequencies_name) {
    read(in, sum.frequencies);
  } else {
    throw std::runtime_error("a reply of unknown kind: " + kind);
  }
}

void add(Statistics& sum, const Statistics& part) {
  sum.lines += part.lines;
  sum.words += part.words;
  sum.letters += part.letters;
  for (const auto& [length, number] : part.word_lengths) { sum.word_lengths[length] += number; }
  for (const auto& [word, number] : part.frequencies) { sum.frequencies[word] += number; }
}
