#include "builtin.hpp"

#include <algorithm>

namespace behaviour {

BuiltinSample::BuiltinSample(Builtin type, const void* data) : shape_{type} {
  const auto keep = [](const char* text, std::string& kept) {
    if (text != nullptr) { kept = text; }
    return text == nullptr;
  };
  const auto keep_octets = [&](const auto& sample) {
    shape_.length = sample.length;
    shape_.null_value = sample.value == nullptr;
    if (!shape_.null_value) { value_.assign(sample.value, sample.value + std::max(sample.length, 0)); }
  };
  shape_.null_data = data == nullptr;
  if (shape_.null_data) { return; }
  switch (type) {
    case Builtin::string:
      shape_.null_value = keep(*static_cast<const char* const*>(data), value_);
      break;
    case Builtin::keyed_string:
      shape_.null_key = keep(static_cast<const DDS_KeyedString*>(data)->key, key_);
      shape_.null_value = keep(static_cast<const DDS_KeyedString*>(data)->value, value_);
      break;
    case Builtin::octets:
      keep_octets(*static_cast<const DDS_Octets*>(data));
      break;
    case Builtin::keyed_octets:
      shape_.null_key = keep(static_cast<const DDS_KeyedOctets*>(data)->key, key_);
      keep_octets(*static_cast<const DDS_KeyedOctets*>(data));
      break;
  }
}

BuiltinSample::BuiltinSample(support::Packet& packet) : shape_(packet.get<Shape>()) {
  key_ = packet.get<std::string>();
  value_ = packet.get<std::string>();
  char* const key = shape_.null_key ? nullptr : key_.data();
  char* const value = shape_.null_value ? nullptr : value_.data();
  string_ = value;
  keyed_string_ = {key, value};
  octets_ = {shape_.length, reinterpret_cast<DDS_Octet*>(value)};
  keyed_octets_ = {key, shape_.length, reinterpret_cast<DDS_Octet*>(value)};
}

void BuiltinSample::put_into(support::Packet& packet) const {
  packet.put(shape_);
  packet.put(key_);
  packet.put(value_);
}

const void* BuiltinSample::data() const {
  if (shape_.null_data) { return nullptr; }
  switch (shape_.type) {
    case Builtin::string:
      return &string_;
    case Builtin::keyed_string:
      return &keyed_string_;
    case Builtin::octets:
      return &octets_;
    default:
      return &keyed_octets_;
  }
}

}  // namespace behaviour
