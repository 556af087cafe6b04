#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "peer.hpp"

namespace peer {

Options::Options(int argc, char** argv) {
  for (int i = 0; i < argc; ++i) {
    const std::string argument = argv[i];
    const std::size_t equals = argument.find('=');
    if (equals == std::string::npos) { fail("no value: " + argument); }
    values_[argument.substr(0, equals)] = argument.substr(equals + 1);
  }
  for (const auto& [name, value] : values_) {
    if (name.rfind("dds.", 0) != 0) { continue; }
    check(DDSPropertyQosPolicyHelper::add_property(qos_.property, name.c_str(), value.c_str(), false), "property");
  }
}

std::string Options::text(const std::string& name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? "" : found->second;
}

int Options::number(const std::string& name, int otherwise) const {
  const auto found = values_.find(name);
  return found == values_.end() ? otherwise : std::stoi(found->second);
}

void say(const std::string& line) {
  const std::string whole = line + '\n';
  if (write(STDOUT_FILENO, whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) { _exit(1); }
}

void fail(const std::string& why) {
  std::fprintf(stderr, "peer %d: %s\n", getpid(), why.c_str());
  _exit(2);
}

void check(DDS_ReturnCode_t retcode, const char* what) {
  if (retcode != DDS_RETCODE_OK) { fail(std::string(what) + " gives " + std::to_string(retcode)); }
}

}  // namespace peer

int main(int argc, char** argv) {
  using namespace peer;
  // Nobody is left behind by a test that is aborted.
  if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) { fail("prctl"); }
  if (argc < 2) { fail("no role"); }
  const std::string role = argv[1];
  const Options options(argc - 2, argv + 2);
  if (role == "host" || role == "wire" || role == "knock") {
    if (role == "host") { run_host(); }
    if (role == "wire") { run_wire(options); }
    if (role == "knock") { run_knock(options); }
    return 0;
  }
  zemtra::Participant participant(options.number("domain", 0), options.participant_qos());
  if (role == "replier") { run_replier(options, participant); }
  if (role == "requester") { run_requester(options, participant); }
  if (role == "duplex") { run_duplex(options, participant); }
  if (role == "endpoints") { run_endpoints(options, participant); }
  DDS_TransportStatistics statistics;
  check(participant->get_transport_statistics(statistics), "get_transport_statistics");
  if (statistics.malformed_messages != 0) { fail("malformed messages have come"); }
}
