#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include <dds/sequence.hpp>
#include <dds/type_plugin.hpp>

#include "filter/lexer.hpp"
#include "filter/program.hpp"

namespace dds {

/// What is wrong with an expression, and where, counted from 0.
struct FilterFault {
  std::size_t position = 0;
  std::string_view text;
};

/// Makes a program of an expression, by recursive descent of bounded depth:
///   disjunction: conjunction { OR conjunction }
///   conjunction: term { AND term }
///   term:        NOT term | "(" disjunction ")" | comparison
///   comparison:  field operator literal | literal operator field
/// Operations return false after a fault, of which the first counts. For one use; throws `std::bad_alloc`.
class FilterCompiler {
 public:
  FilterCompiler(std::string_view expression, const DDS_StringSeq& parameters, const DDS_TypePlugin& type);

  bool compile();
  FilterProgram& program() { return program_; }
  const FilterFault& fault() const { return fault_; }

 private:
  using Token = FilterToken;

  /// One side of a comparison; a field when the token is a name.
  struct Operand {
    Token token;
    FilterField field = FilterField::own_guid;
    int member = 0;
  };

  bool disjunction();
  bool conjunction();
  bool chain(Token::Kind keyword, FilterStep::Kind jump, bool (FilterCompiler::*part)());
  bool term();
  bool enter();
  bool comparison();
  bool operand(Operand& side, std::string_view expectation);
  bool find_field(Operand& side);
  bool comparison_operator(FilterOperator& op);
  bool compare(const Operand& field, FilterOperator op, std::size_t op_position, const Token& literal);
  bool set_literal(FilterStep& step, const Token& literal);
  bool set_text(FilterStep& step, const Token& literal);

  /// The literal itself or, for a parameter, the one that its text holds; a fault unless it is of the wanted kind.
  bool resolve(const Token& literal, Token::Kind wanted, std::string_view expectation, Token& resolved);
  bool find_parameter(const Token& token, int& index, std::string_view& text);

  void advance() { token_ = lexer_.next(); }
  bool fail(std::size_t position, std::string_view text);
  /// A fault at the token that comes next; a fault of the token itself takes precedence.
  bool fail_here(std::string_view text);

  const DDS_StringSeq& parameters_;
  const DDS_TypePlugin& type_;
  FilterLexer lexer_;
  Token token_;
  int depth_ = 0;
  FilterProgram program_;
  std::vector<std::size_t> parameter_texts_;  // by parameter, 1 + its index among the texts of the program; 0 for none
  FilterFault fault_;
};

}  // namespace dds
