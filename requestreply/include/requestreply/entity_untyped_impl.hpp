#pragma once

#include <dds/condition.hpp>
#include <dds/sample_info.hpp>
#include <requestreply/export.hpp>

class DDSDataReader;
class DDSDataReaderListener;
class DDSDataWriter;
class DDSDomainParticipant;
class DDSPublisher;
class DDSSubscriber;
class DDSTopic;
class DDSTopicDescription;
class DDSTypeSupport;
struct DDS_DataReaderQos;
struct DDS_DataWriterQos;
struct DDS_WriteParams_t;

namespace zemtra {

class Rethrowable;

namespace details {

class EntityParams;

/// Registers a type in a participant and returns the name under which it is registered. The type support is the one of
/// the entity's parameters, possibly null. Supplied by a typed front end; may throw.
using RegisterTypeFunction = const char* (*)(DDSTypeSupport*, DDSDomainParticipant*);

/// What a requester and a replier have in common: one data writer, one data reader, two read conditions and a wait set,
/// with which samples are sent, waited for, lent and given back without knowing their type.
///
/// Construct, `initialize` once, use, then `finalize` or destroy. `initialize`, `finalize`, `swap` and destruction must
/// not overlap with any other call on the entity; everything else may be called by several threads at once, except that
/// the entity's own wait set (`wait_for_any_sample`, `receive_sample_loaned`) serves one thread at a time.
///
/// A loan is an array of `data_count` sample pointers and a sequence with as many infos, in the same order. It is valid
/// until `return_loan`, and the reader cannot be deleted before. No sample is ever copied.
///
/// What needs the writer or the reader requires that `initialize` has succeeded and `finalize` has not been called.
class ZEMTRA_EXPORT EntityUntypedImpl {
 public:
  /// Chooses the topics of an entity while it is initialized: the writer's before the writer exists, the reader's
  /// after. Neither operation returns null; both throw on failure and delete nothing then.
  class ZEMTRA_EXPORT TopicBuilder {
   public:
    virtual DDSTopic* create_writer_topic(const EntityParams& params, const char* type_name) = 0;
    /// A topic or a content-filtered topic.
    virtual DDSTopicDescription* create_reader_topic(const EntityParams& params, const char* type_name) = 0;
    virtual ~TopicBuilder();
  };

  /// "zemtra::details::EntityUntypedImpl", the name under which failures of `initialize` are reported.
  static const char* const CLASS_NAME;

  /// Creates no middleware object but the wait set. `owns_cft`: the topic builder makes a content-filtered topic for
  /// the reader, which the entity deletes after the reader.
  explicit EntityUntypedImpl(bool owns_cft);
  /// Finalizes. Never throws.
  virtual ~EntityUntypedImpl();
  EntityUntypedImpl(const EntityUntypedImpl&) = delete;
  EntityUntypedImpl& operator=(const EntityUntypedImpl&) = delete;

  /// Fills `qos`, default-constructed, for the data writer: the caller's structure, or else the profile's for the topic
  /// name, or else the participant's default for the topic name with the request-reply settings over it (reliable, keep
  /// all, no limits, a write blocks for at most 10 s). `role` becomes the role name unless there is one. Throws.
  virtual void get_datawriter_qos(DDS_DataWriterQos& qos, const EntityParams& params, const char* topic_name,
                                  const char* role);
  /// The same for the data reader. Whatever the source, a vanished writer leaves no sample without valid data unless
  /// the QoS says otherwise (property "dds.data_reader.history.generate_not_alive_no_writers_sample").
  virtual void get_datareader_qos(DDS_DataReaderQos& qos, const EntityParams& params, const char* topic_name,
                                  const char* role);

  /// Creates the writer, the reader and the read conditions. On any failure deletes again what it has created, except
  /// topics, and throws: a library exception as its own class with the entity's context in front of its message. An
  /// exception of another kind passes unchanged; what was created until then is deleted by `finalize`. After a failure
  /// the entity cannot be initialized again. The listener may be null, else it must outlive the reader. `flag` is kept
  /// for typed front ends; nothing here depends on it. `samples_size` is handed to every read unchanged. Not looked at
  /// is whether the condition for unread samples could be attached to the wait set: without it, waits end by time-out.
  void initialize(const EntityParams& params, RegisterTypeFunction register_writer_type,
                  RegisterTypeFunction register_reader_type, int samples_size, TopicBuilder& topic_builder,
                  DDSDataReaderListener* reader_listener, bool flag, const char* role_name);
  /// Deletes what `initialize` has created; the topics stay in the participant. Does nothing the second time. Never
  /// throws: a deletion that fails is logged and the next one is tried.
  void finalize();

  /// Null before `initialize` and after `finalize`.
  DDSDataReader* get_datareader() const;
  DDSDataWriter* get_datawriter() const;

  /// Exchanges participant, publisher, subscriber, topics, reader, writer, read conditions, sample size and the wait
  /// sets' contents. Never throws. What stays with its object: the flag, the limit on the samples of a read, whether
  /// the object is finalized and whether it owns its content-filtered topic. So exchange only entities of the same role
  /// and state, and, if their readers' limits differ, give `max_count` instead of relying on the limit.
  void swap(EntityUntypedImpl& other);

