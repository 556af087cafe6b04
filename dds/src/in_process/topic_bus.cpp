#include "in_process/topic_bus.hpp"

#include <algorithm>
#include <map>
#include <utility>

#include "in_process/in_process_endpoints.hpp"
#include "log/log.hpp"
#include "qos/qos_check.hpp"
#include "types/same_table.hpp"
#include "util/reserve_one.hpp"

namespace dds {

namespace {

struct Registry {
  Mutex mutex;
  std::map<std::pair<DDS_DomainId_t, std::string>, std::weak_ptr<TopicBus>> buses DDS_GUARDED_BY(mutex);
};

// Never destroyed: entities may outlive the static objects of the program.
Registry& registry() {
  static auto* const instance = new Registry;
  return *instance;
}

template <class Endpoint>
void erase(std::vector<Endpoint*>& endpoints, Endpoint& endpoint) {
  const auto found = std::find(endpoints.begin(), endpoints.end(), &endpoint);
  if (found == endpoints.end()) { return; }
  *found = endpoints.back();
  endpoints.pop_back();
}

/// Why two ends do not match; no policy when they do.
struct Mismatch {
  DDS_QosPolicyId_t policy;
  const char* reason;  // a static text
};

// Samples pass from the one end to the other as they lie in memory, so that both must handle them with the same
// functions.
Mismatch compare(const InProcessWriter& writer, const InProcessReader& reader) {
  constexpr DDS_QosPolicyId_t types = DDS_TYPE_CONSISTENCY_ENFORCEMENT_QOS_POLICY_ID;
  if (writer.type_name() != reader.type_name()) { return {types, "their types have different names"}; }
  if (!same_table(writer.sink().type(), reader.sink().type())) {
    return {types, "they represent a type of the same name differently"};
  }
  const DDS_QosPolicyId_t policy = incompatible_policy(writer.sink().qos(), reader.sink().qos());
  return {policy, DDS_QosPolicyId_get_name(policy)};
}

}  // namespace

/// What came of introducing a new endpoint to those that are there. Declared before the bus is locked, since telling
/// waits for the unlock.
struct TopicBus::Introduction {
  explicit Introduction(const std::string& name) : topic_name(name) {}
  ~Introduction() {
    for (const char* reason : mismatches) {
      DDS_LOG_FAILURE("match", QVX_LOG_ANY_FAILURE_s, "writer and reader of topic \"%s\" do not match: %s",
                      topic_name.c_str(), reason);
    }
  }
  const std::string& topic_name;
  std::vector<const char*> mismatches;  // static texts
  Notifications notifications;
};

std::shared_ptr<TopicBus> TopicBus::get(DDS_DomainId_t domain, const std::string& topic_name) {
  Registry& all = registry();
  const auto key = std::make_pair(domain, topic_name);
  {
    const MutexLock lock(all.mutex);
    const auto found = all.buses.find(key);
    if (found != all.buses.end()) {
      if (std::shared_ptr<TopicBus> bus = found->second.lock()) { return bus; }
    }
  }
  auto end = [key = std::pair(key)](TopicBus* gone) {
    delete gone;
    const MutexLock lock(registry().mutex);
    const auto found = registry().buses.find(key);
    if (found != registry().buses.end() && found->second.expired()) { registry().buses.erase(found); }
  };
  // Made outside of the lock, because the end of a bus takes it, and it may come before a bus is in use.
  std::shared_ptr<TopicBus> made(new TopicBus, std::move(end));
  const MutexLock lock(all.mutex);
  std::weak_ptr<TopicBus>& known = all.buses[key];
  if (std::shared_ptr<TopicBus> bus = known.lock()) { return bus; }
  known = made;
  return made;
}

void TopicBus::introduce(Introduction& introduction, InProcessWriter& writer, InProcessReader& reader) {
  const Mismatch mismatch = compare(writer, reader);
  if (mismatch.policy == DDS_INVALID_QOS_POLICY_ID) {
    writer.connect(reader, introduction.notifications);
    return;
  }
  introduction.mismatches.push_back(mismatch.reason);
  writer.sink().count_incompatible(mismatch.policy, introduction.notifications);
  reader.sink().count_incompatible(mismatch.policy, introduction.notifications);
}

void TopicBus::add(InProcessWriter& writer) {
  Introduction introduction(writer.topic_name());
  const MutexLock lock(mutex_);
  reserve_one(writers_, writers_.size());
  introduction.mismatches.reserve(readers_.size());
  try {
    for (InProcessReader* reader : readers_) { introduce(introduction, writer, *reader); }
  } catch (const std::bad_alloc&) {
    for (InProcessReader* reader : readers_) { writer.disconnect(*reader, introduction.notifications); }
    throw;
  }
  writers_.push_back(&writer);
}

void TopicBus::add(InProcessReader& reader) {
  Introduction introduction(reader.topic_name());
  const MutexLock lock(mutex_);
  reserve_one(readers_, readers_.size());
  introduction.mismatches.reserve(writers_.size());
  try {
    for (InProcessWriter* writer : writers_) { introduce(introduction, *writer, reader); }
  } catch (const std::bad_alloc&) {
    for (InProcessWriter* writer : writers_) { writer->disconnect(reader, introduction.notifications); }
    throw;
  }
  readers_.push_back(&reader);
}

void TopicBus::remove(InProcessWriter& writer) {
  Notifications notifications;
  const MutexLock lock(mutex_);
  erase(writers_, writer);
  for (InProcessReader* reader : readers_) { writer.disconnect(*reader, notifications); }
}

void TopicBus::remove(InProcessReader& reader) {
  Notifications notifications;
  const MutexLock lock(mutex_);
  erase(readers_, reader);
  for (InProcessWriter* writer : writers_) { writer->disconnect(reader, notifications); }
}

}  // namespace dds
