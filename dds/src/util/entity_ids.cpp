#include "util/entity_ids.hpp"

#include <pthread.h>
#include <sys/random.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <new>

#include "util/deadline.hpp"

namespace dds {

namespace {

std::atomic<std::uint64_t> process_number{0};

void draw_process_number() { process_number.store(random_number(), std::memory_order_relaxed); }

}  // namespace

std::uint64_t random_number() {
  std::uint64_t number = 0;
  if (getrandom(&number, sizeof(number), 0) != sizeof(number)) {
    // Where the system gives none, no two processes have the same time and number.
    static std::atomic<std::uint64_t> calls{0};
    number = static_cast<std::uint64_t>(clock_nanoseconds(CLOCK_REALTIME)) * 0x9e3779b97f4a7c15u +
             static_cast<std::uint64_t>(getpid()) * 0xff51afd7ed558ccdu + calls.fetch_add(1, std::memory_order_relaxed);
  }
  return number != 0 ? number : 1;
}

DDS_InstanceHandle_t next_entity_handle() {
  static std::atomic<DDS_InstanceHandle_t> last{DDS_HANDLE_NIL};
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

// A process that branches off is another one, although it has the same memory.
DDS_GUID_t make_guid(DDS_InstanceHandle_t handle) {
  static const int drawn = [] {
    draw_process_number();
    return pthread_atfork(nullptr, nullptr, draw_process_number);
  }();
  static_cast<void>(drawn);
  const std::uint64_t process = process_number.load(std::memory_order_relaxed);
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