  /// `log_and_rethrow_conditional` for this entity's writer and reader, for code that wraps calls into the entity in a
  /// handler for `const Rethrowable&`. Never returns.
  void log_and_rethrow(const Rethrowable& ex, const char* class_name, const char* method_name) const;

  /// Writes one sample of the writer's type. `params.identity` becomes the one that the middleware assigns, whatever it
  /// was before; the rest is passed on as it is. `TimeoutException` when the write stayed blocked for the writer's
  /// maximum blocking time, otherwise the exception of the middleware's return code. Nothing is retried.
  void send_sample(const void* data, DDS_WriteParams_t& params);

  /// Throws `BadParameterException` unless the arguments of a receive make sense: `max_count` positive or unlimited,
  /// `min_count` not above it, `max_wait` not zero and not infinite when the count is unbounded as well. An unlimited
  /// count stands for the reader's limit on the samples of one read. Works before `initialize` too.
  void validate(int min_count, int max_count, DDS_Duration_t max_wait) const;

  /// Reads or takes up to `max_samples` samples through `read_condition`, not null, as a loan. True when samples were
  /// lent, false when there were none; throws on failure. The length arguments and the ownership flag are the
  /// middleware's: 0, 0 and true ask for a loan.
  bool get_sample_loaned(void*** received_data, int* data_count, DDS_SampleInfoSeq& info_seq, int data_seq_len,
                         int data_seq_max_len, unsigned char data_seq_has_ownership, int max_samples,
                         DDSReadCondition* read_condition, bool take);
  /// The same for callers: `read_condition` null stands for samples in any state. `BadParameterException` for a
  /// negative `max_samples` that is not `DDS_LENGTH_UNLIMITED`.
  bool get_sample_loaned(void*** received_data, int* data_count, DDS_SampleInfoSeq& info_seq, int max_samples,
                         bool take, DDSReadCondition* read_condition);

  /// Marks up to `max_count` samples of the condition as read, without taking them; returns how many there were.
  int touch_samples(int max_count, DDSReadCondition* read_condition);

  /// Waits until `min_count` samples have been counted (true) or `max_wait` has passed (false): those already there
  /// that `initial_condition` selects, then those that arrive and `read_condition`, which must select unread samples
  /// and be attached to `set`, selects. Counted samples are marked as read, except a last one that was still missing
  /// alone. A failure throws and leaves the samples counted so far marked as read. `DDS_LENGTH_UNLIMITED` waits for the
  /// time-out.
  bool wait_for_samples(const DDS_Duration_t& max_wait, int min_count, DDSWaitSet& set,
                        DDSReadCondition* initial_condition, DDSReadCondition* read_condition);
  /// `wait_for_samples` on the entity's own wait set, for samples in any state.
  bool wait_for_any_sample(const DDS_Duration_t& max_wait, int min_count);

  /// Checks the arguments (`validate`), waits for `min_count` samples and takes up to `max_count` in any state as a
  /// loan. False, and a count of 0, after a time-out.
  bool receive_sample_loaned(void*** received_data, int* data_count, DDS_SampleInfoSeq& info_seq, int max_count,
                             const DDS_Duration_t& max_wait, int min_count);

  /// Gives a loan back. Never throws: a failure is only logged.
  void return_loan(void** received_data, DDS_SampleInfoSeq& info_seq);

 protected:
  // The names without underscore are those that front ends and topic builders know.
  DDSDomainParticipant* participant = nullptr;       // borrowed
  DDSPublisher* publisher = nullptr;                 // borrowed; null for the implicit one
  DDSSubscriber* subscriber = nullptr;               // borrowed; null for the implicit one
  DDSTopic* writer_topic = nullptr;                  // the participant's, never deleted here
  DDSTopicDescription* reader_topic = nullptr;       // never deleted through this member
  DDSDataWriter* writer = nullptr;                   // owned
  DDSDataReader* reader = nullptr;                   // owned
  DDSWaitSet waitset;                                // waits for not_read_condition
  DDSReadCondition* not_read_condition = nullptr;    // owned; "read condition (1)" in log lines
  DDSReadCondition* any_sample_condition = nullptr;  // owned; "read condition (2)" in log lines
  int sample_size = -1;                              // of the reader's type
  bool sample_flag = false;                          // stored only
  int max_samples_per_read = DDS_LENGTH_UNLIMITED;   // as in the QoS that the reader was created with
  bool finalized = false;                            // makes every later finalize a no-op
  bool owns_reader_cft;                              // the reader's content-filtered topic goes with the reader

 private:
  ZEMTRA_HIDDEN void create_writer(const EntityParams& params, RegisterTypeFunction register_type,
                                   TopicBuilder& topic_builder, const char* role_name);
  ZEMTRA_HIDDEN void create_reader(const EntityParams& params, RegisterTypeFunction register_type,
                                   TopicBuilder& topic_builder, DDSDataReaderListener* listener, const char* role_name);
  ZEMTRA_HIDDEN void create_conditions();
  ZEMTRA_HIDDEN void delete_conditions();
  ZEMTRA_HIDDEN void delete_reader();
  ZEMTRA_HIDDEN void delete_writer();
};

/// Sets `info.valid_data` to false and changes nothing else.
ZEMTRA_EXPORT void init_sample_info(DDS_SampleInfo& info);

}  // namespace details
}  // namespace zemtra
