#include <requestreply/exception.hpp>

#include "internal/check.hpp"
#include "internal/log.hpp"

namespace zemtra {

namespace {

std::string caused_by(const std::string& context, const char* cause) { return context + " caused by " + cause; }

/// The template's text with `msg` in place of its first "%s".
std::string fill(const QVXLogMessage& log_template, const std::string& msg) {
  std::string text = log_template.format;
  const std::size_t place = text.find("%s");
  if (place != std::string::npos) { text.replace(place, 2, msg); }
  return text;
}

}  // namespace

Rethrowable::~Rethrowable() = default;

// Each class throws itself, never its base, so every class needs these members of its own; they differ in the name
// only.
#define ZEMTRA_DEFINE_EXCEPTION(Class, Base)          \
  Class::Class(const std::string& msg) : Base(msg) {} \
  Class::~Class() noexcept = default;                 \
  void Class::raise() { throw Class(*this); }         \
  void Class::rethrow(const std::string& msg) const { throw Class(caused_by(msg, what())); }

ZEMTRA_DEFINE_EXCEPTION(RuntimeException, std::runtime_error)
ZEMTRA_DEFINE_EXCEPTION(TimeoutException, RuntimeException)
ZEMTRA_DEFINE_EXCEPTION(OutOfResourcesException, RuntimeException)
ZEMTRA_DEFINE_EXCEPTION(LogicException, std::logic_error)
ZEMTRA_DEFINE_EXCEPTION(UnsupportedException, LogicException)
ZEMTRA_DEFINE_EXCEPTION(BadParameterException, LogicException)
ZEMTRA_DEFINE_EXCEPTION(PreconditionNotMetException, LogicException)
ZEMTRA_DEFINE_EXCEPTION(NotEnabledException, LogicException)
ZEMTRA_DEFINE_EXCEPTION(ImmutablePolicyException, LogicException)
ZEMTRA_DEFINE_EXCEPTION(InconsistentPolicyException, LogicException)
ZEMTRA_DEFINE_EXCEPTION(AlreadyDeletedException, LogicException)
ZEMTRA_DEFINE_EXCEPTION(IllegalOperationException, LogicException)

#undef ZEMTRA_DEFINE_EXCEPTION

void throw_retcode(DDS_ReturnCode_t retcode, const std::string& msg) {
  switch (retcode) {
    case DDS_RETCODE_UNSUPPORTED:
      throw UnsupportedException(msg);
    case DDS_RETCODE_BAD_PARAMETER:
      throw BadParameterException(msg);
    case DDS_RETCODE_PRECONDITION_NOT_MET:
      throw PreconditionNotMetException(msg);
    case DDS_RETCODE_OUT_OF_RESOURCES:
      throw OutOfResourcesException(msg);
    case DDS_RETCODE_NOT_ENABLED:
      throw NotEnabledException(msg);
    case DDS_RETCODE_IMMUTABLE_POLICY:
      throw ImmutablePolicyException(msg);
    case DDS_RETCODE_INCONSISTENT_POLICY:
      throw InconsistentPolicyException(msg);
    case DDS_RETCODE_ALREADY_DELETED:
      throw AlreadyDeletedException(msg);
    case DDS_RETCODE_TIMEOUT:
      throw TimeoutException(msg);
    case DDS_RETCODE_ILLEGAL_OPERATION:
      throw IllegalOperationException(msg);
    case DDS_RETCODE_OK:
    case DDS_RETCODE_ERROR:
    case DDS_RETCODE_NO_DATA:
      break;
  }
  throw RuntimeException(msg);
}

void details::fail(DDS_ReturnCode_t retcode, const char* method_name, const QVXLogMessage& log_template,
                   const std::string& msg) {
  log(DDS_LOG_LEVEL_FAILURE, method_name, log_template, msg.c_str());
  throw_retcode(retcode, method_name + (":" + fill(log_template, msg)));
}

bool check_retcode(DDS_ReturnCode_t retcode, const char* method_name, const QVXLogMessage& log_template,
                   const std::string& msg, bool throw_on_timeout) {
  const details::Outcome outcome = details::outcome_of(retcode, throw_on_timeout);
  if (outcome == details::Outcome::failure) { details::fail(retcode, method_name, log_template, msg); }
  return outcome == details::Outcome::success;
}

}  // namespace zemtra
