#include <new>

#include <zemtra/details/cdr.hpp>

#include "cdr_stream.hpp"

namespace zemtra {
namespace details {

struct CdrReader::Stream : CdrStream {
  using CdrStream::CdrStream;
};

namespace {

constexpr unsigned char cdr_big_endian = 0;
constexpr unsigned char cdr_little_endian = 1;

void read(eprosima::fastcdr::Cdr& cdr, void* values, std::size_t width, std::size_t count) {
  switch (width) {
    case 1:
      cdr.deserializeArray(static_cast<std::uint8_t*>(values), count);
      break;
    case 2:
      cdr.deserializeArray(static_cast<std::uint16_t*>(values), count);
      break;
    case 4:
      cdr.deserializeArray(static_cast<std::uint32_t*>(values), count);
      break;
    default:
      cdr.deserializeArray(static_cast<std::uint64_t*>(values), count);
      break;
  }
}

}  // namespace

CdrBody cdr_body(const unsigned char* buffer, std::size_t length) noexcept {
  if (length < cdr_header_size || buffer[0] != 0 || buffer[1] > cdr_little_endian) { return {nullptr, 0, true, false}; }
  auto* const octets = const_cast<char*>(reinterpret_cast<const char*>(buffer)) + cdr_header_size;
  return {octets, length - cdr_header_size, buffer[1] != cdr_big_endian, true};
}

CdrReader::CdrReader(const unsigned char* buffer, std::size_t length) noexcept {
  static_assert(sizeof(Stream) <= sizeof stream_);
  const CdrBody body = cdr_body(buffer, length);
  failed_ = !body.valid;
  new (stream_) Stream(body.octets, body.size, body.little_endian);
}

CdrReader::~CdrReader() { stream().~Stream(); }

CdrReader::Stream& CdrReader::stream() noexcept { return *std::launder(reinterpret_cast<Stream*>(stream_)); }

bool CdrReader::fail() noexcept {
  failed_ = true;
  return false;
}

bool CdrReader::values(void* values, std::size_t width, std::size_t count) noexcept {
  if (failed_) { return false; }
  if (count == 0) { return true; }
  const std::size_t padding = stream().padding(width);
  if (padding > stream().remaining() || count > (stream().remaining() - padding) / width) { return fail(); }
  try {
    read(stream().cdr, values, width, count);
  } catch (const eprosima::fastcdr::exception::Exception&) { return fail(); }
  return true;
}

bool CdrReader::flag(bool& value) noexcept {
  unsigned char octet = 0;
  if (!values(&octet, sizeof octet, 1)) { return false; }
  if (octet > 1) { return fail(); }
  value = octet == 1;
  return true;
}

bool CdrReader::length(std::size_t& length, std::size_t element_size) noexcept {
  std::uint32_t field = 0;
  if (!values(&field, sizeof field, 1)) { return false; }
  if (field > stream().remaining() / element_size) { return fail(); }
  length = field;
  return true;
}

bool CdrReader::string(const char*& text, std::size_t& size) noexcept {
  std::size_t length_with_nul = 0;
  if (!length(length_with_nul, 1)) { return false; }
  const char* const first = stream().cdr.getCurrentPosition();
  // The terminator is read, not jumped over, for Fast CDR aligns by what it has read last.
  char terminator = '\0';
  if (length_with_nul == 0 || !stream().cdr.jump(length_with_nul - 1)) { return fail(); }
  if (!values(&terminator, 1, 1) || terminator != '\0') { return fail(); }
  text = first;
  size = length_with_nul - 1;
  return true;
}

bool CdrReader::complete() noexcept { return !failed_ && stream().remaining() <= longest_padding; }

}  // namespace details
}  // namespace zemtra
