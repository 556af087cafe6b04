#include "in_process/in_process_endpoints.hpp"

#include <algorithm>
#include <cstring>

#include "util/reserve_one.hpp"

namespace dds {

using Admission = ReaderCore::Admission;

InProcessReader::InProcessReader(const TopicKey& key, ReaderCore& sink, const Filter* filter)
    : key_(key), sink_(sink), filter_(filter), bus_(TopicBus::get(key.domain, key.topic_name)) {}

InProcessReader::~InProcessReader() { bus_->remove(*this); }

InProcessWriter::InProcessWriter(const TopicKey& key, WriterCore& sink)
    : key_(key), sink_(sink), guid_(sink.guid()), bus_(TopicBus::get(key.domain, key.topic_name)) {}

InProcessWriter::~InProcessWriter() { bus_->remove(*this); }

std::size_t InProcessWriter::GuidHash::operator()(const DDS_GUID_t& guid) const {
  std::uint64_t halves[2];
  std::memcpy(halves, guid.value, sizeof(halves));
  return static_cast<std::size_t>((halves[0] ^ (halves[1] * 0x9e3779b97f4a7c15u)) * 0xff51afd7ed558ccdu >> 8);
}

namespace {

/// The writer whose replies are all that a reader wants; null for a reader with another filter or none.
const DDS_GUID_t* related_writer(const InProcessReader& reader) {
  return reader.filter() == nullptr ? nullptr : reader.filter()->related_writer();
}

}  // namespace

void InProcessWriter::connect(InProcessReader& reader, Notifications& notifications) {
  ReaderCore& sink = reader.sink();
  const DDS_GUID_t* related = related_writer(reader);
  {
    const MutexLock lock(mutex_);
    reserve_one(targets_, route_count_);
    std::vector<Route>& routes = related == nullptr ? other_routes_ : routes_by_related_writer_[*related];
    reserve_one(routes, routes.size());
    RemoteWriter* self = sink.add_writer(sink_.handle(), sink_.data(), sink_.reliable(), notifications);
    routes.push_back({&sink, self, related == nullptr ? reader.filter() : nullptr});
    ++route_count_;
  }
  sink_.add_reader(sink.handle(), sink.data(), notifications);
}

RemoteWriter* InProcessWriter::remove_route(const InProcessReader& reader) {
  const auto take_out = [&reader](std::vector<Route>& routes) -> RemoteWriter* {
    const auto found =
        std::find_if(routes.begin(), routes.end(), [&](const Route& route) { return route.reader == &reader.sink(); });
    if (found == routes.end()) { return nullptr; }
    RemoteWriter* self = found->self;
    routes.erase(found);
    return self;
  };
  const DDS_GUID_t* related = related_writer(reader);
  if (related == nullptr) { return take_out(other_routes_); }
  const auto found = routes_by_related_writer_.find(*related);
  if (found == routes_by_related_writer_.end()) { return nullptr; }
  RemoteWriter* self = take_out(found->second);
  if (found->second.empty()) { routes_by_related_writer_.erase(found); }
  return self;
}

void InProcessWriter::disconnect(InProcessReader& reader, Notifications& notifications) {
  RemoteWriter* self = nullptr;
  {
    const MutexLock lock(mutex_);
    self = remove_route(reader);
    if (self != nullptr) { --route_count_; }
  }
  if (self == nullptr) { return; }
  reader.sink().remove_writer(self, notifications);
  sink_.remove_reader(reader.sink().handle(), notifications);
}

void InProcessWriter::find_targets(const Message& message) {
  targets_.clear();
  const FilterSample sample{message.identity, message.related_identity, message.sample()};
  // The end of an instance concerns whoever holds it, whether or not the filter would admit the key alone.
  const bool is_end = message.kind != MessageKind::data;
  for (const Route& route : other_routes_) {
    if (route.filter == nullptr || route.filter->admits(sample) || (is_end && route.reader->knows(message))) {
      targets_.push_back({&route, {}});
    }
  }
  if (routes_by_related_writer_.empty()) { return; }
  if (is_end) {
    for (const auto& [writer, routes] : routes_by_related_writer_) {
      for (const Route& route : routes) {
        if (route.reader->knows(message)) { targets_.push_back({&route, {}}); }
      }
    }
    return;
  }
  const auto found = routes_by_related_writer_.find(message.related_identity.writer_guid);
  if (found == routes_by_related_writer_.end()) { return; }
  for (const Route& route : found->second) { targets_.push_back({&route, {}}); }
}

DDS_ReturnCode_t InProcessWriter::write(RefPtr<Message> message, Deadline& deadline, DDS_SampleIdentity_t& assigned) {
  for (;;) {
    Blocked blocked;
    {
      Notifications notifications;
      const MutexLock lock(mutex_);
      const std::uint64_t number = last_number_ + 1;
      // Before a reader has the sample: the answer may come at once.
      assigned = {guid_, {static_cast<std::int32_t>(number >> 32), static_cast<std::uint32_t>(number)}};
      message->identity = assigned;
      find_targets(*message);
      switch (deliver(message, blocked, notifications)) {
        case Admission::no_memory:
          assigned = DDS_AUTO_SAMPLE_IDENTITY;
          return DDS_RETCODE_OUT_OF_RESOURCES;
        case Admission::full:
          assigned = DDS_AUTO_SAMPLE_IDENTITY;
          break;
        default:
          last_number_ = number;
          return DDS_RETCODE_OK;
      }
    }
    blocked.reader->wait_for_space(blocked.ticket, deadline);
    if (deadline.passed()) { return DDS_RETCODE_TIMEOUT; }
  }
}

Admission InProcessWriter::deliver(RefPtr<Message>& message, Blocked& blocked, Notifications& notifications) {
  if (targets_.empty()) { return Admission::accepted; }
  if (targets_.size() > 1) { return deliver_to_all(message, blocked, notifications); }
  const Route& route = *targets_.front().route;
  const Admission admission = route.reader->deliver(message, *route.self, notifications);
  if (admission == Admission::full) { blocked = {route.reader, route.self->space_ticket}; }
  return admission;
}

// All readers promise a place before the first gets the sample, so that none has it when another has no room.
Admission InProcessWriter::deliver_to_all(const RefPtr<Message>& message, Blocked& blocked,
                                          Notifications& notifications) {
  for (auto target = targets_.begin(); target != targets_.end(); ++target) {
    const Route& route = *target->route;
    RefPtr<Message> shared(message.get());
    const Admission admission = route.reader->reserve(shared, *route.self, target->reservation);
    if (admission == Admission::accepted || admission == Admission::dropped) { continue; }
    if (admission == Admission::full) { blocked = {route.reader, route.self->space_ticket}; }
    std::for_each(targets_.begin(), target,
                  [](const Target& reserved) { reserved.route->reader->cancel(reserved.reservation); });
    return admission;
  }
  for (const Target& target : targets_) { target.route->reader->commit(target.reservation, notifications); }
  return Admission::accepted;
}

}  // namespace dds
