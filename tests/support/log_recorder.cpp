#include "support/log_recorder.hpp"

#include <mutex>
#include <ostream>

namespace support {

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
  return out << "{level " << line.level << ", " << line.file << ":" << line.line << ", " << line.context << ": "
             << line.text << "}";
}

std::string filled(const QVXLogMessage& log_template, const std::string& argument) {
  std::string text = log_template.format;
  return text.replace(text.find("%s"), 2, argument);
}

namespace {

// A thread may still be writing a line to a recorder that has just been destroyed.
std::mutex mutex;
LogRecorder* recording = nullptr;

}  // namespace

LogRecorder::LogRecorder()
    : instrumentation_mask_(DDSLog_g_instrumentationMask), submodule_mask_(DDSLog_g_submoduleMask) {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    recording = this;
  }
  DDSLog_set_sink(&LogRecorder::record, nullptr);
}

LogRecorder::~LogRecorder() {
  DDSLog_set_sink(nullptr, nullptr);
  {
    const std::lock_guard<std::mutex> lock(mutex);
    recording = nullptr;
  }
  // Only a test without threads that log changes them.
  if (DDSLog_g_instrumentationMask != instrumentation_mask_) { DDSLog_g_instrumentationMask = instrumentation_mask_; }
  if (DDSLog_g_submoduleMask != submodule_mask_) { DDSLog_g_submoduleMask = submodule_mask_; }
}

std::vector<LogLine> LogRecorder::lines() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return lines_;
}

std::vector<LogLine> LogRecorder::other_lines() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return other_lines_;
}

void LogRecorder::clear() {
  const std::lock_guard<std::mutex> lock(mutex);
  lines_.clear();
  other_lines_.clear();
}

void LogRecorder::record(void* /*param*/, int level, const char* file, int line, const char* context,
                         const QVXLogMessage* log_template, const char* text) {
  const LogLine entry{level, file, line, context, log_template, text};
  const std::lock_guard<std::mutex> lock(mutex);
  if (recording == nullptr) { return; }
  const bool ours = entry.file.compare(0, 13, "requestreply/") == 0;
  (ours ? recording->lines_ : recording->other_lines_).push_back(entry);
}

}  // namespace support
