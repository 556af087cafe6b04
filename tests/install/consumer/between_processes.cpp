// Prints whether there is a transport between processes.

#include <dds/dds.hpp>
#include <iostream>

int main() {
  DDS_DomainParticipantQos qos;
  DDSPropertyQosPolicyHelper::add_property(qos.property, "dds.transport", "rtps", false);
  DDSDomainParticipantFactory& factory = *DDSDomainParticipantFactory::get_instance();
  DDSDomainParticipant* participant = factory.create_participant(0, qos, nullptr, DDS_STATUS_MASK_NONE);
  std::cout << (participant == nullptr ? "none" : "there it is") << '\n';
  return participant == nullptr || factory.delete_participant(participant) == DDS_RETCODE_OK ? 0 : 1;
}
