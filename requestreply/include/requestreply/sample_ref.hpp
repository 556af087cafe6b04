#pragma once

#include <dds/sample_info.hpp>
#include <dds/write_params.hpp>

namespace zemtra {
namespace details {

/// How a reference designates data of `T`: by its address, but a string by the string pointer itself.
template <class T>
struct Designated {
  using Pointer = T*;
  using Data = T&;
  static Data data(Pointer pointer) { return *pointer; }
};
template <>
struct Designated<char*> {
  using Pointer = char*;
  using Data = char*;
  static Data data(Pointer pointer) { return pointer; }
};
template <>
struct Designated<const char*> {
  using Pointer = const char*;
  using Data = const char*;
  static Data data(Pointer pointer) { return pointer; }
};

inline DDS_SampleIdentity_t identity_of(const DDS_SampleInfo& info) { return info.sample_identity; }
inline DDS_SampleIdentity_t identity_of(const DDS_WriteParams_t& info) { return info.identity; }

/// What both kinds of references are: two pointers, the data's and the info's.
template <class T, class Info>
class DataAndInfoRef {
 public:
  /// Both must outlive the reference; neither may be null, except for the string pointer of a string type.
  DataAndInfoRef(typename Designated<T>::Pointer data, Info* info) noexcept : data_(data), info_(info) {}

  /// The data object; for `char*` and `const char*` the string pointer, by value.
  typename Designated<T>::Data data() const { return Designated<T>::data(data_); }
  Info& info() const { return *info_; }
  /// The sample's own identity.
  DDS_SampleIdentity_t identity() const { return identity_of(*info_); }
  /// The identity of the sample that this one answers.
  DDS_SampleIdentity_t related_identity() const { return info_->related_sample_identity; }

 private:
  typename Designated<T>::Pointer data_;  // not owned
  Info* info_;                            // not owned
};

}  // namespace details

/// A received sample that lies elsewhere: its data and what the reader knows of it. A value that owns nothing, as cheap
/// to copy as two pointers.
template <class T>
class SampleRef : public details::DataAndInfoRef<T, DDS_SampleInfo> {
 public:
  using details::DataAndInfoRef<T, DDS_SampleInfo>::DataAndInfoRef;
};

/// A sample to be written that lies elsewhere: its data and what steers its write. A value that owns nothing, as cheap
/// to copy as two pointers.
template <class T>
class WriteSampleRef : public details::DataAndInfoRef<T, DDS_WriteParams_t> {
 public:
  using details::DataAndInfoRef<T, DDS_WriteParams_t>::DataAndInfoRef;
};

}  // namespace zemtra
