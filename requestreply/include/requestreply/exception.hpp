#pragma once

#include <stdexcept>
#include <string>

#include <dds/basic_types.hpp>
#include <dds/log.hpp>
#include <requestreply/export.hpp>

// Every failure that the library reports is one of the twelve exceptions below, thrown by value. Catch them by the
// standard category, by the root of the family (`RuntimeException`, `LogicException`), by the exact kind, or all of
// them by `Rethrowable`. Only exhausted memory is reported as `std::bad_alloc` instead. An exception is a value: one
// thread at a time may use it.

namespace zemtra {

/// An exception that can be thrown again as its own class by code that does not know which class it holds.
class ZEMTRA_EXPORT Rethrowable {
 public:
  /// Throws a new exception of the object's own class, with the message `msg`, " caused by " and the object's message;
  /// never returns. The object is not changed. Applied repeatedly, the newest context comes first.
  [[noreturn]] virtual void rethrow(const std::string& msg) const = 0;
  virtual ~Rethrowable();
};

/// A failure that depends on the moment: the middleware reported an error without a more specific cause, or it timed
/// out, or it ran out of resources.
class ZEMTRA_EXPORT RuntimeException : public std::runtime_error, public Rethrowable {
 public:
  /// `what()` is then exactly `msg`.
  explicit RuntimeException(const std::string& msg);
  ~RuntimeException() noexcept override;
  /// Throws a copy of the object as the object's own class; never returns.
  [[noreturn]] virtual void raise();
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// A failure that the caller could have avoided: a bad argument or a wrong state. Only the classes below it are thrown.
class ZEMTRA_EXPORT LogicException : public std::logic_error, public Rethrowable {
 public:
  /// `what()` is then exactly `msg`.
  explicit LogicException(const std::string& msg);
  ~LogicException() noexcept override;
  /// Throws a copy of the object as the object's own class; never returns.
  [[noreturn]] virtual void raise();
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// `DDS_RETCODE_TIMEOUT`, where a time-out is a failure: a write that stayed blocked too long, a call without reply.
class ZEMTRA_EXPORT TimeoutException : public RuntimeException {
 public:
  explicit TimeoutException(const std::string& msg);
  ~TimeoutException() noexcept override;
  [[noreturn]] void raise() override;
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// `DDS_RETCODE_OUT_OF_RESOURCES`.
class ZEMTRA_EXPORT OutOfResourcesException : public RuntimeException {
 public:
  explicit OutOfResourcesException(const std::string& msg);
  ~OutOfResourcesException() noexcept override;
  [[noreturn]] void raise() override;
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// `DDS_RETCODE_UNSUPPORTED`.
class ZEMTRA_EXPORT UnsupportedException : public LogicException {
 public:
  explicit UnsupportedException(const std::string& msg);
  ~UnsupportedException() noexcept override;
  [[noreturn]] void raise() override;
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// `DDS_RETCODE_BAD_PARAMETER`.
class ZEMTRA_EXPORT BadParameterException : public LogicException {
 public:
  explicit BadParameterException(const std::string& msg);
  ~BadParameterException() noexcept override;
  [[noreturn]] void raise() override;
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// `DDS_RETCODE_PRECONDITION_NOT_MET`.
class ZEMTRA_EXPORT PreconditionNotMetException : public LogicException {
 public:
  explicit PreconditionNotMetException(const std::string& msg);
  ~PreconditionNotMetException() noexcept override;
  [[noreturn]] void raise() override;
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// `DDS_RETCODE_NOT_ENABLED`.
class ZEMTRA_EXPORT NotEnabledException : public LogicException {
 public:
  explicit NotEnabledException(const std::string& msg);
  ~NotEnabledException() noexcept override;
  [[noreturn]] void raise() override;
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// `DDS_RETCODE_IMMUTABLE_POLICY`.
class ZEMTRA_EXPORT ImmutablePolicyException : public LogicException {
 public:
  explicit ImmutablePolicyException(const std::string& msg);
  ~ImmutablePolicyException() noexcept override;
  [[noreturn]] void raise() override;
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// `DDS_RETCODE_INCONSISTENT_POLICY`.
class ZEMTRA_EXPORT InconsistentPolicyException : public LogicException {
 public:
  explicit InconsistentPolicyException(const std::string& msg);
  ~InconsistentPolicyException() noexcept override;
  [[noreturn]] void raise() override;
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// `DDS_RETCODE_ALREADY_DELETED`.
class ZEMTRA_EXPORT AlreadyDeletedException : public LogicException {
 public:
  explicit AlreadyDeletedException(const std::string& msg);
  ~AlreadyDeletedException() noexcept override;
  [[noreturn]] void raise() override;
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// `DDS_RETCODE_ILLEGAL_OPERATION`.
class ZEMTRA_EXPORT IllegalOperationException : public LogicException {
 public:
  explicit IllegalOperationException(const std::string& msg);
  ~IllegalOperationException() noexcept override;
  [[noreturn]] void raise() override;
  [[noreturn]] void rethrow(const std::string& msg) const override;
};

/// Throws the exception of `retcode`, with exactly `msg` as its message; never returns. `DDS_RETCODE_OK`,
/// `DDS_RETCODE_ERROR`, `DDS_RETCODE_NO_DATA` and unknown values give `RuntimeException`. Logs nothing.
[[noreturn]] ZEMTRA_EXPORT void throw_retcode(DDS_ReturnCode_t retcode, const std::string& msg);

/// Tells success (true) from the outcomes that mean that nothing is there (false): `DDS_RETCODE_NO_DATA`, and
/// `DDS_RETCODE_TIMEOUT` unless `throw_on_timeout`. Anything else is a failure: one log line of the level for failures,
/// if the masks allow it, with `method_name` as context, `log_template` and `msg`; then the exception of `retcode`,
/// with the message `method_name`, ":", and the template's text with `msg` in place of its first "%s". `method_name`
/// must not be null.
ZEMTRA_EXPORT bool check_retcode(DDS_ReturnCode_t retcode, const char* method_name, const QVXLogMessage& log_template,
                                 const std::string& msg, bool throw_on_timeout);

}  // namespace zemtra
