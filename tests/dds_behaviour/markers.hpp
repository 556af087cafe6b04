#pragma once

#include <map>
#include <vector>

#include <dds/dds.hpp>

namespace behaviour {

/// By markers that all participants of a domain send one another, each of them knows that it has got whatever the
/// others sent it before. They have a topic of their own, since samples and announcements of endpoints between two
/// participants keep one order, whatever their topic. The participants may be spread over processes.
class Markers {
 public:
  void join(DDSDomainParticipant* participant);
  /// Its writer and reader are for the participant to delete, also before.
  void leave(DDSDomainParticipant* participant);
  int members() const { return static_cast<int>(members_.size()); }

  /// Sends one marker from each member here, once all `everybody` participants of the domain have met.
  void send(int round, int everybody);
  /// Waits until every member here has that round's markers of everybody.
  void await(int round, int everybody);

 private:
  struct Member {
    DDSDomainParticipant* participant;
    DDSStringDataWriter* writer;
    DDSStringDataReader* reader;
    std::map<int, int> got;  // by round
  };

  std::vector<Member> members_;
};

}  // namespace behaviour
