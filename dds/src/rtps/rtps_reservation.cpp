// How a writer writes when some of the readers may be full: each of their participants is asked for a place, and the
// sample is delivered when it has all of them.
//
// No place is held while another is waited for, or two writers could wait for each other, and a sample could keep
// others out of a reader that has room. So a sample that has to wait gives all its places back, waits for the one that
// it could not have, and then asks for the others anew.

#include <algorithm>
#include <new>
#include <utility>

#include "rtps/endpoints.hpp"
#include "rtps/hub.hpp"
#include "rtps/writer_attempt.hpp"
#include "util/entity_ids.hpp"
#include "util/reserve_one.hpp"

namespace dds::rtps {

namespace {

// The way there and back is no waiting for room: a participant that is there has the time to answer, whatever the
// caller allows.
constexpr DDS_Duration_t kTimeToAnswer{0, 20000000};

}  // namespace

bool RtpsWriter::Reservation::any(State state) const {
  return std::any_of(places.begin(), places.end(), [=](const Place& place) { return place.state == state; });
}

void RtpsWriter::on_answer(std::uint64_t token, const Peer& peer, bool placed) {
  const MutexLock lock(mutex_);
  for (Reservation* reservation : reservations_) {
    for (Reservation::Place& place : reservation->places) {
      if (place.token != token || place.peer.get() != &peer || place.state == Reservation::State::lost) { continue; }
      place.state = placed ? Reservation::State::placed : Reservation::State::waiting;
      reservation->changed.notify();
    }
  }
}

void RtpsWriter::on_peer_lost(const Peer& peer) {
  const MutexLock lock(mutex_);
  for (Reservation* reservation : reservations_) {
    for (Reservation::Place& place : reservation->places) {
      if (place.peer.get() == &peer) { place.state = Reservation::State::lost; }
    }
    reservation->changed.notify();
  }
}

// Everything that can fail, but for asking.
void RtpsWriter::prepare_reservation(Attempt& attempt) {
  Reservation& reservation = attempt.reservation;
  reservation.places.clear();
  attempt.held.clear();
  Prefix prefix;
  prefix.kind = FrameKind::cancel;
  prefix.identity.writer_guid = guid();
  for (const Shipment& shipment : shipments_) {
    const std::shared_ptr<Peer> peer = shipment.peer->shared_from_this();
    if (shipment.bounded) {
      reservation.places.push_back({peer, hub_.make_frame(prefix)});
    } else {
      attempt.held.push_back({peer, copy_packet(attempt.packet), shipment.reliable});
    }
  }
  reserve_one(reservations_, reservations_.size());
  reservations_.push_back(&reservation);
}

void RtpsWriter::flush_places(const Attempt& attempt) {
  for (const Reservation::Place& place : attempt.reservation.places) { place.peer->flush(); }
}

RtpsWriter::Step RtpsWriter::reserve_and_write(Attempt& attempt) {
  bool placed = false;
  try {
    placed = find_places(attempt);
  } catch (const std::bad_alloc&) {
    settle(attempt, false);
    throw;
  }
  return settle(attempt, placed);
}

bool RtpsWriter::find_places(Attempt& attempt) {
  Deadline answers(kTimeToAnswer);
  answers.end();
  for (;;) {
    ask_for_places(attempt);
    flush_places(attempt);
    if (!await_answers(attempt, answers)) { return false; }
    const Peer* full = wait_for_one(attempt);
    if (full == nullptr) { return true; }
    flush_places(attempt);
    if (!await_place(attempt, *full)) { return false; }
  }
}

// A filter that looks at the sample's own number sees the one that it would get now.
void RtpsWriter::ask_for_places(Attempt& attempt) {
  const MutexLock lock(mutex_);
  for (Reservation::Place& place : attempt.reservation.places) {
    if (place.state != Reservation::State::none) { continue; }
    Packet packet = copy_packet(attempt.packet);
    place.token = ++last_token_;
    place.state = Reservation::State::asked;
    encode_number(to_sequence_number(last_number_ + 1), packet.octets());
    encode_kind(FrameKind::reservation, place.token, packet.octets());
    place.peer->push(std::move(packet));
  }
}

bool RtpsWriter::await_answers(Attempt& attempt, Deadline& answers) {
  Reservation& reservation = attempt.reservation;
  for (;;) {
    const std::uint32_t ticket = reservation.changed.ticket();
    {
      const MutexLock lock(mutex_);
      if (!reservation.any(Reservation::State::asked)) { return true; }
    }
    const bool late = attempt.deadline.passed();
    if (late && answers.passed()) { return false; }
    reservation.changed.wait(ticket, late ? answers : attempt.deadline);
  }
}

// The participant that the sample has to wait for; all places elsewhere are given back. Null when it need not wait.
const Peer* RtpsWriter::wait_for_one(Attempt& attempt) {
  const MutexLock lock(mutex_);
  std::vector<Reservation::Place>& places = attempt.reservation.places;
  const auto full = std::find_if(places.begin(), places.end(), [](const Reservation::Place& place) {
    return place.state == Reservation::State::waiting;
  });
  if (full == places.end()) { return nullptr; }
  for (Reservation::Place& place : places) {
    if (&place != &*full) { give_back(place); }
  }
  return full->peer.get();
}

void RtpsWriter::give_back(Reservation::Place& place) {
  if (place.state != Reservation::State::placed && place.state != Reservation::State::waiting) { return; }
  Prefix prefix;
  prefix.kind = FrameKind::cancel;
  prefix.identity.writer_guid = guid();
  prefix.token = place.token;
  place.peer->push(hub_.make_frame(prefix));
  place.state = Reservation::State::none;
  place.token = 0;  // an answer that is still on its way does not count
}

bool RtpsWriter::await_place(Attempt& attempt, const Peer& peer) {
  Reservation& reservation = attempt.reservation;
  for (;;) {
    const std::uint32_t ticket = reservation.changed.ticket();
    {
      const MutexLock lock(mutex_);
      const auto place = std::find_if(reservation.places.begin(), reservation.places.end(),
                                      [&](const Reservation::Place& known) { return known.peer.get() == &peer; });
      if (place->state != Reservation::State::waiting) { return true; }
    }
    if (attempt.deadline.passed()) { return false; }
    reservation.changed.wait(ticket, attempt.deadline);
  }
}

// Delivers the sample everywhere, or takes it back everywhere.
RtpsWriter::Step RtpsWriter::settle(Attempt& attempt, bool placed) {
  push_verdicts(attempt, placed);
  flush_places(attempt);
  for (const Attempt::Held& held : attempt.held) { held.peer->flush(); }
  return placed ? Step::done : Step::timed_out;
}

void RtpsWriter::push_verdicts(Attempt& attempt, bool placed) {
  Reservation& reservation = attempt.reservation;
  const MutexLock lock(mutex_);
  reservations_.erase(std::find(reservations_.begin(), reservations_.end(), &reservation));
  if (placed) { attempt.assigned = next_identity(); }
  for (Reservation::Place& place : reservation.places) {
    const bool held = place.state == Reservation::State::asked || place.state == Reservation::State::waiting ||
                      place.state == Reservation::State::placed;
    if (!held) { continue; }
    encode_kind(placed ? FrameKind::commit : FrameKind::cancel, place.token, place.verdict.octets());
    if (placed) { encode_number(attempt.assigned.sequence_number, place.verdict.octets()); }
    place.peer->push(std::move(place.verdict));
  }
  if (!placed) { return; }
  for (Attempt::Held& held : attempt.held) {
    encode_number(attempt.assigned.sequence_number, held.packet.octets());
    if (held.reliable) {
      held.peer->push(std::move(held.packet));
    } else if (held.peer->window()->acquire(held.packet.size(), false)) {
      held.packet.notify_release(*held.peer->window());
      held.peer->push_admitted(std::move(held.packet));
    }
  }
}

}  // namespace dds::rtps
