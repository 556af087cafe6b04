#include "round_trip.hpp"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include "allocated.hpp"

namespace fuzz {

namespace {

void expect(bool good, const char* what) {
  if (good) { return; }
  std::fprintf(stderr, "FAILED: %s\n", what);
  std::abort();
}

class Sample {
 public:
  explicit Sample(const DDS_TypePlugin& plugin)
      : plugin_(plugin), memory_(::operator new(plugin.size, std::align_val_t(plugin.alignment))) {
    expect(plugin_.construct(memory_), "construct");
  }
  Sample(const Sample&) = delete;
  Sample& operator=(const Sample&) = delete;
  ~Sample() {
    plugin_.destroy(memory_);
    ::operator delete(memory_, std::align_val_t(plugin_.alignment));
  }

  bool decode(const std::uint8_t* octets, std::size_t size) { return plugin_.deserialize(memory_, octets, size); }
  std::vector<unsigned char> encode() const {
    std::vector<unsigned char> octets(plugin_.serialized_size(memory_), 0xAA);
    expect(plugin_.serialize(memory_, octets.data(), octets.size()), "what was decoded can be encoded");
    return octets;
  }
  void copy(const Sample& other) { expect(plugin_.copy(memory_, other.memory_), "copy"); }

 private:
  const DDS_TypePlugin& plugin_;
  void* const memory_;  // owned
};

}  // namespace

void round_trip(const DDS_TypePlugin& plugin, const std::uint8_t* octets, std::size_t size, Limit limit) {
  Sample sample(plugin);
  const std::size_t before = allocated();
  const bool decoded = sample.decode(octets, size);
  expect(allocated() - before <= size * limit.per_octet + limit.constant, "decoding allocates little");
  if (!decoded) { return; }
  const std::vector<unsigned char> encoded = sample.encode();
  Sample again(plugin);
  expect(again.decode(encoded.data(), encoded.size()), "what was encoded can be decoded");
  expect(again.encode() == encoded, "it is the same then");
  // Reused, as samples are: what an earlier one held must not show.
  sample.copy(again);
  expect(sample.decode(encoded.data(), encoded.size()) && sample.encode() == encoded, "it is the same when reused");
}

}  // namespace fuzz
