#pragma once

#include <dds/builtin_types.hpp>
#include <dds/memory.hpp>
#include <dds/sample_info.hpp>
#include <dds/write_params.hpp>
#include <requestreply/exception.hpp>
#include <utility>

// What samples are made of: data of the built-in structures and infos, each the owner of what it refers to.

namespace zemtra {
namespace details {

/// Reports, as every sample does, that a copy could not be made for want of memory. Does not return.
inline void report_exhausted(const char* method_name, const char* message) {
  check_retcode(DDS_RETCODE_OUT_OF_RESOURCES, method_name, DDS_LOG_BAD_PARAMETER_s, message, false);
}

/// The same for the cookie of write parameters.
inline void report_uncopied_params(const char* method_name) {
  report_exhausted(method_name, "DDS_WriteParams_t failed to allocate memory");
}

/// A copy of as many octets as the length says; null for a null buffer, a negative length or exhausted memory.
inline DDS_Octet* duplicate(const DDS_Octet* buffer, DDS_Long length) {
  return buffer == nullptr || length < 0 ? nullptr : DDS_OctetBuffer_dup(buffer, static_cast<std::size_t>(length));
}

// `copy_data` fills a fresh value with copies of what `source` points to; a pointer is null when the source's is, or
// when memory is exhausted.

inline void copy_data(DDS_Octets& fresh, const DDS_Octets& source) {
  fresh.length = source.length;
  fresh.value = duplicate(source.value, source.length);
}
inline void copy_data(DDS_KeyedString& fresh, const DDS_KeyedString& source) {
  DDS_String_replace(&fresh.key, source.key);
  DDS_String_replace(&fresh.value, source.value);
}
inline void copy_data(DDS_KeyedOctets& fresh, const DDS_KeyedOctets& source) {
  fresh.length = source.length;
  DDS_String_replace(&fresh.key, source.key);
  fresh.value = duplicate(source.value, source.length);
}

inline void release_data(DDS_Octets& data) noexcept {
  if (data.value != nullptr) { DDS_OctetBuffer_free(data.value); }
}
inline void release_data(DDS_KeyedString& data) noexcept {
  if (data.key != nullptr) { DDS_String_free(data.key); }
  if (data.value != nullptr) { DDS_String_free(data.value); }
}
inline void release_data(DDS_KeyedOctets& data) noexcept {
  if (data.key != nullptr) { DDS_String_free(data.key); }
  if (data.value != nullptr) { DDS_OctetBuffer_free(data.value); }
}

/// Whether no pointer is null.
inline bool is_complete(const DDS_Octets& data) { return data.value != nullptr; }
template <class Keyed>
bool is_complete(const Keyed& data) {
  return data.key != nullptr && data.value != nullptr;
}

/// Whether no pointer is null but those that are null in the source.
inline bool is_copy(const DDS_Octets& data, const DDS_Octets& source) {
  return data.value != nullptr || source.value == nullptr;
}
template <class Keyed>
bool is_copy(const Keyed& data, const Keyed& source) {
  return (data.key != nullptr || source.key == nullptr) && (data.value != nullptr || source.value == nullptr);
}

/// A built-in structure that owns what it points to.
template <class Data>
class OwnedData {
 public:
  OwnedData() noexcept = default;
  explicit OwnedData(const Data& source) { copy_data(value, source); }
  ~OwnedData() { release_data(value); }
  OwnedData(const OwnedData&) = delete;
  OwnedData& operator=(const OwnedData&) = delete;

  Data value;
};

template <class Info>
class OwnedInfo;

template <>
class OwnedInfo<DDS_SampleInfo> {
 public:
  OwnedInfo() noexcept { DDS_SampleInfo_initialize(&value); }
  OwnedInfo(const DDS_SampleInfo& source, const char* /*method_name*/) : OwnedInfo() {
    DDS_SampleInfo_copy(&value, &source);
  }
  ~OwnedInfo() { DDS_SampleInfo_finalize(&value); }
  OwnedInfo(const OwnedInfo&) = delete;
  OwnedInfo& operator=(const OwnedInfo&) = delete;

  void swap(OwnedInfo& other) noexcept { std::swap(value, other.value); }

  DDS_SampleInfo value;
};

template <>
class OwnedInfo<DDS_WriteParams_t> {
 public:
  OwnedInfo() noexcept = default;
  /// Throws `OutOfResourcesException` in the name of `method_name` when there is no memory for the cookie.
  OwnedInfo(const DDS_WriteParams_t& source, const char* method_name) {
    DDS_WriteParams_t_initialize(&value);
    if (DDS_WriteParams_t_copy(&value, &source) != DDS_RETCODE_OK) { report_uncopied_params(method_name); }
  }
  OwnedInfo(const OwnedInfo&) = delete;
  OwnedInfo& operator=(const OwnedInfo&) = delete;

  void swap(OwnedInfo& other) noexcept {
    // The rest has no memory of its own, so that exchanging it by copies cannot fail once the cookies are out.
    DDS_OctetSeq cookie;
    DDS_OctetSeq others_cookie;
    cookie.swap(value.cookie.value);
    others_cookie.swap(other.value.cookie.value);
    std::swap(value, other.value);
    value.cookie.value.swap(others_cookie);
    other.value.cookie.value.swap(cookie);
  }

  DDS_WriteParams_t value;
};

}  // namespace details
}  // namespace zemtra
