#pragma once

#include <string>

#include <zemtra/duration.hpp>
#include <zemtra/export.hpp>

class DDSDataReader;
class DDSDataWriter;

namespace zemtra {
namespace details {

/// The other ends that one end of a service has found. An end counts when both of its topics are matched: a replier
/// that gets our requests but whose replies do not reach us is none.
///
/// Borrows the end's writer and reader. Thread-safe. Throws the library's exceptions and `std::bad_alloc`.
class ZEMTRA_TYPED_EXPORT ServiceMatch {
 public:
  enum class Role { requester, replier };

  ServiceMatch(Role role, DDSDataWriter& writer, DDSDataReader& reader) noexcept
      : role_(role), writer_(writer), reader_(reader) {}

  int complete_ends() const;
  /// Waits until there is one; false after `timeout`.
  bool wait(const Duration& timeout) const;
  std::string explain() const;

 private:
  const Role role_;
  DDSDataWriter& writer_;
  DDSDataReader& reader_;
};

}  // namespace details
}  // namespace zemtra
