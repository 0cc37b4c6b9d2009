// What a search's answers mean, and the addresses that serial numbers predict.
#include <array>
#include <tuple>

#include "client/CardAddresses.h"
#include "client/CardInfo.h"
#include "client/Ping.h"
#include "client/SsdpReply.h"
#include "int/Helpers.h"

namespace VELTRO::KELVO::Test {
namespace {

// "KEY ADDRESS", or nothing, or the error, for an answer that came in by interface 5.
std::string Meaning(const std::string& datagram) {
  std::string text;
  const std::string failure = Failure([&] {
    if (const auto reply = ParseSsdpReply(datagram, 5)) text = reply->Key + " " + reply->Address.ToString();
  });
  return failure == "no failure" ? text : failure;
}

TEST(SearchReply, SaysWhichCardIsWhere) {
  const std::string at = "LOCATION:http://1.2.3.4:80/x\r\n";
  const std::string invalid = "Invalid IP address.";
  const std::tuple<std::string, std::string> rows[] = {
      {"HTTP/1.1 200 OK\r\nLOCATION: http://1.2.3.4:49374/\r\nST: other\r\nUSN: uuid:kelvo-card-12345::urn:x\r\n\r\n", "12345 1.2.3.4"},
      // the key
      {at, " 1.2.3.4"}, {at + "USN:", " 1.2.3.4"}, {at + "USN: \t 77\r", "77 1.2.3.4"}, {at + "USN:a-b-7 7\r\n", "7 7 1.2.3.4"}, {at + "USN:7::a-b", "7 1.2.3.4"},
      {at + "USN:7-::b", " 1.2.3.4"}, {at + "USN:7:8", "7:8 1.2.3.4"}, {at + "usn:7\n USN:8", " 1.2.3.4"}, {at + "USN:1\nUSN:2\n", "2 1.2.3.4"}, {"USN:1\n" + at, "1 1.2.3.4"},
      // no location
      {"", ""}, {"USN:7", ""}, {"LOCATION:", ""}, {"LOCATION:http://", ""}, {"LOCATION:http://1.2.3.4/", ""}, {"LOCATION:1.2.3.4:80", ""}, {"Location:http://1.2.3.4:80", ""}, {" " + at, ""},
      {at + "LOCATION:none\n", " 1.2.3.4"}, {at + "LOCATION:http://5.6.7.8:1", " 5.6.7.8"},
      // hosts
      {"LOCATION:a://b://1.2.3.4:80", invalid}, {"LOCATION:http://1.2.3.4/x:80", " 0.0.0.0"}, {"LOCATION:http://card.local:80", " 0.0.0.0"}, {"LOCATION:http://1.2.3:80", " 0.0.0.0"},
      {"LOCATION:http://1.2.3.4]:80", " 0.0.0.0"}, {"LOCATION:http://[1.2.3.4]:80", " 0.0.0.0"}, {"LOCATION:http://[fd00::7]:80", " fd00::7"}, {"LOCATION:http://[fe80::7]:80", " fe80::7%5"},
      {"LOCATION:http://[febf::7]:80", " febf::7%5"}, {"LOCATION:http://[fec0::7]:80", " fec0::7"}, {"LOCATION:http://[fe80::7%0]:80", " fe80::7"}, {"LOCATION:http://[fe80::7%12]:80", " fe80::7%12"},
      {"LOCATION:http://[::ffff:1.2.3.4]:80", " ::ffff:1.2.3.4"}, {"LOCATION:http://[fd00::7%4294967295]:80", " fd00::7%4294967295"}, {"LOCATION:http://[g::7]:80", " ::"}, {"LOCATION:http://::7]:80", " ::"},
      {"LOCATION:http://:80", invalid}, {"LOCATION:http://card:80", invalid}, {"LOCATION:http://[]:80", invalid}, {"LOCATION:http://[fe80::7:80", invalid}, {"LOCATION:http://[fe80::7%]:80", invalid},
      {"LOCATION:http://[fe80::7%eth0]:80", invalid}, {"LOCATION:http://[fe80::7%+1]:80", invalid}, {"LOCATION:http://[fe80::7%4294967296]:80", invalid}, {std::string("LOCATION:http://1.2.3.4\0:80", 27), " 0.0.0.0"},
  };
  for (const auto& [datagram, expected] : rows) EXPECT_EQ(Meaning(datagram), expected) << datagram;
}

// The address, or the error.
std::string Predicted(const std::string& serial, std::int32_t installation, bool ipv6, std::uint32_t size = 60) {
  std::string buffer(60, '#');
  if (vlPredictIPAddressFromSerialNumber(serial.c_str(), installation, ipv6, buffer.data(), size) != 0) return LastError();
  return buffer.substr(0, size == 60 ? buffer.find('\0') : 60);
}

TEST(Addresses, ArePredictedFromSerialNumbers) {
  const std::tuple<std::string, std::string, std::string, std::string, std::string> rows[] = {
      {"0", "169.254.0.3", "169.254.0.1", "fe80::222:4aff:fe01:2", "fe80::222:4aff:fe01:1"},
      {"1", "169.254.0.6", "169.254.0.4", "fe80::222:4aff:fe01:2", "fe80::222:4aff:fe01:1"},
      {"00002", "169.254.0.10", "169.254.0.8", "fe80::222:4aff:fe01:7", "fe80::222:4aff:fe01:6"},
      {"16382", "169.254.255.250", "169.254.255.248", "fe80::222:4aff:fe02:3ff3", "fe80::222:4aff:fe02:3ff2"},
      {"16383", "169.254.0.6", "169.254.0.4", "fe80::222:4aff:fe02:3ff8", "fe80::222:4aff:fe02:3ff7"},
      {"KV765535", "169.254.0.30", "169.254.0.28", "fe80::222:4aff:fe05:fff8", "fe80::222:4aff:fe05:fff7"},
      {"99999", "169.254.26.174", "169.254.26.172", "fe80::222:4aff:fe08:a118", "fe80::222:4aff:fe08:a117"},
  };
  const std::string noIPv4 = "Cannot predict IPv4 address for External/DHCP installed card.";
  for (const auto& [serial, inside4, outside4, inside6, outside6] : rows) {
    EXPECT_EQ(Predicted(serial, vlInstallation_Internal, false), inside4);
    EXPECT_EQ(Predicted(serial, vlInstallation_Internal, true), inside6);
    for (const std::int32_t installation : {std::int32_t{vlInstallation_ExternalDhcp}, std::int32_t{vlInstallation_External}, 99, -1}) {
      EXPECT_EQ(Predicted(serial, installation, false), installation == vlInstallation_ExternalDhcp ? noIPv4 : outside4);
      EXPECT_EQ(Predicted(serial, installation, true), outside6);
    }
  }
  for (const char* serial : {"12345", "KV712345", "kv712345", "K7K712345", "12KVv7345", "1K7V72345"}) EXPECT_EQ(Predicted(serial, vlInstallation_Internal, false), Predicted("12345", vlInstallation_Internal, false)) << serial;
  for (const char* serial : {"", "123456", "-1", " 1", "1\n", "KV12345", "7KV", "KV7", "KK7V7", "1.5", "KKV77X"}) {
    EXPECT_EQ(Predicted(serial, vlInstallation_ExternalDhcp, false), "Invalid serial number. The correct format is: [KV7]#####") << serial;
  }
  // Each number by what stands before it: steps of 4, wrapping, and of 5.
  for (std::int32_t n = 2; n <= 99999; ++n) {
    const auto place = [](const IPAddress& address, std::size_t first) { const auto& b = address.GetBytes(); return (b[first] << 16) + (b[first + 1] << 8) + b[first + 2]; };
    for (const bool isInternal : {false, true}) {
      ASSERT_EQ(place(PredictIPv4(n, isInternal), 1) - place(PredictIPv4(n - 1, isInternal), 1), n % 16382 == 1 ? -4 * 16381 : 4) << n;
      ASSERT_EQ(place(PredictIPv6(n, isInternal), 13) - place(PredictIPv6(n - 1, isInternal), 13), 5) << n;
    }
  }
  const std::string text = "169.254.0.6";
  EXPECT_EQ(Predicted("1", 0, false, 10), "IPAddress buffer too small.");
  EXPECT_EQ(Predicted("1", 0, false, 11), text + std::string(49, '#'));
  EXPECT_EQ(Predicted("1", 0, false, 14), text + std::string(3, '\0') + std::string(46, '#'));
  EXPECT_EQ(Failure([] { PredictIPv4(-1, false); }), "Invalid negative serial number.");
  EXPECT_EQ(Failure([] { Ping(IPAddress(), 1); }), "An invalid address family was provided that is not supported for pinging.");
}

TEST(CardInfo, IsOrderedAndSaysWhatItIs) {
  const CardInfo ordered[] = {{}, {IPAddress::Parse("1.2.3.5"), "1"}, {IPAddress::Parse("9.0.0.0"), "10"}, {IPAddress::Parse("fe80::1"), "10"}, {IPAddress::Parse("fe80::1%7"), "10"}, {IPAddress::Parse("1.2.3.4"), "9"}};
  const std::string texts[] = {": /0", "1: 1.2.3.5/49374", "10: 9.0.0.0/49374", "10: fe80::1/49374", "10: fe80::1%7/49374", "9: 1.2.3.4/49374"};
  for (std::size_t i = 0; i < std::size(ordered); ++i) {
    EXPECT_EQ(to_string(ordered[i]), texts[i]);
    EXPECT_EQ(std::hash<IPAddress>()(ordered[i].Address), std::hash<std::string>()(ordered[i].Address.ToString()) + 66);
    for (std::size_t j = 0; j < i; ++j) EXPECT_TRUE(ordered[j] < ordered[i] && !(ordered[i] < ordered[j])) << i << j;
  }
  // Of an IPv4 address the first four bytes are all there is.
  const IPAddress four(IPAddress::Family::IPv4, {1, 2, 3, 4, 5}), same(IPAddress::Family::IPv4, {1, 2, 3, 4, 6, 7});
  EXPECT_TRUE(four == same && !(four < same) && !(same < four) && IPAddress(IPAddress::Family::IPv4, {0, 0, 0, 0, 1}).IsEmpty());
  EXPECT_FALSE(IPAddress(IPAddress::Family::IPv6, {1, 2, 3, 4, 5}) == IPAddress(IPAddress::Family::IPv6, {1, 2, 3, 4, 6}));
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
