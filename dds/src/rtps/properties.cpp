#include "rtps/properties.hpp"

#include <charconv>
#include <string_view>

namespace dds::rtps {

namespace {

constexpr std::string_view kAll = "dds.transport";
constexpr std::string_view kOwn = "dds.transport.rtps.";
constexpr std::string_view kSecurity = "dds.sec.";
// Beyond it, the ports of the wire protocol end.
constexpr DDS_DomainId_t kLastDomain = 230;

bool starts_with(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

template <class Number>
bool read_number(std::string_view text, Number least, Number most, Number& number) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < least || value > most) { return false; }
  number = value;
  return true;
}

bool read_peers(std::string_view text, std::vector<std::string>& peers) {
  while (!text.empty()) {
    const std::size_t comma = text.find(',');
    const std::string_view peer = text.substr(0, comma);
    if (peer.empty() || peer.find_first_of(" \t") != std::string_view::npos) { return false; }
    peers.emplace_back(peer);
    text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
  }
  return true;
}

bool read_own(std::string_view name, std::string_view value, EngineConfig& config) {
  constexpr std::uint32_t most_buffer = 1u << 30;
  if (name == "interface") {
    // The loopback interface by any of its names is the default.
    config.interface_name = value == "lo" || value == "127.0.0.1" ? std::string_view() : value;
    return !value.empty();
  }
  if (name == "peers") { return read_peers(value, config.peers); }
  if (name == "multicast") {
    config.multicast = value == "1";
    return value == "0" || value == "1";
  }
  if (name == "lease_milliseconds") {
    return read_number<std::int64_t>(value, 100, 3600000, config.lease_milliseconds);
  }
  if (name == "max_message_size") { return read_number<std::uint32_t>(value, 1500, 65500, config.max_message_size); }
  if (name == "receive_buffer_size") {
    return read_number<std::uint32_t>(value, 65536, most_buffer, config.receive_buffer_size);
  }
  if (name == "send_buffer_size") {
    return read_number<std::uint32_t>(value, 65536, most_buffer, config.send_buffer_size);
  }
  return false;
}

}  // namespace

bool read_properties(DDS_DomainId_t domain, const DDS_PropertyQosPolicy& properties, EngineConfig& config,
                     std::string& error) {
  if (domain > kLastDomain) {
    error = "domain " + std::to_string(domain) + " is above " + std::to_string(kLastDomain);
    return false;
  }
  config.domain = static_cast<std::uint32_t>(domain);
  for (int i = 0; i < properties.value.length(); ++i) {
    const DDS_Property_t& property = properties.value[i];
    if (property.name == nullptr) { continue; }
    const std::string_view name = property.name;
    const std::string_view value = property.value == nullptr ? "" : property.value;
    if (starts_with(name, kSecurity)) { config.security.emplace_back(name, value); }
    if (name == kAll || !starts_with(name, kAll)) { continue; }
    if (!starts_with(name, kOwn) || !read_own(name.substr(kOwn.size()), value, config)) {
      error = "property \"" + std::string(name) + "\" = \"" + std::string(value) + "\"";
      return false;
    }
  }
  return true;
}

}  // namespace dds::rtps
