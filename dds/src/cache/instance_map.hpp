#pragma once

#include <memory>
#include <string_view>
#include <unordered_map>

#include "cache/entry.hpp"

namespace dds {

/// The instances of one reader. A type without key has a single one, which is always there. The reader's lock guards
/// it.
class InstanceMap {
 public:
  /// `with_key_holders`: instances keep what a sample about a vanished writer needs. Throws `std::bad_alloc`.
  InstanceMap(const DDS_TypePlugin& type, bool with_key_holders);
  InstanceMap(const InstanceMap&) = delete;
  InstanceMap& operator=(const InstanceMap&) = delete;
  ~InstanceMap();

  bool keyed() const { return type_.key != nullptr; }
  /// Whether instances hold what a sample about a vanished writer needs.
  bool with_key_holders() const { return key_holders_ != nullptr; }
  std::size_t size() const { return by_key_.size(); }
  /// Null when there is none.
  Instance* find(std::string_view key) const;
  /// A new instance with the key of `message`. Throws `std::bad_alloc`.
  Instance* add(const Message& message);
  /// Forgets an instance that nothing refers to: no sample, no reservation, no writer. The single one stays.
  void remove_if_unused(Instance* instance);
  template <class Function>
  void for_each(Function function) const {
    if (!keyed()) {
      function(single_.get());
      return;
    }
    for (auto it = by_key_.begin(); it != by_key_.end();) {
      Instance* instance = it->second.get();
      ++it;  // `function` may remove the instance
      function(instance);
    }
  }

 private:
  std::unique_ptr<Instance> make() const;

  const DDS_TypePlugin type_;
  MessagePool* const key_holders_;  // null when none are kept; closed by the destructor
  DDS_InstanceHandle_t last_handle_ = DDS_HANDLE_NIL;
  std::unique_ptr<Instance> single_;                                        // of a type without key
  std::unordered_map<std::string_view, std::unique_ptr<Instance>> by_key_;  // the views refer to Instance::key
};

}  // namespace dds
