#pragma once

#include "util/mutex.hpp"
#include "util/ref_ptr.hpp"

namespace dds {

/// The lock of an entity, or of a guard condition, together with the attachments of its conditions. Counted, because a
/// wait set that is going may still have to detach from a condition whose entity has gone meanwhile.
class OwnerLock : public RefCounted<OwnerLock> {
 public:
  Mutex mutex;
};

}  // namespace dds
