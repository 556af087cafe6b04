#include <utility>

#include <dds/builtin_types.hpp>

// A copy is made whole before it takes the place of what was there, so that a failure changes nothing.

namespace {

bool duplicate(char*& copy, const char* source) {
  copy = DDS_String_dup(source);
  return copy != nullptr || source == nullptr;
}

/// A null buffer stays null, whatever the length says.
bool duplicate(DDS_Octet*& copy, const DDS_Octet* source, DDS_Long length) {
  if (length < 0) { return false; }
  copy = DDS_OctetBuffer_dup(source, static_cast<std::size_t>(length));
  return copy != nullptr || source == nullptr;
}

/// Puts a copy in place, or gives it up.
template <class Data>
bool replace(Data& destination, Data& copy, bool complete) {
  if (complete) { std::swap(destination, copy); }
  DDSBuiltinElement::finalize(copy);
  return complete;
}

}  // namespace

void DDSBuiltinElement::initialize(DDS_Octets& element) { element = DDS_Octets(); }

bool DDSBuiltinElement::copy(DDS_Octets& destination, const DDS_Octets& source) {
  DDS_Octets fresh;
  fresh.length = source.length;
  return replace(destination, fresh, duplicate(fresh.value, source.value, source.length));
}

void DDSBuiltinElement::finalize(DDS_Octets& element) {
  DDS_OctetBuffer_free(element.value);
  initialize(element);
}

void DDSBuiltinElement::initialize(DDS_KeyedString& element) { element = DDS_KeyedString(); }

bool DDSBuiltinElement::copy(DDS_KeyedString& destination, const DDS_KeyedString& source) {
  DDS_KeyedString fresh;
  return replace(destination, fresh, duplicate(fresh.key, source.key) && duplicate(fresh.value, source.value));
}

void DDSBuiltinElement::finalize(DDS_KeyedString& element) {
  DDS_String_free(element.key);
  DDS_String_free(element.value);
  initialize(element);
}

void DDSBuiltinElement::initialize(DDS_KeyedOctets& element) { element = DDS_KeyedOctets(); }

bool DDSBuiltinElement::copy(DDS_KeyedOctets& destination, const DDS_KeyedOctets& source) {
  DDS_KeyedOctets fresh;
  fresh.length = source.length;
  return replace(destination, fresh,
                 duplicate(fresh.key, source.key) && duplicate(fresh.value, source.value, source.length));
}

void DDSBuiltinElement::finalize(DDS_KeyedOctets& element) {
  DDS_String_free(element.key);
  DDS_OctetBuffer_free(element.value);
  initialize(element);
}
