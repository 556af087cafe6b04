#include <dds/memory.hpp>

#include <cstdint>
#include <cstring>

#include "memory/aligned_memory.hpp"

namespace {

void* duplicate(const void* source, std::size_t size) {
  void* copy = dds::allocate_aligned(size);
  if (copy != nullptr && size != 0) { std::memcpy(copy, source, size); }
  return copy;
}

void* allocate_zeroed(std::size_t size) {
  void* buffer = dds::allocate_aligned(size);
  if (buffer != nullptr && size != 0) { std::memset(buffer, 0, size); }
  return buffer;
}

}  // namespace

char* DDS_String_alloc(std::size_t length) {
  return length == SIZE_MAX ? nullptr : static_cast<char*>(allocate_zeroed(length + 1));
}

char* DDS_String_dup(const char* source) {
  return source == nullptr ? nullptr : static_cast<char*>(duplicate(source, std::strlen(source) + 1));
}

char* DDS_String_replace(char** target, const char* source) {
  char* copy = DDS_String_dup(source);
  DDS_String_free(*target);
  *target = copy;
  return copy;
}

void DDS_String_free(char* string) { dds::free_aligned(string); }

DDS_Octet* DDS_OctetBuffer_alloc(std::size_t size) { return static_cast<DDS_Octet*>(allocate_zeroed(size)); }

DDS_Octet* DDS_OctetBuffer_dup(const DDS_Octet* buffer, std::size_t size) {
  return buffer == nullptr ? nullptr : static_cast<DDS_Octet*>(duplicate(buffer, size));
}

void DDS_OctetBuffer_free(DDS_Octet* buffer) { dds::free_aligned(buffer); }
