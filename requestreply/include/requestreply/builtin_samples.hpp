#pragma once

#include <dds/builtin_types.hpp>
#include <requestreply/export.hpp>
#include <requestreply/owned_parts.hpp>
#include <requestreply/sample_ref.hpp>
#include <utility>

// Samples of the middleware's built-in structures. What their pointers refer to is made and released with the functions
// of dds/memory.hpp, also by the application when it changes the data of a sample itself.
//
// A copy that fails for want of memory is reported by `OutOfResourcesException`. Copies of samples and of data keep
// null pointers; construction from a reference refuses them in the same way as a failed copy, except for
// `Sample<DDS_Octets>`.

namespace DDS {

/// Exchanges what the two hold, without copying.
ZEMTRA_EXPORT void swap(DDS_KeyedString& a, DDS_KeyedString& b) noexcept;
/// Exchanges what the two hold, without copying.
ZEMTRA_EXPORT void swap(DDS_KeyedOctets& a, DDS_KeyedOctets& b) noexcept;

}  // namespace DDS

namespace zemtra {

template <class T>
class Sample;
template <class T>
class WriteSample;

/// Octets that somebody else holds. Empty for a null buffer, whatever its length says.
class OctetsView {
 public:
  explicit OctetsView(const DDS_Octets& octets) noexcept : OctetsView(octets.value, octets.length) {}
  explicit OctetsView(const DDS_KeyedOctets& octets) noexcept : OctetsView(octets.value, octets.length) {}

  const DDS_Octet* data() const noexcept { return data_; }
  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  const DDS_Octet* begin() const noexcept { return data_; }
  const DDS_Octet* end() const noexcept { return data_ + size_; }

 private:
  OctetsView(const DDS_Octet* data, DDS_Long length) noexcept
      : data_(data), size_(data == nullptr || length < 0 ? 0 : static_cast<std::size_t>(length)) {}

  const DDS_Octet* data_;  // not owned
  std::size_t size_;
};

namespace details {

/// Under which name, and with what message, a sample reports that its data could not be copied.
template <class SampleOfData>
struct CopyFailure;
template <>
struct CopyFailure<Sample<DDS_Octets>> {
  static constexpr const char* method_name = "Sample<DDS::Octets>::Sample";
  static constexpr const char* message = "DDS::Octets failed to allocate memory";
};
template <>
struct CopyFailure<Sample<DDS_KeyedString>> {
  static constexpr const char* method_name = "Sample<DDS::KeyedSting>::Sample";
  static constexpr const char* message = "DDS::KeyedString failed to allocate memory";
};
template <>
struct CopyFailure<Sample<DDS_KeyedOctets>> {
  static constexpr const char* method_name = "Sample<DDS::KeyedOctets>::Sample";
  static constexpr const char* message = "DDS::KeyedOctets failed to allocate memory";
};
template <>
struct CopyFailure<WriteSample<DDS_Octets>> {
  static constexpr const char* method_name = "WriteSample<DDS::Octets>::WriteSample";
  static constexpr const char* message = "DDS::Octets failed to allocate memory";
};
template <>
struct CopyFailure<WriteSample<DDS_KeyedString>> {
  static constexpr const char* method_name = "WriteSample<DDS::KeyedSting>::WriteSample";
  static constexpr const char* message = "DDS::KeyedString failed to allocate memory";
};
template <>
struct CopyFailure<WriteSample<DDS_KeyedOctets>> {
  static constexpr const char* method_name = "WriteSample<DDS::KeyedOctets>::WriteSample";
  static constexpr const char* message = "DDS::KeyedOctets failed to allocate memory";
};

/// What the samples of the built-in structures have in common.
template <class SampleOfData, class Data, class Info>
class StructSample {
 public:
  Data& data() noexcept { return data_.value; }
  const Data& data() const noexcept { return data_.value; }
  Info& info() noexcept { return info_.value; }
  const Info& info() const noexcept { return info_.value; }
  /// The sample's own identity.
  DDS_SampleIdentity_t identity() const { return identity_of(info()); }
  /// The identity of the sample that this one answers.
  DDS_SampleIdentity_t related_identity() const { return info().related_sample_identity; }

