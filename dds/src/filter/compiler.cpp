#include "filter/compiler.hpp"

#include <cstring>

#include "filter/filter.hpp"
#include "filter/literal.hpp"

namespace dds {
namespace {

using Kind = FilterToken::Kind;

struct MetaField {
  std::string_view name;
  FilterField field;
};
constexpr MetaField meta_fields[] = {
    {"@sample_identity.writer_guid.value", FilterField::own_guid},
    {"@sample_identity.sequence_number", FilterField::own_sequence},
    {"@sample_identity.sequence_number.high", FilterField::own_sequence_high},
    {"@sample_identity.sequence_number.low", FilterField::own_sequence_low},
    {"@related_sample_identity.writer_guid.value", FilterField::related_guid},
    {"@related_sample_identity.sequence_number", FilterField::related_sequence},
    {"@related_sample_identity.sequence_number.high", FilterField::related_sequence_high},
    {"@related_sample_identity.sequence_number.low", FilterField::related_sequence_low},
};

struct NamedOperator {
  std::string_view text;
  FilterOperator op;
};
constexpr NamedOperator named_operators[] = {
    {"=", FilterOperator::equal},
    {"<>", FilterOperator::not_equal},
    {"!=", FilterOperator::not_equal},
    {"<", FilterOperator::less},
    {"<=", FilterOperator::less_or_equal},
    {">", FilterOperator::greater},
    {">=", FilterOperator::greater_or_equal},
};

/// The operator that holds when the two sides are exchanged.
FilterOperator mirrored(FilterOperator op) {
  switch (op) {
    case FilterOperator::less:
      return FilterOperator::greater;
    case FilterOperator::less_or_equal:
      return FilterOperator::greater_or_equal;
    case FilterOperator::greater:
      return FilterOperator::less;
    case FilterOperator::greater_or_equal:
      return FilterOperator::less_or_equal;
    case FilterOperator::equal:
    case FilterOperator::not_equal:
      break;
  }
  return op;
}

bool is_guid(FilterField field) { return field == FilterField::own_guid || field == FilterField::related_guid; }

bool is_operand(Kind kind) {
  return kind == Kind::name || kind == Kind::integer || kind == Kind::guid || kind == Kind::string ||
         kind == Kind::parameter;
}

}  // namespace

FilterCompiler::FilterCompiler(std::string_view expression, const DDS_StringSeq& parameters, const DDS_TypePlugin& type)
    : parameters_(parameters), type_(type), lexer_(expression) {}

bool FilterCompiler::compile() {
  parameter_texts_.resize(static_cast<std::size_t>(parameters_.length()));
  advance();
  return disjunction() && (token_.kind == Kind::end || fail_here("expected AND, OR or the end"));
}

bool FilterCompiler::disjunction() {
  return chain(Kind::keyword_or, FilterStep::Kind::jump_if_true, &FilterCompiler::conjunction);
}

bool FilterCompiler::conjunction() {
  return chain(Kind::keyword_and, FilterStep::Kind::jump_if_false, &FilterCompiler::term);
}

/// Operands of one keyword in a row. Between any two stands a jump to the end of the row; until that is known, each
/// jump refers to the one before it.
bool FilterCompiler::chain(Token::Kind keyword, FilterStep::Kind jump, bool (FilterCompiler::*part)()) {
  constexpr std::size_t none = static_cast<std::size_t>(-1);
  std::vector<FilterStep>& steps = program_.steps;
  std::size_t last = none;
  if (!(this->*part)()) { return false; }
  while (token_.kind == keyword) {
    advance();
    FilterStep step;
    step.kind = jump;
    step.operand = last;
    last = steps.size();
    steps.push_back(step);
    if (!(this->*part)()) { return false; }
  }
  while (last != none) {
    const std::size_t before = steps[last].operand;
    steps[last].operand = steps.size();
    last = before;
  }
  return true;
}

bool FilterCompiler::term() {
  if (token_.kind == Kind::keyword_not) {
    if (!enter() || !term()) { return false; }
    FilterStep step;
    step.kind = FilterStep::Kind::negate;
    program_.steps.push_back(step);
  } else if (token_.kind == Kind::open) {
    if (!enter() || !disjunction()) { return false; }
    if (token_.kind != Kind::close) { return fail_here("expected AND, OR or a closing parenthesis"); }
    advance();
  } else {
    return comparison();
  }
  --depth_;
  return true;
}

/// Goes past NOT or an opening parenthesis.
bool FilterCompiler::enter() {
  if (depth_ == Filter::max_depth) { return fail_here("nested too deeply"); }
  ++depth_;
  advance();
  return true;
}

bool FilterCompiler::comparison() {
  Operand left;
  Operand right;
  FilterOperator op = FilterOperator::equal;
  if (!operand(left, "expected a field, a literal, NOT or an opening parenthesis")) { return false; }
  const std::size_t op_position = token_.position;
  if (!comparison_operator(op) || !operand(right, "expected a field or a literal")) { return false; }
  const bool field_is_left = left.token.kind == Kind::name;
  const bool field_is_right = right.token.kind == Kind::name;
  if (field_is_left && field_is_right) { return fail(right.token.position, "expected a literal, not a second field"); }
  if (!field_is_left && !field_is_right) {
    return fail(right.token.position, "expected a field, not a second literal");
  }
  return field_is_left ? compare(left, op, op_position, right.token)
                       : compare(right, mirrored(op), op_position, left.token);
}

bool FilterCompiler::operand(Operand& side, std::string_view expectation) {
  if (!is_operand(token_.kind)) { return fail_here(expectation); }
  side.token = token_;
  if (token_.kind == Kind::name && !find_field(side)) { return fail_here("unknown field"); }
  advance();
  return true;
}

bool FilterCompiler::find_field(Operand& side) {
  for (const MetaField& known : meta_fields) {
    if (side.token.text == known.name) {
      side.field = known.field;
      return true;
    }
  }
  if (type_.find_string_member == nullptr || type_.string_member == nullptr) { return false; }
  side.field = FilterField::string_member;
  side.member = type_.find_string_member(std::string(side.token.text).c_str());
  return side.member >= 0;
}

bool FilterCompiler::comparison_operator(FilterOperator& op) {
  if (token_.kind != Kind::comparison) { return fail_here("expected a comparison operator"); }
  for (const NamedOperator& known : named_operators) {
    if (token_.text == known.text) {
      op = known.op;
      advance();
      return true;
    }
  }
  return fail_here("unknown comparison operator");
}

bool FilterCompiler::compare(const Operand& field, FilterOperator op, std::size_t op_position, const Token& literal) {
  if (is_guid(field.field) && op != FilterOperator::equal && op != FilterOperator::not_equal) {
    return fail(op_position, "a GUID has no order, expected = or <>");
  }
  FilterStep step;
  step.field = field.field;
  step.op = op;
  step.member = field.member;
  if (!set_literal(step, literal)) { return false; }
  program_.steps.push_back(step);
  return true;
}

bool FilterCompiler::set_literal(FilterStep& step, const Token& literal) {
  if (step.field == FilterField::string_member) { return set_text(step, literal); }
  Token resolved;
  if (is_guid(step.field)) {
    constexpr std::string_view expectation = "expected &hex( with 32 hexadecimal digits )";
    return resolve(literal, Kind::guid, expectation, resolved) &&
           (parse_guid(resolved.text, step.guid) || fail(literal.position, expectation));
  }
  return resolve(literal, Kind::integer, "expected an integer", resolved) &&
         (parse_integer(resolved.text, step.number) || fail(literal.position, "integer beyond 64 bits"));
}

bool FilterCompiler::set_text(FilterStep& step, const Token& literal) {
  constexpr std::string_view expectation = "expected 'text'";
  std::vector<std::string>& texts = program_.texts;
  Token resolved;
  step.operand = texts.size();
  if (literal.kind != Kind::parameter) {
    if (!resolve(literal, Kind::string, expectation, resolved)) { return false; }
    texts.push_back(unquote(resolved.text));
    return true;
  }
  // The text of a parameter is kept once, however often the expression uses it.
  int index = 0;
  std::string_view text;
  if (!find_parameter(literal, index, text)) { return false; }
  std::size_t& known = parameter_texts_[static_cast<std::size_t>(index)];
  if (known != 0) {
    step.operand = known - 1;
    return true;
  }
  const bool quoted = !text.empty() && text.front() == '\'';
  if (quoted && !resolve(literal, Kind::string, expectation, resolved)) { return false; }
  texts.push_back(quoted ? unquote(resolved.text) : std::string(text));
  known = texts.size();
  return true;
}

bool FilterCompiler::resolve(const Token& literal, Token::Kind wanted, std::string_view expectation, Token& resolved) {
  resolved = literal;
  if (literal.kind == Kind::parameter) {
    int index = 0;
    std::string_view text;
    if (!find_parameter(literal, index, text)) { return false; }
    FilterLexer lexer(text);
    resolved = lexer.next();
    if (resolved.kind != wanted || lexer.next().kind != Kind::end) {
      return fail(literal.position, "the parameter's text is no literal of the field's type");
    }
  }
  return resolved.kind == wanted || fail(literal.position, expectation);
}

bool FilterCompiler::find_parameter(const Token& token, int& index, std::string_view& text) {
  std::int64_t number = 0;
  if (!parse_integer(token.text, number) || number >= parameters_.length()) {
    return fail(token.position, "no such parameter");
  }
  index = static_cast<int>(number);
  const char* parameter = parameters_[index];
  if (parameter == nullptr) { return fail(token.position, "null parameter"); }
  text = std::string_view(parameter, strnlen(parameter, Filter::max_length + 1));
  return text.size() <= Filter::max_length || fail(token.position, "parameter too long");
}

bool FilterCompiler::fail(std::size_t position, std::string_view text) {
  fault_ = {position, text};
  return false;
}

bool FilterCompiler::fail_here(std::string_view text) {
  return fail(token_.position, token_.kind == Kind::fault ? token_.text : text);
}

}  // namespace dds
