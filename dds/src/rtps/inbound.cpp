#include "rtps/inbound.hpp"

#include <algorithm>
#include <new>

#include "rtps/endpoints.hpp"
#include "util/deadline.hpp"
#include "util/entity_ids.hpp"
#include "util/reserve_one.hpp"

namespace dds::rtps {

using Admission = ReaderCore::Admission;

Inbound::Writer::~Writer() {
  if (pool != nullptr) { pool->close(); }
}

Inbound::Writer* Inbound::find(const DDS_GUID_t& writer) {
  const auto found = writers_.find(writer);
  return found == writers_.end() ? nullptr : found->second.get();
}

std::vector<Inbound::Parked>::iterator Inbound::find_parked(Writer& writer, std::uint64_t token) {
  return std::find_if(writer.parked.begin(), writer.parked.end(),
                      [=](const Parked& parked) { return parked.token == token; });
}

void Inbound::add_writer(const DDS_GUID_t& writer, DDS_InstanceHandle_t handle, PublicationData data, bool reliable) {
  auto made = std::make_unique<Writer>();
  made->handle = handle;
  made->data = std::move(data);
  made->reliable = reliable;
  const MutexLock lock(mutex_);
  writers_.emplace(writer, std::move(made));
}

void Inbound::drop(Writer& writer, Notifications& notifications) {
  for (Parked& parked : writer.parked) { cancel(parked); }
  writer.parked.clear();
  writer.routes.remove_all(notifications);
  writer.bounded.remove_all(notifications);
}

void Inbound::remove_writer(const DDS_GUID_t& writer, Notifications& notifications) {
  const MutexLock lock(mutex_);
  const auto found = writers_.find(writer);
  if (found == writers_.end()) { return; }
  drop(*found->second, notifications);
  writers_.erase(found);
}

void Inbound::clear(Notifications& notifications) {
  const MutexLock lock(mutex_);
  for (const auto& known : writers_) { drop(*known.second, notifications); }
  writers_.clear();
  waiting_.clear();
}

void Inbound::connect(const DDS_GUID_t& guid, RtpsReader& reader, Notifications& notifications) {
  const MutexLock lock(mutex_);
  Writer* writer = find(guid);
  if (writer == nullptr) { return; }
  if (writer->pool == nullptr) {
    writer->pool = new MessagePool(reader.sink().type());
    writer->type_copy = reader.sink().type();
    writer->type = &writer->type_copy;
  }
  const bool asked = reader.endpoint().bounded && reader.endpoint().reliable && writer->reliable;
  RouteTable& routes = asked ? writer->bounded : writer->routes;
  routes.add(reader.sink(), reader.filter(), writer->handle, writer->data, writer->reliable, notifications);
}

void Inbound::disconnect(RtpsReader& reader, Notifications& notifications) {
  const MutexLock lock(mutex_);
  for (const auto& known : writers_) {
    Writer& writer = *known.second;
    for (Parked& parked : writer.parked) {
      for (RouteTable::Targets* targets : {&parked.targets, &parked.bounded_targets}) {
        const auto held = std::find_if(targets->begin(), targets->end(), [&](const RouteTable::Target& target) {
          return target.reader == &reader.sink();
        });
        if (held == targets->end()) { continue; }
        held->reader->cancel(held->reservation);
        targets->erase(held);
      }
    }
    if (!writer.routes.remove(reader.sink(), reader.filter(), notifications)) {
      writer.bounded.remove(reader.sink(), reader.filter(), notifications);
    }
  }
}

Inbound::Outcome Inbound::make_message(Writer& writer, const Prefix& prefix, Octets payload, RefPtr<Message>& message) {
  if (!is_valid(prefix.source_time)) { return Outcome::malformed; }
  try {
    RefPtr<Message> made = writer.pool->acquire();
    if (made.get() == nullptr) { return Outcome::no_memory; }
    if (!writer.type->deserialize(made->sample(), payload.data, payload.size)) { return Outcome::malformed; }
    if (writer.type->key != nullptr) { read_key(*writer.type, made->sample(), made->key); }
    message = std::move(made);
  } catch (const std::bad_alloc&) { return Outcome::no_memory; }
  message->kind = static_cast<MessageKind>(prefix.message_kind);
  message->identity = prefix.identity;
  message->related_identity = prefix.related_identity;
  message->source_time = prefix.source_time;
  message->arrival_time = current_time();
  message->publication_handle = writer.handle;
  return Outcome::taken;
}

Inbound::Outcome Inbound::deliver(const Prefix& prefix, Octets payload, Notifications& notifications) {
  const MutexLock lock(mutex_);
  Writer* writer = find(prefix.identity.writer_guid);
  if (writer == nullptr) { return Outcome::unknown_writer; }
  if (writer->routes.empty()) { return Outcome::taken; }
  RefPtr<Message> message;
  const Outcome made = make_message(*writer, prefix, payload, message);
  if (made != Outcome::taken) { return made; }
  RouteTable::Blocked blocked;
  // None of these readers is ever full.
  const Admission admission = writer->routes.deliver(message, blocked, notifications);
  return admission == Admission::no_memory ? Outcome::no_memory : Outcome::taken;
}

Inbound::Outcome Inbound::park(const Prefix& prefix, Octets payload) {
  const MutexLock lock(mutex_);
  Writer* writer = find(prefix.identity.writer_guid);
  if (writer == nullptr) { return Outcome::unknown_writer; }
  if (writer->parked.size() == kMostParked) { return Outcome::malformed; }
  Outcome outcome = Outcome::taken;
  Parked parked;
  parked.token = prefix.token;
  if (!writer->routes.empty() || !writer->bounded.empty()) {
    outcome = make_message(*writer, prefix, payload, parked.message);
  }
  reserve_one(waiting_, waiting_.size());
  reserve_one(writer->parked, writer->parked.size());
  writer->parked.push_back(std::move(parked));
  waiting_.push_back({prefix.identity.writer_guid, prefix.token});
  return outcome;
}

Inbound::Outcome Inbound::commit(const Prefix& prefix, Notifications& notifications) {
  const MutexLock lock(mutex_);
  Writer* writer = find(prefix.identity.writer_guid);
  if (writer == nullptr) { return Outcome::unknown_writer; }
  const auto parked = find_parked(*writer, prefix.token);
  if (parked == writer->parked.end() || !parked->placed) { return Outcome::malformed; }
  // Nobody has looked at the message yet.
  if (parked->message.get() != nullptr) { parked->message->identity = prefix.identity; }
  RouteTable::commit(parked->targets, notifications);
  RouteTable::commit(parked->bounded_targets, notifications);
  writer->parked.erase(parked);
  return Outcome::taken;
}

Inbound::Outcome Inbound::cancel(const Prefix& prefix) {
  const MutexLock lock(mutex_);
  Writer* writer = find(prefix.identity.writer_guid);
  if (writer == nullptr) { return Outcome::unknown_writer; }
  const auto parked = find_parked(*writer, prefix.token);
  if (parked == writer->parked.end()) { return Outcome::malformed; }
  cancel(*parked);
  writer->parked.erase(parked);
  return Outcome::taken;
}

void Inbound::cancel(Parked& parked) {
  RouteTable::cancel(parked.targets);
  RouteTable::cancel(parked.bounded_targets);
}

// A place in every reader, or in none.
Admission Inbound::place(const Writer& writer, Parked& parked) {
  if (parked.message.get() == nullptr) { return Admission::accepted; }
  RouteTable::Blocked blocked;
  Admission admission = Admission::no_memory;
  try {
    admission = writer.bounded.reserve(*parked.message, parked.bounded_targets, blocked);
    if (admission == Admission::accepted) {
      admission = writer.routes.reserve(*parked.message, parked.targets, blocked);
    }
  } catch (const std::bad_alloc&) { admission = Admission::no_memory; }
  if (admission != Admission::accepted) { RouteTable::cancel(parked.bounded_targets); }
  if (admission == Admission::full) {
    Deadline none({0, 0});
    blocked.reader->wait_for_space(blocked.ticket, none);
  }
  return admission;
}

void Inbound::try_reservations(std::vector<Answer>& answers) {
  const MutexLock lock(mutex_);
  answers.reserve(answers.size() + waiting_.size());
  bool out_of_memory = false;
  for (Waiting& waiting : waiting_) {
    Writer* const writer = find(waiting.writer);
    const auto parked = writer == nullptr ? std::vector<Parked>::iterator{} : find_parked(*writer, waiting.token);
    if (writer == nullptr || parked == writer->parked.end()) {
      waiting.done = true;
      continue;
    }
    const Admission admission = place(*writer, *parked);
    out_of_memory = out_of_memory || admission == Admission::no_memory;
    waiting.done = parked->placed = admission == Admission::accepted;
    if (waiting.done || !waiting.told) { answers.push_back({waiting.writer, waiting.token, waiting.done}); }
    waiting.told = true;
  }
  waiting_.erase(std::remove_if(waiting_.begin(), waiting_.end(), [](const Waiting& waiting) { return waiting.done; }),
                 waiting_.end());
  if (out_of_memory) { throw std::bad_alloc(); }
}

}  // namespace dds::rtps
