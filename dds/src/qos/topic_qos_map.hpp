#pragma once

#include <string>
#include <utility>
#include <vector>

namespace dds {

/// Whether a name matches a pattern in which * stands for any characters and ? for one. Neither recurses nor allocates;
/// at most as many steps as the product of the two lengths.
bool matches_pattern(const char* pattern, const char* name) noexcept;

/// QoS by topic name: settings for patterns of names, and a general one for all others. Copying QoS throws
/// `std::bad_alloc`; the map is then as before. Not thread-safe.
template <class Qos>
class TopicQosMap {
 public:
  const Qos& general() const { return general_; }

  void set_general(const Qos& qos) {
    Qos copy(qos);
    general_ = std::move(copy);
  }

  /// Setting a pattern again replaces its QoS and keeps its place in the order.
  void set(const char* pattern, const Qos& qos) {
    Qos copy(qos);
    for (auto& [known, setting] : patterns_) {
      if (known == pattern) {
        setting = std::move(copy);
        return;
      }
    }
    patterns_.emplace_back(pattern, std::move(copy));
  }

  /// The setting of the first pattern, in the order of setting, that matches; otherwise the general one, as for null.
  const Qos& find(const char* topic_name) const {
    if (topic_name == nullptr) { return general_; }
    for (const auto& [pattern, setting] : patterns_) {
      if (matches_pattern(pattern.c_str(), topic_name)) { return setting; }
    }
    return general_;
  }

 private:
  Qos general_;
  std::vector<std::pair<std::string, Qos>> patterns_;
};

}  // namespace dds
