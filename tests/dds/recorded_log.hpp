#pragma once

#include <dds/log.hpp>
#include <mutex>
#include <string>
#include <vector>

#include "allocations.hpp"

/// Receives all log lines while it lives.
class RecordedLog {
 public:
  struct Line {
    int level;
    std::string file;
    int line;
    std::string context;
    const QVXLogMessage* log_template;
    std::string text;
  };

  RecordedLog() { DDSLog_set_sink(&record, this); }
  ~RecordedLog() { DDSLog_set_sink(nullptr, nullptr); }
  RecordedLog(const RecordedLog&) = delete;
  RecordedLog& operator=(const RecordedLog&) = delete;

  /// The lines so far, which are then forgotten.
  std::vector<Line> take_lines() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::move(lines_);
  }
  /// The text of the only line so far; otherwise what is wrong with that. The lines are then forgotten.
  std::string take_text() {
    const std::vector<Line> lines = take_lines();
    return lines.size() == 1 ? lines.front().text : std::to_string(lines.size()) + " lines";
  }

 private:
  static void record(void* param, int level, const char* file, int line, const char* context,
                     const QVXLogMessage* log_template, const char* text) {
    const UnwatchedAllocations unwatched;
    auto* self = static_cast<RecordedLog*>(param);
    const std::lock_guard<std::mutex> lock(self->mutex_);
    self->lines_.push_back({level, file, line, context, log_template, text});
  }

  std::mutex mutex_;
  std::vector<Line> lines_;
};
