#pragma once

#include <dds/domain_participant_factory.hpp>
#include <zemtra/export.hpp>

namespace zemtra {

/// Owns a domain participant, for applications that do not bring their own. Converts to the pointer that everything
/// else takes. Move-only; requesters and repliers in it must be gone before it is.
class ZEMTRA_TYPED_EXPORT Participant {
 public:
  /// Joins a domain. Throws `RuntimeException` when the participant cannot be created; the log says why.
  explicit Participant(DDS_DomainId_t domain_id = 0, const DDS_DomainParticipantQos& qos = DDS_PARTICIPANT_QOS_DEFAULT);
  /// Deletes the participant and what it still holds. Never throws: what cannot be deleted is logged and left.
  ~Participant();
  Participant(Participant&& other) noexcept;
  /// Deletes what this one held.
  Participant& operator=(Participant&& other) noexcept;

  /// Null once it has been moved from.
  DDSDomainParticipant* get() const noexcept { return participant_; }
  DDSDomainParticipant* operator->() const noexcept { return participant_; }
  // Implicit, so that it stands wherever the application's own participant could; not for a temporary, which would be
  // gone before what is created in it.
  operator DDSDomainParticipant*() const& noexcept { return participant_; }  // NOLINT(google-explicit-constructor)
  operator DDSDomainParticipant*() const&& = delete;

 private:
  DDSDomainParticipant* participant_;  // owned
};

}  // namespace zemtra
