#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Every kind of member that aggregates are carried with.
namespace rich {

enum class Colour : std::uint16_t { red = 1, green = 2 };
enum Level : int { low = -1, high = 1 };
enum class Choice : bool { no, yes };

struct Point {
  std::int16_t x = 0;
  double y = 0;
};
inline bool operator==(const Point& a, const Point& b) { return a.x == b.x && a.y == b.y; }

struct Numbers {
  bool flag;
  char character;
  signed char small;
  unsigned short port;
  char16_t wide16;
  char32_t wide32;
  wchar_t wide;
  long signed_long;
  unsigned long long large;
  float real;
  Colour colour;
  Level level;
  Choice choice;
};
inline bool operator==(const Numbers& a, const Numbers& b) {
  return a.flag == b.flag && a.character == b.character && a.small == b.small && a.port == b.port &&
         a.wide16 == b.wide16 && a.wide32 == b.wide32 && a.wide == b.wide && a.signed_long == b.signed_long &&
         a.large == b.large && a.real == b.real && a.colour == b.colour && a.level == b.level && a.choice == b.choice;
}

struct Everything {
  Numbers numbers;
  std::string text;
  std::vector<std::uint32_t> counts;
  std::vector<bool> flags;
  std::array<std::int16_t, 3> triple;
  std::array<bool, 2> pair;
  std::optional<Point> place;
  std::vector<Point> path;
  std::vector<std::vector<std::optional<std::string>>> table;
  std::vector<std::array<Colour, 2>> colours;
  std::optional<std::vector<std::byte>> octets;
  std::array<std::vector<std::string>, 2> lists;
};
inline bool operator==(const Everything& a, const Everything& b) {
  return a.numbers == b.numbers && a.text == b.text && a.counts == b.counts && a.flags == b.flags &&
         a.triple == b.triple && a.pair == b.pair && a.place == b.place && a.path == b.path && a.table == b.table &&
         a.colours == b.colours && a.octets == b.octets && a.lists == b.lists;
}

inline Everything everything() {
  using namespace std::string_literals;
  Everything all;
  all.numbers = {true,   'c', -3,    0xBEEF,        u'\u00e4',  U'\U0001F600', L'w',
                 -5'000, ~0u, -1.5F, Colour::green, Level::low, Choice::yes};
  all.text = "with\0NUL"s;
  all.counts = {1, 2, 0xFFFFFFFF};
  all.flags = {true, false, true};
  all.triple = {1, -2, 3};
  all.pair = {false, true};
  all.place = Point{7, 0.25};
  all.path = {{1, 2}, {3, 4}};
  all.table = {{"a", std::nullopt}, {}, {""}};
  all.colours = {{Colour::red, static_cast<Colour>(99)}};
  all.octets = {std::byte{1}, std::byte{0}};
  all.lists = {{{"one", "two"}, {}}};
  return all;
}

}  // namespace rich
