#include "types/builtin_plugins.hpp"
#include "types/own_buffer.hpp"
#include "types/sample_functions.hpp"

namespace dds {
namespace {

struct OwnKeyedString {
  using View = DDS_KeyedString;

  View view;
  std::size_t key_capacity = 0;
  std::size_t value_capacity = 0;

  OwnKeyedString() = default;
  OwnKeyedString(const OwnKeyedString&) = delete;
  OwnKeyedString& operator=(const OwnKeyedString&) = delete;
  ~OwnKeyedString() {
    free_aligned(view.key);
    free_aligned(view.value);
  }

  bool prepare() { return assign_string(view.key, key_capacity, "") && assign_string(view.value, value_capacity, ""); }
  static bool writable(const View& source) { return source.key != nullptr && source.value != nullptr; }
  bool assign(const View& source) {
    return assign_string(view.key, key_capacity, source.key) && assign_string(view.value, value_capacity, source.value);
  }
  bool assign_key(const View& source) {
    return assign_string(view.key, key_capacity, source.key) && assign_string(view.value, value_capacity, "");
  }
  bool read(CdrReader& reader) {
    const CdrView key = reader.string();
    const CdrView value = reader.string();
    return reader.complete() && assign_string(view.key, key_capacity, key.octets, key.count) &&
           assign_string(view.value, value_capacity, value.octets, value.count);
  }
  template <class Cdr>
  static void put(Cdr& cdr, const View& source) {
    cdr.string(source.key);
    cdr.string(source.value);
  }
};

using Functions = KeyedSampleFunctions<OwnKeyedString>;

constexpr int key_member = 0;
constexpr int value_member = 1;

int find_string_member(const char* name) {
  if (std::strcmp(name, "key") == 0) { return key_member; }
  return std::strcmp(name, "value") == 0 ? value_member : -1;
}

const char* string_member(const void* sample, int member) {
  const DDS_KeyedString& view = Functions::view(sample);
  return member == key_member ? view.key : view.value;
}

}  // namespace

constexpr DDS_TypePlugin keyed_string_plugin = Functions::plugin(&find_string_member, &string_member);

}  // namespace dds
