#include <cstring>
#include <new>

#include <zemtra/details/cdr.hpp>

#include "cdr_stream.hpp"

namespace zemtra {
namespace details {

struct CdrWriter::Stream : CdrStream {
  using CdrStream::CdrStream;
};

namespace {

void write(eprosima::fastcdr::Cdr& cdr, const void* values, std::size_t width, std::size_t count) {
  switch (width) {
    case 1:
      cdr.serializeArray(static_cast<const std::uint8_t*>(values), count);
      break;
    case 2:
      cdr.serializeArray(static_cast<const std::uint16_t*>(values), count);
      break;
    case 4:
      cdr.serializeArray(static_cast<const std::uint32_t*>(values), count);
      break;
    default:
      cdr.serializeArray(static_cast<const std::uint64_t*>(values), count);
      break;
  }
}

}  // namespace

CdrWriter::CdrWriter(unsigned char* buffer, std::size_t capacity) noexcept : complete_(capacity >= cdr_header_size) {
  static_assert(sizeof(Stream) <= sizeof stream_);
  constexpr unsigned char header[cdr_header_size] = {0, 1, 0, 0};
  const std::size_t written = complete_ ? sizeof header : 0;
  if (complete_) { std::memcpy(buffer, header, sizeof header); }
  new (stream_) Stream(reinterpret_cast<char*>(buffer) + written, capacity - written, true);
}

CdrWriter::~CdrWriter() { stream().~Stream(); }

CdrWriter::Stream& CdrWriter::stream() noexcept { return *std::launder(reinterpret_cast<Stream*>(stream_)); }

void CdrWriter::values(const void* values, std::size_t width, std::size_t count) noexcept {
  if (!complete_ || count == 0) { return; }
  const std::size_t remaining = stream().remaining();
  const std::size_t padding = stream().padding(width);
  complete_ = padding <= remaining && count <= (remaining - padding) / width;
  if (!complete_) { return; }
  try {
    // Fast CDR would skip the padding, and send what happened to be in the buffer.
    constexpr std::uint8_t zeros[7] = {};
    write(stream().cdr, zeros, 1, padding);
    write(stream().cdr, values, width, count);
  } catch (const eprosima::fastcdr::exception::Exception&) { complete_ = false; }
}

void CdrWriter::length(std::size_t length) noexcept {
  const auto field = static_cast<std::uint32_t>(length);
  complete_ = complete_ && field == length;
  values(&field, sizeof field, 1);
}

}  // namespace details
}  // namespace zemtra
