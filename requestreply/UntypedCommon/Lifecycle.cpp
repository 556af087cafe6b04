#include <dds/domain_participant.hpp>
#include <requestreply/entity_params.hpp>
#include <requestreply/entity_untyped_impl.hpp>
#include <requestreply/log_and_rethrow.hpp>
#include <utility>

#include "internal/check.hpp"
#include "internal/log.hpp"

namespace zemtra {
namespace details {

namespace {

/// Reports a factory operation that returned null.
template <class T>
void require_created(const T* created, const char* what) {
  if (created == nullptr) { fail(DDS_RETCODE_ERROR, "initialize", QVX_LOG_CREATION_FAILURE_s, what); }
}

/// Logs a clean-up step that failed; the caller goes on.
void log_unless_ok(DDS_ReturnCode_t retcode, const QVXLogMessage& log_template, const char* what,
                   const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  if (retcode != DDS_RETCODE_OK) { log(DDS_LOG_LEVEL_FAILURE, "finalize", log_template, what, file, line); }
}

}  // namespace

const char* const EntityUntypedImpl::CLASS_NAME = "zemtra::details::EntityUntypedImpl";

EntityUntypedImpl::TopicBuilder::~TopicBuilder() = default;

EntityUntypedImpl::EntityUntypedImpl(bool owns_cft) : owns_reader_cft(owns_cft) {}

EntityUntypedImpl::~EntityUntypedImpl() { finalize(); }

void EntityUntypedImpl::initialize(const EntityParams& params, RegisterTypeFunction register_writer_type,
                                   RegisterTypeFunction register_reader_type, int samples_size,
                                   TopicBuilder& topic_builder, DDSDataReaderListener* reader_listener, bool flag,
                                   const char* role_name) {
  try {
    params.validate();
    sample_size = samples_size;
    participant = params.participant();
    publisher = params.publisher();
    subscriber = params.subscriber();
    create_writer(params, register_writer_type, topic_builder, role_name);
    create_reader(params, register_reader_type, topic_builder, reader_listener, role_name);
    create_conditions();
  } catch (const Rethrowable& ex) {
    // The context names the topics of the writer and the reader, so it is composed before they are deleted.
    const std::string text = log_and_rethrow_conditional(writer, reader, ex, CLASS_NAME, "initialize", false);
    finalize();
    ex.rethrow(text);
  }
  sample_flag = flag;
}

void EntityUntypedImpl::create_writer(const EntityParams& params, RegisterTypeFunction register_type,
                                      TopicBuilder& topic_builder, const char* role_name) {
  const char* type_name = register_type(params.datawriter_type_support(), participant);
  writer_topic = topic_builder.create_writer_topic(params, type_name);
  DDS_DataWriterQos qos;
  get_datawriter_qos(qos, params, writer_topic->get_name(), role_name);
  writer = publisher != nullptr ? publisher->create_datawriter(writer_topic, qos, nullptr, DDS_STATUS_MASK_NONE)
                                : participant->create_datawriter(writer_topic, qos, nullptr, DDS_STATUS_MASK_NONE);
  require_created(writer, "DataWriter");
}

void EntityUntypedImpl::create_reader(const EntityParams& params, RegisterTypeFunction register_type,
                                      TopicBuilder& topic_builder, DDSDataReaderListener* listener,
                                      const char* role_name) {
  const char* type_name = register_type(params.datareader_type_support(), participant);
  reader_topic = topic_builder.create_reader_topic(params, type_name);
  DDSContentFilteredTopic* filtered = DDSContentFilteredTopic::narrow(reader_topic);
  const char* topic_name = filtered != nullptr ? filtered->get_related_topic()->get_name() : reader_topic->get_name();
  DDS_DataReaderQos qos;
  get_datareader_qos(qos, params, topic_name, role_name);
  max_samples_per_read = qos.reader_resource_limits.max_samples_per_read;
  const DDS_StatusMask mask = listener != nullptr ? DDS_DATA_AVAILABLE_STATUS : DDS_STATUS_MASK_NONE;
  reader = subscriber != nullptr ? subscriber->create_datareader(reader_topic, qos, listener, mask)
                                 : participant->create_datareader(reader_topic, qos, listener, mask);
  require_created(reader, "DataReader");
}

void EntityUntypedImpl::create_conditions() {
  any_sample_condition = reader->create_readcondition(DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
  require_created(any_sample_condition, "any-sample read condition");
  not_read_condition =
      reader->create_readcondition(DDS_NOT_READ_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
  require_created(not_read_condition, "not-read-sample read condition");
  // An entity that is only listened to works without: a wait on an empty wait set shows as a time-out.
  static_cast<void>(waitset.attach_condition(not_read_condition));
}

void EntityUntypedImpl::finalize() {
  if (finalized) { return; }
  if (participant != nullptr) {
    if (reader != nullptr) {
      delete_conditions();
      delete_reader();
    }
    if (writer != nullptr) { delete_writer(); }
  }
  finalized = true;
}

void EntityUntypedImpl::delete_conditions() {
  if (not_read_condition != nullptr) {
    log_unless_ok(waitset.detach_condition(not_read_condition), QVX_LOG_REMOVE_FAILURE_s, "condition");
    log_unless_ok(reader->delete_readcondition(not_read_condition), QVX_LOG_DESTRUCTION_FAILURE_s,
                  "read condition (1)");
    not_read_condition = nullptr;
  }
  if (any_sample_condition != nullptr) {
    log_unless_ok(reader->delete_readcondition(any_sample_condition), QVX_LOG_DESTRUCTION_FAILURE_s,
                  "read condition (2)");
    any_sample_condition = nullptr;
  }
}

void EntityUntypedImpl::delete_reader() {
  // Asked of the reader, not taken from reader_topic, so that a topic that no reader uses is left alone.
  DDSTopicDescription* description = reader->get_topicdescription();
  log_unless_ok(subscriber != nullptr ? subscriber->delete_datareader(reader) : participant->delete_datareader(reader),
                QVX_LOG_DESTRUCTION_FAILURE_s, "reader");
  reader = nullptr;
  if (owns_reader_cft) {
    log_unless_ok(participant->delete_contentfilteredtopic(DDSContentFilteredTopic::narrow(description)),
                  QVX_LOG_DESTRUCTION_FAILURE_s, "content-filtered topic");
  }
}

void EntityUntypedImpl::delete_writer() {
  log_unless_ok(publisher != nullptr ? publisher->delete_datawriter(writer) : participant->delete_datawriter(writer),
                QVX_LOG_DESTRUCTION_FAILURE_s, "writer");
  writer = nullptr;
}

DDSDataReader* EntityUntypedImpl::get_datareader() const { return reader; }

DDSDataWriter* EntityUntypedImpl::get_datawriter() const { return writer; }

void EntityUntypedImpl::swap(EntityUntypedImpl& other) {
  std::swap(participant, other.participant);
  std::swap(publisher, other.publisher);
  std::swap(subscriber, other.subscriber);
  std::swap(writer_topic, other.writer_topic);
  std::swap(reader_topic, other.reader_topic);
  std::swap(reader, other.reader);
  std::swap(writer, other.writer);
  std::swap(any_sample_condition, other.any_sample_condition);
  std::swap(not_read_condition, other.not_read_condition);
  std::swap(sample_size, other.sample_size);
  waitset.swap(other.waitset);
}

}  // namespace details
}  // namespace zemtra
