#pragma once

#include <dds/data_reader.hpp>
#include <dds/data_writer.hpp>
#include <requestreply/exception.hpp>
#include <zemtra/duration.hpp>

namespace zemtra {
namespace details {

/// A match condition of a writer or a reader, for the length of a scope.
template <class Entity>
class ScopedMatchCondition {
 public:
  explicit ScopedMatchCondition(Entity& entity) : entity_(entity), condition_(entity.create_match_condition()) {
    if (condition_ == nullptr) {
      check_retcode(DDS_RETCODE_ERROR, "ServiceMatch::wait", QVX_LOG_CREATION_FAILURE_s, "match condition", false);
    }
  }
  ~ScopedMatchCondition() { static_cast<void>(entity_.delete_match_condition(condition_)); }
  ScopedMatchCondition(const ScopedMatchCondition&) = delete;
  ScopedMatchCondition& operator=(const ScopedMatchCondition&) = delete;

  DDSMatchCondition* get() const { return condition_; }

 private:
  Entity& entity_;
  DDSMatchCondition* condition_;  // the entity's, deleted here
};

/// Waits for changes of what a writer and a reader are matched with.
class MatchConditions {
 public:
  MatchConditions(DDSDataWriter& writer, DDSDataReader& reader) : writer_(writer), reader_(reader) {
    attach(writer_.get());
    attach(reader_.get());
  }

  void reset() {
    writer_.get()->reset();
    reader_.get()->reset();
  }
  /// False when nothing has changed since `reset` until `timeout` was over.
  bool wait(const Duration& timeout) {
    DDSConditionSeq active;
    return check_retcode(wait_set_.wait(active, timeout), "ServiceMatch::wait", QVX_LOG_ANY_FAILURE_s, "wait", false);
  }

 private:
  void attach(DDSCondition* condition) {
    check_retcode(wait_set_.attach_condition(condition), "ServiceMatch::wait", QVX_LOG_ANY_FAILURE_s,
                  "attach condition", false);
  }

  ScopedMatchCondition<DDSDataWriter> writer_;
  ScopedMatchCondition<DDSDataReader> reader_;
  DDSWaitSet wait_set_;
};

}  // namespace details
}  // namespace zemtra
