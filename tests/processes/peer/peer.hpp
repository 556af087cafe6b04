#pragma once

#include <malloc.h>

#include <atomic>
#include <map>
#include <string>

#include <zemtra/zemtra.hpp>

// A process at one end of what is tested. It does what its arguments say, is told more on the standard input, a line
// each, and says on the standard output what happens. It ends when the standard input does.

namespace peer {

/// "name=value" each; of one name the last counts. Those that begin with "dds." are the participant's properties.
class Options {
 public:
  Options(int argc, char** argv);
  std::string text(const std::string& name) const;
  int number(const std::string& name, int otherwise) const;
  const DDS_DomainParticipantQos& participant_qos() const { return qos_; }

 private:
  std::map<std::string, std::string> values_;
  DDS_DomainParticipantQos qos_;
};

/// A line for who has started the process; in one piece, at once.
void say(const std::string& line);
/// Ends the process, which has no way to go on.
[[noreturn]] void fail(const std::string& why);
void check(DDS_ReturnCode_t retcode, const char* what);

/// Octets in use on the heap.
inline std::size_t heap_in_use() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

/// Waits until a writer has exactly that many readers, or a reader writers.
template <class Entity, class Status>
void await_matches(Entity* entity, DDS_ReturnCode_t (Entity::*get_status)(Status&), DDS_StatusMask mask, int count) {
  DDSWaitSet waitset;
  check(entity->get_statuscondition()->set_enabled_statuses(mask), "set_enabled_statuses");
  check(waitset.attach_condition(entity->get_statuscondition()), "attach_condition");
  for (;;) {
    Status status;
    check((entity->*get_status)(status), "matched status");
    if (status.current_count == count) { return; }
    DDSConditionSeq active;
    check(waitset.wait(active, DDS_DURATION_INFINITE), "wait");
  }
}
inline void await_readers(DDSDataWriter* writer, int count) {
  await_matches(writer, &DDSDataWriter::get_publication_matched_status, DDS_PUBLICATION_MATCHED_STATUS, count);
}
inline void await_writers(DDSDataReader* reader, int count) {
  await_matches(reader, &DDSDataReader::get_subscription_matched_status, DDS_SUBSCRIPTION_MATCHED_STATUS, count);
}

/// What requesters send, and get back as it was.
struct Message {
  std::int32_t requester;
  std::int32_t number;
  std::string payload;
};
/// Every number has a payload of its own.
inline std::string payload(int number, int size) {
  std::string text(static_cast<std::size_t>(size), ' ');
  for (std::size_t i = 0; i < text.size(); ++i) {
    text[i] = static_cast<char>('a' + (static_cast<std::size_t>(number) + i / 1000) % 26);
  }
  return text;
}

// The roles. They return when they are through, or when the standard input ends.

void run_replier(const Options& options, DDSDomainParticipant* participant);
void run_requester(const Options& options, DDSDomainParticipant* participant);
void run_duplex(const Options& options, DDSDomainParticipant* participant);
void run_endpoints(const Options& options, DDSDomainParticipant* participant);
void run_host();
void run_wire(const Options& options);
void run_knock(const Options& options);

}  // namespace peer
