#pragma once

#include <gtest/gtest.h>

#include <dds/builtin_types.hpp>
#include <new>

#include "types/builtin_plugins.hpp"

/// A sample as the layer makes them.
class OwnSample {
 public:
  explicit OwnSample(const DDS_TypePlugin& plugin)
      : plugin_(plugin), memory_(::operator new (plugin.size, std::align_val_t{plugin.alignment})) {
    EXPECT_TRUE(plugin.construct(memory_));
  }
  ~OwnSample() {
    plugin_.destroy(memory_);
    ::operator delete (memory_, std::align_val_t{plugin_.alignment});
  }
  OwnSample(const OwnSample&) = delete;
  OwnSample& operator=(const OwnSample&) = delete;

  void* memory() { return memory_; }
  /// What the application sees.
  template <class Data>
  const Data& as() const {
    return *static_cast<const Data*>(memory_);
  }

 private:
  const DDS_TypePlugin& plugin_;
  void* const memory_;
};
