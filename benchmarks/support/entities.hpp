#pragma once

#include <dds/dds.hpp>
#include <requestreply/requestreply.hpp>
#include <string>

namespace bench {

/// What carries samples: memory of this process, or RTPS to other processes.
enum class Transport { in_process, rtps };

/// A participant and all that is in it.
class Participant {
 public:
  explicit Participant(DDS_DomainId_t domain, Transport transport = Transport::in_process);
  ~Participant();
  Participant(const Participant&) = delete;
  Participant& operator=(const Participant&) = delete;

  DDSDomainParticipant* get() const { return participant_; }

 private:
  DDSDomainParticipant* participant_;
};

/// The service that all benchmarks use.
constexpr const char* echo_service = "Echo";

/// Requests and replies are octets; for the entities' type-registration arguments.
const char* register_octets(DDSTypeSupport* type_support, DDSDomainParticipant* participant);

/// Returns when a replier in another process gets the requester's requests and reaches it; ends the process when there
/// is none for a long time.
void wait_for_replier(zemtra::details::RequesterUntypedImpl& requester);

/// Samples that an entity has lent; gives them back at the end of its scope.
class Loan {
 public:
  explicit Loan(zemtra::details::EntityUntypedImpl& entity) : entity_(entity) {}
  ~Loan() {
    if (count > 0) { entity_.return_loan(data, infos); }
  }
  Loan(const Loan&) = delete;
  Loan& operator=(const Loan&) = delete;

  const DDS_Octets& sample(int i) const { return *static_cast<const DDS_Octets*>(data[i]); }

  // What the receiving operations fill.
  void** data = nullptr;
  int count = 0;
  DDS_SampleInfoSeq infos;

 private:
  zemtra::details::EntityUntypedImpl& entity_;
};

}  // namespace bench
