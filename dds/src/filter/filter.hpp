#pragma once

#include <memory>

#include <dds/identity.hpp>
#include <dds/sequence.hpp>
#include <dds/type_plugin.hpp>

#include "filter/program.hpp"

namespace dds {

/// What a filter looks at, borrowed for the call. `data` holds at least the key; null stands for no data at all: the
/// string members are then absent, and every comparison on them is false.
struct FilterSample {
  const DDS_SampleIdentity_t& identity;
  const DDS_SampleIdentity_t& related_identity;
  const void* data;
};

/// A filter expression in the language of `DDSContentFilteredTopic`. Never changes once it is made, so that any number
/// of threads may use it.
class Filter {
 public:
  /// The length of an expression and of the text of a parameter, in octets.
  static constexpr std::size_t max_length = std::size_t{64} * 1024;
  /// How deep NOT and parentheses may be nested.
  static constexpr int max_depth = 64;

  /// Null, and one log line under `context` that points at the character, for a wrong expression; also when memory is
  /// exhausted. Keeps neither the expression nor the parameters nor the table of the type.
  static std::unique_ptr<const Filter> compile(const char* expression, const DDS_StringSeq& parameters,
                                               const DDS_TypePlugin& type, const char* context);

  /// Allocates nothing; looks at each comparison at most once.
  bool admits(const FilterSample& sample) const noexcept;

  /// The GUID, if the filter is nothing but a comparison of the related writer's GUID for equality; null otherwise.
  const DDS_GUID_t* related_writer() const noexcept;

 private:
  using StringMember = const char* (*)(const void*, int);

  Filter(FilterProgram program, StringMember string_member);
  bool holds(const FilterStep& step, const FilterSample& sample) const noexcept;
  bool text_holds(const FilterStep& step, const void* data) const noexcept;

  const FilterProgram program_;
  const StringMember string_member_;
};

}  // namespace dds
