// What a search's answers mean, and the addresses that serial numbers predict.
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

TEST(SearchReply, NamesTheCardByTheEndOfItsUsn) {
  const std::string at = "LOCATION:http://1.2.3.4:80/x\r\n";
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},
      {"USN:", ""},
      {"USN: \t 77\r", "77"},
      {"USN:a-b-7 7\r\n", "7 7"},
      {"USN:7::a-b", "7"},
      {"USN:7-::b", ""},
      {"USN:7:8", "7:8"},
      {"usn:7\n USN:8", ""},
      {"USN:1\nUSN:2\n", "2"},
  };
  for (const auto& [lines, key] : rows) EXPECT_EQ(Meaning(at + lines), key + " 1.2.3.4") << lines;
  EXPECT_EQ(Meaning("USN:1\n" + at), "1 1.2.3.4");
  EXPECT_EQ(Meaning("HTTP/1.1 200 OK\r\nLOCATION: http://1.2.3.4:49374/\r\nST: other\r\n"
                    "USN: uuid:kelvo-card-12345::urn:x\r\n\r\n"),
            "12345 1.2.3.4");
}

TEST(SearchReply, NeedsALocationWithAPort) {
  for (const std::string none :
       {"", "USN:7", "LOCATION:", "LOCATION:http://", "LOCATION:http://1.2.3.4/", "LOCATION:1.2.3.4:80",
        "Location:http://1.2.3.4:80", " LOCATION:http://1.2.3.4:80/x\r\n"}) {
    EXPECT_EQ(Meaning(none), "") << none;
  }
  EXPECT_EQ(Meaning("LOCATION:a://b://1.2.3.4:80"), "Invalid IP address.");
  const std::string at = "LOCATION:http://1.2.3.4:80/x\r\n";
  EXPECT_EQ(Meaning(at + "LOCATION:none\n"), " 1.2.3.4") << "the latest that is one";
  EXPECT_EQ(Meaning(at + "LOCATION:http://5.6.7.8:1"), " 5.6.7.8");
}

TEST(SearchReply, PlacesTheCardAtTheHostOfItsLocation) {
  const auto meaning = [](const std::string& host) { return Meaning("LOCATION:http://" + host + ":80"); };
  const std::pair<std::string, const char*> rows[] = {
      {"1.2.3.4/x", "0.0.0.0"},
      {"card.local", "0.0.0.0"},
      {"1.2.3", "0.0.0.0"},
      {std::string("1.2.3.4\0", 8), "0.0.0.0"},
      {"1.2.3.4]", "0.0.0.0"},
      {"[1.2.3.4]", "0.0.0.0"},
      {"[fd00::7]", "fd00::7"},
      {"[fe80::7]", "fe80::7%5"},
      {"[febf::7]", "febf::7%5"},
      {"[fec0::7]", "fec0::7"},
      {"[fe80::7%0]", "fe80::7"},
      {"[fe80::7%12]", "fe80::7%12"},
      {"[::ffff:1.2.3.4]", "::ffff:1.2.3.4"},
      {"[fd00::7%4294967295]", "fd00::7%4294967295"},
      {"[g::7]", "::"},
      {"::7]", "::"},
  };
  for (const auto& [host, address] : rows) EXPECT_EQ(meaning(host), std::string(" ") + address) << host;
  for (const char* host : {"", "card", "[]", "[fe80::7", "[fe80::7%]", "[fe80::7%eth0]", "[fe80::7%+1]",
                           "[fe80::7%4294967296]"}) {
    EXPECT_EQ(meaning(host), "Invalid IP address.") << host;
  }
}

// The address, or the error.
std::string Predicted(const std::string& serial, std::int32_t installation, bool ipv6,
                      std::uint32_t size = 60) {
  std::string buffer(60, '#');
  const auto result =
      vlPredictIPAddressFromSerialNumber(serial.c_str(), installation, ipv6, buffer.data(), size);
  return result == 0 ? buffer.substr(0, size == 60 ? buffer.find('\0') : 60) : Outcome(result);
}

TEST(Addresses, ArePredictedFromSerialNumbers) {
  const std::array<std::string, 5> rows[] = {
      {"0", "169.254.0.3", "169.254.0.1", "fe80::222:4aff:fe01:2", "fe80::222:4aff:fe01:1"},
      {"1", "169.254.0.6", "169.254.0.4", "fe80::222:4aff:fe01:2", "fe80::222:4aff:fe01:1"},
      {"00002", "169.254.0.10", "169.254.0.8", "fe80::222:4aff:fe01:7", "fe80::222:4aff:fe01:6"},
      {"16382", "169.254.255.250", "169.254.255.248", "fe80::222:4aff:fe02:3ff3", "fe80::222:4aff:fe02:3ff2"},
      {"16383", "169.254.0.6", "169.254.0.4", "fe80::222:4aff:fe02:3ff8", "fe80::222:4aff:fe02:3ff7"},
      {"KV765535", "169.254.0.30", "169.254.0.28", "fe80::222:4aff:fe05:fff8", "fe80::222:4aff:fe05:fff7"},
      {"99999", "169.254.26.174", "169.254.26.172", "fe80::222:4aff:fe08:a118", "fe80::222:4aff:fe08:a117"},
  };
  for (const auto& [serial, inside4, outside4, inside6, outside6] : rows) {
    EXPECT_EQ(Predicted(serial, vlInstallation_Internal, false), inside4);
    EXPECT_EQ(Predicted(serial, vlInstallation_Internal, true), inside6);
    for (const std::int32_t outside : {+vlInstallation_External, 99, -1}) {
      EXPECT_EQ(Predicted(serial, outside, false), outside4);
      EXPECT_EQ(Predicted(serial, outside, true), outside6);
    }
    EXPECT_EQ(Predicted(serial, vlInstallation_ExternalDhcp, false),
              "Cannot predict IPv4 address for External/DHCP installed card.");
    EXPECT_EQ(Predicted(serial, vlInstallation_ExternalDhcp, true), outside6);
  }
}

