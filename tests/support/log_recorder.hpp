#pragma once

#include <dds/log.hpp>
#include <iosfwd>
#include <string>
#include <vector>

namespace support {

struct LogLine {
  int level = 0;
  std::string file;
  int line = 0;
  std::string context;
  const QVXLogMessage* log_template = nullptr;
  std::string text;
};
std::ostream& operator<<(std::ostream& out, const LogLine& line);

/// What the template's text becomes with `argument`.
std::string filled(const QVXLogMessage& log_template, const std::string& argument);

/// Catches all log lines of its lifetime, from any thread; the masks are what they were again afterwards. One at a
/// time.
class LogRecorder {
 public:
  LogRecorder();
  ~LogRecorder();
  LogRecorder(const LogRecorder&) = delete;
  LogRecorder& operator=(const LogRecorder&) = delete;

  /// The lines of the request-reply library.
  std::vector<LogLine> lines() const;
  /// The lines of everything else.
  std::vector<LogLine> other_lines() const;
  void clear();

 private:
  static void record(void*, int level, const char* file, int line, const char* context,
                     const QVXLogMessage* log_template, const char* text);

  std::vector<LogLine> lines_;
  std::vector<LogLine> other_lines_;
  const unsigned int instrumentation_mask_;
  const unsigned int submodule_mask_;
};

}  // namespace support
