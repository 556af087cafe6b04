#include "setting.hpp"

#include "behaviour.hpp"

namespace behaviour {

namespace {

Setting* the_setting = nullptr;

}  // namespace

thread_local int AsItComes::depth_ = 0;

Setting::Setting(const support::Carrier& carrier) : carrier_(carrier) {
  the_setting = this;
  if (carrier.across_processes()) { process_ = start_writer_process(); }
}
Setting::~Setting() {
  process_.reset();
  writers_participants_.clear();
  the_setting = nullptr;
}
Setting* Setting::current() { return the_setting; }

void Setting::join(DDSDomainParticipant* participant) {
  if (carrier_.in_process()) { return; }
  if (process_ != nullptr) { join_remotely(*process_, participant->get_domain_id()); }
  const std::lock_guard<std::mutex> lock(mutex_);
  markers_[participant->get_domain_id()].join(participant);
}
void Setting::leave(DDSDomainParticipant* participant) {
  if (carrier_.in_process()) { return; }
  const std::lock_guard<std::mutex> lock(mutex_);
  markers_[participant->get_domain_id()].leave(participant);
}

DDSTopic* Setting::writers_topic(Builtin type, DDSTopic* topic) {
  if (carrier_.ends == support::Carrier::one_participant) { return topic; }
  const DDS_DomainId_t domain = topic->get_participant()->get_domain_id();
  const std::lock_guard<std::mutex> lock(writers_mutex_);
  std::unique_ptr<Participant>& place = writers_participants_[domain];
  if (place == nullptr) { place = std::make_unique<Participant>(domain); }
  return place->find_topic(type, topic->get_name(), topic->get_type_name());
}

DDSDataWriter* Setting::create_writer(Builtin type, DDSTopic* topic, const DDS_DataWriterQos& qos,
                                      DDSDataWriterListener* listener) {
  if (process_ != nullptr) {
    std::unique_ptr<RemoteWriter> made = create_remote_writer(*process_, type, topic, qos);
    if (made == nullptr) { return nullptr; }
    const std::lock_guard<std::mutex> lock(writers_mutex_);
    remote_writers_.push_back(std::move(made));
    return remote_writers_.back()->api();
  }
  DDSTopic* writers = writers_topic(type, topic);
  return writers->get_participant()->create_datawriter(
      writers, qos, listener, listener == nullptr ? DDS_STATUS_MASK_NONE : DDS_STATUS_MASK_ALL);
}

void Setting::settle() {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (auto& [domain, markers] : markers_) {
    if (markers.members() == 0) { continue; }
    ++round_;
    const int everybody = markers.members() + (process_ == nullptr ? 0 : 1);
    markers.send(round_, everybody);
    if (process_ != nullptr) { settle_remotely(*process_, domain, round_, everybody); }
    markers.await(round_, everybody);
  }
}

void Setting::take_part(DDS_DomainId_t domain, int round, int everybody) {
  const std::lock_guard<std::mutex> lock(mutex_);
  markers_[domain].send(round, everybody);
  markers_[domain].await(round, everybody);
}

const support::Carrier& carrier() {
  static const support::Carrier within = support::carriers().front();
  return the_setting == nullptr ? within : the_setting->carrier();
}

void settle() {
  if (the_setting != nullptr && !AsItComes::here()) { the_setting->settle(); }
}

}  // namespace behaviour