  void swap(StructSample& other) noexcept {
    std::swap(data_.value, other.data_.value);
    info_.swap(other.info_);
  }

 protected:
  using Failure = CopyFailure<SampleOfData>;
  /// Which null pointers in a fresh copy mean that it failed.
  enum class Check { none, copied, complete };

  StructSample() noexcept = default;
  StructSample(const Data& data, const Info& info, Check check) : data_(data), info_(info, Failure::method_name) {
    const bool failed = (check == Check::complete && !is_complete(data_.value)) ||
                        (check == Check::copied && !is_copy(data_.value, data));
    if (failed) { report_exhausted(Failure::method_name, Failure::message); }
  }
  ~StructSample() = default;
  StructSample(const StructSample& other) : StructSample(other.data(), other.info(), Check::copied) {}
  StructSample(StructSample&& other) noexcept { swap(other); }
  StructSample& operator=(const StructSample& other) {
    StructSample copy(other);
    swap(copy);
    return *this;
  }
  StructSample& operator=(StructSample&& other) noexcept {
    StructSample taken(std::move(other));
    swap(taken);
    return *this;
  }

 private:
  OwnedData<Data> data_;  // made before the info, released after it
  OwnedInfo<Info> info_;
};

template <class Data>
using StructReadSample = StructSample<Sample<Data>, Data, DDS_SampleInfo>;
template <class Data>
using StructWriteSample = StructSample<WriteSample<Data>, Data, DDS_WriteParams_t>;

}  // namespace details

/// Received octets. Construction from and assignment of a reference do not report that the octets could not be copied:
/// the buffer is then null and the length as referenced, `has_data()` is false, an `OctetsView` of it is empty, and it
/// cannot be written.
template <>
class Sample<DDS_Octets> : public details::StructReadSample<DDS_Octets> {
  using Base = details::StructReadSample<DDS_Octets>;

 public:
  ZEMTRA_EXPORT static const DDS_Long DEFAULT_VALUE_SIZE = 255;

  /// No data.
  Sample() noexcept = default;
  explicit Sample(const DDS_Octets& data) : Base(data, DDS_SampleInfo(), Check::copied) { info().valid_data = true; }
  Sample(const DDS_Octets& data, const DDS_SampleInfo& info) : Base(data, info, Check::copied) {}
  ZEMTRA_EXPORT Sample(SampleRef<DDS_Octets> ref);
  /// In place: the former octets are released first, unless `ref` designates some of them.
  ZEMTRA_EXPORT Sample& operator=(SampleRef<DDS_Octets> ref);

  /// Whether the data means anything: false for a sample that only tells of a change of its instance's state, and for
  /// one whose octets could not be copied.
  bool has_data() const noexcept { return info().valid_data && (data().value != nullptr || data().length == 0); }
  operator SampleRef<DDS_Octets>() noexcept { return {&data(), &info()}; }
};

/// A received string with its key.
template <>
class Sample<DDS_KeyedString> : public details::StructReadSample<DDS_KeyedString> {
  using Base = details::StructReadSample<DDS_KeyedString>;

 public:
  Sample() noexcept = default;
  explicit Sample(const DDS_KeyedString& data) : Base(data, DDS_SampleInfo(), Check::copied) {
    info().valid_data = true;
  }
  Sample(const DDS_KeyedString& data, const DDS_SampleInfo& info) : Base(data, info, Check::copied) {}
  ZEMTRA_EXPORT Sample(SampleRef<DDS_KeyedString> ref);
  /// When it throws, the sample is as before; `ref` may designate the sample itself.
  ZEMTRA_EXPORT Sample& operator=(SampleRef<DDS_KeyedString> ref);

