#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "rtps/frame.hpp"
#include "transport/route_table.hpp"
#include "util/mutex.hpp"

namespace dds::rtps {

class RtpsReader;

/// The writers of one other participant, and the way of their samples into the readers of this one. Samples come from
/// the engine's receiving thread, readers come and go on any; the inbound's lock keeps them apart.
class Inbound {
 public:
  /// `no_memory` costs the sample.
  enum class Outcome { taken, malformed, unknown_writer, no_memory };

  /// Throws `std::bad_alloc`.
  void add_writer(const DDS_GUID_t& writer, DDS_InstanceHandle_t handle, PublicationData data, bool reliable)
      DDS_EXCLUDES(mutex_);
  /// Ends its matches; what it had reserved is given back.
  void remove_writer(const DDS_GUID_t& writer, Notifications& notifications) DDS_EXCLUDES(mutex_);
  void clear(Notifications& notifications) DDS_EXCLUDES(mutex_);
  /// The reader gets the samples of the writer with that GUID from now on. Throws `std::bad_alloc`, having changed
  /// nothing.
  void connect(const DDS_GUID_t& guid, RtpsReader& reader, Notifications& notifications) DDS_EXCLUDES(mutex_);
  /// Afterwards nothing comes to the reader from this participant.
  void disconnect(RtpsReader& reader, Notifications& notifications) DDS_EXCLUDES(mutex_);

  // What comes in.

  Outcome deliver(const Prefix& prefix, Octets payload, Notifications& notifications) DDS_EXCLUDES(mutex_);
  /// Keeps a sample until `try_reservations` has found a place for it, and `commit` or `cancel` comes. One that is not
  /// `taken` is kept as one that nobody wants: its writer is not to wait for it. Throws `std::bad_alloc`, having
  /// changed nothing.
  Outcome park(const Prefix& prefix, Octets payload) DDS_EXCLUDES(mutex_);
  Outcome commit(const Prefix& prefix, Notifications& notifications) DDS_EXCLUDES(mutex_);
  Outcome cancel(const Prefix& prefix) DDS_EXCLUDES(mutex_);

  struct Answer {
    DDS_GUID_t writer;
    std::uint64_t token;
    bool placed;
  };
  /// Looks for places for the samples that wait for one. Adds to `answers` those that have found theirs, and those
  /// whose senders do not know yet that they have to wait. Throws `std::bad_alloc` when some could not be looked for;
  /// what has been added holds.
  void try_reservations(std::vector<Answer>& answers) DDS_EXCLUDES(mutex_);

 private:
  /// Of one writer: a thread that writes has one. Whoever sends more does not write.
  static constexpr std::size_t kMostParked = 4096;

  struct Parked {
    std::uint64_t token = 0;
    RefPtr<Message> message;
    RouteTable::Targets targets;
    RouteTable::Targets bounded_targets;
    bool placed = false;
  };
  /// Names a parked sample that has no place yet.
  struct Waiting {
    DDS_GUID_t writer;
    std::uint64_t token;
    bool told = false;  // the sender knows that it waits
    bool done = false;  // it has its place, or is parked no more
  };
  struct Writer {
    ~Writer();
    DDS_InstanceHandle_t handle = DDS_HANDLE_NIL;
    PublicationData data;
    bool reliable = false;
    RouteTable routes;                     // to readers that take what comes
    RouteTable bounded;                    // to readers that may be full, which are asked for a place first
    MessagePool* pool = nullptr;           // from the first match on
    const DDS_TypePlugin* type = nullptr;  // the same time; of a reader that is or was matched
    DDS_TypePlugin type_copy{};
    std::vector<Parked> parked;  // in order of arrival
  };

  Writer* find(const DDS_GUID_t& writer) DDS_REQUIRES(mutex_);
  static std::vector<Parked>::iterator find_parked(Writer& writer, std::uint64_t token);
  /// A message of what has come.
  static Outcome make_message(Writer& writer, const Prefix& prefix, Octets payload, RefPtr<Message>& message);
  static void drop(Writer& writer, Notifications& notifications);
  static void cancel(Parked& parked);
  static ReaderCore::Admission place(const Writer& writer, Parked& parked);

  Mutex mutex_;
  std::unordered_map<DDS_GUID_t, std::unique_ptr<Writer>, GuidHash, GuidEqual> writers_ DDS_GUARDED_BY(mutex_);
  // Of all writers, in order of arrival: whoever has waited longest is the first to get a place.
  std::vector<Waiting> waiting_ DDS_GUARDED_BY(mutex_);
};

}  // namespace dds::rtps
