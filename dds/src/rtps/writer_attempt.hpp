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
    bool reliable;  // one of the readers is
  };

  /// The participants for which the write has put packets in line. Seldom more than one, which takes no memory.
  struct Pushed {
    /// Throws `std::bad_alloc`.
    void add(std::shared_ptr<Peer> peer) {
      if (first == nullptr) {
        first = std::move(peer);
      } else {
        others.push_back(std::move(peer));
      }
    }
    void flush() const {
      if (first != nullptr) { first->flush(); }
      for (const std::shared_ptr<Peer>& peer : others) { peer->flush(); }
    }
    std::shared_ptr<Peer> first;
    std::vector<std::shared_ptr<Peer>> others;
  };

  /// Of the windows that have been waited for, the last one. Smaller packets are not kept out of it any longer when the
  /// write ends, however it does.
  struct Waited {
    ~Waited() { move_to(nullptr, 0); }
    void move_to(Window* next, std::size_t size) {
      if (window.get() != nullptr && window.get() != next) { window->give_up(octets); }
      window = RefPtr<Window>(next);
      octets = size;
    }
    RefPtr<Window> window;
    std::size_t octets = 0;  // of the packet
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
  Waited waited;
  Pushed pushed;
};

}  // namespace dds::rtps
