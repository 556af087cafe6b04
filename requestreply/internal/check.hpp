#pragma once

#include <string>

#include <requestreply/exception.hpp>

namespace zemtra {
namespace details {

/// What a return code means to the library.
enum class Outcome { success, nothing_there, failure };

inline Outcome outcome_of(DDS_ReturnCode_t retcode, bool throw_on_timeout) {
  if (retcode == DDS_RETCODE_OK) { return Outcome::success; }
  if (retcode == DDS_RETCODE_TIMEOUT && !throw_on_timeout) { return Outcome::nothing_there; }
  return retcode == DDS_RETCODE_NO_DATA ? Outcome::nothing_there : Outcome::failure;
}

/// The failing half of `check_retcode`: logs the failure, if the masks allow it, and throws the code's exception.
[[noreturn]] void fail(DDS_ReturnCode_t retcode, const char* method_name, const QVXLogMessage& log_template,
                       const std::string& msg);

/// `check_retcode` for calls in which a time-out is no failure and the message is a constant: no string is built, and
/// so nothing allocated, unless the call has failed.
inline bool check(DDS_ReturnCode_t retcode, const char* method_name, const QVXLogMessage& log_template,
                  const char* msg) {
  const Outcome outcome = outcome_of(retcode, false);
  if (outcome == Outcome::failure) { fail(retcode, method_name, log_template, msg); }
  return outcome == Outcome::success;
}

}  // namespace details
}  // namespace zemtra
