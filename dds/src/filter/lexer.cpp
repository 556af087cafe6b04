#include "filter/lexer.hpp"

namespace dds {
namespace {

using Kind = FilterToken::Kind;

// Not those of the C library, which depend on the locale.
bool is_blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool is_name(char c) { return is_letter(c) || is_digit(c) || c == '.'; }
bool is_operator(char c) { return c == '=' || c == '<' || c == '>' || c == '!'; }
char to_lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool equals_ignoring_case(std::string_view text, std::string_view lower_case) {
  if (text.size() != lower_case.size()) { return false; }
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (to_lower(text[i]) != lower_case[i]) { return false; }
  }
  return true;
}

}  // namespace

template <class Predicate>
std::string_view FilterLexer::take_while(Predicate predicate) {
  const std::size_t begin = position_;
  while (!at_end() && predicate(current())) { ++position_; }
  return expression_.substr(begin, position_ - begin);
}

FilterToken FilterLexer::next() {
  take_while(is_blank);
  const std::size_t begin = position_;
  FilterToken token;
  if (!at_end()) {
    const char first = current();
    if (is_letter(first) || first == '@') {
      token = word();
    } else if (is_digit(first) || first == '-' || first == '+') {
      token = number();
    } else if (first == '&') {
      token = hexadecimal();
    } else if (first == '\'') {
      token = string();
    } else if (first == '%') {
      token = parameter();
    } else {
      token = symbol();
    }
  }
  token.position = begin;
  return token;
}

FilterToken FilterLexer::word() {
  const std::size_t begin = position_++;
  take_while(is_name);
  const std::string_view text = expression_.substr(begin, position_ - begin);
  if (equals_ignoring_case(text, "and")) { return {Kind::keyword_and, 0, text}; }
  if (equals_ignoring_case(text, "or")) { return {Kind::keyword_or, 0, text}; }
  if (equals_ignoring_case(text, "not")) { return {Kind::keyword_not, 0, text}; }
  return {Kind::name, 0, text};
}

FilterToken FilterLexer::number() {
  const std::size_t begin = position_;
  if (!is_digit(current())) { ++position_; }
  if (take_while(is_digit).empty()) { return {Kind::fault, 0, "expected digits after the sign"}; }
  if (!at_end() && is_name(current())) { return {Kind::fault, 0, "expected an integer"}; }
  return {Kind::integer, 0, expression_.substr(begin, position_ - begin)};
}

FilterToken FilterLexer::hexadecimal() {
  constexpr std::string_view opening = "&hex(";
  if (!equals_ignoring_case(expression_.substr(position_, opening.size()), opening)) {
    return {Kind::fault, 0, "expected &hex("};
  }
  position_ += opening.size();
  const std::string_view digits = take_while([](char c) { return c != ')'; });
  if (at_end()) { return {Kind::fault, 0, "&hex without closing parenthesis"}; }
  ++position_;
  return {Kind::guid, 0, digits};
}

FilterToken FilterLexer::string() {
  const std::size_t begin = ++position_;
  while (true) {
    take_while([](char c) { return c != '\''; });
    if (at_end()) { return {Kind::fault, 0, "string without closing quote"}; }
    const std::size_t quote = position_++;
    if (at_end() || current() != '\'') { return {Kind::string, 0, expression_.substr(begin, quote - begin)}; }
    ++position_;
  }
}

FilterToken FilterLexer::parameter() {
  ++position_;
  const std::string_view digits = take_while(is_digit);
  if (digits.empty() || (!at_end() && is_name(current()))) {
    return {Kind::fault, 0, "expected the number of a parameter after %"};
  }
  return {Kind::parameter, 0, digits};
}

FilterToken FilterLexer::symbol() {
  const char first = current();
  if (first == '(' || first == ')') {
    ++position_;
    return {first == '(' ? Kind::open : Kind::close, 0, {}};
  }
  const std::string_view text = take_while(is_operator);
  if (text.empty()) { return {Kind::fault, 0, "unexpected character"}; }
  return {Kind::comparison, 0, text};
}

}  // namespace dds