  /// Whether the data means anything: false for a sample that only tells of a change of its instance's state.
  bool has_data() const noexcept { return info().valid_data; }
  operator SampleRef<DDS_KeyedString>() noexcept { return {&data(), &info()}; }
};

/// Received octets with their key.
template <>
class Sample<DDS_KeyedOctets> : public details::StructReadSample<DDS_KeyedOctets> {
  using Base = details::StructReadSample<DDS_KeyedOctets>;

 public:
  Sample() noexcept = default;
  explicit Sample(const DDS_KeyedOctets& data) : Base(data, DDS_SampleInfo(), Check::copied) {
    info().valid_data = true;
  }
  Sample(const DDS_KeyedOctets& data, const DDS_SampleInfo& info) : Base(data, info, Check::copied) {}
  ZEMTRA_EXPORT Sample(SampleRef<DDS_KeyedOctets> ref);
  /// When it throws, the sample is as before; `ref` may designate the sample itself.
  ZEMTRA_EXPORT Sample& operator=(SampleRef<DDS_KeyedOctets> ref);

  /// Whether the data means anything: false for a sample that only tells of a change of its instance's state.
  bool has_data() const noexcept { return info().valid_data; }
  operator SampleRef<DDS_KeyedOctets>() noexcept { return {&data(), &info()}; }
};

/// Octets to be written.
template <>
class WriteSample<DDS_Octets> : public details::StructWriteSample<DDS_Octets> {
  using Base = details::StructWriteSample<DDS_Octets>;

 public:
  ZEMTRA_EXPORT static const DDS_Long DEFAULT_VALUE_SIZE = 255;

  WriteSample() noexcept = default;
  explicit WriteSample(const DDS_Octets& data) : Base(data, DDS_WriteParams_t(), Check::copied) {}
  WriteSample(const DDS_Octets& data, const DDS_WriteParams_t& info) : Base(data, info, Check::copied) {}
  ZEMTRA_EXPORT WriteSample(WriteSampleRef<DDS_Octets> ref);
  /// When it throws, the sample is as before; `ref` may designate the sample itself.
  ZEMTRA_EXPORT WriteSample& operator=(WriteSampleRef<DDS_Octets> ref);

  operator WriteSampleRef<DDS_Octets>() noexcept { return {&data(), &info()}; }
};

/// A string to be written, with its key.
template <>
class WriteSample<DDS_KeyedString> : public details::StructWriteSample<DDS_KeyedString> {
  using Base = details::StructWriteSample<DDS_KeyedString>;

 public:
  WriteSample() noexcept = default;
  explicit WriteSample(const DDS_KeyedString& data) : Base(data, DDS_WriteParams_t(), Check::copied) {}
  WriteSample(const DDS_KeyedString& data, const DDS_WriteParams_t& info) : Base(data, info, Check::copied) {}
  ZEMTRA_EXPORT WriteSample(WriteSampleRef<DDS_KeyedString> ref);
  /// When it throws, the sample is as before; `ref` may designate the sample itself.
  ZEMTRA_EXPORT WriteSample& operator=(WriteSampleRef<DDS_KeyedString> ref);

  operator WriteSampleRef<DDS_KeyedString>() noexcept { return {&data(), &info()}; }
};

/// Octets to be written, with their key.
template <>
class WriteSample<DDS_KeyedOctets> : public details::StructWriteSample<DDS_KeyedOctets> {
  using Base = details::StructWriteSample<DDS_KeyedOctets>;

 public:
  WriteSample() noexcept = default;
  explicit WriteSample(const DDS_KeyedOctets& data) : Base(data, DDS_WriteParams_t(), Check::copied) {}
  WriteSample(const DDS_KeyedOctets& data, const DDS_WriteParams_t& info) : Base(data, info, Check::copied) {}
  ZEMTRA_EXPORT WriteSample(WriteSampleRef<DDS_KeyedOctets> ref);
  /// When it throws, the sample is as before; `ref` may designate the sample itself.
  ZEMTRA_EXPORT WriteSample& operator=(WriteSampleRef<DDS_KeyedOctets> ref);

  operator WriteSampleRef<DDS_KeyedOctets>() noexcept { return {&data(), &info()}; }
};

}  // namespace zemtra
