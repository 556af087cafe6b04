#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "behaviour.hpp"

namespace behaviour {

/// A keyed reader with keep-all history, written to be obviously right: everything is recomputed from plain lists.
class ReaderModel {
 public:
  struct Query {
    Selection selection;
    std::uint32_t related = 0;  // a related sequence number, or 0 for all samples
  };
  struct Sample {
    bool valid;
    std::string value;
    std::uint32_t related;
    bool read;
    int disposed_generations;
    int no_writers_generations;

    int generations() const { return disposed_generations + no_writers_generations; }
  };
  struct Instance {
    DDS_InstanceStateMask state = DDS_ALIVE_INSTANCE_STATE;
    bool is_new = true;
    int disposed_generations = 0;
    int no_writers_generations = 0;
    std::set<int> writers;
    std::vector<Sample> samples;

    int generations() const { return disposed_generations + no_writers_generations; }
    bool matches(const Query& query, const Sample& sample) const {
      const DDS_SampleStateMask sample_state = sample.read ? DDS_READ_SAMPLE_STATE : DDS_NOT_READ_SAMPLE_STATE;
      const DDS_ViewStateMask view_state = is_new ? DDS_NEW_VIEW_STATE : DDS_NOT_NEW_VIEW_STATE;
      return (query.selection.sample_states & sample_state) != 0 && (query.selection.view_states & view_state) != 0 &&
             (query.selection.instance_states & state) != 0 && (query.related == 0 || query.related == sample.related);
    }
    void add(bool valid, const std::string& value, std::uint32_t related) {
      samples.push_back({valid, value, related, false, disposed_generations, no_writers_generations});
    }
  };

  DDS_LongLong discarded_count = 0;  // samples

  explicit ReaderModel(bool no_writers_samples) : no_writers_samples_(no_writers_samples) {}

  void write(int writer, const std::string& key, const std::string& value, std::uint32_t related) {
    if (is_discarded(related)) {
      ++discarded_count;
      return;
    }
    Instance& instance = instances_[key];
    if (instance.state == DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE) { ++instance.disposed_generations; }
    if (instance.state == DDS_NOT_ALIVE_NO_WRITERS_INSTANCE_STATE) { ++instance.no_writers_generations; }
    if (instance.state != DDS_ALIVE_INSTANCE_STATE) { instance.is_new = true; }
    instance.state = DDS_ALIVE_INSTANCE_STATE;
    instance.writers.insert(writer);
    instance.add(true, value, related);
  }
  void dispose(int writer, const std::string& key, std::uint32_t related) {
    if (is_discarded(related) && !knows(key)) {
      ++discarded_count;
      return;
    }
    Instance& instance = instances_[key];
    instance.writers.insert(writer);
    if (instance.state == DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE) { return; }
    instance.state = DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE;
    add_end(instance, related);
  }
  void unregister(int writer, const std::string& key, std::uint32_t related) {
    if (is_discarded(related) && !knows(key)) { ++discarded_count; }
    if (!writes(writer, key)) { return; }
    Instance& instance = instances_[key];
    instance.writers.erase(writer);
    if (instance.writers.empty() && instance.state == DDS_ALIVE_INSTANCE_STATE) {
      instance.state = DDS_NOT_ALIVE_NO_WRITERS_INSTANCE_STATE;
      if (no_writers_samples_) { add_end(instance, related); }
    }
    forget_if_over(key);
  }
  void delete_writer(int writer) {
    for (const std::string& key : keys()) { unregister(writer, key, 0); }
  }
  void discard(std::uint32_t related) {
    discarded_.insert(related);
    for (const std::string& key : keys()) {
      std::vector<Sample>& samples = instances_[key].samples;
      const auto end = std::remove_if(samples.begin(), samples.end(),
                                      [&](const Sample& sample) { return sample.related == related; });
      discarded_count += samples.end() - end;
      samples.erase(end, samples.end());
      forget_if_over(key);
    }
  }

