#pragma once

#include <requestreply/export.hpp>

class DDSReadCondition;

/// Owns a read condition for the length of a scope: deletes it, and with that detaches it from every wait set, through
/// the reader that it belongs to. A deletion that fails is ignored; the condition then goes with its reader.
class ZEMTRA_EXPORT ScopedReadCondition {
 public:
  /// Takes over `condition`, which may be null.
  explicit ScopedReadCondition(DDSReadCondition* condition) noexcept;
  virtual ~ScopedReadCondition();
  ScopedReadCondition(const ScopedReadCondition&) = delete;
  ScopedReadCondition& operator=(const ScopedReadCondition&) = delete;

  DDSReadCondition* get() const noexcept { return condition_; }

 private:
  DDSReadCondition* condition_;  // owned; may be null
};
