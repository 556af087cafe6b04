#pragma once

#include <dds/status.hpp>

class DDSDataReader;
class DDSDataWriter;

/// Called when a status of a reader changes, under no lock: in one process on the thread that caused the change, which
/// writes or creates; with the transport "rtps" on a thread of the participant's. The calls for one reader never
/// overlap: a change that happens meanwhile is told when the running call returns, by the same thread, and changes that
/// pile up are told once. A listener may write, read, take and wait; it may not delete its own reader. It must not
/// throw: an exception that leaves it is logged and dropped. The application owns the listener and keeps it alive until
/// the reader is deleted or `set_listener` has replaced it.
class DDS_EXPORT DDSDataReaderListener {
 public:
  virtual ~DDSDataReaderListener();
  virtual void on_requested_incompatible_qos(DDSDataReader* reader, const DDS_RequestedIncompatibleQosStatus& status);
  virtual void on_sample_rejected(DDSDataReader* reader, const DDS_SampleRejectedStatus& status);
  virtual void on_data_available(DDSDataReader* reader);
  virtual void on_subscription_matched(DDSDataReader* reader, const DDS_SubscriptionMatchedStatus& status);
  virtual void on_sample_lost(DDSDataReader* reader, const DDS_SampleLostStatus& status);
};

/// The same for a writer.
class DDS_EXPORT DDSDataWriterListener {
 public:
  virtual ~DDSDataWriterListener();
  virtual void on_offered_incompatible_qos(DDSDataWriter* writer, const DDS_OfferedIncompatibleQosStatus& status);
  virtual void on_publication_matched(DDSDataWriter* writer, const DDS_PublicationMatchedStatus& status);
};
