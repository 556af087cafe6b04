#pragma once

#include <map>
#include <memory>
#include <mutex>

#include <dds/dds.hpp>

#include "markers.hpp"
#include "remote_writer.hpp"
#include "support/carrier.hpp"

namespace behaviour {

class Participant;

/// What the running test runs over: where its writers are, and how it knows that what it did has arrived. There is one
/// at a time; without it, everything is in one participant within the process.
class Setting {
 public:
  explicit Setting(const support::Carrier& carrier);
  ~Setting();
  Setting(const Setting&) = delete;
  Setting& operator=(const Setting&) = delete;

  /// Null when there is none.
  static Setting* current();

  const support::Carrier& carrier() const { return carrier_; }

  /// Of the participants of this process.
  void join(DDSDomainParticipant* participant);
  void leave(DDSDomainParticipant* participant);

  /// A writer on the topic of that name, type and domain, at the place that the carrier has for writers. Null if it
  /// cannot be created.
  DDSDataWriter* create_writer(Builtin type, DDSTopic* topic, const DDS_DataWriterQos& qos,
                               DDSDataWriterListener* listener);

  /// Waits until everything that was written, created or deleted before has arrived wherever it goes.
  void settle();
  /// The part of it that happens in the other process.
  void take_part(DDS_DomainId_t domain, int round, int everybody);

 private:
  DDSTopic* writers_topic(Builtin type, DDSTopic* topic);

  const support::Carrier carrier_;
  std::mutex mutex_;  // of the markers
  int round_ = 0;
  std::map<DDS_DomainId_t, Markers> markers_;
  std::mutex writers_mutex_;  // of the rest
  std::map<DDS_DomainId_t, std::unique_ptr<Participant>> writers_participants_;
  std::unique_ptr<support::OtherProcess> process_;
  std::vector<std::unique_ptr<RemoteWriter>> remote_writers_;
};

/// As long as it lives, this thread does not wait for anything to arrive when it looks. For listeners, which arrivals
/// wait for, and for threads that take what comes.
class AsItComes {
 public:
  AsItComes() { ++depth_; }
  ~AsItComes() { --depth_; }
  AsItComes(const AsItComes&) = delete;
  AsItComes& operator=(const AsItComes&) = delete;
  static bool here() { return depth_ > 0; }

 private:
  static thread_local int depth_;
};

/// The carrier of the running test.
const support::Carrier& carrier();

/// Waits until everything that was written, created or deleted before has arrived wherever it goes; at once within a
/// process. What looks at a reader or a status does that by itself.
void settle();

}  // namespace behaviour
