#pragma once

#include <memory>
#include <type_traits>

#include <dds/dds.hpp>

#include "support/other_process.hpp"

namespace behaviour {

/// The four built-in types, by a value.
enum class Builtin { string, keyed_string, octets, keyed_octets };

template <class Writer>
constexpr Builtin builtin_of = std::is_same_v<Writer, DDSStringDataWriter>        ? Builtin::string
                               : std::is_same_v<Writer, DDSKeyedStringDataWriter> ? Builtin::keyed_string
                               : std::is_same_v<Writer, DDSOctetsDataWriter>      ? Builtin::octets
                                                                                  : Builtin::keyed_octets;

/// A writer in the other process; what stands for it here is a `DDSDataWriter`. Conditions and listeners of its own it
/// has none, and it takes whole samples only.
class RemoteWriter {
 public:
  virtual ~RemoteWriter() = default;
  virtual DDSDataWriter* api() = 0;
  /// Deletes the writer in the other process. This stays, for nothing else.
  virtual DDS_ReturnCode_t remove() = 0;
};

/// Starts a process for writers.
std::unique_ptr<support::OtherProcess> start_writer_process();
/// Null if it cannot be created.
std::unique_ptr<RemoteWriter> create_remote_writer(support::OtherProcess& process, Builtin type, DDSTopic* topic,
                                                   const DDS_DataWriterQos& qos);
/// Makes a participant there, unless the domain has one.
void join_remotely(support::OtherProcess& process, DDS_DomainId_t domain);
/// Makes it send and await a round of markers.
void settle_remotely(support::OtherProcess& process, DDS_DomainId_t domain, int round, int everybody);

}  // namespace behaviour