  bool writes(int writer, const std::string& key) const {
    const auto found = instances_.find(key);
    return found != instances_.end() && found->second.writers.count(writer) > 0;
  }
  bool knows(const std::string& key) const { return instances_.count(key) > 0; }

  std::size_t count(const Query& query) const {
    std::size_t found = 0;
    for (const auto& [key, instance] : instances_) {
      for (const Sample& sample : instance.samples) { found += instance.matches(query, sample) ? 1u : 0u; }
    }
    return found;
  }

  /// Checks what a read or take with `query` and at most `max_samples` delivered, and does the same to the model. How
  /// many samples of which instance a limited read delivers is open; of each instance they are the first.
  void expect(const std::vector<Received>& received, const Query& query, int max_samples, bool take) {
    const std::size_t available = count(query);
    const std::size_t limit = max_samples < 0 ? available : static_cast<std::size_t>(max_samples);
    ASSERT_EQ(received.size(), std::min(available, limit));
    std::map<std::string, std::vector<Received>> by_key;
    for (const Received& sample : received) { by_key[sample.key].push_back(sample); }
    for (const auto& [key, of_instance] : by_key) {
      ASSERT_TRUE(knows(key)) << key;
      ASSERT_NO_FATAL_FAILURE(expect_instance(instances_[key], of_instance, query, take)) << key;
      forget_if_over(key);
    }
  }

 private:
  bool is_discarded(std::uint32_t related) const { return discarded_.count(related) > 0; }
  void add_end(Instance& instance, std::uint32_t related) {
    if (is_discarded(related)) {
      ++discarded_count;
    } else {
      instance.add(false, "", related);
    }
  }
  static void expect_instance(Instance& instance, const std::vector<Received>& received, const Query& query,
                              bool take) {
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < instance.samples.size() && positions.size() < received.size(); ++i) {
      if (instance.matches(query, instance.samples[i])) { positions.push_back(i); }
    }
    ASSERT_EQ(positions.size(), received.size());
    const int newest_delivered = instance.samples[positions.back()].generations();
    for (std::size_t i = 0; i < positions.size(); ++i) {
      const Sample& sample = instance.samples[positions[i]];
      const DDS_SampleInfo& info = received[i].info;
      ASSERT_EQ(received[i].value, sample.value);
      ASSERT_EQ(info.valid_data, sample.valid);
      ASSERT_EQ(info.sample_state, sample.read ? DDS_READ_SAMPLE_STATE : DDS_NOT_READ_SAMPLE_STATE);
      ASSERT_EQ(info.view_state, instance.is_new ? DDS_NEW_VIEW_STATE : DDS_NOT_NEW_VIEW_STATE);
      ASSERT_EQ(info.instance_state, instance.state);
      ASSERT_EQ(info.disposed_generation_count, sample.disposed_generations);
      ASSERT_EQ(info.no_writers_generation_count, sample.no_writers_generations);
      ASSERT_EQ(info.sample_rank, static_cast<int>(positions.size() - 1 - i));
      ASSERT_EQ(info.generation_rank, newest_delivered - sample.generations());
      ASSERT_EQ(info.absolute_generation_rank, instance.generations() - sample.generations());
      ASSERT_EQ(info.instance_handle, received[0].info.instance_handle);
    }
    instance.is_new = false;
    for (std::size_t i = positions.size(); i-- > 0;) {
      instance.samples[positions[i]].read = true;
      if (take) { instance.samples.erase(instance.samples.begin() + static_cast<std::ptrdiff_t>(positions[i])); }
    }
  }
  void forget_if_over(const std::string& key) {
    const Instance& instance = instances_[key];
    if (instance.writers.empty() && instance.samples.empty()) { instances_.erase(key); }
  }
  std::vector<std::string> keys() const {
    std::vector<std::string> result;
    for (const auto& [key, instance] : instances_) { result.push_back(key); }
    return result;
  }

  const bool no_writers_samples_;
  std::set<std::uint32_t> discarded_;
  std::map<std::string, Instance> instances_;
};

}  // namespace behaviour
