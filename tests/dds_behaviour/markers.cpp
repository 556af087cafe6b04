#include "markers.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "support/await.hpp"

namespace behaviour {

void Markers::join(DDSDomainParticipant* participant) {
  DDSStringTypeSupport::register_type(participant, "Marker");
  DDSTopic* topic =
      participant->create_topic("Markers", "Marker", DDS_TOPIC_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
  DDS_DataReaderQos reader_qos;
  reader_qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  reader_qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  auto* reader =
      DDSStringDataReader::narrow(participant->create_datareader(topic, reader_qos, nullptr, DDS_STATUS_MASK_NONE));
  DDS_DataWriterQos patient;
  patient.reliability.max_blocking_time = {60, 0};  // behind megabytes, on a busy machine
  auto* writer =
      DDSStringDataWriter::narrow(participant->create_datawriter(topic, patient, nullptr, DDS_STATUS_MASK_NONE));
  if (reader == nullptr || writer == nullptr) { throw std::runtime_error("no markers"); }
  members_.push_back({participant, writer, reader, {}});
}

void Markers::leave(DDSDomainParticipant* participant) {
  members_.erase(std::remove_if(members_.begin(), members_.end(),
                                [&](const Member& member) { return member.participant == participant; }),
                 members_.end());
}

void Markers::send(int round, int everybody) {
  const auto others = [](const Member& member) {
    DDS_InstanceHandleSeq readers, writers;
    EXPECT_EQ(member.writer->get_matched_subscriptions(readers), DDS_RETCODE_OK);
    EXPECT_EQ(member.reader->get_matched_publications(writers), DDS_RETCODE_OK);
    return std::pair(readers.length(), writers.length());
  };
  for (const Member& member : members_) { AWAIT_EQ(others(member), std::pair(everybody, everybody)); }
  for (const Member& member : members_) {
    EXPECT_EQ(member.writer->write(std::to_string(round).c_str(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
  }
}

void Markers::await(int round, int everybody) {
  const auto look = [round](Member& member) {
    DDS_StringSeq data;
    DDS_SampleInfoSeq infos;
    if (member.reader->take(data, infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                            DDS_ANY_INSTANCE_STATE) == DDS_RETCODE_OK) {
      for (int i = 0; i < data.length(); ++i) {
        if (infos[i].valid_data) { ++member.got[std::stoi(data[i])]; }
      }
      EXPECT_EQ(member.reader->return_loan(data, infos), DDS_RETCODE_OK);
    }
    return member.got[round];
  };
  for (Member& member : members_) {
    AWAIT_EQ(look(member), everybody);
    member.got.erase(round);
  }
}

}  // namespace behaviour
