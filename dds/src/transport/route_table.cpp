#include "transport/route_table.hpp"

#include <algorithm>
#include <cstring>

#include "filter/filter.hpp"
#include "util/reserve_one.hpp"

namespace dds {

using Admission = ReaderCore::Admission;

std::size_t GuidHash::operator()(const DDS_GUID_t& guid) const {
  std::uint64_t halves[2];
  std::memcpy(halves, guid.value, sizeof(halves));
  return static_cast<std::size_t>((halves[0] ^ (halves[1] * 0x9e3779b97f4a7c15u)) * 0xff51afd7ed558ccdu >> 8);
}

namespace {

/// The writer whose replies are all that a reader wants; null for a reader with another filter or none.
const DDS_GUID_t* related_writer(const Filter* filter) {
  return filter == nullptr ? nullptr : filter->related_writer();
}

}  // namespace

void RouteTable::add(ReaderCore& reader, const Filter* filter, DDS_InstanceHandle_t writer, const PublicationData& data,
                     bool reliable, Notifications& notifications) {
  const DDS_GUID_t* related = related_writer(filter);
  reserve_one(scratch_, count_);
  std::vector<Route>& routes = related == nullptr ? others_ : by_related_writer_[*related];
  reserve_one(routes, routes.size());
  RemoteWriter* self = reader.add_writer(writer, data, reliable, notifications);
  routes.push_back({&reader, self, related == nullptr ? filter : nullptr});
  ++count_;
}

bool RouteTable::remove(ReaderCore& reader, const Filter* filter, Notifications& notifications) {
  const DDS_GUID_t* related = related_writer(filter);
  const auto known = related == nullptr ? by_related_writer_.end() : by_related_writer_.find(*related);
  if (related != nullptr && known == by_related_writer_.end()) { return false; }
  std::vector<Route>& routes = related == nullptr ? others_ : known->second;
  const auto found =
      std::find_if(routes.begin(), routes.end(), [&](const Route& route) { return route.reader == &reader; });
  if (found == routes.end()) { return false; }
  RemoteWriter* self = found->self;
  routes.erase(found);
  if (related != nullptr && routes.empty()) { by_related_writer_.erase(known); }
  --count_;
  reader.remove_writer(self, notifications);
  return true;
}

void RouteTable::remove_all(Notifications& notifications) {
  const auto end = [&](const Route& route) { route.reader->remove_writer(route.self, notifications); };
  std::for_each(others_.begin(), others_.end(), end);
  for (const auto& known : by_related_writer_) { std::for_each(known.second.begin(), known.second.end(), end); }
  others_.clear();
  by_related_writer_.clear();
  count_ = 0;
}

void RouteTable::find_targets(const Message& message, Targets& targets) const {
  const FilterSample sample{message.identity, message.related_identity, message.sample()};
  // The end of an instance concerns whoever holds it, whether or not the filter would admit the key alone.
  const bool is_end = message.kind != MessageKind::data;
  for (const Route& route : others_) {
    if (route.filter == nullptr || route.filter->admits(sample) || (is_end && route.reader->knows(message))) {
      targets.push_back({route.reader, route.self, {}});
    }
  }
  if (by_related_writer_.empty()) { return; }
  if (is_end) {
    for (const auto& [writer, routes] : by_related_writer_) {
      for (const Route& route : routes) {
        if (route.reader->knows(message)) { targets.push_back({route.reader, route.self, {}}); }
      }
    }
    return;
  }
  const auto found = by_related_writer_.find(message.related_identity.writer_guid);
  if (found == by_related_writer_.end()) { return; }
  for (const Route& route : found->second) { targets.push_back({route.reader, route.self, {}}); }
}

namespace {

// All readers promise a place before the first gets the sample, so that none has it when another has no room.
Admission reserve_all(const Message& message, RouteTable::Targets& targets, RouteTable::Blocked& blocked) {
  for (auto target = targets.begin(); target != targets.end(); ++target) {
    RefPtr<Message> shared(const_cast<Message*>(&message));
    const Admission admission = target->reader->reserve(shared, *target->writer, target->reservation);
    if (admission == Admission::accepted || admission == Admission::dropped) { continue; }
    if (admission == Admission::full) { blocked = {target->reader, target->writer->space_ticket}; }
    std::for_each(targets.begin(), target,
                  [](const RouteTable::Target& reserved) { reserved.reader->cancel(reserved.reservation); });
    targets.clear();
    return admission;
  }
  return Admission::accepted;
}

}  // namespace

Admission RouteTable::deliver(RefPtr<Message>& message, Blocked& blocked, Notifications& notifications) {
  scratch_.clear();
  find_targets(*message, scratch_);
  if (scratch_.empty()) { return Admission::accepted; }
  if (scratch_.size() == 1) {
    const Target& target = scratch_.front();
    const Admission admission = target.reader->deliver(message, *target.writer, notifications);
    if (admission == Admission::full) { blocked = {target.reader, target.writer->space_ticket}; }
    return admission;
  }
  const Admission admission = reserve_all(*message, scratch_, blocked);
  if (admission == Admission::accepted) { commit(scratch_, notifications); }
  return admission;
}

Admission RouteTable::reserve(const Message& message, Targets& targets, Blocked& blocked) const {
  targets.reserve(count_);
  find_targets(message, targets);
  return reserve_all(message, targets, blocked);
}

void RouteTable::commit(Targets& targets, Notifications& notifications) {
  for (const Target& target : targets) { target.reader->commit(target.reservation, notifications); }
  targets.clear();
}

void RouteTable::cancel(Targets& targets) {
  for (const Target& target : targets) { target.reader->cancel(target.reservation); }
  targets.clear();
}

}  // namespace dds
