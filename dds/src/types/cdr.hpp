#pragma once

#include <cstddef>
#include <cstdint>

namespace dds {

// CDR (common data representation) as the built-in types need it: strings and octet sequences. Lengths are aligned to
// 4 octets from the beginning of the buffer, which is the same as from the end of the 4-octet encapsulation header.

/// Adds up the size of a sample that `CdrWriter` writes.
class CdrSize {
 public:
  void string(const char* text) noexcept;
  void octets(const unsigned char* octets, std::int32_t count) noexcept;
  std::size_t total() const { return size_; }

 private:
  void add_length() { size_ = (size_ + 3) / 4 * 4 + 4; }
  std::size_t size_ = 4;  // of the encapsulation header
};

/// Writes little-endian CDR into a buffer of fixed capacity. Once something did not fit nothing more is written.
class CdrWriter {
 public:
  CdrWriter(unsigned char* buffer, std::size_t capacity) noexcept;
  /// A null text cannot be written.
  void string(const char* text) noexcept;
  /// A negative count, or null octets unless there are none, cannot be written.
  void octets(const unsigned char* octets, std::int32_t count) noexcept;
  bool complete() const { return complete_; }

 private:
  void put_length(std::size_t length) noexcept;
  void put(const void* octets, std::size_t count) noexcept;

  unsigned char* const buffer_;
  const std::size_t capacity_;
  std::size_t position_ = 0;
  bool complete_ = true;
};

/// Characters or octets that lie in the buffer that is read.
struct CdrView {
  const unsigned char* octets;
  std::size_t count;
};

/// Reads CDR of either endianness, whatever the octets are, without ever looking beyond the buffer: each length is
/// compared with what remains. After a fault views are empty and `complete` is false.
class CdrReader {
 public:
  CdrReader(const unsigned char* buffer, std::size_t length) noexcept;
  /// The characters without the terminator. A string without terminator, or with a NUL among its characters, is a
  /// fault.
  CdrView string() noexcept;
  /// At most as many as a `DDS_Long` counts.
  CdrView octets() noexcept;
  /// Whether all was well and nothing is left but padding.
  bool complete() const noexcept;

 private:
  /// The next octets, as many as their length field says.
  CdrView sequence() noexcept;
  CdrView fail() noexcept;

  const unsigned char* const buffer_;
  const std::size_t length_;
  std::size_t position_ = 4;  // after the encapsulation header; never above length_ unless failed_
  bool little_endian_ = true;
  bool failed_ = false;
};

}  // namespace dds
