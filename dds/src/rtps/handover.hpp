#pragma once

// ThreadSanitizer does not see how the engine, which comes without instrumentation, orders what its threads do with
// packets. The file that deals with the engine is not instrumented either, and says with these where a packet goes into
// the engine's hands and comes out of them; in other builds they are nothing.
#ifdef DDS_ANNOTATE_HANDOVER
#include <sanitizer/tsan_interface.h>
#endif

namespace dds::rtps {

#ifdef DDS_ANNOTATE_HANDOVER
/// What this thread has done to the object is done before what the next one does that takes it over.
inline void hand_over(const void* object) { __tsan_release(const_cast<void*>(object)); }
inline void take_over(const void* object) { __tsan_acquire(const_cast<void*>(object)); }
#else
inline void hand_over(const void* /*object*/) {}
inline void take_over(const void* /*object*/) {}
#endif

}  // namespace dds::rtps
