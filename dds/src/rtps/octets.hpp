#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "rtps/frame.hpp"

namespace dds::rtps {

/// Appends numbers and texts to octets. Throws `std::bad_alloc`.
class OctetWriter {
 public:
  explicit OctetWriter(std::vector<unsigned char>& octets) : octets_(octets) {}
  template <class Number>
  void number(Number value) {
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
      octets_.push_back(static_cast<unsigned char>(static_cast<std::uint64_t>(value) >> (8 * i)));
    }
  }
  void guid(const DDS_GUID_t& guid) { octets_.insert(octets_.end(), guid.value, guid.value + sizeof(guid.value)); }
  void text(const char* text, std::size_t size) {
    number(static_cast<std::uint32_t>(size));
    octets_.insert(octets_.end(), text, text + size);
  }
  void text(const std::string& text_value) { text(text_value.data(), text_value.size()); }
  /// A text that may be null.
  void optional_text(const char* value) {
    number(static_cast<std::uint8_t>(value != nullptr));
    if (value != nullptr) { text(value, std::strlen(value)); }
  }

 private:
  std::vector<unsigned char>& octets_;
};

/// Reads what `OctetWriter` wrote, whatever the octets are: each length is compared with what remains. After a fault
/// everything is zero or empty, and `good` is false.
class OctetReader {
 public:
  explicit OctetReader(Octets octets) : octets_(octets) {}
  bool good() const { return !failed_; }
  std::size_t remaining() const { return octets_.size; }

  template <class Number>
  Number number() {
    const Octets taken = take(sizeof(Number));
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < taken.size; ++i) { value |= std::uint64_t{taken.data[i]} << (8 * i); }
    return static_cast<Number>(value);
  }
  DDS_GUID_t guid() {
    DDS_GUID_t guid;
    const Octets taken = take(sizeof(guid.value));
    if (taken.size != 0) { std::memcpy(guid.value, taken.data, taken.size); }
    return guid;
  }
  /// Without NUL among its characters. Throws `std::bad_alloc`.
  std::string text() {
    const Octets taken = take(number<std::uint32_t>());
    if (taken.size != 0 && std::memchr(taken.data, 0, taken.size) != nullptr) { failed_ = true; }
    return failed_ || taken.size == 0 ? std::string()
                                      : std::string(reinterpret_cast<const char*>(taken.data), taken.size);
  }

 private:
  Octets take(std::size_t size) {
    if (failed_ || size > octets_.size) {
      failed_ = true;
      return {};
    }
    const Octets taken{octets_.data, size};
    octets_.data += size;
    octets_.size -= size;
    return taken;
  }

  Octets octets_;
  bool failed_ = false;
};

}  // namespace dds::rtps
