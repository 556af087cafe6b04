#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "support/entities.hpp"
#include "support/placement.hpp"
#include "support/service.hpp"

namespace bench {

/// 64 octets that the typed front ends carry, and the untyped core as well.
struct Message {
  std::uint64_t tag;
  std::array<std::uint64_t, 7> rest;
};
static_assert(sizeof(Message) == 64);

/// A service that sends messages back, and one who calls it, one request at a time.
class MessageService {
 public:
  virtual ~MessageService() = default;
  virtual void run(long count) = 0;
};

/// With the typed front ends: `call` on one side, a replier or a replier with a handler on the other.
std::unique_ptr<MessageService> make_typed_service(DDS_DomainId_t domain, Answer answer, Placement placement);
/// The same with nothing but the untyped core.
std::unique_ptr<MessageService> make_untyped_service(DDS_DomainId_t domain, Answer answer, Placement placement);

}  // namespace bench
