// The virtual card's page: what is let in, what is told, what it does to the card.
#include <cstring>

#include "int/CardClient.h"
#include "support/FakeCard.h"
#include "web/EventRing.h"
#include "web/WebServer.h"

namespace VELTRO::KELVO::Test {

namespace {

using testing::HasSubstr;
using VirtualCard::EventRing;

// A card with a page, and a client that keeps to the letter what it is told to send.
class PageCard {
 public:
  explicit PageCard(std::vector<Text> arguments = {"--speed", "max"})
      : Card([&] {
          arguments.insert(arguments.end(), {"--http", "0", "--http-host", "card.example"});
          return arguments;
        }()) {
    const Text line = Card.ReadLine();  // "Page at http://127.0.0.1:PORT/"
    EXPECT_THAT(line, testing::MatchesRegex("Page at http://127\\.0\\.0\\.1:[0-9]+/\n"));
    Port = std::stoi(line.substr(line.rfind(':') + 1));
    Host = "127.0.0.1:" + std::to_string(Port);
    const Text page = Get("/");
    Token = page.substr(page.find("name=\"token\" content=\"") + 22, 32);
  }

  int Open(const Text& request, int bytes = 0) const {
    const int connection = Connect(Port);
    if (bytes > 0) setsockopt(connection, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
    const timeval patience{20, 0};
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    EXPECT_EQ(send(connection, request.data(), request.size(), MSG_NOSIGNAL), ssize_t(request.size()));
    return connection;
  }
  // What comes on the connection, up to a text or its end, taken so many bytes at a time.
  static Text Read(int connection, const Text& last = "", std::size_t most = 4096) {
    Text all;
    char bytes[4096];
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while ((last.empty() || all.find(last) == Text::npos) && std::chrono::steady_clock::now() < end) {
      const ssize_t count = recv(connection, bytes, most, 0);
      if (count <= 0) break;
      all.append(bytes, std::size_t(count));
    }
    return all;
  }
  // The whole answer. "HOST" and "TOKEN" in the request stand for what they are.
  Text Ask(Text request, const Text& body = "") const {
    const std::pair<Text, Text> words[] = {{"HOST", Host}, {"TOKEN", Token}};
    for (const auto& [word, value] : words) {
      for (std::size_t at; (at = request.find(word)) != Text::npos;) request.replace(at, word.size(), value);
    }
    const int connection = Open(request + "\r\nConnection: close\r\n\r\n" + body);
    const Text answer = Read(connection);
    close(connection);
    return answer;
  }
  // A stream of events, read up to where they begin, and not in chunks, which might split a word. `bytes`: that may have
  // come and not been read, 0 for the usual number.
  int Listen(const Text& head, int bytes = 0) const {
    const int stream = Open("GET /events HTTP/1.0\r\nHost: " + Host + head + "\r\n\r\n", bytes);
    EXPECT_THAT(Read(stream, "retry: 1000\n\n", 1), HasSubstr(" 200 OK\r\n")) << head;
    return stream;
  }
  Text Get(const Text& path) const { return Ask("GET " + path + " HTTP/1.1\r\nHost: " + Host); }
  Text Do(const Text& action) const {
    return Ask(
        "POST /do HTTP/1.1\r\nHost: HOST\r\nContent-Type: application/json\r\nX-Kelvo-Token: TOKEN\r\n"
        "Content-Length: " +
            std::to_string(action.size()),
        action);
  }

  CardProcess Card;
  int Port = 0;
  Text Host, Token;
};

Text StatusOf(const Text& answer) {
  return answer.substr(0, answer.find("\r\n")).substr(std::min<std::size_t>(answer.size(), 9));
}

}  // namespace

TEST(VirtualCardPage, LetsInWhoMayAsk) {
  const PageCard page;
  const Text json = "\r\nContent-Type: application/json", token = "\r\nX-Kelvo-Token: TOKEN",
             two = "\r\nContent-Length: 2", pieces = "\r\nTransfer-Encoding: chunked";
  const struct {
    Text Request, Status, Body = {};
  } cases[] = {
      {"GET / HTTP/1.1\r\nHost: HOST", "200 OK"},
      {"GET /page.js HTTP/1.1\r\nHost: LocalHost:" + std::to_string(page.Port), "200 OK"},
      {"GET /state HTTP/1.1\r\nHost: card.example", "200 OK"},
      {"HEAD / HTTP/1.1\r\nHost: HOST", "200 OK"},
      {"GET /none HTTP/1.1\r\nHost: HOST", "404 Not Found"},
      {"GET / HTTP/1.1\r\nHost: evil.example", "421 Misdirected Request"},
      {"GET / HTTP/1.1\r\nHost: 127.0.0.1", "421 Misdirected Request"},
      {"GET / HTTP/1.1\r\nHost: HOST\r\nHost: HOST", "400 Bad Request"},
      {"GET /state HTTP/1.1\r\nHost: HOST\r\nOrigin: http://evil.example", "403 Forbidden"},
      {"GET /drawing?from=0 HTTP/1.1\r\nHost: HOST\r\nSec-Fetch-Site: cross-site", "403 Forbidden"},
      {"GET /state HTTP/1.1\r\nHost: HOST\r\nSec-Fetch-Site: same-site", "403 Forbidden"},
      {"GET / HTTP/1.1\r\nHost: HOST\r\nSec-Fetch-Site: cross-site", "200 OK"},
      {"PUT / HTTP/1.1\r\nHost: HOST" + two, "405 Method Not Allowed", "{}"},
      {"GET /do HTTP/1.1\r\nHost: HOST", "405 Method Not Allowed"},
      {"GET /drawing?from=-1 HTTP/1.1\r\nHost: HOST", "400 Bad Request"},
      {"GET /list?id=7&from=0 HTTP/1.1\r\nHost: HOST", "404 Not Found"},
      {"POST /do HTTP/1.1\r\nHost: HOST" + two + token + "\r\nContent-Type: text/plain",
       "415 Unsupported Media Type", "{}"},
      {"POST /do HTTP/1.1\r\nHost: HOST" + two + json, "403 Forbidden", "{}"},
      {"POST /do HTTP/1.1\r\nHost: HOST" + two + json + token + "0", "403 Forbidden", "{}"},
      {"POST /do HTTP/1.1\r\nHost: HOST" + json + token + "\r\nOrigin: null" + two, "403 Forbidden", "{}"},
      {"POST /do HTTP/1.1\r\nHost: HOST" + json + token + "\r\nContent-Length: 4097", "413 "},
      {"POST /do HTTP/1.1\r\nHost: HOST" + json + token + pieces, "400 Bad Request", "2\r\n[]\r\n0\r\n\r\n"},
  };
  // Who tells no length is cut off when it is too much.
  EXPECT_EQ(page.Ask("POST /do HTTP/1.1\r\nHost: HOST" + json + token + pieces,
                     "2000\r\n" + Text(0x2000, ' ') + "\r\n0\r\n\r\n"),
            "");
  for (const auto& one : cases) {
    EXPECT_THAT(StatusOf(page.Ask(one.Request, one.Body)), testing::StartsWith(one.Status)) << one.Request;
  }
  for (const char* const header :
       {"Content-Security-Policy: default-src 'none'; script-src 'self'", "X-Content-Type-Options: nosniff",
        "frame-ancestors 'none'", "Cache-Control: no-store"}) {
    EXPECT_THAT(page.Get("/"), HasSubstr(header));
  }
}

TEST(VirtualCardPage, ActsOnTheCard) {
  const PageCard page;
  Client client(page.Card);
  const struct {
    Text Action, Refusal;
  } refused[] = {
      {"[]", "It takes an object of JSON."},
      {"{\"do\":\"dance\"}", "There is no such action."},
      {"{\"do\":\"pin\",\"port\":8,\"pin\":0,\"high\":true}", "There is no such pin."},
      {"{\"do\":\"pin\",\"port\":1,\"pin\":0,\"high\":true}", "The pin is an output."},
      {"{\"do\":\"pin\",\"port\":2,\"pin\":0,\"high\":1}", "'high' is missing or not of its kind."},
      {"{\"do\":\"pin\",\"port\":18446744073709551615,\"pin\":0,\"high\":true}",
       "'port' is missing or not of its kind."},
      {"{\"do\":\"fault\",\"text\":\"SetLst:drop\"}", "'SetLst' in a fault: that is nothing"},
  };
  for (const auto& one : refused)
    EXPECT_THAT(page.Do(one.Action), HasSubstr("\r\n\r\n" + one.Refusal)) << one.Action;

  // Each of these waits without end for what the page does.
  const struct {
    Text List, Action;
  } waits[] = {
      {"WI U32:4 2 true true U32:4 -1", "{\"do\":\"pin\",\"port\":2,\"pin\":2,\"high\":true}"},
      {"WS -1", "{\"do\":\"start\"}"},
      {"SUS", "{\"do\":\"resume\"}"},
  };
  for (const auto& one : waits) {
    EXPECT_THAT(client.Run("PI 1 " + one.List, "progress"), testing::ElementsAre("progress 1")) << one.List;
    EXPECT_EQ(StatusOf(page.Do(one.Action)), "200 OK") << one.Action;
    EXPECT_THAT(client.EventsUpTo("idle"), testing::Contains("done 7")) << one.List;
  }
}

TEST(VirtualCardPage, SetsFaultsAndTellsWhatTheyDid) {
  const PageCard page;
  Client client(page.Card);
  EXPECT_EQ(StatusOf(page.Do("{\"do\":\"fault\",\"text\":\"GetList:from=2:error=No\"}")), "200 OK");
  EXPECT_THAT(client.Refusal("GetList", 7), Not(HasSubstr("No")));
  EXPECT_EQ(client.Refusal("GetList", 7), "No");
  EXPECT_THAT(page.Get("/state"),
              HasSubstr("\"faults\":[{\"befell\":1,\"calls\":2,\"text\":\"GetList:from=2:error=No\"}]"));
  EXPECT_EQ(StatusOf(page.Do("{\"do\":\"fault\",\"text\":\"GetList:off\"}")), "200 OK");
  EXPECT_THAT(page.Get("/state"), HasSubstr("\"faults\":[]"));
}

TEST(VirtualCardPage, TellsWhatIsDrawn) {
  const PageCard page;
  Client client(page.Card);
  client.Run("JA 1,2 MA 3,4 MA 5,6");
  const Text answer = page.Get("/drawing?from=1");
  const Text bytes = answer.substr(answer.find("\r\n\r\n") + 4);
  ASSERT_EQ(bytes.size(), 20 + 3 * 9U);  // behind the start at the origin
  std::uint32_t head[5];
  float places[6];
  std::memcpy(head, bytes.data(), sizeof head);
  std::memcpy(places, bytes.data() + 20, sizeof places);
  EXPECT_THAT(head, testing::ElementsAre(0, 1, 3, 4, 0));
  EXPECT_THAT(places, testing::ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_EQ(bytes.substr(44), Text("\1\2\2"));
  client.Run("MA 7,8");  // another run is another picture
  EXPECT_EQ(page.Get("/drawing?from=0").substr(answer.find("\r\n\r\n") + 4, 1), "\1");
}

TEST(VirtualCardPage, StreamsWhatHappensToTheEnd) {
  auto page = std::make_unique<PageCard>();
  const int lost = page->Listen("\r\nLast-Event-ID: other-3");
  EXPECT_THAT(PageCard::Read(lost, "data: {}"), HasSubstr("event: anew"));
  const Text state = page->Get("/state");
  const std::size_t place = state.find("\"latest\":\"") + 10;
  const Text latest = state.substr(place, state.find('"', place) - place);
  {
    Client client(page->Card);
    PageCard::Read(lost, "SetVariables");  // its calls are seen
    client.Run("MA 3,4 PI 99");
  }
  PageCard::Read(lost, "Progress 99");
  // Who has been away gets what happened meanwhile, from the first event on.
  const int back = page->Listen("\r\nLast-Event-ID: " + latest);
  const std::size_t dash = latest.find('-') + 1;
  const Text next = latest.substr(0, dash) + std::to_string(std::stoi(latest.substr(dash)) + 1);
  EXPECT_THAT(PageCard::Read(back, "Progress 99"), testing::StartsWith("id: " + next + "\n"));
  page.reset();
  for (const int stream : {lost, back}) {
    EXPECT_THAT(PageCard::Read(stream), HasSubstr("event: end"));
    close(stream);
  }
}

TEST(VirtualCardPage, HasRoomForSoManyAndNoMore) {
  const PageCard page;
  std::vector<int> open;
  while (open.size() < VirtualCard::WebServer::MostStreams) open.push_back(page.Listen(""));
  const int tooMany = page.Open("GET /events HTTP/1.1\r\nHost: " + page.Host + "\r\n\r\n");
  EXPECT_EQ(StatusOf(PageCard::Read(tooMany, "\r\n")), "503 Service Unavailable");
  close(tooMany);
  while (open.size() < VirtualCard::WebServer::MostConnections) open.push_back(page.Open("GET"));
  const Text request = "GET / HTTP/1.1\r\nHost: " + page.Host + "\r\nConnection: close\r\n\r\n";
  const int another = page.Open(request);
  const timeval moment{0, 200'000};
  setsockopt(another, SOL_SOCKET, SO_RCVTIMEO, &moment, sizeof moment);
  EXPECT_EQ(PageCard::Read(another), "");
  EXPECT_THAT(Client(page.Card).Run("MA 1,2"), testing::Contains("done 7"));
  for (const int connection : open) close(connection);
  close(another);
  EXPECT_EQ(StatusOf(page.Get("/")), "200 OK");
}

TEST(VirtualCardPage, NothingIsKeptForWhoDoesNotRead) {
  const PageCard page;
  Client client(page.Card);
  const auto set = [&](int variable, int value) {  // a name that takes six times its length as JSON
    client.Call("SetIntegerVariable", Text(250, '\1') + std::to_string(variable), value);
  };
  for (int i = 0; i < 200; ++i) set(i, 0);
  // Much less would come in pieces with a fifth of a second between them.
  const int slow = page.Listen("", 65536), fast = page.Listen("");
  for (const int stream : {slow, fast}) PageCard::Read(stream, "event: anew\ndata: {}\n\n", 1);
  constexpr std::size_t More = 4 << 20;  // than the ring holds
  std::size_t told = 0;
  for (int i = 1; told < More; ++i) {
    set(0, i);
    const Text events = PageCard::Read(fast, "event: variables");
    ASSERT_NE(events, "");
    told += events.size();
  }
  const Text late = PageCard::Read(slow, "event: anew");
  EXPECT_THAT(late.substr(late.size() - std::min<std::size_t>(late.size(), 4096)), HasSubstr("event: anew"));
  EXPECT_LT(late.size(), More / 2);
  close(slow);
  close(fast);
}

TEST(VirtualCardPage, EventsAreReplayedOrLost) {
  EventRing ring("e");
  EXPECT_EQ(ring.PlaceBehind("e-0"), 1U);
  for (const char* const id : {"", "e-", "e-1", "e-x", "f-0", "e-0x"})
    EXPECT_EQ(ring.PlaceBehind(id), EventRing::Lost) << id;
  ring.Add("a", "1");
  ring.Add("b", "2");
  std::uint64_t place = ring.PlaceBehind("e-1");
  EXPECT_EQ(ring.Read(place, 1000), "id: e-2\nevent: b\ndata: 2\n\n");
  EXPECT_EQ(ring.Read(place, 1000), "");
  place = 1;
  EXPECT_EQ(ring.Read(place, 1), "id: e-1\nevent: a\ndata: 1\n\n");  // at least one
  for (int i = 0; i < 3; ++i) ring.Add("large", Text(EventRing::MostBytes / 2, 'x'));
  EXPECT_EQ(ring.Read(place, 1000), "id: e-5\nevent: anew\ndata: {}\n\n");
  EXPECT_EQ(ring.Read(place, 1000), "");
}

}  // namespace VELTRO::KELVO::Test
