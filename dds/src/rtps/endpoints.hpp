#pragma once

#include <atomic>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "filter/filter.hpp"
#include "reader/reader_core.hpp"
#include "rtps/peer.hpp"
#include "transport/transport.hpp"
#include "writer/writer_core.hpp"

namespace dds::rtps {

class Hub;

/// A reader of this participant.
class RtpsReader final : public TransportReader {
 public:
  /// Throws `std::bad_alloc`.
  RtpsReader(Hub& hub, const TopicKey& key, ReaderCore& sink, const Filter* filter);
  ~RtpsReader() override;
  void announce() override;

  ReaderCore& sink() const { return sink_; }
  const Filter* filter() const { return filter_; }
  const Endpoint& endpoint() const { return endpoint_; }
  const DDS_GUID_t& guid() const { return sink_.data()->key; }
  /// What tells this participant itself that the reader is gone; made when it comes, since then it may not fail. The
  /// hub's lock guards it.
  Packet& withdrawal() { return withdrawal_; }

 private:
  Hub& hub_;
  ReaderCore& sink_;
  const Filter* const filter_;
  Endpoint endpoint_;
  Packet withdrawal_;
};

/// A writer of this participant: numbers the samples and sends each to the participants whose readers take it, one copy
/// to each, whatever the number of its readers.
class RtpsWriter final : public TransportWriter {
 public:
  /// Throws `std::bad_alloc`.
  RtpsWriter(Hub& hub, const TopicKey& key, WriterCore& sink);
  ~RtpsWriter() override;
  void announce() override;
  DDS_ReturnCode_t write(const WrittenSample& sample, Deadline& deadline, DDS_SampleIdentity_t& assigned) override
      DDS_EXCLUDES(mutex_);

  WriterCore& sink() const { return sink_; }
  const Endpoint& endpoint() const { return endpoint_; }
  const DDS_GUID_t& guid() const { return sink_.guid(); }
  /// As that of a reader.
  Packet& withdrawal() { return withdrawal_; }

  // For the hub, under its lock.

  /// Throws `std::bad_alloc`, having changed nothing.
  void connect(const RemoteEndpoint& reader, Notifications& notifications) DDS_EXCLUDES(mutex_);
  /// Does nothing for a reader that is not connected.
  void disconnect(const RemoteEndpoint& reader, Notifications& notifications) DDS_EXCLUDES(mutex_);
  /// A participant says that a reservation has its place in its readers, or that it has to wait.
  void on_answer(std::uint64_t token, const Peer& peer, bool placed) DDS_EXCLUDES(mutex_);
  /// Nobody waits for that participant any more.
  void on_peer_lost(const Peer& peer) DDS_EXCLUDES(mutex_);

 private:
  /// The readers of one participant that take the same samples.
  struct Route {
    std::shared_ptr<Peer> peer;
    unsigned readers = 0;
    unsigned reliable = 0;  // of them
    unsigned bounded = 0;   // of them, reliable ones that may be full
  };
  using Routes = std::vector<Route>;
  /// A copy of a sample for one participant. The writer's lock guards it.
  struct Shipment {
    Peer* peer;
    bool reliable = false;  // one of its readers is
    bool bounded = false;   // one of its readers may be full
    Packet packet;          // empty when only best-effort readers go without it
  };
  /// A sample that needs places in readers of other participants that may be full. The writer's lock guards it, but for
  /// the event.
  struct Reservation {
    enum class State { none, asked, waiting, placed, lost };
    struct Place {
      std::shared_ptr<Peer> peer;
      Packet verdict;  // made beforehand: whether the sample is to be delivered there
      std::uint64_t token = 0;
      State state = State::none;
    };
    bool any(State state) const;

    std::vector<Place> places;
    EventCount changed;
  };
  struct Attempt;
  /// What is next after a try: nothing; to wait and to try again; to look for the requester; to wait for places.
  enum class Step { done, again, find_requester, reserve, timed_out };

  void change(Routes& routes, const RemoteEndpoint& reader, int difference) DDS_REQUIRES(mutex_);
  bool await_requester(const DDS_GUID_t& requester, Deadline& deadline) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t serialize(const WrittenSample& sample, Packet& packet) const;
  Step try_write(Attempt& attempt) DDS_EXCLUDES(mutex_);
  void add_shipments(const Routes& routes) DDS_REQUIRES(mutex_);
  /// False when nobody wants the replies to that writer.
  bool find_shipments(MessageKind kind, const DDS_GUID_t& related_writer) DDS_REQUIRES(mutex_);
  bool fill_shipments(Attempt& attempt) DDS_REQUIRES(mutex_);
  bool windows_are_open(Attempt& attempt) DDS_REQUIRES(mutex_);
  void prepare_reservation(Attempt& attempt) DDS_REQUIRES(mutex_);
  Step reserve_and_write(Attempt& attempt) DDS_EXCLUDES(mutex_);
  bool find_places(Attempt& attempt) DDS_EXCLUDES(mutex_);
  void ask_for_places(Attempt& attempt) DDS_EXCLUDES(mutex_);
  bool await_answers(Attempt& attempt, Deadline& answers) DDS_EXCLUDES(mutex_);
  const Peer* wait_for_one(Attempt& attempt) DDS_EXCLUDES(mutex_);
  bool await_place(Attempt& attempt, const Peer& peer) DDS_EXCLUDES(mutex_);
  static void flush_places(const Attempt& attempt);
  Step settle(Attempt& attempt, bool placed) DDS_EXCLUDES(mutex_);
  void push_verdicts(Attempt& attempt, bool placed) DDS_EXCLUDES(mutex_);
  void give_back(Reservation::Place& place) DDS_REQUIRES(mutex_);
  Packet copy_packet(const Packet& packet) const;
  DDS_SampleIdentity_t next_identity() DDS_REQUIRES(mutex_);

  Hub& hub_;
  WriterCore& sink_;
  Endpoint endpoint_;
  Packet withdrawal_;

  Mutex mutex_;
  std::uint64_t last_number_ DDS_GUARDED_BY(mutex_) = 0;
  std::uint64_t last_token_ DDS_GUARDED_BY(mutex_) = 0;
  // Readers that want the replies to one writer are found by that writer's GUID: a reply goes to the participant of its
  // requester and to no other, and costs the same however many there are.
  std::unordered_map<DDS_GUID_t, Routes, GuidHash, GuidEqual> by_related_writer_ DDS_GUARDED_BY(mutex_);
  Routes others_ DDS_GUARDED_BY(mutex_);
  // Readers, by this process's handle: GUIDs are only what others say.
  std::unordered_set<DDS_InstanceHandle_t> connected_ DDS_GUARDED_BY(mutex_);
  std::atomic<std::size_t> reader_count_{0};
  std::vector<Shipment> shipments_ DDS_GUARDED_BY(mutex_);  // scratch of one write
  std::vector<Reservation*> reservations_ DDS_GUARDED_BY(mutex_);
};

}  // namespace dds::rtps
