#pragma once

#include <cstdint>
#include <requestreply/export.hpp>
#include <requestreply/owned_parts.hpp>
#include <requestreply/sample_ref.hpp>
#include <string>
#include <type_traits>
#include <utility>

// Samples of strings: as string pointers that own a copy made with the middleware's string functions, and, to be
// written, as std::string.
//
// A copy that fails for want of memory is reported by `OutOfResourcesException`. Copies of samples keep a null string;
// construction from a reference refuses it in the same way as a failed copy.

namespace zemtra {

template <class T>
class Sample;
template <class T>
class WriteSample;

namespace details {

/// What the samples of string pointers have in common. `presents_const` says which pointer they show, `const char*` or
/// `char*`; they own the string in either case.
template <class Info, bool presents_const>
class SampleBaseCharPtr {
  static constexpr bool is_received = std::is_same<Info, DDS_SampleInfo>::value;

 public:
  using Pointer = std::conditional_t<presents_const, const char*, char*>;
  using Ref = std::conditional_t<is_received, SampleRef<Pointer>, WriteSampleRef<Pointer>>;

  ZEMTRA_EXPORT ~SampleBaseCharPtr();

  /// The string, which stays the sample's; null in an empty sample.
  Pointer data() noexcept { return string_; }
  const char* data() const noexcept { return string_; }
  Info& info() noexcept { return info_.value; }
  const Info& info() const noexcept { return info_.value; }
  /// The sample's own identity.
  DDS_SampleIdentity_t identity() const { return identity_of(info()); }
  /// The identity of the sample that this one answers.
  DDS_SampleIdentity_t related_identity() const { return info().related_sample_identity; }

  void swap(SampleBaseCharPtr& other) noexcept {
    std::swap(string_, other.string_);
    info_.swap(other.info_);
  }

 protected:
  SampleBaseCharPtr() noexcept = default;
  /// The string is null when `string` is, or when memory is exhausted.
  SampleBaseCharPtr(const char* string, const Info& info) : info_(info, method_name()) {
    DDS_String_replace(&string_, string);
  }
  SampleBaseCharPtr(const SampleBaseCharPtr& other) : SampleBaseCharPtr(other.data(), other.info()) {
    require_copy_of(other.data());
  }
  SampleBaseCharPtr(SampleBaseCharPtr&& other) noexcept { swap(other); }
  SampleBaseCharPtr& operator=(const SampleBaseCharPtr& other) {
    SampleBaseCharPtr copy(other);
    swap(copy);
    return *this;
  }
  SampleBaseCharPtr& operator=(SampleBaseCharPtr&& other) noexcept {
    SampleBaseCharPtr taken(std::move(other));
    swap(taken);
    return *this;
  }
  /// A received sample accepts a null string, and is left with one when memory is exhausted; a sample to be written is
  /// then as before, and it throws.
  SampleBaseCharPtr& operator=(Ref ref);

  /// Throws when the string is null.
  void require_string() const {
    if (string_ == nullptr) { report_exhausted(method_name(), "DDS_String_alloc failed to allocate memory"); }
  }
  /// Throws when the string is null and `source` is not.
  void require_copy_of(const char* source) const {
    if (source != nullptr) { require_string(); }
  }

 private:
  static constexpr const char* method_name() {
    if (is_received) { return presents_const ? "Sample<const char *>::Sample" : "Sample<char *>::Sample"; }
    return presents_const ? "WriteSample<const char *>::Sample" : "WriteSample<char *>::Sample";
  }

  char* string_ = nullptr;  // owned; made after the info, released before it
  OwnedInfo<Info> info_;
};

extern template SampleBaseCharPtr<DDS_SampleInfo, false>::~SampleBaseCharPtr();
extern template SampleBaseCharPtr<DDS_SampleInfo, true>::~SampleBaseCharPtr();
extern template SampleBaseCharPtr<DDS_WriteParams_t, false>::~SampleBaseCharPtr();
extern template SampleBaseCharPtr<DDS_WriteParams_t, true>::~SampleBaseCharPtr();
extern template SampleBaseCharPtr<DDS_SampleInfo, false>& SampleBaseCharPtr<DDS_SampleInfo, false>::operator=(Ref);
extern template SampleBaseCharPtr<DDS_SampleInfo, true>& SampleBaseCharPtr<DDS_SampleInfo, true>::operator=(Ref);

}  // namespace details

/// A received string.
template <>
class Sample<char*> : public details::SampleBaseCharPtr<DDS_SampleInfo, false> {
  using Base = details::SampleBaseCharPtr<DDS_SampleInfo, false>;

 public:
  /// No data.
  Sample() noexcept = default;
  /// A copy of a string that the application itself provides.
  explicit Sample(const char* string) : Sample(string, DDS_SampleInfo()) { info().valid_data = true; }
  Sample(const char* string, const DDS_SampleInfo& info) : Base(string, info) { require_copy_of(string); }
  ZEMTRA_EXPORT Sample(SampleRef<char*> ref);
  /// Accepts a null string, and leaves one when memory is exhausted. `ref` may designate the sample itself.
  ZEMTRA_EXPORT Sample& operator=(SampleRef<char*> ref);

