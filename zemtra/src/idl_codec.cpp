#include <cstring>

#include <zemtra/details/cdr.hpp>
#include <zemtra/details/idl_codec.hpp>

#include "cdr_stream.hpp"

namespace zemtra {
namespace details {

namespace {

/// Counts by writing: the generated functions that count are wrong about wide strings and about strings with a NUL.
bool measure(const void* sample, IdlWrite write, std::size_t& size) noexcept {
  try {
    eprosima::fastcdr::FastBuffer growing;
    eprosima::fastcdr::Cdr cdr(growing, eprosima::fastcdr::Cdr::LITTLE_ENDIANNESS, eprosima::fastcdr::Cdr::DDS_CDR);
    write(sample, cdr);
    size = cdr.getSerializedDataLength();
    return true;
  } catch (...) { return false; }
}

/// False when the buffer is too small. Fast CDR skips padding and leaves there what was in the buffer, so that is zero.
bool write_zeroed(const void* sample, IdlWrite write, unsigned char* buffer, std::size_t capacity,
                  std::size_t& size) noexcept {
  if (capacity > 0) { std::memset(buffer, 0, capacity); }
  try {
    CdrStream stream(reinterpret_cast<char*>(buffer), capacity, true);
    write(sample, stream.cdr);
    size = stream.position();
    return true;
  } catch (...) { return false; }
}

}  // namespace

std::size_t idl_size(const void* sample, IdlWrite write) noexcept {
  std::size_t size = 0;
  return measure(sample, write, size) ? size + cdr_header_size : 0;
}

bool idl_write(const void* sample, IdlWrite write, unsigned char* buffer, std::size_t capacity) noexcept {
  if (!CdrWriter(buffer, capacity).complete()) { return false; }
  std::size_t size = 0;
  return write_zeroed(sample, write, buffer + cdr_header_size, capacity - cdr_header_size, size);
}

bool idl_read(void* sample, IdlRead read, const unsigned char* buffer, std::size_t length) noexcept {
  const CdrBody body = cdr_body(buffer, length);
  if (!body.valid) { return false; }
  try {
    CdrStream stream(body.octets, body.size, body.little_endian);
    read(sample, stream.cdr);
    return stream.remaining() <= longest_padding;
  } catch (...) { return false; }
}

std::size_t idl_key(const void* sample, IdlWrite write, unsigned char* buffer, std::size_t capacity) noexcept {
  std::size_t size = 0;
  if (write_zeroed(sample, write, buffer, capacity, size) || measure(sample, write, size)) { return size; }
  return SIZE_MAX;
}

}  // namespace details
}  // namespace zemtra
