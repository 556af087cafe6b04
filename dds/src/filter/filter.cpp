#include "filter/filter.hpp"

#include <cstring>
#include <new>
#include <utility>

#include "filter/compiler.hpp"
#include "log/log.hpp"

namespace dds {
namespace {

std::int64_t to_number(const DDS_SequenceNumber_t& sequence_number) {
  return std::int64_t{sequence_number.high} * 0x100000000 + sequence_number.low;
}

/// The number in a field that holds one.
std::int64_t number_of(FilterField field, const FilterSample& sample) {
  const DDS_SequenceNumber_t& own = sample.identity.sequence_number;
  const DDS_SequenceNumber_t& related = sample.related_identity.sequence_number;
  switch (field) {
    case FilterField::own_sequence:
      return to_number(own);
    case FilterField::own_sequence_high:
      return own.high;
    case FilterField::own_sequence_low:
      return own.low;
    case FilterField::related_sequence:
      return to_number(related);
    case FilterField::related_sequence_high:
      return related.high;
    case FilterField::related_sequence_low:
      return related.low;
    case FilterField::own_guid:
    case FilterField::related_guid:
    case FilterField::string_member:
      break;
  }
  return 0;
}

/// Whether an operator holds for two values of which the first is less (negative order), equal (0) or greater.
bool order_holds(FilterOperator op, int order) {
  switch (op) {
    case FilterOperator::equal:
      return order == 0;
    case FilterOperator::not_equal:
      return order != 0;
    case FilterOperator::less:
      return order < 0;
    case FilterOperator::less_or_equal:
      return order <= 0;
    case FilterOperator::greater:
      return order > 0;
    case FilterOperator::greater_or_equal:
      return order >= 0;
  }
  return false;
}

bool guid_holds(const FilterStep& step, const DDS_GUID_t& guid) {
  return order_holds(step.op, DDS_GUID_equals(&guid, &step.guid) ? 0 : 1);
}

std::unique_ptr<const Filter> refuse(const char* context, const FilterFault& fault) {
  DDS_LOG_FAILURE(context, DDS_LOG_BAD_PARAMETER_s, "filter expression, character %zu: %.*s", fault.position + 1,
                  static_cast<int>(fault.text.size()), fault.text.data());
  return nullptr;
}

}  // namespace

std::unique_ptr<const Filter> Filter::compile(const char* expression, const DDS_StringSeq& parameters,
                                              const DDS_TypePlugin& type, const char* context) {
  if (expression == nullptr) { return refuse(context, {0, "null expression"}); }
  const std::string_view text(expression, strnlen(expression, max_length + 1));
  if (text.size() > max_length) { return refuse(context, {max_length, "expression too long"}); }
  try {
    FilterCompiler compiler(text, parameters, type);
    if (!compiler.compile()) { return refuse(context, compiler.fault()); }
    return std::unique_ptr<const Filter>(new Filter(std::move(compiler.program()), type.string_member));
  } catch (const std::bad_alloc&) {
    DDS_LOG_FAILURE(context, QVX_LOG_ANY_FAILURE_s, "filter expression: out of memory");
    return nullptr;
  }
}

Filter::Filter(FilterProgram program, StringMember string_member)
    : program_(std::move(program)), string_member_(string_member) {}

bool Filter::admits(const FilterSample& sample) const noexcept {
  bool result = true;
  for (std::size_t i = 0; i < program_.steps.size();) {
    const FilterStep& step = program_.steps[i];
    ++i;
    switch (step.kind) {
      case FilterStep::Kind::compare:
        result = holds(step, sample);
        break;
      case FilterStep::Kind::negate:
        result = !result;
        break;
      case FilterStep::Kind::jump_if_false:
        i = result ? i : step.operand;
        break;
      case FilterStep::Kind::jump_if_true:
        i = result ? step.operand : i;
        break;
    }
  }
  return result;
}

const DDS_GUID_t* Filter::related_writer() const noexcept {
  const FilterStep& first = program_.steps.front();
  const bool alone =
      program_.steps.size() == 1 && first.field == FilterField::related_guid && first.op == FilterOperator::equal;
  return alone ? &first.guid : nullptr;
}

bool Filter::holds(const FilterStep& step, const FilterSample& sample) const noexcept {
  switch (step.field) {
    case FilterField::own_guid:
      return guid_holds(step, sample.identity.writer_guid);
    case FilterField::related_guid:
      return guid_holds(step, sample.related_identity.writer_guid);
    case FilterField::string_member:
      return text_holds(step, sample.data);
    default:
      break;
  }
  const std::int64_t number = number_of(step.field, sample);
  return order_holds(step.op, number < step.number ? -1 : number > step.number);
}

bool Filter::text_holds(const FilterStep& step, const void* data) const noexcept {
  const char* text = data == nullptr ? nullptr : string_member_(data, step.member);
  return text != nullptr && order_holds(step.op, std::strcmp(text, program_.texts[step.operand].c_str()));
}

}  // namespace dds
