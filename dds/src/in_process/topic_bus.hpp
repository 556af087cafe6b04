#pragma once

#include <memory>
#include <string>
#include <vector>

#include "transport/transport.hpp"
#include "util/mutex.hpp"

namespace dds {

class InProcessReader;
class InProcessWriter;

/// The endpoints of one topic in one domain, for matching. Not used when a sample is written.
class TopicBus {
 public:
  /// The bus of that topic, which lives as long as somebody holds it. Throws `std::bad_alloc`.
  static std::shared_ptr<TopicBus> get(DDS_DomainId_t domain, const std::string& topic_name);

  /// Matches the endpoint with those of the other kind. Throws `std::bad_alloc`, having undone the matches.
  void add(InProcessWriter& writer) DDS_EXCLUDES(mutex_);
  void add(InProcessReader& reader) DDS_EXCLUDES(mutex_);
  void remove(InProcessWriter& writer) DDS_EXCLUDES(mutex_);
  void remove(InProcessReader& reader) DDS_EXCLUDES(mutex_);

 private:
  struct Introduction;

  void introduce(Introduction& introduction, InProcessWriter& writer, InProcessReader& reader) DDS_REQUIRES(mutex_);

  Mutex mutex_;
  std::vector<InProcessWriter*> writers_ DDS_GUARDED_BY(mutex_);
  std::vector<InProcessReader*> readers_ DDS_GUARDED_BY(mutex_);
};

}  // namespace dds
