#pragma once

#include <cstddef>
#include <cstdint>

#include <fastcdr/Cdr.h>
#include <fastcdr/FastBuffer.h>

namespace zemtra {
namespace details {

constexpr std::size_t longest_padding = 3;  // behind a sample

/// What stands behind an encapsulation header.
struct CdrBody {
  char* octets;  // only to be read
  std::size_t size;
  bool little_endian;
  bool valid;  // false when there is no such header: the rest is then empty
};
CdrBody cdr_body(const unsigned char* buffer, std::size_t length) noexcept;

/// Fast CDR over a buffer that stands behind its encapsulation header.
struct CdrStream {
  CdrStream(char* octets, std::size_t count, bool little_endian)
      : size(count),
        buffer(octets, count),
        cdr(buffer, little_endian ? eprosima::fastcdr::Cdr::LITTLE_ENDIANNESS : eprosima::fastcdr::Cdr::BIG_ENDIANNESS,
            eprosima::fastcdr::Cdr::DDS_CDR) {}

  std::size_t remaining() const { return size - position(); }
  std::size_t position() const { return cdr.getSerializedDataLength(); }
  /// Octets before the next number of that width.
  std::size_t padding(std::size_t width) const { return (width - position() % width) % width; }

  const std::size_t size;
  eprosima::fastcdr::FastBuffer buffer;
  eprosima::fastcdr::Cdr cdr;
};

}  // namespace details
}  // namespace zemtra
