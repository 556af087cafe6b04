#pragma once

#include <cstddef>
#include <cstdint>

#include <zemtra/export.hpp>

namespace zemtra {
namespace details {

// CDR (common data representation, version 1) of the values that the types of applications are made of. Numbers are
// aligned to their own width from the end of the 4-octet encapsulation header.

constexpr std::size_t cdr_header_size = 4;
/// How much memory an element of a container may take for an octet, so that little from outside cannot take much.
constexpr std::size_t most_memory_of_octet = 64;

/// Adds up the size of what a `CdrWriter` writes.
class CdrSize {
 public:
  /// `count` numbers of `width` octets: 1, 2, 4 or 8.
  void values(const void* /*values*/, std::size_t width, std::size_t count) {
    if (count == 0) { return; }
    size_ = (size_ + width - 1) / width * width + width * count;
  }
  void length(std::size_t /*length*/) { values(nullptr, 4, 1); }
  /// The header included.
  std::size_t total() const { return size_ + cdr_header_size; }

 private:
  std::size_t size_ = 0;
};

/// Writes little-endian CDR into a buffer of fixed capacity. Once something did not fit nothing more is written.
class ZEMTRA_TYPED_EXPORT CdrWriter {
 public:
  /// Writes the header. The buffer must outlive the object.
  CdrWriter(unsigned char* buffer, std::size_t capacity) noexcept;
  ~CdrWriter();
  CdrWriter(const CdrWriter&) = delete;
  CdrWriter& operator=(const CdrWriter&) = delete;

  /// `count` numbers of `width` octets (1, 2, 4 or 8) that lie one behind another.
  void values(const void* values, std::size_t width, std::size_t count) noexcept;
  /// The length of a sequence or string; one that does not fit into 32 bits cannot be written.
  void length(std::size_t length) noexcept;
  bool complete() const { return complete_; }

 private:
  struct Stream;
  Stream& stream() noexcept;

  alignas(std::max_align_t) unsigned char stream_[192];  // holds the stream, so that it costs no allocation
  bool complete_ = true;
};

/// Reads CDR of either endianness, whatever the octets are, without ever looking beyond the buffer: each length is
/// compared with what remains. After a fault everything else is one too.
class ZEMTRA_TYPED_EXPORT CdrReader {
 public:
  /// Reads the header. The buffer must outlive the object.
  CdrReader(const unsigned char* buffer, std::size_t length) noexcept;
  ~CdrReader();
  CdrReader(const CdrReader&) = delete;
  CdrReader& operator=(const CdrReader&) = delete;

  // All of these return false after a fault, and leave what they should have filled as it was.

  /// `count` numbers of `width` octets (1, 2, 4 or 8), one behind another; any octets must be valid for them.
  bool values(void* values, std::size_t width, std::size_t count) noexcept;
  /// An octet that is 0 or 1.
  bool flag(bool& value) noexcept;
  /// The length of a sequence, unless that many elements of `element_size` octets at the least cannot follow.
  bool length(std::size_t& length, std::size_t element_size) noexcept;
  /// The characters of a string, which lie in the buffer, without the terminator that must be there.
  bool string(const char*& text, std::size_t& size) noexcept;

  /// Whether all was well and nothing is left but padding, of 3 octets at the most.
  bool complete() noexcept;

 private:
  struct Stream;
  Stream& stream() noexcept;
  bool fail() noexcept;

  alignas(std::max_align_t) unsigned char stream_[192];  // holds the stream, so that it costs no allocation
  bool failed_ = false;
};

}  // namespace details
}  // namespace zemtra
