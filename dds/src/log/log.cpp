#include "log/log.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>

unsigned int DDSLog_g_instrumentationMask = DDS_LOG_LEVEL_FAILURE;
unsigned int DDSLog_g_submoduleMask = 0xffffffffu;

namespace {

constexpr std::size_t text_capacity = 1024;

// Where this layer's own lines come from, in the arguments of the log call that are not shown.
constexpr int any_instance = -1;
constexpr int dds_subsystem = 0xF0000;

const char* or_unknown(const char* text) { return text != nullptr ? text : "(null)"; }

/// Appends octets to a text as far as they fit with a terminator.
class Text {
 public:
  void append(const char* octets, std::size_t count) {
    const std::size_t room = text_capacity - 1 - length_;
    const std::size_t taken = count < room ? count : room;
    std::memcpy(octets_ + length_, octets, taken);
    length_ += taken;
    octets_[length_] = '\0';
  }
  void append(const char* octets) { append(octets, std::strlen(octets)); }
  char* octets() { return octets_; }

 private:
  char octets_[text_capacity] = {};
  std::size_t length_ = 0;
};

void fill(Text& text, const char* format, const char* argument) {
  const char* placeholder = std::strstr(format, "%s");
  if (placeholder == nullptr) {
    text.append(format);
    return;
  }
  text.append(format, static_cast<std::size_t>(placeholder - format));
  text.append(argument);
  text.append(placeholder + 2);
}

void write_to_stderr(void* /*param*/, int /*level*/, const char* file, int line, const char* context,
                     const QVXLogMessage* /*log_template*/, const char* text) {
  // A name or an expression that the application chose may hold line breaks; a log line stays one line.
  Text shown;
  shown.append(text);
  for (char* octet = shown.octets(); *octet != '\0'; ++octet) {
    if (static_cast<unsigned char>(*octet) < 0x20) { *octet = ' '; }
  }
  std::fprintf(stderr, "%s:%d: %s: %s\n", or_unknown(file), line, or_unknown(context), shown.octets());
}

struct Sink {
  DDSLogSink function;
  void* param;
};

std::mutex sink_mutex;  // guards `sink`, which is called without it
Sink sink{&write_to_stderr, nullptr};

Sink current_sink() {
  const std::lock_guard<std::mutex> lock(sink_mutex);
  return sink;
}

}  // namespace

void DDSLog_set_sink(DDSLogSink function, void* param) {
  const std::lock_guard<std::mutex> lock(sink_mutex);
  sink = function != nullptr ? Sink{function, param} : Sink{&write_to_stderr, nullptr};
}

void QVXLogMessage_printWithParams(int /*instance*/, int level, int /*subsystem*/, const char* file, int line,
                                   const char* context, const QVXLogMessage* log_template, const char* argument) {
  Text text;
  fill(text, log_template->format, or_unknown(argument));
  const Sink destination = current_sink();
  destination.function(destination.param, level, file, line, context, log_template, text.octets());
}

namespace dds {

void log_failure(const char* file, int line, const char* context, const QVXLogMessage& log_template, const char* format,
                 ...) {
  if ((DDSLog_g_instrumentationMask & DDS_LOG_LEVEL_FAILURE) == 0) { return; }
  if ((DDSLog_g_submoduleMask & DDS_LOG_SUBMODULE_DDS) == 0) { return; }
  char argument[text_capacity];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(argument, sizeof argument, format, arguments);
  va_end(arguments);
  QVXLogMessage_printWithParams(any_instance, DDS_LOG_LEVEL_FAILURE, dds_subsystem, file, line, context, &log_template,
                                argument);
}

DDS_ReturnCode_t log_refusal(const char* file, int line, const char* context, DDS_ReturnCode_t outcome,
                             const char* precondition) {
  if (outcome == DDS_RETCODE_BAD_PARAMETER) {
    log_failure(file, line, context, DDS_LOG_BAD_PARAMETER_s, "null or out of range");
  } else if (outcome == DDS_RETCODE_PRECONDITION_NOT_MET) {
    log_failure(file, line, context, QVX_LOG_PRECONDITION_FAILURE_s, "%s", precondition);
  }
  return outcome;
}

}  // namespace dds
