#pragma once

#include <string>

#include <dds/qos.hpp>
#include <zemtra/export.hpp>

class DDSDomainParticipant;

namespace zemtra {

// What requesters and repliers use when they are given no QoS: the participant's default for the topic name, made
// reliable, without limits, keeping all, with writes that block for at most 10 s. To be changed and given in their
// parameters. Throws the exceptions of `requestreply/exception.hpp`, and `std::bad_alloc`.

ZEMTRA_TYPED_EXPORT DDS_DataWriterQos request_reply_datawriter_qos(DDSDomainParticipant* participant,
                                                                   const std::string& topic_name = "");
ZEMTRA_TYPED_EXPORT DDS_DataReaderQos request_reply_datareader_qos(DDSDomainParticipant* participant,
                                                                   const std::string& topic_name = "");

}  // namespace zemtra
