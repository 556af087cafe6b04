#pragma once

#include <dds/builtin_types.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>

#include "support/tag.hpp"

namespace bench {

/// Octets of a request, whose first eight are a tag. A payload is at least that long.
class Payload {
 public:
  /// Throws `std::invalid_argument` for a size that cannot be and `std::bad_alloc`.
  explicit Payload(std::size_t size);

  /// As a sample of the octets type; lives as long as the payload.
  const DDS_Octets* sample() const { return &sample_; }
  const DDS_Octet* octets() const { return octets_.get(); }
  DDS_Octet* data() { return octets_.get(); }
  std::size_t size() const { return static_cast<std::size_t>(sample_.length); }
  void set_tag(std::uint64_t tag);

 private:
  struct Release {
    void operator()(DDS_Octet* octets) const { DDS_OctetBuffer_free(octets); }
  };
  std::unique_ptr<DDS_Octet, Release> octets_;
  DDS_Octets sample_;
};

}  // namespace bench
