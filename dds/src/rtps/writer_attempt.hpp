#pragma once

#include <memory>
#include <vector>

#include "rtps/endpoints.hpp"

namespace dds::rtps {

/// What a write has come to, from one try to the next.
struct RtpsWriter::Attempt {
  /// A copy for a participant whose readers always have room, while places elsewhere are waited for.
  struct Held {
    std::shared_ptr<Peer> peer;
    Packet packet;
  };

  const WrittenSample& sample;
  DDS_SampleIdentity_t& assigned;
  Deadline& deadline;
  Packet packet;         // of the sample, once somebody wants it
  bool awaited = false;  // the requester that it is for, if it is
  RefPtr<Window> full;   // to be waited for, with the ticket
  std::uint32_t ticket = 0;
  Reservation reservation;
  std::vector<Held> held;
};

}  // namespace dds::rtps
