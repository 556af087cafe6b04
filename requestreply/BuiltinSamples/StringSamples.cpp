#include "BuiltinSamples/exchange.hpp"

namespace zemtra {
namespace details {

template <class Info, bool presents_const>
SampleBaseCharPtr<Info, presents_const>::~SampleBaseCharPtr() {
  if (string_ != nullptr) {
    DDS_String_free(string_);
    string_ = nullptr;
  }
}

template <class Info, bool presents_const>
SampleBaseCharPtr<Info, presents_const>& SampleBaseCharPtr<Info, presents_const>::operator=(Ref ref) {
  SampleBaseCharPtr temporary(ref.data(), ref.info());
  if constexpr (!is_received) { temporary.require_string(); }
  exchange_samples([&] { std::swap(string_, temporary.string_); }, info(), temporary.info(), method_name());
  return *this;
}

template ZEMTRA_EXPORT SampleBaseCharPtr<DDS_SampleInfo, false>::~SampleBaseCharPtr();
template ZEMTRA_EXPORT SampleBaseCharPtr<DDS_SampleInfo, true>::~SampleBaseCharPtr();
template ZEMTRA_EXPORT SampleBaseCharPtr<DDS_WriteParams_t, false>::~SampleBaseCharPtr();
template ZEMTRA_EXPORT SampleBaseCharPtr<DDS_WriteParams_t, true>::~SampleBaseCharPtr();
template ZEMTRA_EXPORT SampleBaseCharPtr<DDS_SampleInfo, false>& SampleBaseCharPtr<DDS_SampleInfo, false>::operator=(
    Ref);
template ZEMTRA_EXPORT SampleBaseCharPtr<DDS_SampleInfo, true>& SampleBaseCharPtr<DDS_SampleInfo, true>::operator=(Ref);

}  // namespace details

Sample<char*>::Sample(SampleRef<char*> ref) : Base(ref.data(), ref.info()) { require_string(); }

Sample<char*>& Sample<char*>::operator=(SampleRef<char*> ref) {
  Base::operator=(ref);
  return *this;
}

Sample<const char*>::Sample(SampleRef<const char*> ref) : Base(ref.data(), ref.info()) { require_string(); }

Sample<const char*>& Sample<const char*>::operator=(SampleRef<const char*> ref) {
  Base::operator=(ref);
  return *this;
}

WriteSample<char*>::WriteSample(WriteSampleRef<char*> ref) : Base(ref.data(), ref.info()) { require_string(); }

WriteSample<char*>& WriteSample<char*>::operator=(WriteSampleRef<char*> ref) {
  Base::operator=(ref);
  return *this;
}

WriteSample<const char*>::WriteSample(WriteSampleRef<const char*> ref) : Base(ref.data(), ref.info()) {
  require_string();
}

WriteSample<const char*>& WriteSample<const char*>::operator=(WriteSampleRef<const char*> ref) {
  Base::operator=(ref);
  return *this;
}

WriteSample<std::string>::WriteSample(WriteSampleRef<std::string> ref)
    : data_(ref.data()), info_(ref.info(), method_name) {}

WriteSample<std::string>& WriteSample<std::string>::operator=(WriteSampleRef<std::string> ref) {
  WriteSample temporary(ref);
  details::exchange_samples([&] { swap_data(temporary); }, info(), temporary.info(), method_name);
  std::swap(word_after_info_, temporary.word_after_info_);
  return *this;
}

}  // namespace zemtra
