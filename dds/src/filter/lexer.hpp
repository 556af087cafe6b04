#pragma once

#include <cstddef>
#include <string_view>

namespace dds {

struct FilterToken {
  enum class Kind {
    end,
    name,        ///< a field name; `text` is all of it
    integer,     ///< with its sign
    guid,        ///< `text` is what stands in the parentheses of &hex
    string,      ///< `text` is what stands in the quotes, quotes in it still doubled
    parameter,   ///< `text` is the digits
    comparison,  ///< = <> != < <= > >=
    keyword_and,
    keyword_or,
    keyword_not,
    open,
    close,
    fault  ///< no token; `text` says why
  };

  Kind kind = Kind::end;
  std::size_t position = 0;  ///< of the first character, from 0
  std::string_view text;
};

/// Cuts a filter expression into tokens, which refer to it. After a fault it must not be used further.
class FilterLexer {
 public:
  explicit FilterLexer(std::string_view expression) : expression_(expression) {}
  FilterToken next();

 private:
  bool at_end() const { return position_ == expression_.size(); }
  char current() const { return expression_[position_]; }
  template <class Predicate>
  std::string_view take_while(Predicate predicate);
  FilterToken word();
  FilterToken number();
  FilterToken hexadecimal();
  FilterToken string();
  FilterToken parameter();
  FilterToken symbol();

  const std::string_view expression_;
  std::size_t position_ = 0;
};

}  // namespace dds
