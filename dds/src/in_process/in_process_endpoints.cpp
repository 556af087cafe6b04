#include "in_process/in_process_endpoints.hpp"

#include "util/entity_ids.hpp"

namespace dds {

using Admission = ReaderCore::Admission;

InProcessReader::InProcessReader(const TopicKey& key, ReaderCore& sink, const Filter* filter)
    : key_(key), sink_(sink), filter_(filter), bus_(TopicBus::get(key.domain, key.topic_name)) {}

InProcessReader::~InProcessReader() { bus_->remove(*this); }

InProcessWriter::InProcessWriter(const TopicKey& key, WriterCore& sink)
    : key_(key), sink_(sink), guid_(sink.guid()), bus_(TopicBus::get(key.domain, key.topic_name)) {}

InProcessWriter::~InProcessWriter() { bus_->remove(*this); }

void InProcessWriter::connect(InProcessReader& reader, Notifications& notifications) {
  ReaderCore& sink = reader.sink();
  {
    const MutexLock lock(mutex_);
    routes_.add(sink, reader.filter(), sink_.handle(), sink_.data(), sink_.reliable(), notifications);
  }
  sink_.add_reader(sink.handle(), sink.data(), notifications);
}

void InProcessWriter::disconnect(InProcessReader& reader, Notifications& notifications) {
  {
    const MutexLock lock(mutex_);
    if (!routes_.remove(reader.sink(), reader.filter(), notifications)) { return; }
  }
  sink_.remove_reader(reader.sink().handle(), notifications);
}

DDS_ReturnCode_t InProcessWriter::write(const WrittenSample& sample, Deadline& deadline,
                                        DDS_SampleIdentity_t& assigned) {
  RefPtr<Message> message;
  const DDS_ReturnCode_t made = sink_.make_message(sample, message);
  if (made != DDS_RETCODE_OK) { return made; }
  for (;;) {
    RouteTable::Blocked blocked;
    {
      Notifications notifications;
      const MutexLock lock(mutex_);
      const std::uint64_t number = last_number_ + 1;
      // Before a reader has the sample: the answer may come at once.
      assigned = {guid_, to_sequence_number(number)};
      message->identity = assigned;
      switch (routes_.deliver(message, blocked, notifications)) {
        case Admission::no_memory:
          assigned = DDS_AUTO_SAMPLE_IDENTITY;
          return DDS_RETCODE_OUT_OF_RESOURCES;
        case Admission::full:
          assigned = DDS_AUTO_SAMPLE_IDENTITY;
          break;
        default:
          last_number_ = number;
          return DDS_RETCODE_OK;
      }
    }
    blocked.reader->wait_for_space(blocked.ticket, deadline);
    if (deadline.passed()) { return DDS_RETCODE_TIMEOUT; }
  }
}

}  // namespace dds
