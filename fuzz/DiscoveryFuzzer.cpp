// What finding cards reads: the answers to a search, serial numbers, the addresses of card records. Each is read by the
// library and by a second, plain way. The first byte of the input chooses.
#include <arpa/inet.h>

#include <limits>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>

#include "Cursor.h"
#include "Require.h"
#include "client/CardAddresses.h"
#include "client/SsdpReply.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

using ClientLib::IPAddress;

constexpr std::uint32_t Interface = 5;
constexpr std::size_t MostForExpressions = 200;  // std::regex goes deeper with every character

// What a read came to: a text, or what it threw.
template <class Read>
std::string Outcome(Read&& read) {
  try {
    return read();
  } catch (const std::runtime_error& error) {
    return std::string("! ") + error.what();
  }
}

// As the system's own functions read and write it; the all-zero address for what they do not take.
std::string AddressText(int family, const std::string& text, std::uint32_t scope, bool hasZone) {
  unsigned char bytes[sizeof(in6_addr)] = {};
  char result[INET6_ADDRSTRLEN] = "";
  const bool isAddress = text.find('\0') == std::string::npos && inet_pton(family, text.c_str(), bytes) == 1;
  if (!isAddress) scope = 0;
  inet_ntop(family, bytes, result, sizeof result);
  if (family == AF_INET6 && !hasZone && bytes[0] == 0xFE && bytes[1] >> 6 == 2) scope = Interface;
  return family == AF_INET6 && scope != 0 ? result + ("%" + std::to_string(scope)) : result;
}

std::string HostText(const std::string& host) {
  const std::size_t dot = host.find('.');
  const std::size_t colon = host.find(':');
  if (dot == std::string::npos && colon == std::string::npos) throw std::runtime_error("Invalid IP address.");
  if (dot < colon) return AddressText(AF_INET, host, 0, false);
  static const std::regex bracketed(R"(\[([^]*)\])");
  std::smatch parts;
  std::string address = std::regex_match(host, parts, bracketed) ? parts.str(1) : host;
  std::uint64_t scope = 0;
  const std::size_t percent = address.find('%');
  if (percent != std::string::npos) {
    const std::string zone = address.substr(percent + 1);
    address.resize(percent);
    if (zone.empty()) throw std::runtime_error("Invalid IP address.");
    for (const char digit : zone) {
      if (digit < '0' || digit > '9') throw std::runtime_error("Invalid IP address.");
      scope = scope * 10 + static_cast<std::uint64_t>(digit - '0');
      if (scope > std::numeric_limits<std::uint32_t>::max()) throw std::runtime_error("Invalid IP address.");
    }
  }
  return AddressText(AF_INET6, address, static_cast<std::uint32_t>(scope), percent != std::string::npos);
}

std::string ReplyByLines(const std::string& datagram) {
  std::string location;
  std::string key;
  std::istringstream lines(datagram);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t scheme = line.find("://");
    if (line.rfind("LOCATION:", 0) == 0) {
      if (scheme != std::string::npos) location = line.substr(scheme + 3);
    } else if (line.rfind("USN:", 0) == 0) {
      key = line.substr(4);
      while (!key.empty() && (key[0] == ' ' || key[0] == '\t')) key.erase(0, 1);
      if (!key.empty() && key.back() == '\r') key.pop_back();
      if (const std::size_t end = key.find("::"); end != std::string::npos) key.resize(end);
      if (const std::size_t dash = key.rfind('-'); dash != std::string::npos) key.erase(0, dash + 1);
    }
  }
  if (location.find(':') == std::string::npos) return "";
  const std::size_t bracket = location.find("]:");
  return key + " " +
         HostText(location.substr(0, bracket == std::string::npos ? location.find(':') : bracket + 1));
}

void CheckReply(const std::string& datagram) {
  const std::string found = Outcome([&] {
    const auto reply = ClientLib::ParseSsdpReply(datagram, Interface);
    return reply ? reply->Key + " " + reply->Address.ToString() : "";
  });
  if (datagram.size() > MostForExpressions) return;
  Require(found == Outcome([&] { return ReplyByLines(datagram); }), "both ways read an answer alike");
}

void CheckSerialNumber(const std::string& text) {
  const std::string found = Outcome([&] { return std::to_string(ClientLib::ParseSerialNumber(text)); });
  if (text.size() > MostForExpressions) return;
  static const std::regex prefixes("[KkVv]+7");
  static const std::regex digits(R"(\d{1,5})");
  const std::string rest = std::regex_replace(text, prefixes, "");
  const bool isNumber = std::regex_match(rest, digits);
  Require(found == (isNumber ? std::to_string(std::stoi(rest))
                             : "! Invalid serial number. The correct format is: [KV7]#####"),
          "a serial number is what the expressions take");
}

void CheckAddress(const std::string& text) {
  std::optional<IPAddress> address;
  const std::string found = Outcome([&] { return (address = IPAddress::Parse(text))->ToString(); });
  Require(address || found == "! Invalid IP address.", "what is no address is refused as one");
  if (!address) return;
  Require(IPAddress::Parse(found) == *address, "an address is read again as the same");
  Require(found == AddressText(address->GetFamily() == IPAddress::Family::IPv4 ? AF_INET : AF_INET6,
                               text.substr(0, text.find('%')), address->GetScopeId(), true),
          "the system reads the address alike");
}

}  // namespace

}  // namespace VELTRO::KELVO::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace VELTRO::KELVO::Fuzz;
  Cursor input(data, size);
  const auto subject = input.Next<char>();
  const std::string text(input.Rest().begin(), input.Rest().end());
  if (subject == 's') {
    CheckSerialNumber(text);
  } else if (subject == 'a') {
    CheckAddress(text);
  } else {
    CheckReply(text);
  }
  return 0;
}
