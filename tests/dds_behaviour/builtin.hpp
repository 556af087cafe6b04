#pragma once

#include <stdexcept>
#include <string>

#include <dds/dds.hpp>

#include "support/other_process.hpp"

namespace behaviour {

/// The four built-in types, by a value.
enum class Builtin { string, keyed_string, octets, keyed_octets };

template <class Writer>
struct BuiltinOf;
template <>
struct BuiltinOf<DDSStringDataWriter> {
  static constexpr Builtin type = Builtin::string;
};
template <>
struct BuiltinOf<DDSKeyedStringDataWriter> {
  static constexpr Builtin type = Builtin::keyed_string;
};
template <>
struct BuiltinOf<DDSOctetsDataWriter> {
  static constexpr Builtin type = Builtin::octets;
};
template <>
struct BuiltinOf<DDSKeyedOctetsDataWriter> {
  static constexpr Builtin type = Builtin::keyed_octets;
};

inline DDS_ReturnCode_t register_builtin(Builtin type, DDSDomainParticipant* participant, const char* name) {
  switch (type) {
    case Builtin::string:
      return DDSStringTypeSupport::register_type(participant, name);
    case Builtin::keyed_string:
      return DDSKeyedStringTypeSupport::register_type(participant, name);
    case Builtin::octets:
      return DDSOctetsTypeSupport::register_type(participant, name);
    default:
      return DDSKeyedOctetsTypeSupport::register_type(participant, name);
  }
}

/// A sample of a built-in type as it was given to a write, right or wrong, on its way to the other process.
class BuiltinSample {
 public:
  BuiltinSample(Builtin type, const void* data);
  explicit BuiltinSample(support::Packet& packet);
  BuiltinSample(const BuiltinSample&) = delete;
  BuiltinSample& operator=(const BuiltinSample&) = delete;

  void put_into(support::Packet& packet) const;
  /// Valid as long as this object.
  const void* data() const;

 private:
  struct Shape {
    Builtin type;
    bool null_data = false, null_key = false, null_value = false;
    DDS_Long length = 0;
  };

  Shape shape_;
  std::string key_, value_;
  // What `data` points to.
  const char* string_ = nullptr;
  DDS_KeyedString keyed_string_;
  DDS_Octets octets_;
  DDS_KeyedOctets keyed_octets_;
};

}  // namespace behaviour
