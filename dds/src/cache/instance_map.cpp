#include "cache/instance_map.hpp"

#include <new>

namespace dds {

InstanceMap::InstanceMap(const DDS_TypePlugin& type, bool with_key_holders)
    : type_(type), key_holders_(with_key_holders ? new MessagePool(type) : nullptr) {
  if (keyed()) { return; }
  try {
    single_ = make();
  } catch (...) {
    if (key_holders_ != nullptr) { key_holders_->close(); }
    throw;
  }
}

InstanceMap::~InstanceMap() {
  if (key_holders_ != nullptr) { key_holders_->close(); }
}

Instance* InstanceMap::find(std::string_view key) const {
  if (!keyed()) { return single_.get(); }
  const auto found = by_key_.find(key);
  return found == by_key_.end() ? nullptr : found->second.get();
}

std::unique_ptr<Instance> InstanceMap::make() const {
  auto instance = std::make_unique<Instance>();
  if (key_holders_ != nullptr) {
    instance->key_holder = key_holders_->acquire();
    if (instance->key_holder.get() == nullptr) { throw std::bad_alloc(); }
  }
  return instance;
}

Instance* InstanceMap::add(const Message& message) {
  auto instance = make();
  instance->key = message.key;
  instance->handle = ++last_handle_;
  if (key_holders_ != nullptr && !type_.copy_key(instance->key_holder->sample(), message.sample())) {
    throw std::bad_alloc();
  }
  Instance* added = instance.get();
  by_key_.emplace(std::string_view(added->key), std::move(instance));
  return added;
}

void InstanceMap::remove_if_unused(Instance* instance) {
  if (!keyed() || !instance->samples.empty() || instance->reservations != 0 || instance->writer_count != 0) { return; }
  by_key_.erase(by_key_.find(instance->key));
}

}  // namespace dds
