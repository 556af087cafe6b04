#include "types/cdr.hpp"

#include <cstring>

namespace dds {
namespace {

constexpr unsigned char cdr_big_endian = 0;
constexpr unsigned char cdr_little_endian = 1;

std::uint32_t to_number(const unsigned char* octets, bool little_endian) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) { number = number << 8 | octets[little_endian ? 3 - i : i]; }
  return number;
}

}  // namespace

void CdrSize::string(const char* text) noexcept {
  add_length();
  size_ += text == nullptr ? 0 : std::strlen(text) + 1;
}

void CdrSize::octets(const unsigned char* /*octets*/, std::int32_t count) noexcept {
  add_length();
  size_ += count < 0 ? 0 : static_cast<std::size_t>(count);
}

CdrWriter::CdrWriter(unsigned char* buffer, std::size_t capacity) noexcept : buffer_(buffer), capacity_(capacity) {
  constexpr unsigned char header[4] = {0, cdr_little_endian, 0, 0};
  put(header, sizeof header);
}

void CdrWriter::string(const char* text) noexcept {
  if (text == nullptr) {
    complete_ = false;
    return;
  }
  const std::size_t size = std::strlen(text) + 1;
  put_length(size);
  put(text, size);
}

void CdrWriter::octets(const unsigned char* octets, std::int32_t count) noexcept {
  if (count < 0 || (octets == nullptr && count > 0)) {
    complete_ = false;
    return;
  }
  put_length(static_cast<std::size_t>(count));
  put(octets, static_cast<std::size_t>(count));
}

void CdrWriter::put_length(std::size_t length) noexcept {
  constexpr unsigned char padding[3] = {};
  put(padding, (4 - position_ % 4) % 4);
  if (length > UINT32_MAX) {
    complete_ = false;
    return;
  }
  unsigned char field[4];
  for (std::size_t i = 0; i < sizeof field; ++i) { field[i] = static_cast<unsigned char>(length >> (8 * i)); }
  put(field, sizeof field);
}

void CdrWriter::put(const void* octets, std::size_t count) noexcept {
  complete_ = complete_ && count <= capacity_ - position_;
  if (!complete_ || count == 0) { return; }
  std::memcpy(buffer_ + position_, octets, count);
  position_ += count;
}

CdrReader::CdrReader(const unsigned char* buffer, std::size_t length) noexcept : buffer_(buffer), length_(length) {
  if (length < 4 || buffer[0] != 0 || buffer[1] > cdr_little_endian) {
    failed_ = true;
    return;
  }
  little_endian_ = buffer[1] != cdr_big_endian;
}

CdrView CdrReader::string() noexcept {
  const CdrView view = sequence();
  if (view.count == 0 || std::memchr(view.octets, '\0', view.count) != view.octets + view.count - 1) { return fail(); }
  return {view.octets, view.count - 1};
}

CdrView CdrReader::octets() noexcept {
  const CdrView view = sequence();
  return view.count > INT32_MAX ? fail() : view;
}

bool CdrReader::complete() const noexcept { return !failed_ && length_ - position_ < 4; }

CdrView CdrReader::sequence() noexcept {
  if (failed_) { return fail(); }
  const std::size_t remaining = length_ - position_;
  const std::size_t padding = (4 - position_ % 4) % 4;
  if (remaining < padding + 4) { return fail(); }
  const std::uint32_t count = to_number(buffer_ + position_ + padding, little_endian_);
  if (count > remaining - padding - 4) { return fail(); }
  const CdrView view{buffer_ + position_ + padding + 4, count};
  position_ += padding + 4 + count;
  return view;
}

CdrView CdrReader::fail() noexcept {
  failed_ = true;
  return {buffer_, 0};
}

}  // namespace dds
