#include <dds/domain_participant_factory.hpp>

// The home of the abstract classes of the API: their type information and what little they do themselves.

DDSCondition::~DDSCondition() = default;
DDSStatusCondition::~DDSStatusCondition() = default;
DDSReadCondition::~DDSReadCondition() = default;
DDSMatchCondition::~DDSMatchCondition() = default;
DDSEntity::~DDSEntity() = default;
DDSTopicDescription::~DDSTopicDescription() = default;
DDSTopic::~DDSTopic() = default;
DDSContentFilteredTopic::~DDSContentFilteredTopic() = default;
DDSDataWriter::~DDSDataWriter() = default;
DDSDataReader::~DDSDataReader() = default;
DDSPublisher::~DDSPublisher() = default;
DDSSubscriber::~DDSSubscriber() = default;
DDSDomainParticipant::~DDSDomainParticipant() = default;
DDSDomainParticipantFactory::~DDSDomainParticipantFactory() = default;

DDSTopic* DDSTopic::narrow(DDSTopicDescription* description) { return dynamic_cast<DDSTopic*>(description); }

DDSContentFilteredTopic* DDSContentFilteredTopic::narrow(DDSTopicDescription* description) {
  return dynamic_cast<DDSContentFilteredTopic*>(description);
}

DDSDataReaderListener::~DDSDataReaderListener() = default;
void DDSDataReaderListener::on_requested_incompatible_qos(DDSDataReader* /*reader*/,
                                                          const DDS_RequestedIncompatibleQosStatus& /*status*/) {}
void DDSDataReaderListener::on_sample_rejected(DDSDataReader* /*reader*/, const DDS_SampleRejectedStatus& /*status*/) {}
void DDSDataReaderListener::on_data_available(DDSDataReader* /*reader*/) {}
void DDSDataReaderListener::on_subscription_matched(DDSDataReader* /*reader*/,
                                                    const DDS_SubscriptionMatchedStatus& /*status*/) {}
void DDSDataReaderListener::on_sample_lost(DDSDataReader* /*reader*/, const DDS_SampleLostStatus& /*status*/) {}

DDSDataWriterListener::~DDSDataWriterListener() = default;
void DDSDataWriterListener::on_offered_incompatible_qos(DDSDataWriter* /*writer*/,
                                                        const DDS_OfferedIncompatibleQosStatus& /*status*/) {}
void DDSDataWriterListener::on_publication_matched(DDSDataWriter* /*writer*/,
                                                   const DDS_PublicationMatchedStatus& /*status*/) {}
