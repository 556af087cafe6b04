#include "rtps/properties.hpp"

#include <algorithm>
#include <charconv>
#include <iterator>
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

constexpr std::uint32_t kLeastBuffer = 65536;
constexpr std::uint32_t kMostBuffer = 1u << 30;

/// A property, and what it takes.
struct Own {
  std::string_view name;
  bool (*read)(std::string_view value, EngineConfig& config);
  const char* expected;
};
constexpr Own kOwnProperties[] = {
    {"interface",
     [](std::string_view value, EngineConfig& config) {
       // The loopback interface by any of its names is the default.
       config.interface_name = value == "lo" || value == "127.0.0.1" ? std::string_view() : value;
       return !value.empty();
     },
     "a name or an address"},
    {"peers", [](std::string_view value, EngineConfig& config) { return read_peers(value, config.peers); },
     "addresses, separated by commas alone"},
    {"multicast",
     [](std::string_view value, EngineConfig& config) {
       config.multicast = value == "1";
       return value == "0" || value == "1";
     },
     "0 or 1"},
    {"lease_milliseconds",
     [](std::string_view value, EngineConfig& config) {
       return read_number<std::int64_t>(value, 100, 3600000, config.lease_milliseconds);
     },
     "100 to 3600000"},
    {"max_message_size",
     [](std::string_view value, EngineConfig& config) {
       return read_number<std::uint32_t>(value, 1500, 65500, config.max_message_size);
     },
     "1500 to 65500"},
    {"receive_buffer_size",
     [](std::string_view value, EngineConfig& config) {
       return read_number(value, kLeastBuffer, kMostBuffer, config.receive_buffer_size);
     },
     "65536 to 1073741824"},
    {"send_buffer_size",
     [](std::string_view value, EngineConfig& config) {
       return read_number(value, kLeastBuffer, kMostBuffer, config.send_buffer_size);
     },
     "65536 to 1073741824"}};

// What is wrong with it; null when nothing is.
const char* read_own(std::string_view name, std::string_view value, EngineConfig& config) {
  if (!starts_with(name, kOwn)) { return "there is no such property"; }
  const auto known = std::find_if(std::begin(kOwnProperties), std::end(kOwnProperties),
                                  [&](const Own& own) { return own.name == name.substr(kOwn.size()); });
  if (known == std::end(kOwnProperties)) { return "there is no such property"; }
  return known->read(value, config) ? nullptr : known->expected;
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
    if (const char* const fault = read_own(name, value, config)) {
      error = "property \"" + std::string(name) + "\" = \"" + std::string(value) + "\": " + fault;
      return false;
    }
  }
  return true;
}

}  // namespace dds::rtps
