#include "support/payload.hpp"

#include <climits>
#include <cstring>
#include <new>
#include <stdexcept>

namespace bench {

Payload::Payload(std::size_t size) {
  if (size < sizeof(std::uint64_t) || size > INT_MAX) { throw std::invalid_argument("a payload of impossible size"); }
  octets_.reset(DDS_OctetBuffer_alloc(size));
  if (octets_ == nullptr) { throw std::bad_alloc(); }
  std::memset(octets_.get(), 0x5a, size);
  sample_.length = static_cast<DDS_Long>(size);
  sample_.value = octets_.get();
}

void Payload::set_tag(std::uint64_t tag) { std::memcpy(octets_.get(), &tag, sizeof tag); }

}  // namespace bench
