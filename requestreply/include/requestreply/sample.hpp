#pragma once

#include <requestreply/builtin_samples.hpp>
#include <requestreply/owned_parts.hpp>
#include <requestreply/sample_ref.hpp>
#include <requestreply/string_samples.hpp>
#include <string>
#include <type_traits>
#include <utility>

// Samples as values. They own deep copies of all they hold; one thread at a time may change one. Copies are as
// expensive as copying the data; moves never throw unless the data's do, and leave an empty sample.
//
// builtin_samples.hpp and string_samples.hpp have the samples of the middleware's built-in types.

namespace zemtra {
namespace details {

/// What samples of received and of written data of `T`, any copyable type with a default value, have in common.
template <class T, class Info>
class ValueSample {
 public:
  T& data() noexcept { return data_; }
  const T& data() const noexcept { return data_; }
  Info& info() noexcept { return info_.value; }
  const Info& info() const noexcept { return info_.value; }
  /// The sample's own identity.
  DDS_SampleIdentity_t identity() const { return identity_of(info()); }
  /// The identity of the sample that this one answers.
  DDS_SampleIdentity_t related_identity() const { return info().related_sample_identity; }

  void swap(ValueSample& other) noexcept(std::is_nothrow_swappable<T>::value) {
    using std::swap;
    swap(data_, other.data_);
    info_.swap(other.info_);
  }

 protected:
  ValueSample() = default;
  explicit ValueSample(T&& data) : data_(std::move(data)) {}
  ValueSample(T&& data, const Info& info) : data_(std::move(data)), info_(info, "WriteSample<T>::WriteSample") {}
  ValueSample(const T& data, const Info& info) : data_(data), info_(info, "WriteSample<T>::WriteSample") {}
  ~ValueSample() = default;
  ValueSample(const ValueSample& other) : ValueSample(other.data(), other.info()) {}
  // NOLINTBEGIN(performance-noexcept-move-constructor): a type whose moves throw has samples whose moves throw
  ValueSample(ValueSample&& other) noexcept(moves_without_throwing) { swap(other); }
  ValueSample& operator=(const ValueSample& other) {
    ValueSample copy(other);
    swap(copy);
    return *this;
  }
  ValueSample& operator=(ValueSample&& other) noexcept(moves_without_throwing) {
    ValueSample taken(std::move(other));
    swap(taken);
    return *this;
  }
  // NOLINTEND(performance-noexcept-move-constructor)

 private:
  static constexpr bool moves_without_throwing =
      std::is_nothrow_default_constructible<T>::value && std::is_nothrow_swappable<T>::value;

  T data_{};
  OwnedInfo<Info> info_;
};

}  // namespace details

/// A received sample.
template <class T>
class Sample : public details::ValueSample<T, DDS_SampleInfo> {
  using Base = details::ValueSample<T, DDS_SampleInfo>;

 public:
  /// No data.
  Sample() = default;
  /// Data that the application itself provides.
  explicit Sample(T data) : Base(std::move(data)) { this->info().valid_data = true; }
  Sample(T data, const DDS_SampleInfo& info) : Base(std::move(data), info) {}
  Sample(SampleRef<T> ref) : Base(ref.data(), ref.info()) {}
  /// When it throws, the sample is as before; `ref` may designate the sample itself.
  Sample& operator=(SampleRef<T> ref) {
    *this = Sample(ref);
    return *this;
  }

  /// Whether the data means anything: false for a sample that only tells of a change of its instance's state.
  bool has_data() const noexcept { return this->info().valid_data; }
  operator SampleRef<T>() noexcept { return {&this->data(), &this->info()}; }
};

/// A sample to be written. A write leaves its identity in the info.
template <class T>
class WriteSample : public details::ValueSample<T, DDS_WriteParams_t> {
  using Base = details::ValueSample<T, DDS_WriteParams_t>;

 public:
  WriteSample() = default;
  explicit WriteSample(T data) : Base(std::move(data)) {}
  WriteSample(T data, const DDS_WriteParams_t& info) : Base(std::move(data), info) {}
  WriteSample(WriteSampleRef<T> ref) : Base(ref.data(), ref.info()) {}
  /// When it throws, the sample is as before; `ref` may designate the sample itself.
  WriteSample& operator=(WriteSampleRef<T> ref) {
    *this = WriteSample(ref);
    return *this;
  }

  operator WriteSampleRef<T>() noexcept { return {&this->data(), &this->info()}; }
};

}  // namespace zemtra