TEST(Addresses, FollowEachOtherInStepsThatWrap) {
  const auto place = [](const IPAddress& address, std::size_t first) {
    const auto& b = address.GetBytes();
    return (b[first] << 16) + (b[first + 1] << 8) + b[first + 2];
  };
  for (std::int32_t n = 2; n <= 99999; ++n) {
    for (const bool isInternal : {false, true}) {
      ASSERT_EQ(place(PredictIPv4(n, isInternal), 1) - place(PredictIPv4(n - 1, isInternal), 1),
                n % 16382 == 1 ? -4 * 16381 : 4)
          << n;
      ASSERT_EQ(place(PredictIPv6(n, isInternal), 13) - place(PredictIPv6(n - 1, isInternal), 13), 5) << n;
    }
  }
  EXPECT_FAILURE(PredictIPv4(-1, false), "Invalid negative serial number.");
}

TEST(Addresses, NeedASerialNumberOfUpToFiveDigits) {
  for (const char* serial : {"12345", "KV712345", "kv712345", "K7K712345", "12KVv7345", "1K7V72345"}) {
    EXPECT_EQ(Predicted(serial, vlInstallation_Internal, false), "169.254.192.230") << serial;
  }
  for (const char* serial :
       {"", "123456", "-1", " 1", "1\n", "KV12345", "7KV", "KV7", "KK7V7", "1.5", "KKV77X"}) {
    EXPECT_EQ(Predicted(serial, vlInstallation_ExternalDhcp, false),
              "Invalid serial number. The correct format is: [KV7]#####")
        << serial;
  }
}

TEST(Addresses, AreWrittenIntoTheRoomThereIs) {
  const std::string text = "169.254.0.6";
  EXPECT_EQ(Predicted("1", 0, false, 10), "IPAddress buffer too small.");
  EXPECT_EQ(Predicted("1", 0, false, 11), text + std::string(49, '#'));
  EXPECT_EQ(Predicted("1", 0, false, 14), text + std::string(3, '\0') + std::string(46, '#'));
}

TEST(Addresses, ThatAreNoneAreNotPinged) {
  EXPECT_FAILURE(Ping(IPAddress(), 1),
                 "An invalid address family was provided that is not supported for pinging.");
}

TEST(CardInfo, IsOrderedBySerialNumberAndAddress) {
  const std::pair<CardInfo, const char*> ordered[] = {
      {{}, ": /0"},
      {{IPAddress::Parse("1.2.3.5"), "1"}, "1: 1.2.3.5/49374"},
      {{IPAddress::Parse("9.0.0.0"), "10"}, "10: 9.0.0.0/49374"},
      {{IPAddress::Parse("fe80::1"), "10"}, "10: fe80::1/49374"},
      {{IPAddress::Parse("fe80::1%7"), "10"}, "10: fe80::1%7/49374"},
      {{IPAddress::Parse("1.2.3.4"), "9"}, "9: 1.2.3.4/49374"},
  };
  for (std::size_t i = 0; i < std::size(ordered); ++i) {
    EXPECT_EQ(to_string(ordered[i].first), ordered[i].second);
    for (std::size_t j = 0; j < i; ++j) {
      EXPECT_TRUE(ordered[j].first < ordered[i].first && !(ordered[i].first < ordered[j].first)) << i << j;
    }
  }
}

TEST(Addresses, OfFourBytesAreEqualInThem) {
  constexpr auto IPv4 = IPAddress::Family::IPv4, IPv6 = IPAddress::Family::IPv6;
  const IPAddress four(IPv4, {1, 2, 3, 4, 5}), same(IPv4, {1, 2, 3, 4, 6, 7});
  EXPECT_TRUE(four == same && !(four < same) && !(same < four));
  EXPECT_TRUE(IPAddress(IPv4, {0, 0, 0, 0, 1}).IsEmpty());
  EXPECT_FALSE(IPAddress(IPv6, {1, 2, 3, 4, 5}) == IPAddress(IPv6, {1, 2, 3, 4, 6}));
  for (const char* text : {"1.2.3.4", "fe80::1%7"}) {
    EXPECT_EQ(std::hash<IPAddress>()(IPAddress::Parse(text)), std::hash<std::string>()(text) + 66);
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
