#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <dds/identity.hpp>

namespace dds {

/// What a comparison looks at.
enum class FilterField {
  own_guid,
  related_guid,
  own_sequence,
  own_sequence_high,
  own_sequence_low,
  related_sequence,
  related_sequence_high,
  related_sequence_low,
  string_member
};

enum class FilterOperator { equal, not_equal, less, less_or_equal, greater, greater_or_equal };

/// One step of a filter. A comparison sets the result; the others work on it.
struct FilterStep {
  enum class Kind { compare, negate, jump_if_false, jump_if_true };

  Kind kind = Kind::compare;
  FilterField field = FilterField::own_guid;
  FilterOperator op = FilterOperator::equal;
  int member = 0;           ///< for a string member, its number in the type
  std::size_t operand = 0;  ///< for a string member, the index of the text; for a jump, that of the step
  std::int64_t number = 0;  ///< for a sequence number
  DDS_GUID_t guid;          ///< for a GUID
};

/// A filter expression ready for evaluation: a list of steps that one result runs through from the front to the end,
/// with jumps over what no longer matters. It needs neither a stack nor recursion, whatever the expression.
struct FilterProgram {
  std::vector<FilterStep> steps;
  std::vector<std::string> texts;
};

}  // namespace dds
