#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "filter/filter.hpp"
#include "recorded_log.hpp"
#include "types/builtin_plugins.hpp"

namespace {

/// A boolean expression over sequence numbers and a string, as a tree that evaluates itself in the plainest way.
struct Expression {
  enum class Kind { number, text, negation, conjunction, disjunction };

  Kind kind;
  std::string op;         // of a comparison
  int literal = 0;        // a number, or one digit as a text
  bool mirrored = false;  // the literal stands first
  std::vector<Expression> parts;
};

template <class Value>
bool compare(const Value& a, const std::string& op, const Value& b) {
  if (op == "=") { return a == b; }
  if (op == "<>" || op == "!=") { return a != b; }
  if (op == "<") { return a < b; }
  if (op == "<=") { return a <= b; }
  return op == ">" ? a > b : a >= b;
}

struct Sample {
  int number;
  std::string text;
};

bool evaluate(const Expression& e, const Sample& sample) {
  const std::string literal = std::to_string(e.literal);
  switch (e.kind) {
    case Expression::Kind::number:
      return e.mirrored ? compare(e.literal, e.op, sample.number) : compare(sample.number, e.op, e.literal);
    case Expression::Kind::text:
      return e.mirrored ? compare(literal, e.op, sample.text) : compare(sample.text, e.op, literal);
    case Expression::Kind::negation:
      return !evaluate(e.parts[0], sample);
    case Expression::Kind::conjunction: {
      bool all = true;
      for (const Expression& part : e.parts) { all = evaluate(part, sample) && all; }
      return all;
    }
    case Expression::Kind::disjunction:
      break;
  }
  bool any = false;
  for (const Expression& part : e.parts) { any = evaluate(part, sample) || any; }
  return any;
}

class Generator {
 public:
  explicit Generator(unsigned int seed) : random_(seed) {}

  int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned int>(bound)); }

  Expression expression(int depth) {
    const int choice = depth == 0 ? below(2) : below(5);
    Expression e{static_cast<Expression::Kind>(choice), {}, 0, false, {}};
    if (choice < 2) {
      const char* const ops[] = {"=", "<>", "!=", "<", "<=", ">", ">="};
      e.op = ops[below(7)];
      e.literal = below(4);
      e.mirrored = below(2) == 0;
      return e;
    }
    const int parts = e.kind == Expression::Kind::negation ? 1 : 2 + below(3);
    for (int i = 0; i < parts; ++i) { e.parts.push_back(expression(depth - 1)); }
    return e;
  }

  /// With parentheses where they are needed, and sometimes where they are not.
  std::string text(const Expression& e, int context = 0) {
    const int strength = strength_of(e.kind);
    const bool parenthesised = strength < context || below(8) == 0;
    const std::string plain = plain_text(e, strength);
    return parenthesised ? "(" + blank() + plain + blank() + ")" : plain;
  }

 private:
  static int strength_of(Expression::Kind kind) {
    if (kind == Expression::Kind::disjunction) { return 0; }
    return kind == Expression::Kind::conjunction ? 1 : 2;
  }
  std::string blank() { return std::string(static_cast<std::size_t>(below(2)), ' '); }
  std::string keyword(const char* upper, const char* lower) { return below(2) == 0 ? upper : lower; }

  std::string plain_text(const Expression& e, int strength) {
    if (e.kind == Expression::Kind::negation) { return keyword("NOT ", "not ") + text(e.parts[0], 2); }
    if (strength < 2) {
      const bool is_and = e.kind == Expression::Kind::conjunction;
      std::string row = text(e.parts[0], strength);
      for (std::size_t i = 1; i < e.parts.size(); ++i) {
        row += (is_and ? keyword(" AND ", " and ") : keyword(" OR ", " or ")) + text(e.parts[i], strength);
      }
      return row;
    }
    const bool is_text = e.kind == Expression::Kind::text;
    const std::string field = is_text ? "value" : "@related_sample_identity.sequence_number";
    const std::string quote = is_text ? "'" : "";
    const std::string literal = quote + std::to_string(e.literal) + quote;
    const std::string op = blank() + e.op + blank();
    return e.mirrored ? literal + op + field : field + op + literal;
  }

  std::mt19937 random_;
};

bool admits(const dds::Filter& filter, const Sample& sample) {
  const DDS_SampleIdentity_t related{DDS_GUID_UNKNOWN, {0, static_cast<std::uint32_t>(sample.number)}};
  const char* data = sample.text.c_str();
  return filter.admits({DDS_UNKNOWN_SAMPLE_IDENTITY, related, &data});
}

TEST(RandomFilters, EvaluateAsAPlainTreeDoes) {
  Generator generator(20220610);
  for (int round = 0; round < 2000; ++round) {
    const Expression expression = generator.expression(round % 6);
    const std::string text = generator.text(expression);
    if (text.size() > dds::Filter::max_length) { continue; }
    const auto filter = dds::Filter::compile(text.c_str(), DDS_StringSeq(), dds::string_plugin, "Context");
    ASSERT_NE(filter, nullptr) << text;
    for (int number = 0; number < 4; ++number) {
      for (const char* value : {"", "0", "1", "2", "3", "10"}) {
        const Sample sample{number, value};
        ASSERT_EQ(admits(*filter, sample), evaluate(expression, sample)) << text << " on " << number << ", " << value;
      }
    }
  }
}

TEST(RandomFilters, OfMangledExpressionsAreRefusedWithOneLineOrEvaluated) {
  Generator generator(7);
  RecordedLog log;
  int refused = 0;
  const std::string alphabet = "()='<>!&%@ ANDORvalue0123456789.hex#-+\n\xff";
  for (int round = 0; round < 4000; ++round) {
    std::string text = generator.text(generator.expression(2));
    for (int change = 0; change < 2; ++change) {
      const auto position = static_cast<std::size_t>(generator.below(static_cast<int>(text.size())));
      const char character = alphabet[static_cast<std::size_t>(generator.below(static_cast<int>(alphabet.size())))];
      if (generator.below(3) == 0) {
        text.erase(position, 1);
      } else {
        text[position] = character;
      }
    }
    const auto filter = dds::Filter::compile(text.c_str(), DDS_StringSeq(), dds::string_plugin, "Context");
    const std::size_t lines = log.take_lines().size();
    ASSERT_EQ(lines, filter == nullptr ? 1u : 0u) << text;
    if (filter != nullptr) { admits(*filter, {1, "1"}); }
    refused += filter == nullptr;
  }
  EXPECT_GT(refused, 1000);
  EXPECT_LT(refused, 4000);
}

}  // namespace
