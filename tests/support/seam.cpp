#include "support/seam.hpp"

#include <algorithm>
#include <new>
#include <sstream>

namespace support {

#define SUPPORT_TEXT(...) #__VA_ARGS__
#define SUPPORT_TEXT_OF(list) SUPPORT_TEXT(list)

std::string name_of(Call call) {
  std::istringstream names(SUPPORT_TEXT_OF(SUPPORT_CALLS));
  std::string name;
  for (int i = 0; i <= static_cast<int>(call); ++i) { names >> name; }
  return name.substr(0, name.find(','));
}

Seam& Seam::get() {
  static Seam seam;
  return seam;
}

void Seam::reset() {
  const std::lock_guard<std::mutex> lock(mutex_);
  planned_.clear();
  calls_.clear();
  times.clear();
  wait_timeouts.clear();
  on_wait = nullptr;
  reads.clear();
  writes.clear();
  pools.clear();
}

void Seam::plan(const Fault& fault) {
  const std::lock_guard<std::mutex> lock(mutex_);
  planned_.push_back({fault, fault.occurrence});
}

std::optional<DDS_ReturnCode_t> Seam::enter(Call call, const std::string& who) {
  const std::lock_guard<std::mutex> lock(mutex_);
  calls_.emplace_back(call, who);
  for (Planned& planned : planned_) {
    if (planned.fault.call == call && --planned.remaining == 0) {
      if (planned.fault.throws) { throw std::bad_alloc(); }
      return planned.fault.retcode;
    }
  }
  return std::nullopt;
}

bool Seam::all_happened() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::all_of(planned_.begin(), planned_.end(), [](const Planned& planned) { return planned.remaining <= 0; });
}

std::vector<std::string> Seam::trace() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::vector<std::string> names;
  for (const auto& entry : calls_) { names.push_back(entry.second); }
  return names;
}

int Seam::count(Call call) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(
      std::count_if(calls_.begin(), calls_.end(), [call](const auto& entry) { return entry.first == call; }));
}

}  // namespace support
