#include "types/builtin_plugins.hpp"
#include "types/own_buffer.hpp"
#include "types/sample_functions.hpp"

namespace dds {
namespace {

struct OwnString {
  using View = const char*;

  char* value = nullptr;
  std::size_t capacity = 0;

  OwnString() = default;
  OwnString(const OwnString&) = delete;
  OwnString& operator=(const OwnString&) = delete;
  ~OwnString() { free_aligned(value); }

  bool prepare() { return assign_string(value, capacity, ""); }
  static bool writable(const View& source) { return source != nullptr; }
  bool assign(const View& source) { return assign_string(value, capacity, source); }
  bool read(CdrReader& reader) {
    const CdrView text = reader.string();
    return reader.complete() && assign_string(value, capacity, text.octets, text.count);
  }
  template <class Cdr>
  static void put(Cdr& cdr, const View& source) {
    cdr.string(source);
  }
};

using Functions = SampleFunctions<OwnString>;

int find_string_member(const char* name) { return std::strcmp(name, "value") == 0 ? 0 : -1; }

const char* string_member(const void* sample, int /*member*/) { return Functions::view(sample); }

}  // namespace

constexpr DDS_TypePlugin string_plugin = Functions::plugin(&find_string_member, &string_member);

}  // namespace dds
