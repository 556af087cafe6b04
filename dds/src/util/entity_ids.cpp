#include "util/entity_ids.hpp"

#include <atomic>
#include <cstdint>
#include <functional>
#include <new>
#include <random>

namespace dds {

DDS_InstanceHandle_t next_entity_handle() {
  static std::atomic<DDS_InstanceHandle_t> last{DDS_HANDLE_NIL};
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

DDS_GUID_t make_guid(DDS_InstanceHandle_t handle) {
  static const std::uint64_t process = [] {
    std::random_device random;
    return std::uint64_t{random()} << 32 | random();
  }();
  DDS_GUID_t guid;
  for (unsigned i = 0; i < 8; ++i) {
    guid.value[i] = static_cast<DDS_Octet>(process >> (8 * i));
    guid.value[15 - i] = static_cast<DDS_Octet>(handle >> (8 * i));
  }
  return guid;
}

void read_key(const DDS_TypePlugin& type, const void* sample, std::string& key) {
  key.resize(key.capacity());
  const auto buffer = [&] { return reinterpret_cast<unsigned char*>(key.data()); };
  const std::size_t size = type.key(sample, buffer(), key.size());
  if (size == SIZE_MAX) { throw std::bad_alloc(); }
  if (size > key.size()) {
    key.resize(size);
    type.key(sample, buffer(), size);
  }
  key.resize(size);
}

DDS_InstanceHandle_t hash_key(const std::string& key) {
  const std::size_t hash = std::hash<std::string>()(key);
  return hash == DDS_HANDLE_NIL ? 1 : hash;
}

}  // namespace dds
