#include <functional>

#include "BuiltinSamples/exchange.hpp"

namespace DDS {

void swap(DDS_KeyedString& a, DDS_KeyedString& b) noexcept {
  std::swap(a.key, b.key);
  std::swap(a.value, b.value);
}

void swap(DDS_KeyedOctets& a, DDS_KeyedOctets& b) noexcept {
  std::swap(a.key, b.key);
  std::swap(a.length, b.length);
  std::swap(a.value, b.value);
}

}  // namespace DDS

namespace zemtra {

namespace {

/// Whether `source` refers to octets of `own`, which then have to stay until they are copied.
bool shares_octets(const DDS_Octets& source, const DDS_Octets& own) {
  if (source.value == nullptr || own.value == nullptr) { return false; }
  const std::less<const DDS_Octet*> before;
  return source.value == own.value ||
         (own.length > 0 && before(own.value, source.value) && before(source.value, own.value + own.length));
}

/// Gives `target` copies of what `ref` designates; when it throws, `target` is as before.
template <class T>
void assign(WriteSample<T>& target, WriteSampleRef<T> ref) {
  WriteSample<T> temporary(ref);
  details::exchange_samples([&] { details::exchange_data(target.data(), temporary.data()); }, target.info(),
                            temporary.info(), details::CopyFailure<WriteSample<T>>::method_name);
}

}  // namespace

// Defined here as well, for those that take their addresses.
const DDS_Long Sample<DDS_Octets>::DEFAULT_VALUE_SIZE;
const DDS_Long WriteSample<DDS_Octets>::DEFAULT_VALUE_SIZE;

Sample<DDS_Octets>::Sample(SampleRef<DDS_Octets> ref) : Base(ref.data(), ref.info(), Check::none) {}

Sample<DDS_Octets>& Sample<DDS_Octets>::operator=(SampleRef<DDS_Octets> ref) {
  const DDS_Octets source = ref.data();
  DDS_Octets former = std::exchange(data(), DDS_Octets());
  const bool keeps_former = shares_octets(source, former);
  if (!keeps_former) { details::release_data(former); }
  data().value = details::duplicate(source.value, source.length);
  data().length = source.length;
  if (keeps_former) { details::release_data(former); }
  DDS_SampleInfo_copy(&info(), &ref.info());
  return *this;
}

Sample<DDS_KeyedString>::Sample(SampleRef<DDS_KeyedString> ref) : Base(ref.data(), ref.info(), Check::complete) {}

Sample<DDS_KeyedString>& Sample<DDS_KeyedString>::operator=(SampleRef<DDS_KeyedString> ref) {
  *this = Sample(ref);
  return *this;
}

Sample<DDS_KeyedOctets>::Sample(SampleRef<DDS_KeyedOctets> ref) : Base(ref.data(), ref.info(), Check::complete) {}

Sample<DDS_KeyedOctets>& Sample<DDS_KeyedOctets>::operator=(SampleRef<DDS_KeyedOctets> ref) {
  *this = Sample(ref);
  return *this;
}

WriteSample<DDS_Octets>::WriteSample(WriteSampleRef<DDS_Octets> ref) : Base(ref.data(), ref.info(), Check::complete) {}

WriteSample<DDS_Octets>& WriteSample<DDS_Octets>::operator=(WriteSampleRef<DDS_Octets> ref) {
  assign(*this, ref);
  return *this;
}

WriteSample<DDS_KeyedString>::WriteSample(WriteSampleRef<DDS_KeyedString> ref)
    : Base(ref.data(), ref.info(), Check::complete) {}

WriteSample<DDS_KeyedString>& WriteSample<DDS_KeyedString>::operator=(WriteSampleRef<DDS_KeyedString> ref) {
  assign(*this, ref);
  return *this;
}

WriteSample<DDS_KeyedOctets>::WriteSample(WriteSampleRef<DDS_KeyedOctets> ref)
    : Base(ref.data(), ref.info(), Check::complete) {}

WriteSample<DDS_KeyedOctets>& WriteSample<DDS_KeyedOctets>::operator=(WriteSampleRef<DDS_KeyedOctets> ref) {
  assign(*this, ref);
  return *this;
}

}  // namespace zemtra
