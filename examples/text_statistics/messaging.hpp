#pragma once

#include <dds/dds.hpp>
#include <requestreply/requestreply.hpp>

// What the replier and the requesters of the example have in common.

/// Joins a domain, and leaves it at the end of the scope. Entities of the participant have to be gone by then.
class Participant {
 public:
  /// `transport` is "in_process" or, for a service between processes, "rtps".
  explicit Participant(const char* transport = "in_process");
  ~Participant();
  Participant(const Participant&) = delete;
  Participant& operator=(const Participant&) = delete;

  DDSDomainParticipant* get() const { return participant_; }

 private:
  DDSDomainParticipant* participant_;
};

/// Registers the built-in string type, of requests and of replies, and returns its name.
const char* register_string(DDSTypeSupport* type_support, DDSDomainParticipant* participant);

/// Samples lent by the middleware: pointers to them and to their infos, without a copy. They are given back at the end
/// of the scope.
class Loan {
 public:
  explicit Loan(zemtra::details::EntityUntypedImpl& entity) : entity_(entity) {}
  ~Loan() {
    if (count > 0) { entity_.return_loan(samples, infos); }
  }
  Loan(const Loan&) = delete;
  Loan& operator=(const Loan&) = delete;

  /// A sample of the string type is a `char*`.
  const char* text(int i) const { return *static_cast<char**>(samples[i]); }

  // Filled by the operations that receive.
  void** samples = nullptr;
  int count = 0;
  DDS_SampleInfoSeq infos;

 private:
  zemtra::details::EntityUntypedImpl& entity_;
};