  /// Whether there is a string and it means anything: false for a sample that only tells of a change of its instance's
  /// state, and for one whose string could not be copied.
  bool has_data() const noexcept { return info().valid_data && data() != nullptr; }
  operator SampleRef<char*>() noexcept { return {data(), &info()}; }
};

/// A received string, presented as constant.
template <>
class Sample<const char*> : public details::SampleBaseCharPtr<DDS_SampleInfo, true> {
  using Base = details::SampleBaseCharPtr<DDS_SampleInfo, true>;

 public:
  /// No data.
  Sample() noexcept = default;
  /// A copy of a string that the application itself provides.
  explicit Sample(const char* string) : Sample(string, DDS_SampleInfo()) { info().valid_data = true; }
  Sample(const char* string, const DDS_SampleInfo& info) : Base(string, info) { require_copy_of(string); }
  ZEMTRA_EXPORT Sample(SampleRef<const char*> ref);
  /// Accepts a null string, and leaves one when memory is exhausted. `ref` may designate the sample itself.
  ZEMTRA_EXPORT Sample& operator=(SampleRef<const char*> ref);

  /// Whether there is a string and it means anything: false for a sample that only tells of a change of its instance's
  /// state, and for one whose string could not be copied.
  bool has_data() const noexcept { return info().valid_data && data() != nullptr; }
  operator SampleRef<const char*>() noexcept { return {data(), &info()}; }
};

/// A string to be written.
template <>
class WriteSample<char*> : public details::SampleBaseCharPtr<DDS_WriteParams_t, false> {
  using Base = details::SampleBaseCharPtr<DDS_WriteParams_t, false>;

 public:
  WriteSample() noexcept = default;
  explicit WriteSample(const char* string) : WriteSample(string, DDS_WriteParams_t()) {}
  WriteSample(const char* string, const DDS_WriteParams_t& info) : Base(string, info) { require_copy_of(string); }
  ZEMTRA_EXPORT WriteSample(WriteSampleRef<char*> ref);
  /// When it throws, the sample is as before; `ref` may designate the sample itself.
  ZEMTRA_EXPORT WriteSample& operator=(WriteSampleRef<char*> ref);

  operator WriteSampleRef<char*>() noexcept { return {data(), &info()}; }
};

/// A string to be written, presented as constant.
template <>
class WriteSample<const char*> : public details::SampleBaseCharPtr<DDS_WriteParams_t, true> {
  using Base = details::SampleBaseCharPtr<DDS_WriteParams_t, true>;

 public:
  WriteSample() noexcept = default;
  explicit WriteSample(const char* string) : WriteSample(string, DDS_WriteParams_t()) {}
  WriteSample(const char* string, const DDS_WriteParams_t& info) : Base(string, info) { require_copy_of(string); }
  ZEMTRA_EXPORT WriteSample(WriteSampleRef<const char*> ref);
  /// When it throws, the sample is as before; `ref` may designate the sample itself.
  ZEMTRA_EXPORT WriteSample& operator=(WriteSampleRef<const char*> ref);

  operator WriteSampleRef<const char*>() noexcept { return {data(), &info()}; }
};

/// A std::string to be written.
template <>
class WriteSample<std::string> {
 public:
  WriteSample() noexcept = default;
  explicit WriteSample(std::string data) noexcept : data_(std::move(data)) {}
  WriteSample(std::string data, const DDS_WriteParams_t& info) : data_(std::move(data)), info_(info, method_name) {}
  ZEMTRA_EXPORT WriteSample(WriteSampleRef<std::string> ref);
  ~WriteSample() = default;
  WriteSample(const WriteSample& other) : WriteSample(other.data_, other.info()) {}
  WriteSample(WriteSample&& other) noexcept { swap(other); }
  WriteSample& operator=(const WriteSample& other) {
    WriteSample copy(other);
    swap(copy);
    return *this;
  }
  WriteSample& operator=(WriteSample&& other) noexcept {
    WriteSample taken(std::move(other));
    swap(taken);
    return *this;
  }
  /// When it throws, the sample is as before; `ref` may designate the sample itself.
  ZEMTRA_EXPORT WriteSample& operator=(WriteSampleRef<std::string> ref);

  std::string& data() noexcept { return data_; }
  const std::string& data() const noexcept { return data_; }
  DDS_WriteParams_t& info() noexcept { return info_.value; }
  const DDS_WriteParams_t& info() const noexcept { return info_.value; }
  /// The sample's own identity, once it has been written.
  DDS_SampleIdentity_t identity() const { return info().identity; }
  /// The identity of the sample that this one answers.
  DDS_SampleIdentity_t related_identity() const { return info().related_sample_identity; }
  operator WriteSampleRef<std::string>() noexcept { return {&data(), &info()}; }

  void swap(WriteSample& other) noexcept {
    swap_data(other);
    info_.swap(other.info_);
    std::swap(word_after_info_, other.word_after_info_);
  }

 private:
  static constexpr const char* method_name = "WriteSample<std::string>::WriteSample";

  void swap_data(WriteSample& other) noexcept {
    std::swap(flag_, other.flag_);
    data_.swap(other.data_);
    std::swap(word_after_data_, other.word_after_data_);
  }

  // The flag and the words have their place in the layout of the class, and no meaning yet.
  bool flag_ = true;
  std::string data_;
  std::uint64_t word_after_data_ = 0;
  details::OwnedInfo<DDS_WriteParams_t> info_;
  std::uint64_t word_after_info_ = 0;
};

}  // namespace zemtra
