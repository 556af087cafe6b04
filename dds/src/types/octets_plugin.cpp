#include "types/builtin_plugins.hpp"
#include "types/own_buffer.hpp"
#include "types/sample_functions.hpp"

namespace dds {
namespace {

struct OwnOctets {
  using View = DDS_Octets;

  View view;
  std::size_t capacity = 0;

  OwnOctets() = default;
  OwnOctets(const OwnOctets&) = delete;
  OwnOctets& operator=(const OwnOctets&) = delete;
  ~OwnOctets() { free_aligned(view.value); }

  bool prepare() { return true; }
  static bool writable(const View& source) { return are_octets(source.value, source.length); }
  bool assign(const View& source) {
    return assign_octets(view.value, view.length, capacity, source.value, source.length);
  }
  bool read(CdrReader& reader) {
    const CdrView octets = reader.octets();
    return reader.complete() &&
           assign_octets(view.value, view.length, capacity, octets.octets, static_cast<DDS_Long>(octets.count));
  }
  template <class Cdr>
  static void put(Cdr& cdr, const View& source) {
    cdr.octets(source.value, source.length);
  }
};

}  // namespace

constexpr DDS_TypePlugin octets_plugin = SampleFunctions<OwnOctets>::plugin(nullptr, nullptr);

}  // namespace dds
