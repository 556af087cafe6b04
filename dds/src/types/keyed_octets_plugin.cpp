#include "types/builtin_plugins.hpp"
#include "types/own_buffer.hpp"
#include "types/sample_functions.hpp"

namespace dds {
namespace {

struct OwnKeyedOctets {
  using View = DDS_KeyedOctets;

  View view;
  std::size_t key_capacity = 0;
  std::size_t value_capacity = 0;

  OwnKeyedOctets() = default;
  OwnKeyedOctets(const OwnKeyedOctets&) = delete;
  OwnKeyedOctets& operator=(const OwnKeyedOctets&) = delete;
  ~OwnKeyedOctets() {
    free_aligned(view.key);
    free_aligned(view.value);
  }

  bool prepare() { return assign_string(view.key, key_capacity, ""); }
  static bool writable(const View& source) { return source.key != nullptr && are_octets(source.value, source.length); }
  bool assign(const View& source) {
    return assign_string(view.key, key_capacity, source.key) &&
           assign_octets(view.value, view.length, value_capacity, source.value, source.length);
  }
  bool assign_key(const View& source) {
    view.length = 0;
    return assign_string(view.key, key_capacity, source.key);
  }
  bool read(CdrReader& reader) {
    const CdrView key = reader.string();
    const CdrView value = reader.octets();
    return reader.complete() && assign_string(view.key, key_capacity, key.octets, key.count) &&
           assign_octets(view.value, view.length, value_capacity, value.octets, static_cast<DDS_Long>(value.count));
  }
  template <class Cdr>
  static void put(Cdr& cdr, const View& source) {
    cdr.string(source.key);
    cdr.octets(source.value, source.length);
  }
};

using Functions = KeyedSampleFunctions<OwnKeyedOctets>;

int find_string_member(const char* name) { return std::strcmp(name, "key") == 0 ? 0 : -1; }

const char* string_member(const void* sample, int /*member*/) { return Functions::view(sample).key; }

}  // namespace

constexpr DDS_TypePlugin keyed_octets_plugin = Functions::plugin(&find_string_member, &string_member);

}  // namespace dds
